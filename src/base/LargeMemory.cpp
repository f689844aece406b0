#include "base/LargeMemory.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <sys/mman.h>

namespace kestrelid::base {
namespace {

constexpr std::size_t kHugePage = std::size_t{2} << 20;  // bytes, on most processors

void* allocateInHugePages(std::size_t bytes) {
    void* memory = nullptr;
    if (::posix_memalign(&memory, kHugePage, bytes) != 0)
        return nullptr;
    // The rest stays in small pages, so that nothing is held that is not used. Where the system has
    // no huge ones, all of it does.
    ::madvise(memory, bytes - bytes % kHugePage, MADV_HUGEPAGE);
    return memory;
}

}  // namespace

void* allocateLarge(std::size_t bytes) {
    void* memory = bytes >= kHugePage ? allocateInHugePages(bytes)
                                      : std::malloc(std::max(bytes, std::size_t{1}));
    if (!memory)
        throw std::bad_alloc();
    return memory;
}

}  // namespace kestrelid::base
