#pragma once

#include <kestrelid/DispatchQueue.h>
#include <kestrelid/Image.h>

#include <functional>
#include <memory>
#include <QObject>
#include <QPoint>
#include <QString>
#include <QStringList>
#include <QUrl>

namespace kestrelid::demo {

// Which camera the scanning screen works with: the one that was asked for, the machine's first, or
// a drawn passport if there is none. Main thread.
class CameraChoice : public QObject {
    Q_OBJECT
    // A name or a file; empty while cameras are looked for.
    Q_PROPERTY(QString camera READ camera NOTIFY cameraChanged)
    // What the person should know of it.
    Q_PROPERTY(QString note READ note NOTIFY noteChanged)

public:
    // background: looking for cameras takes up to a second.
    CameraChoice(const QString& wanted, std::shared_ptr<DispatchQueue> background);

    [[nodiscard]] QString camera() const { return camera_; }
    [[nodiscard]] QString note() const { return note_; }

    // Offers the cameras, files and the drawn passport. at: of the screen.
    Q_INVOKABLE void openMenu(const QPoint& at);

    // A file that was dropped on the program: a video becomes the camera, a picture is announced.
    Q_INVOKABLE void open(const QUrl& file);

signals:
    void cameraChanged();
    void noteChanged();
    void cameraChosen();  // by the person
    void cameraFound();   // once, late; a picture may have been opened meanwhile
    void pictureOpened(const kestrelid::Image& picture);

private:
    using Names = QStringList;

    void take(const QString& camera, const QString& note);
    void choose(const QString& camera, const QString& note);
    void readPicture(const QString& path);
    void chooseFile();
    [[nodiscard]] bool takeDrawnPassport(const QString& why);
    void setNote(const QString& note);
    void findCameras(std::function<void(const Names& names)> then);
    void examineLater();
    void showMenu(const QPoint& at, const Names& names);

    const std::shared_ptr<DispatchQueue> background_;
    const std::shared_ptr<DispatchQueue> mainQueue_;
    QString camera_;
    QString note_;
};

}  // namespace kestrelid::demo
