#pragma once

#include "apps/demo/DemoOptions.h"

#include <kestrelid/DispatchQueue.h>

#include <memory>
#include <QObject>
#include <QString>
#include <QUrl>

namespace kestrelid::demo {

// What both hosts share: which camera the screens begin with, and what the window says. The camera
// is the one that was asked for, the machine's first, or a drawn passport if there is none. Main
// thread.
class DemoSession : public QObject {
    Q_OBJECT
    // Whether it is known what to begin with.
    Q_PROPERTY(bool isReady READ isReady NOTIFY ready)
    Q_PROPERTY(QString camera READ camera NOTIFY ready)
    Q_PROPERTY(QUrl picture READ picture CONSTANT)  // to be opened at once; may be empty
    Q_PROPERTY(double textScale READ textScale CONSTANT)
    // As PassportScan names its pages.
    Q_PROPERTY(QString page READ page WRITE setPage NOTIFY changed)
    Q_PROPERTY(QString title READ title NOTIFY changed)
    // One line above the scanning screen; may be empty.
    Q_PROPERTY(QString notice READ notice NOTIFY changed)

public:
    // background: looking for cameras takes up to a second.
    DemoSession(const DemoOptions& options, const std::shared_ptr<DispatchQueue>& background);

    [[nodiscard]] bool isReady() const { return isReady_; }
    [[nodiscard]] QString camera() const { return camera_; }
    [[nodiscard]] QUrl picture() const { return picture_; }
    [[nodiscard]] double textScale() const { return textScale_; }
    [[nodiscard]] QString page() const { return page_; }
    [[nodiscard]] QString title() const;
    [[nodiscard]] QString notice() const;

    void setPage(const QString& page);

    // The person is done, and the next one may begin: the notice says so until a photo is taken.
    Q_INVOKABLE void thank();

signals:
    void ready();  // once; never if a camera was named
    void changed();

private:
    void begin(bool hasCamera);

    QString camera_;
    const QUrl picture_;
    const double textScale_;
    QString page_;
    bool isReady_ = false;
    bool isDrawn_ = false;  // the camera
    bool isThanking_ = false;
};

}  // namespace kestrelid::demo
