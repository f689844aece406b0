#include <kestrelid/CameraManager.h>

#include "camera/PageWatch.h"
#include "camera/Submit.h"
#include "camera/ZoneWatch.h"

#include <utility>

// What the frames say of the zone and of the page in view, beside the verdicts.
namespace kestrelid {

namespace {

using camera::submit;
using Seconds = std::chrono::duration<double>;

constexpr Seconds kSilence{2.0};

bool isKnown(const LiveZone& zone) {
    return zone.zone.has_value();
}

bool isKnown(const LivePage& page) {
    return page.outline || page.advice != Advice::none;
}

}  // namespace

void CameraManager::addWatches() {
    const auto weak = weak_from_this();
    if (services_.zones && !zoneWatch_)
        zoneWatch_ = std::make_shared<camera::ZoneWatch>(
            services_.zones, services_.zoneRules, services_.makeSerialQueue("zone.queue"),
            services_.uptime, [weak](const LiveZone& zone) {
                if (const auto self = weak.lock())
                    self->publishZoneLater(zone);
            });
    if (services_.outlines && !pageWatch_)
        pageWatch_ = std::make_shared<camera::PageWatch>(
            services_.outlines, services_.guidance, services_.makeSerialQueue("page.queue"),
            services_.uptime, [weak](const LivePage& page) {
                if (const auto self = weak.lock())
                    self->publishPageLater(page);
            });
}

Seconds CameraManager::timeOfFrame() {
    if (!zoneWatch_ && !pageWatch_)
        return {};
    const Seconds now = services_.uptime();
    if (session_->isRunning())
        lastFrameTime_ = now.count();
    return now;
}

void CameraManager::publishZoneLater(const LiveZone& zone) {
    submit(*services_.mainQueue, [weak = weak_from_this(), zone] {
        const auto self = weak.lock();
        if (!self)
            return;
        if (isKnown(zone))
            self->awaitSilence(kSilence);
        self->zone_.publish(zone);
    });
}

void CameraManager::publishPageLater(const LivePage& page) {
    submit(*services_.mainQueue, [weak = weak_from_this(), page] {
        const auto self = weak.lock();
        if (!self)
            return;
        if (isKnown(page))
            self->awaitSilence(kSilence);
        self->page_.publish(page);
    });
}

void CameraManager::awaitSilence(Seconds patience) {
    if (isSilenceAwaited_)
        return;
    services_.mainQueue->asyncAfter(patience, [weak = weak_from_this()] {
        const auto self = weak.lock();
        if (!self)
            return;
        self->isSilenceAwaited_ = false;
        base::runBlock("camera", [&] { self->forgetIfSilent(); });
    });
    isSilenceAwaited_ = true;
}

// A camera that was unplugged shows no frame in which the page is missing. A watch that knows
// something is there: it was made before.
void CameraManager::forgetIfSilent() {
    const bool knowsZone = isKnown(zone_.value());
    const bool knowsPage = isKnown(page_.value());
    if (!knowsZone && !knowsPage)
        return;
    const Seconds silence = services_.uptime() - Seconds(lastFrameTime_);
    if (silence < kSilence)
        return awaitSilence(kSilence - silence);
    if (knowsZone)
        zoneWatch_->forget();
    if (knowsPage)
        pageWatch_->forget();
}

void CameraManager::forgetPageIfLost() {
    if (isKnown(page_.value()) && !session_->isRunning())
        pageWatch_->forget();
}

}  // namespace kestrelid
