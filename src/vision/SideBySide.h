#pragma once

#include <cstddef>
#include <functional>

namespace kestrelid::vision {

// work(0) to work(count - 1) on up to that many threads, the calling one included; on fewer where
// the machine has none left. Returns when all are done. Throws the first exception of any, without
// beginning others.
void sideBySide(std::size_t count, int threads, const std::function<void(std::size_t)>& work);

}  // namespace kestrelid::vision
