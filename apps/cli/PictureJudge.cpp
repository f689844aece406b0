#include "apps/cli/PictureJudge.h"

#include "apps/cli/OutlineRecorder.h"

#include <chrono>
#include <future>
#include <utility>

namespace kestrelid::cli {
namespace {

using Clock = std::chrono::steady_clock;

struct Verdict {
    PassportValidationResult result;
    Clock::time_point reached;
};

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

    // Shared with the completion, which may still be returning when this thread has already got the
    // verdict.
    const auto promise = std::make_shared<std::promise<Verdict>>();
    std::future<Verdict> verdict = promise->get_future();
    detector_->validate(image, [promise](const PassportValidationResult& result) {
        promise->set_value({result, Clock::now()});
    });
    Verdict reached = verdict.get();

    std::vector<std::string> failures;
    {
        const std::lock_guard lock(failures_->mutex);
        failures.swap(failures_->lines);
    }
    if (!failures.empty())
        return JudgeError{std::move(failures.front())};
    const std::chrono::duration<double, std::milli> taken = reached.reached - start;
    return JudgedPicture{std::move(image), std::move(reached.result), recorder_->take(),
                         taken.count()};
}

}  // namespace kestrelid::cli
