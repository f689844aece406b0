#include "scanner/DocumentScanner.h"

#include "scanner/CameraRetry.h"
#include "scanner/GuidanceLimitsValue.h"
#include "scanner/ZoneValue.h"
#include "screens/EngineContext.h"

#include <chrono>
#include <cstddef>
#include <QJSEngine>
#include <QJSValue>
#include <QPointer>
#include <QQmlEngine>
#include <QQmlInfo>
#include <QVariantMap>
#include <string_view>

namespace kestrelid::scanner {

namespace {

constexpr std::chrono::duration<double> kCaptureDelay{0.1};

PhotoCompletion photoCompletion(const QVariant& completion, QJSEngine* engine) {
    if (completion.metaType() == QMetaType::fromType<PhotoCompletion>())
        return completion.value<PhotoCompletion>();
    if (completion.metaType() != QMetaType::fromType<QJSValue>())
        return {};
    const auto function = completion.value<QJSValue>();
    if (!function.isCallable() || !engine)
        return {};
    return [function, engine = QPointer<QJSEngine>(engine)](const std::optional<Image>& photo) {
        if (!engine)
            return;
        const QJSValue given = photo ? engine->toScriptValue(QVariant::fromValue(*photo))
                                     : QJSValue(QJSValue::NullValue);
        const QJSValue result = function.call({given});
        if (result.isError() && engine)
            qmlWarning(engine) << result.toString();
    };
}

QString nameOf(CameraControl control) {
    const std::string_view key = keyOf(control);
    return QString::fromUtf8(key.data(), static_cast<qsizetype>(key.size()));
}

}  // namespace

bool DocumentScanner::showsPreview() const {
    return cameraArea(state_) == CameraArea::preview && !isReplacing_;
}

QColor DocumentScanner::bracketColor() const {
    return QColor::fromRgba(scanner::bracketColor(state_));
}

QColor DocumentScanner::captureDiscColor() const {
    return QColor::fromRgba(scanner::captureDiscColor(state_));
}

bool DocumentScanner::isCaptureAllowed() const {
    return scanner::isCaptureAllowed(state_);
}

DocumentScanner::Status DocumentScanner::status() const {
    return static_cast<Status>(spokenStatus(state_));
}

CaptureSessionHandle DocumentScanner::session() const {
    return manager_ ? CaptureSessionHandle{manager_->session()} : CaptureSessionHandle{};
}

QVariant DocumentScanner::zone() const {
    return zoneValue(manager_ ? manager_->zone().value() : LiveZone{});
}

QString DocumentScanner::cameraState() const {
    const auto key = keyOf(manager_ ? manager_->cameraStatus().value().state : CameraState::idle);
    return QString::fromUtf8(key.data(), static_cast<qsizetype>(key.size()));
}

QString DocumentScanner::cameraCause() const {
    return manager_ ? QString::fromStdString(manager_->cameraStatus().value().cause) : QString();
}

QVariantList DocumentScanner::controls() const {
    QVariantList all;
    if (!manager_)
        return all;
    for (const CameraControlStatus& status : manager_->controls().value())
        all << QVariantMap{{QStringLiteral("control"), nameOf(status.control)},
                           {QStringLiteral("value"), status.value},
                           {QStringLiteral("step"), status.step},
                           {QStringLiteral("hasAutomatic"), status.hasAutomatic},
                           {QStringLiteral("isAutomatic"), status.isAutomatic}};
    return all;
}

void DocumentScanner::setControl(const QString& name, const QVariant& value) {
    const bool isAutomatic =
        !value.isValid() || value.metaType() == QMetaType::fromType<std::nullptr_t>();
    bool isNumber = false;
    const double number = value.toDouble(&isNumber);
    if (!isAutomatic && !isNumber)
        return;
    for (const auto control : {CameraControl::torch, CameraControl::zoom, CameraControl::focus,
                               CameraControl::exposure}) {
        if (name == nameOf(control))
            setControl(control, isAutomatic ? std::nullopt : std::optional(number));
    }
}

void DocumentScanner::setControl(CameraControl control, std::optional<double> value) {
    if (manager_)
        manager_->setControl(control, value);
}

QString DocumentScanner::currentCamera() const {
    return manager_ ? QString::fromStdString(manager_->currentCamera().value()) : QString();
}

void DocumentScanner::switchCamera(const QString& name) {
    chosenCamera_ = name;
    if (manager_)
        manager_->switchCamera(name.toStdString());
}

void DocumentScanner::appear() {
    isShown_ = true;
    triesInVain_ = 0;
    autoCapture_.appear();
    watchApplication();
    if (!manager_)
        makeManager();
    const QPointer<DocumentScanner> self = this;
    // Held: an observer may release the screen.
    if (const auto manager = manager_)
        manager->checkAuthorization();
    // What did not change is not told again.
    if (self && isTriedAgain(problemState_))
        retryLater(retryDelay(triesInVain_));
}

void DocumentScanner::makeManager() {
    QQmlEngine* engine = qmlEngine(this);
    if (!engine)
        return;
    CameraServices services = screens::EngineContext::of(*engine).makeServices(
        {.camera = camera_,
         .readsZone = readsZone_,
         .watchesPage = watchesPage_,
         .limits = guidanceLimits(guidanceLimits_)});
    mainQueue_ = services.mainQueue;
    authorization_ = services.authorization;
    uptime_ = services.uptime;
    manager_ = CameraManager::create(std::move(services));
    if (!manager_)
        return followCamera({.state = CameraState::failed, .cause = {}});
    observe(manager_->isAuthorized());
    observe(manager_->isSessionReady());
    observe(manager_->isDocumentDetected());
    subscriptions_.push_back(
        manager_->page().didChange([this](const LivePage& page) { followPage(page); }));
    subscriptions_.push_back(manager_->cameraStatus().didChange(
        [this](const CameraStatus& status) { followCamera(status); }));
    observe(manager_->zone(), &DocumentScanner::zoneObserver_, &DocumentScanner::zoneChanged);
    observe(manager_->cameraStatus(), &DocumentScanner::cameraObserver_,
            &DocumentScanner::cameraStatusChanged);
    observe(manager_->controls(), &DocumentScanner::controlsObserver_,
            &DocumentScanner::controlsChanged);
    observeCameras();
    if (!chosenCamera_.isEmpty())
        manager_->switchCamera(chosenCamera_.toStdString());
    emit sessionChanged();
}

void DocumentScanner::observe(const Published<bool>& field) {
    subscriptions_.push_back(field.didChange([this](bool) { follow(); }));
}

template <typename Value>
void DocumentScanner::observe(const Published<Value>& field,
                              std::function<void(const Value&)> DocumentScanner::*observer,
                              void (DocumentScanner::*changed)()) {
    subscriptions_.push_back(field.didChange([this, observer](const Value& value) {
        // A copy: the observer may replace itself, or release the screen.
        if (const auto tell = this->*observer)
            tell(value);
    }));
    subscriptions_.push_back(
        field.didChange([this, changed](const Value&) { emit(this->*changed)(); }));
}

void DocumentScanner::observeCameras() {
    subscriptions_.push_back(
        manager_->cameras().didChange([this](const auto& cameras) { cameras_.follow(cameras); }));
    subscriptions_.push_back(
        manager_->cameras().didChange([this](const auto& cameras) { followCameraList(cameras); }));
    subscriptions_.push_back(manager_->cameras().didChange([this](const auto& cameras) {
        if (const auto tell = camerasObserver_)
            tell(cameras);
    }));
    subscriptions_.push_back(
        manager_->currentCamera().didChange([this](const auto&) { emit currentCameraChanged(); }));
}

void DocumentScanner::follow() {
    // The manager tells no readiness that is lost later.
    const bool works = !guides_ || problem_.isEmpty();
    state_ = {.isAuthorized = manager_->isAuthorized().value(),
              .isSessionReady = works && manager_->isSessionReady().value(),
              .isDocumentDetected = works && manager_->isDocumentDetected().value()};
    emit displayChanged();
    seeForAutoCapture();
}

void DocumentScanner::capture(const QVariant& completion) {
    if (!manager_ || !isCaptureAllowed())
        return;
    cancelAutoCapture();
    manager_->onPhotoCapture = photoCompletion(completion, qmlEngine(this));
    mainQueue_->asyncAfter(kCaptureDelay, [manager = manager_] { manager->capturePhoto(); });
}

void DocumentScanner::deliver(const QVariant& completion, const QVariant& photo) {
    const PhotoCompletion complete = photoCompletion(completion, qmlEngine(this));
    if (complete && photo.metaType() == QMetaType::fromType<Image>())
        complete(photo.value<Image>());
}

}  // namespace kestrelid::scanner
