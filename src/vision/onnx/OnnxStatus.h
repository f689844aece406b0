#pragma once

#include "vision/onnx/Failure.h"

#include <onnxruntime_c_api.h>

#include <memory>
#include <optional>
#include <string>

namespace kestrelid::vision {

// Takes the status that a call of the runtime gave; none where the call succeeded.
[[nodiscard]] inline std::optional<Failure> onnxError(const OrtApi& api, OrtStatus* status) {
    if (!status)
        return std::nullopt;
    const std::unique_ptr<OrtStatus, decltype(api.ReleaseStatus)> owner(status, api.ReleaseStatus);
    return failure(std::string("ONNX Runtime: ") + api.GetErrorMessage(status));
}

// The same for a call that makes something. Without memory the runtime has no status to give
// either, and it looks as if the call had succeeded.
template <typename Made>
[[nodiscard]] std::optional<Failure> onnxError(const OrtApi& api, OrtStatus* status,
                                               Made* const& made) {
    if (auto error = onnxError(api, status))
        return error;
    return made ? std::nullopt : std::optional(failure("ONNX Runtime: out of memory"));
}

}  // namespace kestrelid::vision
