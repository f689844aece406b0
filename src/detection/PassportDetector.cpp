#include <kestrelid/detection/PassportDetector.h>

#include "base/ExitGate.h"
#include "detection/Console.h"
#include "detection/Findings.h"
#include "detection/KeywordTable.h"
#include "detection/MrzLikeLines.h"
#include "detection/NormalizedText.h"
#include "detection/PassportKeywords.h"
#include "detection/PictureQualityStage.h"
#include "detection/RectangleStage.h"
#include "detection/Scoring.h"
#include "detection/TextStage.h"
#include "detection/VerdictNumbers.h"
#include "detection/ZoneStage.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <new>
#include <optional>
#include <utility>

namespace kestrelid {

namespace {

class Stopwatch {
public:
    [[nodiscard]] ExaminationTimes::Milliseconds elapsed() const { return Clock::now() - start_; }

private:
    using Clock = std::chrono::steady_clock;
    Clock::time_point start_ = Clock::now();
};

}  // namespace

PassportValidationResult::PassportValidationResult(bool isPassport, double confidence,
                                                   std::vector<std::string> reasons,
                                                   std::string recognizedText)
    : isPassport_(isPassport), confidence_(confidence), reasons_(std::move(reasons)),
      recognizedText_(std::move(recognizedText)) {}

// What an examination keeps beside the verdict.
struct [[gnu::visibility("hidden")]] PassportDetector::Examining {
    ExaminationOptions options;
    ExaminationCompletion completion;
    std::vector<RectangleObservation> outlines{};
    std::vector<TextObservation> lines{};
    std::vector<KeywordMatch> matches{};
    ExaminationTimes times{};
};

// One validation or examination, which goes from block to block. It holds the detector weakly,
// since a released detector owes no answer, and the queue too, since a queue that never runs its
// blocks would hold itself.
struct [[gnu::visibility("hidden")]] PassportDetector::Call {
    std::weak_ptr<const PassportDetector> detector;
    std::weak_ptr<DispatchQueue> queue;
    std::shared_ptr<RectangleService> rectangles;
    std::shared_ptr<TextService> text;
    std::shared_ptr<ZoneService> zones;  // may be null
    std::shared_ptr<const detection::Console> console;
    ValidationEffort effort;
    Bitmap bitmap;
    detection::RectangleEvidence outline;  // none until one is found
    Completion completion;
    std::unique_ptr<Examining> examining;  // null for a validation

    // The two blocks. What is thrown inside counts as a failure of the request. They let go of the
    // call, which may be the last owner of the services, before a process that ends may go on.
    static void findOutline(std::shared_ptr<Call> given) noexcept;
    static void readText(std::shared_ptr<Call> given) noexcept;

    static void readTextLater(const std::shared_ptr<Call>& call) noexcept;

    [[nodiscard]] bool isStopped() const {
        return examining && examining->options.stop.stop_requested();
    }
    [[nodiscard]] PassportValidationResult verdict(std::string recognizedText) const;
    [[nodiscard]] std::string recognizedText() const;
    // The rest of an examination; a part that fails is nothing found.
    [[nodiscard]] Examination examination(PassportValidationResult verdict) const;
    // What make() gives; if it throws, for want of memory, the poorest of verdicts.
    static PassportValidationResult orNothing(const detection::Console& console,
                                              const auto& make) noexcept;
    static void answer(const Completion& completion, const PassportValidationResult& result,
                       const detection::Console& console) noexcept;
    // By its completion, or by the examination's.
    void answer(PassportValidationResult result) const noexcept;
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
    start(image, std::move(completion), nullptr);
}

void PassportDetector::examine(const Image& image, ExaminationCompletion completion,
                               ExaminationOptions options) {
    if (!completion)
        return;
    std::unique_ptr<Examining> examining;
    try {
        examining = std::make_unique<Examining>(
            Examining{.options = std::move(options), .completion = completion});
    } catch (...) {
        console_->tellCaught(detection::kRectangleRequestFailed);
    }
    // Without the rest, for want of memory, the verdict alone.
    start(
        image,
        [completion = std::move(completion)](const PassportValidationResult& result) {
            completion(Examination{.verdict = result});
        },
        std::move(examining));
}

void PassportDetector::start(const Image& image, Completion completion,
                             std::unique_ptr<Examining> examining) noexcept {
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
                 .zones = services_.zones,
                 .console = console_,
                 .effort = effort_,
                 .bitmap = *image.bitmap(),
                 .outline = detection::evaluateRectangle(nullptr, *image.bitmap()),
                 .completion = {},
                 .examining = nullptr});
        call->completion = completion;
        call->examining = std::move(examining);
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

// What judge() and examineNow() wait for.
template <typename Result>
struct Waiting {
    std::mutex mutex;
    std::condition_variable changed;
    std::optional<Result> result;
    bool isOver = false;  // also without a result
};

// Owned by the completion alone, so that one that is destroyed without a call is noticed. (A
// std::promise would ask for memory then.)
template <typename Result>
struct Answer {
    explicit Answer(std::shared_ptr<Waiting<Result>> owner) : waiting(std::move(owner)) {}
    Answer(const Answer&) = delete;
    Answer& operator=(const Answer&) = delete;
    ~Answer() { end(); }

    void set(const Result& result) const {
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

    const std::shared_ptr<Waiting<Result>> waiting;
};

// What begin(completion) gives to its completion.
template <typename Result>
std::variant<Result, NoVerdict> awaited(std::chrono::duration<double> timeout, const auto& begin) {
    using Seconds = std::chrono::duration<double>;
    constexpr Seconds kLongest{1e8};  // every clock can count as far
    const Seconds patience = timeout > Seconds::zero() ? std::min(timeout, kLongest) : Seconds();
    using Reason = NoVerdict::Reason;
    try {
        const auto waiting = std::make_shared<Waiting<Result>>();
        begin([answer = std::make_shared<Answer<Result>>(waiting)](const Result& result) {
            answer->set(result);
        });
        std::unique_lock lock(waiting->mutex);
        if (!waiting->changed.wait_for(lock, patience, [&] { return waiting->isOver; }))
            return NoVerdict{Reason::timedOut, "no verdict came in time"};
        if (waiting->result)
            return *std::move(waiting->result);
        return NoVerdict{Reason::abandoned, "the detector gave the picture up"};
    } catch (...) {
        return NoVerdict{Reason::failed, "not enough memory to wait for the verdict"};
    }
}

}  // namespace

Judgement PassportDetector::judge(const Image& image, std::chrono::duration<double> timeout) {
    return awaited<PassportValidationResult>(
        timeout, [&](Completion completion) { validate(image, std::move(completion)); });
}

ExaminationResult PassportDetector::examineNow(const Image& image, ExaminationOptions options,
                                               std::chrono::duration<double> timeout) {
    return awaited<Examination>(timeout, [&](ExaminationCompletion completion) {
        examine(image, std::move(completion), std::move(options));
    });
}

void PassportDetector::Call::findOutline(std::shared_ptr<Call> given) noexcept {
    const base::ExitGate::Pass pass;
    if (!pass)
        return base::ExitGate::keep(std::move(given));
    const auto call = std::move(given);
    if (call->detector.expired() || call->isStopped())
        return;
    try {
        const Stopwatch stopwatch;
        auto found = detection::findRectangles(*call->rectangles, *call->console, call->bitmap);
        if (call->detector.expired())
            return;
        const auto largest = detection::largestRectangle(found);
        call->outline =
            detection::evaluateRectangle(largest ? &found[*largest] : nullptr, call->bitmap);
        if (call->examining) {
            call->examining->outlines = std::move(found);
            call->examining->times.outlines = stopwatch.elapsed();
        }
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
    if (call->isStopped())
        return;
    const auto judged = [&call] {
        try {
            return call->verdict(call->recognizedText());
        } catch (...) {
            call->console->tellCaught(detection::kTextRequestFailed);
        }
        return call->verdict({});
    };
    call->answer(orNothing(*call->console, judged));
}

std::string PassportDetector::Call::recognizedText() const {
    const Stopwatch stopwatch;
    auto lines = detection::readLines(
        *text, *console, outline.textBitmap,
        effort == ValidationEffort::verdictOnly ? detection::untilDecided() : nullptr);
    std::string joined = detection::joinedText(lines);
    if (examining) {
        examining->lines = std::move(lines);
        examining->times.text = stopwatch.elapsed();
    }
    return joined;
}

PassportValidationResult PassportDetector::Call::verdict(std::string recognizedText) const {
    const std::string cleaned = detection::normalize(recognizedText);
    auto matches = detection::KeywordTable::passport().matches(cleaned);
    detection::Score score = detection::combine(outline.score, outline.reason, matches,
                                                detection::detectMRZLikeLines(cleaned));
    if (examining)
        examining->matches = std::move(matches);
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

Examination PassportDetector::Call::examination(PassportValidationResult verdict) const {
    Examination result{.verdict = std::move(verdict), .times = examining->times};
    try {
        result.outlines = examining->outlines;
        result.chosenOutline = detection::largestRectangle(result.outlines);
        result.lines = detection::inPicture(examining->lines, outline.textRegion, bitmap);
        result.matches = examining->matches;
        const Stopwatch zoneStopwatch;
        if (zones)
            result.zones = detection::readZones(*zones, *console, bitmap, result.outlines,
                                                examining->options.zoneRules);
        result.times.zones = zoneStopwatch.elapsed();
        const Stopwatch stopwatch;
        result.quality = detection::pictureQuality(
            bitmap, result.chosenOutline ? &result.outlines[*result.chosenOutline] : nullptr);
        result.times.quality = stopwatch.elapsed();
        if (!result.zones.empty())
            result.quality.pixelsPerCharacter = result.zones.front().pixelsPerCharacter;
    } catch (...) {
        console->tellCaught(detection::kZoneRequestFailed);
    }
    return result;
}

void PassportDetector::Call::answer(PassportValidationResult result) const noexcept {
    if (!examining)
        return answer(completion, result, *console);
    if (isStopped() || base::ExitGate::isClosed())
        return;
    try {
        const Examination examined = examination(std::move(result));
        if (!isStopped() && !base::ExitGate::isClosed())
            examining->completion(examined);
    } catch (...) {
        console->tellCaught("Completion failed:");
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
