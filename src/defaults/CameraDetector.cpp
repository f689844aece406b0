#include "defaults/CameraDetector.h"

#include <atomic>
#include <exception>
#include <utility>

namespace kestrelid::defaults {

struct CameraDetector::Frames {
    std::atomic<int> judged = 0;
};

std::shared_ptr<CameraDetector> CameraDetector::create(PlatformServices services, int atOnce,
                                                       PagesUnderWay pagesUnderWay) {
    if (!services.rectangles || !services.text || !services.queue)
        return nullptr;
    return std::shared_ptr<CameraDetector>(
        new CameraDetector(std::move(services), atOnce, std::move(pagesUnderWay)));
}

CameraDetector::CameraDetector(PlatformServices services, int atOnce, PagesUnderWay pagesUnderWay)
    : PassportDetector(std::move(services), ValidationEffort::verdictOnly), atOnce_(atOnce),
      pagesUnderWay_(std::move(pagesUnderWay)), frames_(std::make_shared<Frames>()) {}

void CameraDetector::validate(const Image& image, Completion completion) {
    struct Turn {
        explicit Turn(std::shared_ptr<Frames> of) : frames(std::move(of)) { ++frames->judged; }
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;
        ~Turn() { --frames->judged; }
        const std::shared_ptr<Frames> frames;
    };
    try {
        // Ends with the completion, whether or not that is called.
        completion = [turn = std::make_shared<const Turn>(frames_),
                      completion](const PassportValidationResult& result) {
            if (completion)
                completion(result);
        };
    } catch (const std::exception&) {
        // Without memory it is judged all the same.
    }
    PassportDetector::validate(image, std::move(completion));
}

bool CameraDetector::canJudge() const {
    const int judged = frames_->judged;
    const int pages = pagesUnderWay_ ? pagesUnderWay_() : 0;
    return judged < atOnce_ && pages <= judged;
}

}  // namespace kestrelid::defaults
