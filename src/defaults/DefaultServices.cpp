#include <kestrelid/DefaultServices.h>

#include "base/AsioQueue.h"
#include "defaults/Resources.h"
#include "vision/outlines/NetworkRectangleService.h"
#include "vision/text/NetworkTextService.h"
#include "vision/zone/NetworkZoneService.h"

#include <algorithm>
#include <list>
#include <mutex>
#include <new>
#include <thread>

namespace kestrelid {

namespace {

std::shared_ptr<vision::NetworkRectangleService>
makeRectangleService(const DefaultServicesOptions& options) {
    return std::make_shared<vision::NetworkRectangleService>(
        defaults::resourceFolders(options.resources), options.textThreads);
}

std::shared_ptr<vision::NetworkTextService> makeTextService(const DefaultServicesOptions& options) {
    return std::make_shared<vision::NetworkTextService>(
        defaults::resourceFolders(options.resources), options.textThreads);
}

std::shared_ptr<vision::NetworkZoneService> makeZoneService(const DefaultServicesOptions& options) {
    return std::make_shared<vision::NetworkZoneService>(
        defaults::resourceFolders(options.resources), options.textThreads);
}

// The services of one set of options, as long as somebody owns them.
struct SharedServices {
    DefaultServicesOptions options;
    std::weak_ptr<RectangleService> rectangles;
    std::weak_ptr<TextService> text;
    std::weak_ptr<DispatchQueue> queue;
    std::weak_ptr<ZoneService> zones;
};

template <typename Service>
std::shared_ptr<Service> owned(std::weak_ptr<Service>& shared, const auto& make) {
    std::shared_ptr<Service> service = shared.lock();
    if (!service)
        shared = service = make();
    return service;
}

std::shared_ptr<DispatchQueue> makeQueue() {
    // Two at least, so that one picture's outline is found while another's text is read.
    const int threads = static_cast<int>(std::max(2u, std::thread::hardware_concurrency()));
    return std::make_shared<base::AsioQueue>("kestrelid.user", threads);
}

PlatformServices sharedServices(const DefaultServicesOptions& options) {
    static std::mutex mutex;
    // Never destroyed: a worker may make a detector while the process ends.
    static auto& all = *new std::list<SharedServices>;
    const std::lock_guard lock(mutex);
    std::erase_if(all, [](const SharedServices& services) {
        return services.rectangles.expired() && services.text.expired() &&
               services.queue.expired() && services.zones.expired();
    });
    auto found = std::ranges::find(all, options, &SharedServices::options);
    if (found == all.end())
        found =
            all.insert(all.end(), {.options = options, .rectangles{}, .text{}, .queue{}, .zones{}});
    return {
        .rectangles = owned(found->rectangles, [&] { return makeRectangleService(options); }),
        .text = owned(found->text, [&] { return makeTextService(options); }),
        .queue = owned(found->queue, makeQueue),
        .zones = owned(found->zones, [&] { return makeZoneService(options); }),
    };
}

}  // namespace

PlatformServices defaultServices(const DefaultServicesOptions& options) {
    try {
        return sharedServices(options);
    } catch (const std::bad_alloc&) {
        return {};
    }
}

std::vector<ServiceStatus> diagnose(const DefaultServicesOptions& options) {
    std::vector<ServiceStatus> all = makeTextService(options)->diagnose();
    all.push_back(makeRectangleService(options)->diagnose());
    all.push_back(makeZoneService(options)->diagnose());
    return all;
}

}  // namespace kestrelid
