#include "apps/cli/PictureJudge.h"

#include "apps/cli/InputImage.h"

#include <chrono>
#include <utility>

namespace kestrelid::cli {
namespace {

using Clock = std::chrono::steady_clock;

// Without the zone network there is a verdict all the same; `kestrelid doctor` says what is
// missing.
constexpr std::string_view kZoneFailure = "Zone request failed:";

}  // namespace

PictureJudge::PictureJudge(const PlatformServices& services, ValidationEffort effort)
    : failures_(std::make_shared<Failures>()),
      detector_(PassportDetector::create({.rectangles = services.rectangles,
                                          .text = services.text,
                                          .queue = services.queue,
                                          .console =
                                              [failures = failures_](std::string_view line) {
                                                  const std::lock_guard lock(failures->mutex);
                                                  failures->lines.emplace_back(line);
                                              },
                                          .zones = services.zones},
                                         effort)) {}

JudgeResult PictureJudge::judge(const PictureInput& input) {
    const Clock::time_point start = Clock::now();
    auto read = inputImage(input);
    if (auto* cause = std::get_if<std::string>(&read))
        return JudgeError{std::move(*cause)};
    auto& image = std::get<Image>(read);

    constexpr std::chrono::minutes kPatience{10};  // with one picture, on the slowest machine
    ExaminationResult result = detector_->examineNow(image, {}, kPatience);
    if (const auto* none = std::get_if<NoVerdict>(&result))
        return JudgeError{std::string(none->cause)};
    auto& examination = std::get<Examination>(result);
    const auto taken = Clock::now() - start - examination.times.zones - examination.times.quality;

    std::vector<std::string> failures;
    {
        const std::lock_guard lock(failures_->mutex);
        failures.swap(failures_->lines);
    }
    for (std::string& failure : failures) {
        if (!failure.starts_with(kZoneFailure))
            return JudgeError{std::move(failure)};
    }
    return JudgedPicture{std::move(image), std::move(examination),
                         ExaminationTimes::Milliseconds(taken).count()};
}

}  // namespace kestrelid::cli
