#include "vision/text/NetworkTextService.h"

#include "vision/ReducedPicture.h"
#include "vision/text/LineCollector.h"
#include "vision/text/PageReader.h"

#include <algorithm>
#include <exception>
#include <string>
#include <utility>

namespace kestrelid::vision {
namespace {

// Longest side that is enough to read from. Lines of a page that fills it are 40 pixels high, near
// the 48 that are read.
constexpr int kPictureSide = 1800;
// Longest sides that the detector sees. 736 loses small print on pages with much around them; 960
// takes a tenth more time for few more lines.
constexpr int kAccurateSide = 832;
constexpr int kFastSide = 544;
constexpr int kSmallestSide = 8;  // pixels; no line of text is lower

}  // namespace

NetworkTextService::NetworkTextService(std::vector<std::filesystem::path> resources, int threads)
    : resources_(std::move(resources)), threads_(std::max(threads, 1)) {}

NetworkTextService::~NetworkTextService() = default;

Expected<std::shared_ptr<const TextModels>> NetworkTextService::models() {
    const std::scoped_lock lock(loading_);
    if (!models_) {
        auto loaded = TextModels::load(resources_, threads_);
        if (!loaded)
            return loaded;
        models_ = *std::move(loaded);
    }
    return models_;
}

TextResult NetworkTextService::perform(const Bitmap& bitmap, const TextRequest& request) {
    struct Page {
        explicit Page(std::atomic<int>& of) : underWay(of) { ++underWay; }
        Page(const Page&) = delete;
        Page& operator=(const Page&) = delete;
        ~Page() { --underWay; }
        std::atomic<int>& underWay;
    };
    const Page page(pagesUnderWay_);
    try {
        const auto& languages = request.recognitionLanguages;
        if (std::ranges::find(languages, "en") == languages.end())
            return RequestError{"this text recogniser reads English only: ask for \"en\""};
        const auto loaded = models();
        if (!loaded)
            return loaded.error();
        LineCollector lines(request.isEnough);
        if (std::min(bitmap.width(), bitmap.height()) >= kSmallestSide) {
            PageReaderSettings settings;
            settings.detectorSide =
                request.recognitionLevel == RecognitionLevel::fast ? kFastSide : kAccurateSide;
            settings.threads = threads_;
            settings.mayStopEarly = static_cast<bool>(request.isEnough);
            if (const auto error =
                    readPage(**loaded, reducedPicture(bitmap, kPictureSide), settings, lines))
                return *error;
        }
        return lines.observations();
    } catch (const std::exception& failure) {
        return requestFailed("text recognition failed", failure.what());
    }
}

std::vector<ServiceStatus> NetworkTextService::diagnose() const {
    return TextModels::diagnose(resources_);
}

}  // namespace kestrelid::vision
