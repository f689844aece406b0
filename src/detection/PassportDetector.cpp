#include <kestrelid/detection/PassportDetector.h>

#include "detection/KeywordTable.h"
#include "detection/MrzLikeLines.h"
#include "detection/NormalizedText.h"
#include "detection/PassportKeywords.h"
#include "detection/RectangleStage.h"
#include "detection/Scoring.h"
#include "detection/TextStage.h"
#include "detection/VerdictNumbers.h"

#include <cstdio>
#include <utility>

namespace kestrelid {

namespace {

void printToStandardOutput(std::string_view line) {
    const std::string whole = std::string(line) + "\n";
    std::fwrite(whole.data(), 1, whole.size(), stdout);
    std::fflush(stdout);
}

PlatformServices withConsole(PlatformServices services) {
    if (!services.console)
        services.console = printToStandardOutput;
    return services;
}

}  // namespace

PassportValidationResult::PassportValidationResult(bool isPassport, double confidence,
                                                   std::vector<std::string> reasons,
                                                   std::string recognizedText)
    : isPassport_(isPassport), confidence_(confidence), reasons_(std::move(reasons)),
      recognizedText_(std::move(recognizedText)) {}

// One validation. It owns neither the detector nor the queue: their last owner would then be a
// worker of that queue, whose threads nobody could wait for when the process ends.
struct PassportDetector::Call {
    std::weak_ptr<const PassportDetector> detector;
    std::weak_ptr<DispatchQueue> queue;
    std::shared_ptr<TextService> text;
    detection::ConsoleSink console;
    ValidationEffort effort;
    Bitmap bitmap;
    Completion completion;
};

PassportDetector::PassportDetector(PlatformServices services, ValidationEffort effort)
    : keywords_(detection::passportKeywords()),
      keywordMatchThreshold_(detection::kKeywordMatchThreshold),
      singleKeywordFuzzyThreshold_(detection::kSingleKeywordFuzzyThreshold),
      rectangleAreaThreshold_(detection::kRectangleAreaThreshold),
      mrzConfidenceWeight_(detection::kMrzConfidenceWeight),
      keywordConfidenceWeight_(detection::kKeywordConfidenceWeight),
      rectConfidenceWeight_(detection::kRectConfidenceWeight),
      services_(withConsole(std::move(services))), effort_(effort) {}

PassportDetector::~PassportDetector() = default;

std::shared_ptr<PassportDetector> PassportDetector::create(PlatformServices services,
                                                           ValidationEffort effort) {
    if (!services.rectangles || !services.text || !services.queue)
        return nullptr;
    return std::shared_ptr<PassportDetector>(new PassportDetector(std::move(services), effort));
}

PassportValidationResult PassportDetector::makeResult(bool isPassport, double confidence,
                                                      std::vector<std::string> reasons,
                                                      std::string recognizedText) {
    return {isPassport, confidence, std::move(reasons), std::move(recognizedText)};
}

void PassportDetector::validate(const Image& image, Completion completion) {
    if (!completion)
        completion = [](const PassportValidationResult&) {};
    if (!image.bitmap()) {
        completion(makeResult(false, 0.0, {"Invalid image"}, ""));
        return;
    }
    const auto call = std::make_shared<const Call>(Call{weak_from_this(), services_.queue,
                                                        services_.text, services_.console, effort_,
                                                        *image.bitmap(), std::move(completion)});
    services_.queue->async([call, rectangles = services_.rectangles] {
        const auto rectangle = detection::findRectangle(*rectangles, call->console, call->bitmap);
        if (!call->detector.expired())
            readText(call, rectangle);
    });
}

void PassportDetector::readText(const std::shared_ptr<const Call>& call,
                                const std::optional<RectangleObservation>& rectangle) {
    const auto read = [call, evidence = detection::evaluateRectangle(rectangle, call->bitmap)] {
        std::string recognizedText =
            detection::readText(*call->text, call->console, evidence.textBitmap,
                                call->effort == ValidationEffort::verdictOnly);
        const std::string cleaned = detection::normalize(recognizedText);
        detection::Score score = detection::combine(
            evidence.score, evidence.reason, detection::KeywordTable::passport().matches(cleaned),
            detection::detectMRZLikeLines(cleaned));
        call->completion(makeResult(score.isPassport, score.confidence, std::move(score.reasons),
                                    std::move(recognizedText)));
    };
    if (const auto queue = call->queue.lock())
        queue->async(read);
    else
        read();  // the queue is ending, and waits for its blocks
}

}  // namespace kestrelid
