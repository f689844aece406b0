#include "vision/text/RationedTextService.h"

#include <utility>

namespace kestrelid::vision {
namespace {

struct Turn {
    explicit Turn(std::counting_semaphore<>& free) : semaphore(free) { semaphore.acquire(); }
    ~Turn() { semaphore.release(); }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;
    std::counting_semaphore<>& semaphore;
};

}  // namespace

RationedTextService::RationedTextService(std::shared_ptr<TextService> service, unsigned atOnce)
    : service_(std::move(service)), free_(static_cast<std::ptrdiff_t>(atOnce)) {}

TextResult RationedTextService::perform(const Bitmap& bitmap, const TextRequest& request) {
    const Turn turn(free_);
    return service_->perform(bitmap, request);
}

}  // namespace kestrelid::vision
