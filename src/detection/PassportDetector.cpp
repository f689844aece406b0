#include <kestrelid/detection/PassportDetector.h>

#include "base/ExitGate.h"
#include "detection/Console.h"
#include "detection/Findings.h"
#include "detection/KeywordTable.h"
#include "detection/MrzLikeLines.h"
#include "detection/NormalizedText.h"
#include "detection/PassportKeywords.h"
#include "detection/RectangleStage.h"
#include "detection/Scoring.h"
#include "detection/TextStage.h"
#include "detection/VerdictNumbers.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <new>
#include <optional>
#include <utility>

namespace kestrelid {

PassportValidationResult::PassportValidationResult(bool isPassport, double confidence,
                                                   std::vector<std::string> reasons,
                                                   std::string recognizedText)
    : isPassport_(isPassport), confidence_(confidence), reasons_(std::move(reasons)),
      recognizedText_(std::move(recognizedText)) {}

// One validation, which goes from block to block. It holds the detector weakly, since a released
// detector owes no answer, and the queue too, since a queue that never runs its blocks would hold
// itself.
struct [[gnu::visibility("hidden")]] PassportDetector::Call {
    std::weak_ptr<const PassportDetector> detector;
    std::weak_ptr<DispatchQueue> queue;
    std::shared_ptr<RectangleService> rectangles;
    std::shared_ptr<TextService> text;
    std::shared_ptr<const detection::Console> console;
    ValidationEffort effort;
    Bitmap bitmap;
    detection::RectangleEvidence outline;  // none until one is found
    Completion completion;

    // The two blocks. What is thrown inside counts as a failure of the request. They let go of the
    // call, which may be the last owner of the services, before a process that ends may go on.
    static void findOutline(std::shared_ptr<Call> given) noexcept;
    static void readText(std::shared_ptr<Call> given) noexcept;

    static void readTextLater(const std::shared_ptr<Call>& call) noexcept;

    [[nodiscard]] PassportValidationResult verdict(std::string recognizedText) const;
    // What make() gives; if it throws, for want of memory, the poorest of verdicts.
    static PassportValidationResult orNothing(const detection::Console& console,
                                              const auto& make) noexcept;
    static void answer(const Completion& completion, const PassportValidationResult& result,
                       const detection::Console& console) noexcept;
};

PassportDetector::PassportDetector(PlatformServices services, ValidationEffort effort)
    : keywords_(detection::passportKeywords()),
      keywordMatchThreshold_(detection::kKeywordMatchThreshold),
      singleKeywordFuzzyThreshold_(detection::kSingleKeywordFuzzyThreshold),
      rectangleAreaThreshold_(detection::kRectangleAreaThreshold),
      mrzConfidenceWeight_(detection::kMrzConfidenceWeight),
      keywordConfidenceWeight_(detection::kKeywordConfidenceWeight),
      rectConfidenceWeight_(detection::kRectConfidenceWeight), services_(std::move(services)),
      effort_(effort), console_(std::make_shared<const detection::Console>(services_.console)) {}

PassportDetector::~PassportDetector() = default;

std::shared_ptr<PassportDetector> PassportDetector::create(PlatformServices services,
                                                           ValidationEffort effort) {
    if (!services.rectangles || !services.text || !services.queue)
        return nullptr;
    try {
        return std::shared_ptr<PassportDetector>(new PassportDetector(std::move(services), effort));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

PassportValidationResult PassportDetector::makeResult(bool isPassport, double confidence,
                                                      std::vector<std::string> reasons,
                                                      std::string recognizedText) {
    return {isPassport, confidence, std::move(reasons), std::move(recognizedText)};
}

void PassportDetector::validate(const Image& image, Completion completion) {
    if (!completion)
        completion = [](const PassportValidationResult&) {};
    if (!image.bitmap())
        return Call::answer(
            completion,
            Call::orNothing(*console_,
                            [] { return makeResult(false, 0.0, {"Invalid image"}, ""); }),
            *console_);
    std::shared_ptr<Call> call;
    try {
        call = std::make_shared<Call>(
            Call{.detector = weak_from_this(),
                 .queue = services_.queue,
                 .rectangles = services_.rectangles,
                 .text = services_.text,
                 .console = console_,
                 .effort = effort_,
                 .bitmap = *image.bitmap(),
                 .outline = detection::evaluateRectangle(std::nullopt, *image.bitmap()),
                 .completion = {}});
        call->completion = completion;
        services_.queue->async([call]() mutable { Call::findOutline(std::move(call)); });
    } catch (...) {
        console_->tellCaught(detection::kRectangleRequestFailed);
        // No block will ever run: there is only this thread to answer on.
        Call::answer(completion,
                     Call::orNothing(*console_,
                                     [&call] {
                                         if (!call)
                                             throw std::bad_alloc();
                                         return call->verdict({});
                                     }),
                     *console_);
    }
}

namespace {

// What judge() waits for.
struct Waiting {
    std::mutex mutex;
    std::condition_variable changed;
    std::optional<PassportValidationResult> result;
    bool isOver = false;  // also without a result
};

// Owned by the completion alone, so that one that is destroyed without a call is noticed. (A
// std::promise would ask for memory then.)
struct Answer {
    explicit Answer(std::shared_ptr<Waiting> owner) : waiting(std::move(owner)) {}
    Answer(const Answer&) = delete;
    Answer& operator=(const Answer&) = delete;
    ~Answer() { end(); }

    void set(const PassportValidationResult& result) const {
        {
            const std::lock_guard lock(waiting->mutex);
            if (!waiting->isOver)
                waiting->result = result;
        }
        end();
    }
    void end() const {
        const std::lock_guard lock(waiting->mutex);
        waiting->isOver = true;
        waiting->changed.notify_all();
    }

    const std::shared_ptr<Waiting> waiting;
};

}  // namespace

Judgement PassportDetector::judge(const Image& image, std::chrono::duration<double> timeout) {
    using Seconds = std::chrono::duration<double>;
    constexpr Seconds kLongest{1e8};  // every clock can count as far
    const Seconds patience = timeout > Seconds::zero() ? std::min(timeout, kLongest) : Seconds();
    using Reason = NoVerdict::Reason;
    try {
        const auto waiting = std::make_shared<Waiting>();
        validate(image, [answer = std::make_shared<Answer>(waiting)](
                            const PassportValidationResult& result) { answer->set(result); });
        std::unique_lock lock(waiting->mutex);
        if (!waiting->changed.wait_for(lock, patience, [&] { return waiting->isOver; }))
            return NoVerdict{Reason::timedOut, "no verdict came in time"};
        if (waiting->result)
            return *waiting->result;
        return NoVerdict{Reason::abandoned, "the detector gave the picture up"};
    } catch (...) {
        return NoVerdict{Reason::failed, "not enough memory to wait for the verdict"};
    }
}

void PassportDetector::Call::findOutline(std::shared_ptr<Call> given) noexcept {
    const base::ExitGate::Pass pass;
    if (!pass)
        return base::ExitGate::keep(std::move(given));
    const auto call = std::move(given);
    if (call->detector.expired())
        return;
    try {
        const auto found =
            detection::findRectangle(*call->rectangles, *call->console, call->bitmap);
        if (call->detector.expired())
            return;
        call->outline = detection::evaluateRectangle(found, call->bitmap);
    } catch (...) {
        call->console->tellCaught(detection::kRectangleRequestFailed);
    }
    readTextLater(call);
}

void PassportDetector::Call::readTextLater(const std::shared_ptr<Call>& call) noexcept {
    try {
        if (const auto queue = call->queue.lock())
            return queue->async([call]() mutable { readText(std::move(call)); });
    } catch (...) {
        // This worker will do.
    }
    readText(call);
}

void PassportDetector::Call::readText(std::shared_ptr<Call> given) noexcept {
    const base::ExitGate::Pass pass;
    if (!pass)
        return base::ExitGate::keep(std::move(given));
    const auto call = std::move(given);
    const auto judged = [&call] {
        try {
            return call->verdict(
                detection::readText(*call->text, *call->console, call->outline.textBitmap,
                                    call->effort == ValidationEffort::verdictOnly));
        } catch (...) {
            call->console->tellCaught(detection::kTextRequestFailed);
        }
        return call->verdict({});
    };
    answer(call->completion, orNothing(*call->console, judged), *call->console);
}

PassportValidationResult PassportDetector::Call::verdict(std::string recognizedText) const {
    const std::string cleaned = detection::normalize(recognizedText);
    detection::Score score = detection::combine(
        outline.score, outline.reason, detection::KeywordTable::passport().matches(cleaned),
        detection::detectMRZLikeLines(cleaned));
    return makeResult(score.isPassport, score.confidence, std::move(score.reasons),
                      std::move(recognizedText));
}

PassportValidationResult PassportDetector::Call::orNothing(const detection::Console& console,
                                                           const auto& make) noexcept {
    try {
        return make();
    } catch (...) {
        console.tellCaught(detection::kTextRequestFailed);
        return makeResult(false, 0.0, {}, {});
    }
}

void PassportDetector::Call::answer(const Completion& completion,
                                    const PassportValidationResult& result,
                                    const detection::Console& console) noexcept {
    try {
        if (!base::ExitGate::isClosed())
            completion(result);
    } catch (...) {
        console.tellCaught("Completion failed:");
    }
}

}  // namespace kestrelid
