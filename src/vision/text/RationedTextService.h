#pragma once

#include <kestrelid/VisionServices.h>

#include <memory>
#include <semaphore>

namespace kestrelid::vision {

// Has so many pictures read at once by another service, and others wait. A camera's pictures come
// whether or not the last one has been read; two that are read at once take up to 60 MiB more, and
// no less time where all cores are at work on the first.
class RationedTextService final : public TextService {
public:
    RationedTextService(std::shared_ptr<TextService> service, unsigned atOnce);

    [[nodiscard]] TextResult perform(const Bitmap& bitmap, const TextRequest& request) override;

private:
    const std::shared_ptr<TextService> service_;
    std::counting_semaphore<> free_;
};

}  // namespace kestrelid::vision
