// What DocumentScanner does for a screen that helps: advice, photos without a tap, and a camera
// that does not work.
#include "scanner/CameraRetry.h"
#include "scanner/DocumentScanner.h"
#include "screens/EngineContext.h"

#include <algorithm>
#include <QFileInfo>
#include <QGuiApplication>
#include <QPointer>
#include <QQmlEngine>
#include <string_view>

namespace kestrelid::scanner {

namespace {

QString text(std::string_view utf8) {
    return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

QStringList sorted(QStringList names) {
    names.sort();
    return names;
}

// A camera's name may hold a slash; there is no such file then, and no such camera either.
bool isPath(const QString& camera) {
    return camera.contains(QLatin1Char('/'));
}

QString problemOf(CameraState state, const QString& asked) {
    if (!isProblem(state))
        return {};
    if (isPath(asked)) {
        const bool isThere = QFileInfo(asked).isFile();
        if (!isThere && (state == CameraState::absent || state == CameraState::denied))
            return QStringLiteral("noFile");
        if (isThere && state == CameraState::failed)
            return QStringLiteral("badFile");
    }
    return text(keyOf(state));
}

}  // namespace

QString DocumentScanner::advice() const {
    return text(keyOf(manager_ ? manager_->page().value().advice : Advice::none));
}

QVariantList DocumentScanner::pageOutline() const {
    QVariantList points;
    if (manager_ && manager_->page().value().outline && corners_) {
        for (const QPointF& corner : *corners_)
            points << corner;
    }
    return points;
}

bool DocumentScanner::isPageSteady() const {
    return manager_ && manager_->page().value().isSteady;
}

void DocumentScanner::followPage(const LivePage& page) {
    if (page.outline) {
        const OutlineCorners now = cornersOf(*page.outline);
        corners_ = corners_ ? turnedTowards(*corners_, now) : now;
    }
    emit pageChanged();
    seeForAutoCapture();
}

void DocumentScanner::seeForAutoCapture() {
    if (!capturesByItself_ || !manager_)
        return;
    const LivePage& page = manager_->page().value();
    const AutoCapture::View view{.isReady =
                                     state_.isSessionReady &&
                                     manager_->cameraStatus().value().state == CameraState::live,
                                 .isPassportInView = state_.isDocumentDetected,
                                 .hasPage = page.outline.has_value(),
                                 .isSteady = page.isSteady};
    const AutoCapture::Time now =
        uptime_ ? uptime_() : std::chrono::steady_clock::now().time_since_epoch();
    const double before = autoCapture_.progress();
    const bool isDue = autoCapture_.see(view, now);
    if (autoCapture_.progress() != before)
        emit captureProgressChanged();
    if (isDue)
        emit captureDue();
}

void DocumentScanner::cancelAutoCapture() {
    autoCapture_.spend();
    emit captureProgressChanged();
}

QString DocumentScanner::askedCamera() const {
    QQmlEngine* engine = qmlEngine(this);
    return engine ? screens::EngineContext::of(*engine).cameraFor(camera_) : camera_;
}

bool DocumentScanner::asksAgain() const {
    return problemState_ == CameraState::denied && authorization_ &&
           authorization_->status() == AuthorizationStatus::notDetermined;
}

QStringList DocumentScanner::usableCameras() const {
    return listedCameras_.value_or(QStringList());
}

void DocumentScanner::followCamera(const CameraStatus& status) {
    if (status.state == CameraState::live || isProblem(status.state))
        setProblem(status);
    if (isTriedAgain(status.state))
        retryLater(retryDelay(triesInVain_));
    else
        ++retryPlan_;
    if (status.state == CameraState::live)
        triesInVain_ = 0;
}

void DocumentScanner::setProblem(const CameraStatus& status) {
    const QString problem = problemOf(status.state, askedCamera());
    const QString cause = QString::fromStdString(status.cause);
    const bool isNews = problem != problem_ || cause != problemCause_;
    problemState_ = problem.isEmpty() ? CameraState::idle : status.state;
    problem_ = problem;
    problemCause_ = cause;
    // What a denial would take to be lifted may have changed.
    if (isNews || status.state == CameraState::denied)
        emit problemChanged();
    if (isNews && guides_ && manager_)
        follow();
}

void DocumentScanner::followCameraList(const std::vector<CameraDescription>& cameras) {
    QStringList usable;
    for (const CameraDescription& camera : cameras) {
        if (camera.isPresent && camera.obstacle.empty())
            usable << QString::fromStdString(camera.name);
    }
    // The first list, and that of another manager, are no news.
    const bool isNews = listedCameras_ && sorted(*listedCameras_) != sorted(usable);
    listedCameras_ = usable;
    emit usableCamerasChanged();
    if (isNews && isTriedAgain(problemState_))
        retryLater({});
}

void DocumentScanner::setShown(bool isShown) {
    if (isShown == isShown_)
        return;
    isShown_ = isShown;
    ++retryPlan_;
    emit shownChanged();
}

// A person who comes back may have closed the other program, or allowed the camera.
void DocumentScanner::watchApplication() {
    auto* application = qobject_cast<QGuiApplication*>(QCoreApplication::instance());
    if (!guides_ || application_ || !application)
        return;
    application_ = connect(application, &QGuiApplication::applicationStateChanged, this,
                           [this](Qt::ApplicationState state) {
                               if (state != Qt::ApplicationActive)
                                   return;
                               // A permission that would have to be asked for is left to a tap: the
                               // question takes the focus, and would come again and again.
                               const bool isAllowed =
                                   problemState_ == CameraState::denied && authorization_ &&
                                   authorization_->status() == AuthorizationStatus::authorized;
                               if (isAllowed || isTriedAgain(problemState_))
                                   retryLater({});
                           });
}

void DocumentScanner::retryLater(std::chrono::duration<double> delay) {
    if (!guides_ || !isShown_ || !mainQueue_)
        return;
    mainQueue_->asyncAfter(delay, [self = QPointer(this), plan = ++retryPlan_] {
        if (self)
            self->retryBecauseOf(plan);
    });
}

void DocumentScanner::retryBecauseOf(std::uint64_t plan) {
    if (plan != retryPlan_)
        return;
    ++triesInVain_;
    retry();
}

void DocumentScanner::retry() {
    if (!manager_ && problemState_ == CameraState::idle)
        return;  // it never appeared
    const bool hadZone = manager_ && manager_->zone().value().zone;
    ++retryPlan_;
    subscriptions_.clear();
    manager_.reset();
    state_ = {.isAuthorized = state_.isAuthorized};
    isReplacing_ = true;
    emit displayChanged();
    makeManager();
    isReplacing_ = false;
    emit displayChanged();
    emit cameraStatusChanged();
    emit controlsChanged();
    emit pageChanged();
    if (hadZone)
        emit zoneChanged();
    if (const auto manager = manager_)
        manager->checkAuthorization();
}

}  // namespace kestrelid::scanner
