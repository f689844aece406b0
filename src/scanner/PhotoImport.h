#pragma once

#include <kestrelid/Image.h>

#include <functional>
#include <QFutureWatcher>
#include <QPointer>
#include <QQuickItem>
#include <QtQml/qqmlregistration.h>
#include <QUrl>
#include <QVariant>
#include <variant>

class QMimeData;

namespace kestrelid::scanner {

// Takes a photo from a file instead of the camera: one that is chosen in a dialog, pasted, or
// dropped on this item. Reading and decoding happen on another thread; of several the last counts.
class PhotoImport : public QQuickItem {
    Q_OBJECT
    Q_PROPERTY(bool isBusy READ isBusy NOTIFY busyChanged)
    // Something that could be dropped is held over the item.
    Q_PROPERTY(bool isHovered READ isHovered NOTIFY hoveredChanged)
    // Whether a dialog can be had, as far as this program's kind of application goes.
    Q_PROPERTY(bool hasDialog READ hasDialog NOTIFY dialogChanged)
    QML_ELEMENT

public:
    enum class Problem {
        NotAFile,     // nothing on this machine, or no file
        NotAPicture,  // of no format that is known
        Unreadable,   // damaged, too large, or not to be read by this program
        OutOfMemory,
    };
    Q_ENUM(Problem)

    explicit PhotoImport(QQuickItem* parent = nullptr);
    ~PhotoImport() override;

    [[nodiscard]] bool isBusy() const { return isBusy_; }
    [[nodiscard]] bool isHovered() const { return isHovered_; }
    [[nodiscard]] bool hasDialog() const { return hasDialog_; }

    // Lets the person choose a file. The dialog stops nothing else, and goes with the item.
    Q_INVOKABLE void openDialog();

    // What the clipboard holds; false if that is nothing for a photo.
    Q_INVOKABLE bool paste();

    Q_INVOKABLE void open(const QUrl& url);

    // What is being read is not wanted any more.
    Q_INVOKABLE void cancel();

signals:
    void busyChanged();
    void hoveredChanged();
    void dialogChanged();
    // photo: an Image.
    void imported(const QVariant& photo);
    void failed(kestrelid::scanner::PhotoImport::Problem problem);

protected:
    void componentComplete() override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    using Outcome = std::variant<Image, Problem>;

    Q_SLOT void openChosen();

    bool take(const QMimeData& data);
    void read(std::function<Outcome()> work);
    void finish();
    void setBusy(bool isBusy);
    void setHovered(bool isHovered);
    void openWidgetDialog();

    QFutureWatcher<Outcome> reading_;
    bool isBusy_ = false;
    bool isHovered_ = false;
    bool hasDialog_ = false;
    QPointer<QObject> dialog_;
};

}  // namespace kestrelid::scanner
