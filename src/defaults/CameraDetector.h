#pragma once

#include <kestrelid/PassportDetector.h>

#include <functional>
#include <memory>

namespace kestrelid::defaults {

// Judges the frames of a camera, and says when it can do so at once. Two frames that are read at
// the same time take up to 60 MiB more, and no less time where all cores are at work on the first.
// A frame that waited would be judged when it is old. Thread: any.
class CameraDetector final : public PassportDetector {
public:
    // Of services.text: how many pages are read now, also for others; empty: unknown.
    using PagesUnderWay = std::function<int()>;

    // Null if a service is missing. atOnce: frames.
    [[nodiscard]] static std::shared_ptr<CameraDetector>
    create(PlatformServices services, int atOnce, PagesUnderWay pagesUnderWay);

    void validate(const Image& image, Completion completion) override;

    // False while as many frames are judged as may be, or while a picture of the host is read.
    [[nodiscard]] bool canJudge() const;

private:
    struct Frames;

    CameraDetector(PlatformServices services, int atOnce, PagesUnderWay pagesUnderWay);

    const int atOnce_;
    const PagesUnderWay pagesUnderWay_;
    const std::shared_ptr<Frames> frames_;
};

}  // namespace kestrelid::defaults
