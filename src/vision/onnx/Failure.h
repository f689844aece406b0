#pragma once

#include "base/Failures.h"

#include <kestrelid/VisionServices.h>

#include <new>
#include <string>
#include <string_view>
#include <tl/expected.hpp>

namespace kestrelid::vision {

template <typename Value>
using Expected = tl::expected<Value, RequestError>;

// Why an adapter could not do its part, on its way up to the request: converts to every Expected.
using Failure = tl::unexpected<RequestError>;

// description: becomes one line; OpenCV and ONNX Runtime write several.
[[nodiscard]] inline Failure failure(std::string_view description) {
    return Failure(RequestError{base::oneLine(description)});
}

// What an adapter answers for an exception; kOutOfMemory if there is none for words.
[[nodiscard]] inline RequestError requestFailed(std::string_view what,
                                                std::string_view cause) noexcept {
    try {
        return failure(std::string(what) + ": " + std::string(cause)).value();
    } catch (const std::bad_alloc&) {
        return {base::kOutOfMemory};
    }
}

}  // namespace kestrelid::vision
