#pragma once

#include "scanner/CameraListModel.h"
#include "scanner/CameraPreview.h"
#include "scanner/ScannerDisplay.h"

#include <kestrelid/CameraManager.h>
#include <kestrelid/screens/ScannerCamera.h>

#include <memory>
#include <optional>
#include <QColor>
#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>
#include <QVariant>
#include <QVariantList>
#include <utility>
#include <vector>

namespace kestrelid::scanner {

// Shows one camera manager to the scanning screen. Owns it from the screen's first appearance to
// its end; never stops it.
class DocumentScanner : public QObject {
    Q_OBJECT
    Q_PROPERTY(
        QString camera MEMBER camera_ NOTIFY cameraChanged)  // counts at the first appearance
    Q_PROPERTY(bool showsPreview READ showsPreview NOTIFY displayChanged)
    Q_PROPERTY(QColor bracketColor READ bracketColor NOTIFY displayChanged)
    Q_PROPERTY(QColor captureDiscColor READ captureDiscColor NOTIFY displayChanged)
    Q_PROPERTY(bool isCaptureAllowed READ isCaptureAllowed NOTIFY displayChanged)
    Q_PROPERTY(Status status READ status NOTIFY displayChanged)
    Q_PROPERTY(kestrelid::scanner::CaptureSessionHandle session READ session NOTIFY sessionChanged)
    Q_PROPERTY(bool readsZone MEMBER readsZone_ NOTIFY readsZoneChanged)         // as camera
    Q_PROPERTY(QVariant zone READ zone NOTIFY zoneChanged)                       // see zoneValue()
    Q_PROPERTY(QString cameraState READ cameraState NOTIFY cameraStatusChanged)  // keyOf()
    Q_PROPERTY(QString cameraCause READ cameraCause NOTIFY cameraStatusChanged)
    Q_PROPERTY(QVariantList controls READ controls NOTIFY controlsChanged)
    Q_PROPERTY(kestrelid::scanner::CameraListModel* cameras READ cameras CONSTANT)
    Q_PROPERTY(QString currentCamera READ currentCamera NOTIFY currentCameraChanged)
    QML_ELEMENT

public:
    enum class Status {
        AccessRequired = static_cast<int>(SpokenStatus::accessRequired),
        NotReady = static_cast<int>(SpokenStatus::notReady),
        Ready = static_cast<int>(SpokenStatus::ready),
        PassportInView = static_cast<int>(SpokenStatus::passportInView),
    };
    Q_ENUM(Status)

    using QObject::QObject;

    [[nodiscard]] bool showsPreview() const;
    [[nodiscard]] QColor bracketColor() const;
    [[nodiscard]] QColor captureDiscColor() const;
    [[nodiscard]] bool isCaptureAllowed() const;
    [[nodiscard]] Status status() const;
    [[nodiscard]] CaptureSessionHandle session() const;

    // Made anew each time: only the manager keeps what a document says.
    [[nodiscard]] QVariant zone() const;

    [[nodiscard]] QString cameraState() const;
    [[nodiscard]] QString cameraCause() const;

    // Maps with control, which is keyOf(), value, step, hasAutomatic and isAutomatic.
    [[nodiscard]] QVariantList controls() const;

    // value: a number; undefined and null leave the choice to the camera. Anything else, and a name
    // that no control has, changes nothing.
    Q_INVOKABLE void setControl(const QString& name, const QVariant& value);
    void setControl(CameraControl control, std::optional<double> value);

    [[nodiscard]] CameraListModel* cameras() { return &cameras_; }
    [[nodiscard]] QString currentCamera() const;

    // Gets the cameras whenever they have changed.
    void setCamerasObserver(CamerasObserver observer) { camerasObserver_ = std::move(observer); }

    // Gets what cameraStatusChanged() announces.
    void setCameraObserver(CameraObserver observer) { cameraObserver_ = std::move(observer); }

    // Gets what controlsChanged() announces.
    void setControlsObserver(ControlsObserver observer) { controlsObserver_ = std::move(observer); }

    // Gets what zoneChanged() announces.
    void setZoneObserver(ZoneObserver observer) { zoneObserver_ = std::move(observer); }

    // Checks the permission. Makes the manager first if there is none.
    Q_INVOKABLE void appear();

    // Counts at the first appearance, if there was none.
    Q_INVOKABLE void switchCamera(const QString& name);

    // Does nothing while the session is not ready. completion: a function of JavaScript, which gets
    // the photo or null, or a PhotoCompletion; gets this photo and all later ones.
    Q_INVOKABLE void capture(const QVariant& completion);

signals:
    void cameraChanged();
    void displayChanged();
    void sessionChanged();
    void readsZoneChanged();
    void zoneChanged();
    void cameraStatusChanged();
    void controlsChanged();
    void currentCameraChanged();

private:
    void makeManager();
    void observe(const Published<bool>& field);
    template <typename Value>
    void observe(const Published<Value>& field,
                 std::function<void(const Value&)> DocumentScanner::*observer,
                 void (DocumentScanner::*changed)());
    void observeCameras();
    void follow();

    QString camera_;
    bool readsZone_ = false;
    ZoneObserver zoneObserver_;
    CameraObserver cameraObserver_;
    ControlsObserver controlsObserver_;
    CamerasObserver camerasObserver_;
    CameraListModel cameras_;
    QString chosenCamera_;  // before there is a manager
    std::shared_ptr<DispatchQueue> mainQueue_;
    std::shared_ptr<CameraManager> manager_;
    std::vector<Subscription> subscriptions_;
    ScannerState state_;
};

}  // namespace kestrelid::scanner
