#include "vision/LargeMat.h"

#include "base/LargeMemory.h"

#include <cstdlib>
#include <memory>

namespace kestrelid::vision {
namespace {

class LargeAllocator : public cv::MatAllocator {
public:
    // Rows without gaps. `given` is memory of the caller's, which OpenCV passes to none but its own
    // allocators.
    cv::UMatData* allocate(int dimensions, const int* sizes, int type, void* given,
                           std::size_t* steps, cv::AccessFlag /*access*/,
                           cv::UMatUsageFlags /*usage*/) const override {
        CV_Assert(!given);
        std::size_t bytes = CV_ELEM_SIZE(type);
        for (int dimension = dimensions - 1; dimension >= 0; --dimension) {
            if (steps)
                steps[dimension] = bytes;
            bytes *= static_cast<std::size_t>(sizes[dimension]);
        }
        auto data = std::make_unique<cv::UMatData>(this);
        data->data = data->origdata = static_cast<uchar*>(base::allocateLarge(bytes));
        data->size = bytes;
        return data.release();
    }

    bool allocate(cv::UMatData* data, cv::AccessFlag /*access*/,
                  cv::UMatUsageFlags /*usage*/) const override {
        return data != nullptr;
    }

    void deallocate(cv::UMatData* data) const override {
        std::free(data->origdata);
        delete data;
    }
};

}  // namespace

cv::Mat largeMat() {
    // Never destroyed: a matrix may outlive static objects in a process that ends.
    static auto& allocator = *new LargeAllocator;
    cv::Mat matrix;
    matrix.allocator = &allocator;
    return matrix;
}

}  // namespace kestrelid::vision
