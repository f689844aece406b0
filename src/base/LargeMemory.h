#pragma once

#include <cstddef>

namespace kestrelid::base {

// Memory for something large that is written once, such as a picture's pixels; not initialised,
// given back by std::free. From 2 MiB on the system is asked for huge pages: to hand out small
// ones, each as it is first written to, takes a quarter of the time in which a photograph is
// decoded. Throws std::bad_alloc.
[[nodiscard]] void* allocateLarge(std::size_t bytes);

}  // namespace kestrelid::base
