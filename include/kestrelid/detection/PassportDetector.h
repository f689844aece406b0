#pragma once

#include <kestrelid/DispatchQueue.h>
#include <kestrelid/Export.h>
#include <kestrelid/Image.h>
#include <kestrelid/PassportValidationResult.h>
#include <kestrelid/VisionServices.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelid {

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
    std::function<void(std::string_view line)>
        console{};  ///< gets failure lines, any thread; empty: standard output
};

/// Gives create() the services of this machine. DefaultServices.h, which PassportDetector.h
/// includes, completes it; the detector itself knows no adapter.
struct ThisMachine;

/// Decides whether a still image shows a passport, from a large document outline, printed keywords
/// and lines that look like a machine-readable zone. Immutable: overlapping calls are independent.
/// A host may derive from it. Thread: any.
class KESTRELID_EXPORT PassportDetector : public std::enable_shared_from_this<PassportDetector> {
public:
    /// Gets the verdict.
    using Completion = std::function<void(const PassportValidationResult& result)>;

    /// A detector with the services of this machine (see DefaultServices.h). Cannot fail: what is
    /// missing on the machine is said on the console when a picture is judged.
    template <typename Machine = ThisMachine>
    [[nodiscard]] static std::shared_ptr<PassportDetector> create() {
        return create(Machine::services());
    }

    /// Returns null if a service is missing.
    [[nodiscard]] static std::shared_ptr<PassportDetector>
    create(PlatformServices services, ValidationEffort effort = ValidationEffort::complete);

    PassportDetector(const PassportDetector&) = delete;
    PassportDetector& operator=(const PassportDetector&) = delete;
    virtual ~PassportDetector();

    /// Judges the image's bitmap as its rows are stored and returns at once. completion is called
    /// at most once: on the calling thread before the return if the image has no bitmap, otherwise
    /// later on a worker of the services' queue. It is never called if the last owner releases the
    /// detector before the outline is found.
    virtual void validate(const Image& image, Completion completion);

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
    static void readText(const std::shared_ptr<const Call>& call,
                         const std::optional<RectangleObservation>& rectangle);

    const std::span<const std::string_view> keywords_;
    const std::int64_t keywordMatchThreshold_;
    const std::int64_t singleKeywordFuzzyThreshold_;
    const double rectangleAreaThreshold_;
    const double mrzConfidenceWeight_;
    const double keywordConfidenceWeight_;
    const double rectConfidenceWeight_;
    const PlatformServices services_;
    const ValidationEffort effort_;
};

}  // namespace kestrelid
