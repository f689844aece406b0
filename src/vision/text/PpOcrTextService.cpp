#include "vision/text/PpOcrTextService.h"

#include "vision/text/LineCollector.h"
#include "vision/text/PageReader.h"
#include "vision/text/ReducedPicture.h"

#include <algorithm>
#include <exception>
#include <string>
#include <utility>

namespace kestrelid::vision {
namespace {

// Longest side read from. Lines of a page that fills it are 40 pixels high, near the 48 that are
// read.
constexpr int kPictureSide = 1800;
// Longest sides that the detector sees. 736 loses small print on pages cut out loosely; 960 takes a
// tenth more time for few more lines.
constexpr int kAccurateSide = 832;
constexpr int kFastSide = 544;
constexpr int kSmallestSide = 8;  // pixels; no line of text is lower

}  // namespace

PpOcrTextService::PpOcrTextService(PpOcrOptions options)
    : resources_(std::move(options.resources)), threads_(std::max(options.threads, 1)) {}

PpOcrTextService::~PpOcrTextService() = default;

PpOcrTextService::Models PpOcrTextService::models() {
    const std::scoped_lock lock(loading_);
    if (!models_) {
        auto loaded = PpOcrModels::load(resources_, threads_);
        if (const auto* error = std::get_if<RequestError>(&loaded))
            return *error;
        models_ = std::get<std::shared_ptr<const PpOcrModels>>(std::move(loaded));
    }
    return models_;
}

std::optional<RequestError> PpOcrTextService::perform(const Bitmap& bitmap,
                                                      const TextRequest& request,
                                                      const RequestCompletion& completion) {
    RequestReport report;
    try {
        const auto& languages = request.recognitionLanguages;
        if (std::ranges::find(languages, "en") == languages.end())
            return RequestError{"this text recogniser reads English only: ask for \"en\""};
        const auto loaded = models();
        if (const auto* error = std::get_if<RequestError>(&loaded))
            return *error;
        LineCollector lines(request.isEnough);
        if (std::min(bitmap.width(), bitmap.height()) >= kSmallestSide) {
            PageReaderSettings settings;
            settings.detectorSide =
                request.recognitionLevel == RecognitionLevel::fast ? kFastSide : kAccurateSide;
            settings.threads = threads_;
            settings.mayStopEarly = static_cast<bool>(request.isEnough);
            const auto& models = *std::get<std::shared_ptr<const PpOcrModels>>(loaded);
            if (auto error =
                    readPage(models, reducedPicture(bitmap, kPictureSide), settings, lines))
                return error;
        }
        report.results = lines.observations();
    } catch (const std::exception& failure) {
        return RequestError{std::string("text recognition failed: ") + failure.what()};
    }
    if (completion)
        completion(report);
    return std::nullopt;
}

std::vector<ServiceStatus> PpOcrTextService::diagnose() const {
    return PpOcrModels::diagnose(resources_);
}

}  // namespace kestrelid::vision
