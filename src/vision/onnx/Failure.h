#pragma once

#include <kestrelid/VisionServices.h>

#include <string>
#include <tl/expected.hpp>
#include <utility>

namespace kestrelid::vision {

template <typename Value>
using Expected = tl::expected<Value, RequestError>;

// Why an adapter could not do its part, on its way up to the request: converts to every Expected.
using Failure = tl::unexpected<RequestError>;

[[nodiscard]] inline Failure failure(std::string description) {
    return Failure(RequestError{std::move(description)});
}

}  // namespace kestrelid::vision
