#include "apps/cli/WatchCommand.h"

#include "apps/cli/CameraList.h"
#include "apps/cli/CameraWatch.h"
#include "apps/cli/EndOfWatch.h"
#include "apps/cli/StandardStreams.h"
#include "apps/cli/WatchLog.h"

#include <kestrelid/DefaultCamera.h>

#include <chrono>
#include <future>
#include <memory>
#include <string_view>
#include <utility>

namespace kestrelid::cli {
namespace {

void write(const WatchEvent& event, bool json) {
    const WallTime now = std::chrono::system_clock::now();
    writeOutput(json ? eventAsJson(now, event) : eventAsText(now, event));
    if (const auto* failed = std::get_if<WatchFailed>(&event))
        writeError(failed->cause);
}

CameraOptions cameraOf(const WatchOptions& options) {
    CameraOptions camera;
    camera.camera = options.camera;
    return camera;
}

ExitStatus listCameras(const WatchOptions& options) {
    const auto found = cameras(cameraOf(options));
    writeOutput(options.json ? camerasAsJson(found) : camerasAsText(found));
    return outputStatus();
}

// The diagnosis knows which group or setting it takes.
std::string whyDenied() {
    for (const ServiceStatus& part : diagnoseCamera()) {
        if (!part.available && part.name.find("permission") != std::string::npos)
            return "the camera may not be used: " + part.details;
    }
    return "the camera may not be used: permission was refused";
}

WatchPlan planOf(const WatchOptions& options) {
    WatchPlan plan{.camera = options.camera,
                   .seconds = options.seconds,
                   .photo = {},
                   .photoAfter = options.after};
    if (!options.photo.empty())
        plan.photo = PhotoFile{.path = options.photo, .mayReplace = options.force};
    return plan;
}

double secondsSinceBoot() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

// Waits for the blocks that a serial queue has so far.
void drain(DispatchQueue& queue) {
    std::promise<void> drained;
    queue.async([&] { drained.set_value(); });
    drained.get_future().wait();
}

ExitStatus watchCamera(const WatchOptions& options) {
    EndOfWatch end;
    const auto queue = makeSerialQueue("main");
    WatchCallbacks callbacks{
        .tell =
            [&end, json = options.json](const WatchEvent& event) {
                write(event, json);
                if (outputFailed())
                    end.announce(ExitStatus::inputFailed);
            },
        .onEnd = [&end](ExitStatus status) { end.announce(status); },
        .elapsed = secondsSinceBoot,
        .whyDenied = whyDenied,
        .whyNoCamera = [&options] { return whyNoCamera(options.camera, cameras()); }};
    auto watch = std::make_shared<CameraWatch>(planOf(options), std::move(callbacks));

    PlatformServices recognition = defaultServices({.resources = options.resources});
    recognition.console = [queue, weak = std::weak_ptr(watch)](std::string_view line) {
        queue->async([weak, cause = std::string(line)] {
            if (const auto self = weak.lock())
                self->fail(cause);
        });
    };
    queue->async([&] {
        CameraServices services = defaultCameraServices(queue, cameraOf(options), recognition);
        if (options.zone)
            services.zones = recognition.zones;
        services.zoneRules.asOf = options.asOf;
        watch->start(std::move(services));
    });
    const ExitStatus status = end.wait();
    // Released on its queue, so that no block of it runs once `end` is gone.
    queue->async([&] {
        watch->stop();
        watch.reset();
    });
    drain(*queue);
    return graver(status, outputStatus());
}

}  // namespace

ExitStatus watch(const WatchOptions& options) {
    if (options.list)
        return listCameras(options);
    const WatchPlan plan = planOf(options);
    if (plan.photo) {
        if (const auto cause = photoObstacle(*plan.photo)) {
            write(WatchFailed{options.photo.native() + ": " + *cause}, options.json);
            return ExitStatus::inputFailed;
        }
    }
    return watchCamera(options);
}

}  // namespace kestrelid::cli
