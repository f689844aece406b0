#include <kestrelid/DefaultServices.h>

#include "base/AsioQueue.h"
#include "defaults/Resources.h"
#include "vision/outlines/NetworkRectangleService.h"
#include "vision/outlines/OpenCvRectangleService.h"
#include "vision/text/PpOcrTextService.h"

#include <algorithm>
#include <thread>

namespace kestrelid {

namespace {

vision::PpOcrOptions ppOcrOptions(const DefaultServicesOptions& options) {
    return {.resources = defaults::resourceFolders(options.resources),
            .threads = options.textThreads};
}

std::shared_ptr<vision::NetworkRectangleService>
makeNetworkRectangleService(const DefaultServicesOptions& options) {
    return std::make_shared<vision::NetworkRectangleService>(
        defaults::resourceFolders(options.resources),
        std::make_shared<vision::OpenCvRectangleService>(),
        options.outlines == OutlineFinder::network ? vision::OutlineMixture::never
                                                   : vision::OutlineMixture::doubtful);
}

std::shared_ptr<RectangleService> makeRectangleService(const DefaultServicesOptions& options) {
    if (options.outlines == OutlineFinder::classical)
        return std::make_shared<vision::OpenCvRectangleService>();
    return makeNetworkRectangleService(options);
}

}  // namespace

PlatformServices defaultServices(const DefaultServicesOptions& options) {
    // Two at least, so that one picture's outline is found while another's text is read.
    const int threads = static_cast<int>(std::max(2u, std::thread::hardware_concurrency()));
    return {.rectangles = makeRectangleService(options),
            .text = std::make_shared<vision::PpOcrTextService>(ppOcrOptions(options)),
            .queue = std::make_shared<base::AsioQueue>("kestrelid.user", threads)};
}

std::vector<ServiceStatus> diagnose(const DefaultServicesOptions& options) {
    std::vector<ServiceStatus> all = vision::PpOcrTextService(ppOcrOptions(options)).diagnose();
    all.push_back(makeNetworkRectangleService(options)->diagnose());
    return all;
}

}  // namespace kestrelid
