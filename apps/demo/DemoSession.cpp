#include "apps/demo/DemoSession.h"

#include <kestrelid/DefaultCamera.h>
#include <kestrelid/screens/MainQueue.h>

#include <algorithm>
#include <array>
#include <QCoreApplication>
#include <QFileInfo>
#include <QPointer>
#include <utility>

namespace kestrelid::demo {

namespace {

QString drawnPassport() {
    const QFileInfo file(QCoreApplication::applicationDirPath() + "/" KESTRELID_DEMO_DATA
                                                                  "/bangladesh-spread.jpg");
    return file.isFile() ? file.canonicalFilePath() : QString();
}

bool hasUsableCamera() {
    return std::ranges::any_of(
        cameras(), [](const CameraDescription& camera) { return camera.obstacle.empty(); });
}

QUrl urlOf(const QString& file) {
    return file.isEmpty() ? QUrl() : QUrl::fromLocalFile(QFileInfo(file).absoluteFilePath());
}

// What a page is called in the window's title.
constexpr auto kPages = std::to_array<std::pair<const char*, const char*>>(
    {{"scanning", QT_TRANSLATE_NOOP("kestrelid::demo::DemoSession", "scanning")},
     {"preview", QT_TRANSLATE_NOOP("kestrelid::demo::DemoSession", "preview")},
     {"judging", QT_TRANSLATE_NOOP("kestrelid::demo::DemoSession", "judging")},
     {"result", QT_TRANSLATE_NOOP("kestrelid::demo::DemoSession", "result")},
     {"failed", QT_TRANSLATE_NOOP("kestrelid::demo::DemoSession", "failed")}});

}  // namespace

DemoSession::DemoSession(const DemoOptions& options,
                         const std::shared_ptr<DispatchQueue>& background)
    : camera_(options.camera), picture_(urlOf(options.picture)), textScale_(options.textScale),
      isReady_(!options.camera.isEmpty()) {
    if (isReady_)
        return;
    background->async([mainQueue = makeQtMainQueue(), self = QPointer<DemoSession>(this)] {
        const bool hasCamera = hasUsableCamera();
        mainQueue->async([self, hasCamera] {
            if (self)
                self->begin(hasCamera);
        });
    });
}

void DemoSession::begin(bool hasCamera) {
    if (!hasCamera)
        camera_ = drawnPassport();
    isDrawn_ = !camera_.isEmpty();
    isReady_ = true;
    emit changed();
    emit ready();
}

QString DemoSession::title() const {
    const auto page = std::ranges::find(kPages, page_, [](const auto& row) { return row.first; });
    return tr("Kestrelid demo: %1").arg(page == kPages.end() ? QString() : tr(page->second));
}

QString DemoSession::notice() const {
    if (isThanking_)
        return tr("Thank you. The next passport can be scanned.");
    return isDrawn_ ? tr("No camera was found: this is a drawn passport. You can drop a picture "
                         "here instead.")
                    : QString();
}

void DemoSession::setPage(const QString& page) {
    if (page_ == page)
        return;
    page_ = page;
    if (page != QLatin1String("scanning"))
        isThanking_ = false;
    emit changed();
}

void DemoSession::thank() {
    isThanking_ = true;
    emit changed();
}

}  // namespace kestrelid::demo
