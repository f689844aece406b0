#pragma once

#include "scanner/AutoCapture.h"
#include "scanner/CameraListModel.h"
#include "scanner/CameraPreview.h"
#include "scanner/OutlineCorners.h"
#include "scanner/ScannerDisplay.h"

#include <kestrelid/CameraManager.h>
#include <kestrelid/screens/ScannerCamera.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <QColor>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QtQml/qqmlregistration.h>
#include <QVariant>
#include <QVariantList>
#include <utility>
#include <vector>

namespace kestrelid::scanner {

// Shows one camera manager to the scanning screen. Owns it from the screen's first appearance to
// its end, or until it is tried again with another one; never stops it.
class DocumentScanner : public QObject {
    Q_OBJECT
    // These count when a manager is made: at the first appearance, and at retry().
    Q_PROPERTY(QString camera MEMBER camera_ NOTIFY wishesChanged)
    Q_PROPERTY(bool readsZone MEMBER readsZone_ NOTIFY wishesChanged)
    Q_PROPERTY(bool watchesPage MEMBER watchesPage_ NOTIFY wishesChanged)  // looks for the page
    Q_PROPERTY(QVariant guidanceLimits MEMBER guidanceLimits_ NOTIFY wishesChanged)

    // A camera that does not work is not ready either, and is tried again while the screen is
    // shown.
    Q_PROPERTY(bool guides MEMBER guides_ NOTIFY wishesChanged)
    // captureDue() is emitted as AutoCapture says.
    Q_PROPERTY(bool capturesByItself MEMBER capturesByItself_ NOTIFY wishesChanged)
    Q_PROPERTY(bool isShown READ isShown WRITE setShown NOTIFY shownChanged)

    Q_PROPERTY(bool showsPreview READ showsPreview NOTIFY displayChanged)
    Q_PROPERTY(QColor bracketColor READ bracketColor NOTIFY displayChanged)
    Q_PROPERTY(QColor captureDiscColor READ captureDiscColor NOTIFY displayChanged)
    Q_PROPERTY(bool isCaptureAllowed READ isCaptureAllowed NOTIFY displayChanged)
    Q_PROPERTY(Status status READ status NOTIFY displayChanged)
    Q_PROPERTY(kestrelid::scanner::CaptureSessionHandle session READ session NOTIFY sessionChanged)
    Q_PROPERTY(QVariant zone READ zone NOTIFY zoneChanged)                       // see zoneValue()
    Q_PROPERTY(QString cameraState READ cameraState NOTIFY cameraStatusChanged)  // keyOf()
    Q_PROPERTY(QString cameraCause READ cameraCause NOTIFY cameraStatusChanged)
    Q_PROPERTY(QVariantList controls READ controls NOTIFY controlsChanged)
    Q_PROPERTY(kestrelid::scanner::CameraListModel* cameras READ cameras CONSTANT)
    Q_PROPERTY(QStringList usableCameras READ usableCameras NOTIFY usableCamerasChanged)
    Q_PROPERTY(QString currentCamera READ currentCamera NOTIFY currentCameraChanged)

    // What a person has to know of a camera that does not work: keyOf() its state, or "noFile" or
    // "badFile" for a file that was to stand for one. Stays while that is tried again, until the
    // camera works; then empty.
    Q_PROPERTY(QString cameraProblem READ cameraProblem NOTIFY problemChanged)
    Q_PROPERTY(QString problemCause READ problemCause NOTIFY problemChanged)
    // The camera that was asked for by name or path; empty: any.
    Q_PROPERTY(QString askedCamera READ askedCamera NOTIFY problemChanged)
    // Trying again asks the person for the permission again.
    Q_PROPERTY(bool asksAgain READ asksAgain NOTIFY problemChanged)

    Q_PROPERTY(QString advice READ advice NOTIFY pageChanged)  // keyOf()
    // Four points, or none: see OutlineCorners.
    Q_PROPERTY(QVariantList pageOutline READ pageOutline NOTIFY pageChanged)
    Q_PROPERTY(bool isPageSteady READ isPageSteady NOTIFY pageChanged)
    Q_PROPERTY(qreal captureProgress READ captureProgress NOTIFY captureProgressChanged)
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

    [[nodiscard]] bool isShown() const { return isShown_; }
    void setShown(bool isShown);

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
    // The names of those that are there and can be used, best first.
    [[nodiscard]] QStringList usableCameras() const;
    [[nodiscard]] QString currentCamera() const;

    [[nodiscard]] QString cameraProblem() const { return problem_; }
    [[nodiscard]] QString problemCause() const { return problemCause_; }
    [[nodiscard]] QString askedCamera() const;
    [[nodiscard]] bool asksAgain() const;

    [[nodiscard]] QString advice() const;
    [[nodiscard]] QVariantList pageOutline() const;
    [[nodiscard]] bool isPageSteady() const;
    [[nodiscard]] qreal captureProgress() const { return autoCapture_.progress(); }

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

    // Begins anew with another manager, if there was one: permission, camera, session.
    Q_INVOKABLE void retry();

    // Counts at the first appearance, if there was none.
    Q_INVOKABLE void switchCamera(const QString& name);

    // Does nothing while the session is not ready. completion: a function of JavaScript, which gets
    // the photo or null, or a PhotoCompletion; gets this photo and all later ones.
    Q_INVOKABLE void capture(const QVariant& completion);

    // The page in view gets no photo by itself.
    Q_INVOKABLE void cancelAutoCapture();

    // Gives completion a photo that was not taken here: an Image.
    Q_INVOKABLE void deliver(const QVariant& completion, const QVariant& photo);

signals:
    void wishesChanged();
    void shownChanged();
    void displayChanged();
    void sessionChanged();
    void zoneChanged();
    void cameraStatusChanged();
    void controlsChanged();
    void usableCamerasChanged();
    void currentCameraChanged();
    void problemChanged();
    void pageChanged();
    void captureProgressChanged();
    // A photo is to be taken without a tap.
    void captureDue();

private:
    void makeManager();
    void observe(const Published<bool>& field);
    template <typename Value>
    void observe(const Published<Value>& field,
                 std::function<void(const Value&)> DocumentScanner::*observer,
                 void (DocumentScanner::*changed)());
    void observeCameras();
    void follow();

    void followCamera(const CameraStatus& status);
    void setProblem(const CameraStatus& status);
    void followCameraList(const std::vector<CameraDescription>& cameras);
    void followPage(const LivePage& page);
    void watchApplication();
    void retryLater(std::chrono::duration<double> delay);
    void retryBecauseOf(std::uint64_t plan);
    void seeForAutoCapture();

    QString camera_;
    bool readsZone_ = false;
    bool watchesPage_ = false;
    QVariant guidanceLimits_;
    bool guides_ = false;
    bool capturesByItself_ = false;
    bool isShown_ = false;
    ZoneObserver zoneObserver_;
    CameraObserver cameraObserver_;
    ControlsObserver controlsObserver_;
    CamerasObserver camerasObserver_;
    CameraListModel cameras_;
    QString chosenCamera_;  // by switchCamera(); empty: none was
    std::shared_ptr<DispatchQueue> mainQueue_;
    std::shared_ptr<CameraAuthorization> authorization_;
    std::function<AutoCapture::Time()> uptime_;
    std::shared_ptr<CameraManager> manager_;
    std::vector<Subscription> subscriptions_;
    ScannerState state_;
    bool isReplacing_ = false;  // the preview of one session goes before that of the next comes

    CameraState problemState_ = CameraState::idle;  // idle: none
    QString problem_;
    QString problemCause_;
    int triesInVain_ = 0;
    std::uint64_t retryPlan_ = 0;               // the one that counts; others were given up
    std::optional<QStringList> listedCameras_;  // usable, as they were told last
    QMetaObject::Connection application_;

    AutoCapture autoCapture_;
    std::optional<OutlineCorners> corners_;
};

}  // namespace kestrelid::scanner
