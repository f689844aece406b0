#include "apps/cli/PictureJudge.h"

#include "apps/cli/OutlineRecorder.h"

#include <chrono>
#include <utility>

namespace kestrelid::cli {
namespace {

using Clock = std::chrono::steady_clock;

}  // namespace

PictureJudge::PictureJudge(const PlatformServices& services, ValidationEffort effort)
    : failures_(std::make_shared<Failures>()),
      recorder_(std::make_shared<OutlineRecorder>(services.rectangles)),
      detector_(PassportDetector::create({.rectangles = recorder_,
                                          .text = services.text,
                                          .queue = services.queue,
                                          .console =
                                              [failures = failures_](std::string_view line) {
                                                  const std::lock_guard lock(failures->mutex);
                                                  failures->lines.emplace_back(line);
                                              }},
                                         effort)) {}

PictureJudge::~PictureJudge() = default;

JudgeResult PictureJudge::judge(const std::filesystem::path& path) {
    return decodeAndJudge([&] { return readImage(path, {.sufficientSide = kSufficientSide}); });
}

JudgeResult PictureJudge::judge(std::span<const std::byte> file) {
    return decodeAndJudge([&] { return decodeImage(file, {.sufficientSide = kSufficientSide}); });
}

JudgeResult PictureJudge::decodeAndJudge(const std::function<ImageResult()>& decode) {
    const Clock::time_point start = Clock::now();
    ImageResult decoded = decode();
    if (auto* error = std::get_if<ImageError>(&decoded))
        return JudgeError{std::move(error->cause)};
    Image image = std::get<Image>(std::exchange(decoded, Image())).upright();

    constexpr std::chrono::minutes kPatience{10};  // with one picture, on the slowest machine
    const Judgement judgement = detector_->judge(image, kPatience);
    const std::chrono::duration<double, std::milli> taken = Clock::now() - start;
    if (const auto* none = std::get_if<NoVerdict>(&judgement))
        return JudgeError{std::string(none->cause)};

    std::vector<std::string> failures;
    {
        const std::lock_guard lock(failures_->mutex);
        failures.swap(failures_->lines);
    }
    if (!failures.empty())
        return JudgeError{std::move(failures.front())};
    return JudgedPicture{std::move(image), std::get<PassportValidationResult>(judgement),
                         recorder_->take(), taken.count()};
}

}  // namespace kestrelid::cli
