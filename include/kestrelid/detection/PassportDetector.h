#pragma once

#include <kestrelid/DispatchQueue.h>
#include <kestrelid/Examination.h>
#include <kestrelid/Export.h>
#include <kestrelid/Image.h>
#include <kestrelid/PassportValidationResult.h>
#include <kestrelid/VisionServices.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace kestrelid {

namespace detection {
class Console;
}

/// How far a validation goes. The verdict and the confidence are the same for both.
enum class ValidationEffort : std::uint8_t {
    complete,     ///< reads the whole text
    verdictOnly,  ///< for live video: reading stops once the keywords are decided; reasons and text
                  ///< may be shorter
};

/// What the detector needs from the machine. Every service may be shared between detectors.
struct PlatformServices {
    std::shared_ptr<RectangleService> rectangles;
    std::shared_ptr<TextService> text;
    std::shared_ptr<DispatchQueue> queue;  ///< concurrent; runs the recognition

    /// Gets a line, without line feed, for each request that fails, and for each completion that
    /// throws; control characters in it have become spaces. It says what is missing on the machine,
    /// never what was read. Any thread, several at once; what it throws is dropped. Empty: standard
    /// output.
    std::function<void(std::string_view line)> console{};

    /// For examine() alone; null: it finds no zone.
    std::shared_ptr<ZoneService> zones{};
};

/// Why judge() or examineNow() has no answer.
struct NoVerdict {
    /// Which of the causes it is.
    enum class Reason : std::uint8_t {
        timedOut,   ///< none came in time; the call goes on, and its verdict is dropped
        abandoned,  ///< the detector will not answer: its last owner has let go of it, or the
                    ///< examination was told to stop
        failed,     ///< the waiting itself failed, for want of memory
    };

    Reason reason = Reason::failed;
    std::string_view cause;  ///< one line for a person; static
};

/// What judge() gives.
using Judgement = std::variant<PassportValidationResult, NoVerdict>;

/// What examineNow() gives.
using ExaminationResult = std::variant<Examination, NoVerdict>;

/// Gives create() the services of this machine. DefaultServices.h, which PassportDetector.h
/// includes, completes it; the detector itself knows no adapter.
struct ThisMachine;

/// Decides whether a still image shows a passport, from a large document outline, printed keywords
/// and lines that look like a machine-readable zone. Immutable: overlapping calls are independent.
/// A host may derive from it. No call throws. Thread: any.
///
/// Letting go of the last owner waits for nothing. Calls whose outline is not found yet are given
/// up, their completions destroyed without a call; those whose text is being read still answer. A
/// process may end at any moment, also during calls: a model that runs is stopped, and nothing is
/// answered any more.
class KESTRELID_EXPORT PassportDetector : public std::enable_shared_from_this<PassportDetector> {
public:
    /// Gets the verdict. What it throws is told on the console. It may let go of the detector.
    using Completion = std::function<void(const PassportValidationResult& result)>;

    /// A detector with the services of this machine (see DefaultServices.h). Cannot fail: what is
    /// missing on the machine is said on the console when a picture is judged. (Null only if there
    /// is no memory for the detector itself.)
    template <typename Machine = ThisMachine>
    [[nodiscard]] static std::shared_ptr<PassportDetector> create() {
        return create(Machine::services());
    }

    /// Returns null if a service is missing, or the memory for the detector itself.
    [[nodiscard]] static std::shared_ptr<PassportDetector>
    create(PlatformServices services, ValidationEffort effort = ValidationEffort::complete);

    PassportDetector(const PassportDetector&) = delete;
    PassportDetector& operator=(const PassportDetector&) = delete;
    virtual ~PassportDetector();

    /// Judges the image's bitmap as its rows are stored and returns at once. completion is called
    /// at most once: on the calling thread before the return if the image has no bitmap, otherwise
    /// later on a worker of the services' queue. It is never called if the last owner releases the
    /// detector before the outline is found. If the queue can have no thread, a failure line says
    /// so, and completion gets the verdict on nothing found, on the calling thread.
    virtual void validate(const Image& image, Completion completion);

    /// Validates and waits for the verdict, timeout seconds at most. Not for a thread that must not
    /// wait, nor for a completion, which would wait for its own thread.
    [[nodiscard]] Judgement judge(const Image& image,
                                  std::chrono::duration<double> timeout = std::chrono::minutes(1));

    /// Gets the examination; as Completion otherwise.
    using ExaminationCompletion = std::function<void(const Examination& examination)>;

    /// Everything that one look gives: the verdict as validate() gives it, and beside it outlines,
    /// lines, machine-readable zones and how good the picture is. Returns at once; completion is
    /// called as validate() calls it, and not at all once options.stop is requested before the last
    /// part. A part that fails is a line on the console and nothing found.
    void examine(const Image& image, ExaminationCompletion completion,
                 ExaminationOptions options = {});

    /// Examines and waits, timeout seconds at most. Not for a thread that must not wait.
    [[nodiscard]] ExaminationResult
    examineNow(const Image& image, ExaminationOptions options = {},
               std::chrono::duration<double> timeout = std::chrono::minutes(1));

    /// The printed words that speak for a passport: one list for all detectors, repeated entries
    /// count again.
    [[nodiscard]] std::span<const std::string_view> keywords() const noexcept { return keywords_; }

    /// @name The numbers behind the verdict
    /// @{

    /// Matched entries that give the full keyword score.
    [[nodiscard]] std::int64_t keywordMatchThreshold() const noexcept {
        return keywordMatchThreshold_;
    }
    /// Edits up to which an entry matches, whatever its length.
    [[nodiscard]] std::int64_t singleKeywordFuzzyThreshold() const noexcept {
        return singleKeywordFuzzyThreshold_;
    }
    /// Fraction of the picture from which an outline gives the full score.
    [[nodiscard]] double rectangleAreaThreshold() const noexcept { return rectangleAreaThreshold_; }
    /// Weight of lines that look like a machine-readable zone.
    [[nodiscard]] double mrzConfidenceWeight() const noexcept { return mrzConfidenceWeight_; }
    /// Weight of the keywords.
    [[nodiscard]] double keywordConfidenceWeight() const noexcept {
        return keywordConfidenceWeight_;
    }
    /// Weight of the outline.
    [[nodiscard]] double rectConfidenceWeight() const noexcept { return rectConfidenceWeight_; }
    /// @}

protected:
    /// services: complete. Own the object by a shared_ptr: validate() holds it weakly.
    PassportDetector(PlatformServices services, ValidationEffort effort);

    /// For derived detectors, which build their verdicts here.
    [[nodiscard]] static PassportValidationResult makeResult(bool isPassport, double confidence,
                                                             std::vector<std::string> reasons,
                                                             std::string recognizedText);

private:
    struct Call;
    struct Examining;

    // examining: null for a validation.
    void start(const Image& image, Completion completion,
               std::unique_ptr<Examining> examining) noexcept;

    const std::span<const std::string_view> keywords_;
    const std::int64_t keywordMatchThreshold_;
    const std::int64_t singleKeywordFuzzyThreshold_;
    const double rectangleAreaThreshold_;
    const double mrzConfidenceWeight_;
    const double keywordConfidenceWeight_;
    const double rectConfidenceWeight_;
    const PlatformServices services_;
    const ValidationEffort effort_;
    const std::shared_ptr<const detection::Console> console_;
};

}  // namespace kestrelid
