#include "detection/MrzLikeLines.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto answer =
        kestrelid::detection::detectMRZLikeLines({reinterpret_cast<const char*>(data), size});
    if (answer.found != answer.reason.starts_with("Found"))
        std::abort();
    return 0;
}
