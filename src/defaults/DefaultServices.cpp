#include <kestrelid/DefaultServices.h>

#include "base/AsioQueue.h"
#include "defaults/Resources.h"
#include "vision/outlines/NetworkRectangleService.h"
#include "vision/outlines/OpenCvRectangleService.h"
#include "vision/tesseract/TesseractTextService.h"
#include "vision/text/PpOcrTextService.h"

#include <algorithm>
#include <iterator>
#include <thread>

namespace kestrelid {

namespace {

PpOcrOptions ppOcrOptions(const DefaultServicesOptions& options) {
    return {.resources = resourceFolders(options.resources), .threads = options.textThreads};
}

std::shared_ptr<TextService> makeTextService(const DefaultServicesOptions& options) {
    if (options.recognizer == Recognizer::tesseract)
        return std::make_shared<TesseractTextService>();
    return std::make_shared<PpOcrTextService>(ppOcrOptions(options));
}

std::shared_ptr<NetworkRectangleService>
makeNetworkRectangleService(const DefaultServicesOptions& options) {
    return std::make_shared<NetworkRectangleService>(
        resourceFolders(options.resources), std::make_shared<OpenCvRectangleService>(),
        options.outlines == OutlineFinder::network ? OutlineMixture::never
                                                   : OutlineMixture::doubtful);
}

std::shared_ptr<RectangleService> makeRectangleService(const DefaultServicesOptions& options) {
    if (options.outlines == OutlineFinder::classical)
        return std::make_shared<OpenCvRectangleService>();
    return makeNetworkRectangleService(options);
}

}  // namespace

PlatformServices defaultServices(const DefaultServicesOptions& options) {
    // Two at least, so that one picture's outline is found while another's text is read.
    const int threads = static_cast<int>(std::max(2u, std::thread::hardware_concurrency()));
    return {.rectangles = makeRectangleService(options),
            .text = makeTextService(options),
            .queue = std::make_shared<AsioQueue>("kestrelid.user", threads)};
}

std::vector<ServiceStatus> diagnose(const DefaultServicesOptions& options) {
    std::vector<ServiceStatus> all = PpOcrTextService(ppOcrOptions(options)).diagnose();
    std::vector<ServiceStatus> tesseract = TesseractTextService().diagnose();
    std::move(tesseract.begin(), tesseract.end(), std::back_inserter(all));
    all.push_back(makeNetworkRectangleService(options)->diagnose());
    return all;
}

std::shared_ptr<PassportDetector> PassportDetector::create() {
    return create(defaultServices());
}

}  // namespace kestrelid
