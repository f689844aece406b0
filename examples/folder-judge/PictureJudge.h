#pragma once

#include <kestrelid/DefaultServices.h>
#include <kestrelid/ImageFile.h>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <variant>

// Judges one picture after the other and waits for each verdict. Several of them share services.
class PictureJudge {
public:
    explicit PictureJudge(kestrelid::PlatformServices services) {
        services.console = [failure = failure_](std::string_view line) {
            const std::lock_guard lock(failure->mutex);
            failure->line = line;
        };
        detector_ = kestrelid::PassportDetector::create(std::move(services));
    }

    // A verdict, or one line why there is none: the picture cannot be read, or recognition failed.
    std::variant<kestrelid::PassportValidationResult, std::string> judge(const std::string& file) {
        // Larger pictures take longer and say no more.
        const auto picture = kestrelid::readImage(file, {.sufficientSide = 1920});
        if (const auto* error = std::get_if<kestrelid::ImageError>(&picture))
            return error->cause;
        const auto judgement = detector_->judge(std::get<kestrelid::Image>(picture).upright());
        const std::lock_guard lock(failure_->mutex);
        if (failure_->line)
            return *std::exchange(failure_->line, std::nullopt);
        if (const auto* none = std::get_if<kestrelid::NoVerdict>(&judgement))
            return std::string(none->cause);
        return std::get<kestrelid::PassportValidationResult>(judgement);
    }

private:
    struct Failure {
        std::mutex mutex;
        std::optional<std::string> line;  // the last that the detector said of this picture
    };
    const std::shared_ptr<Failure> failure_ = std::make_shared<Failure>();
    std::shared_ptr<kestrelid::PassportDetector> detector_;
};
