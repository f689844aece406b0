#pragma once

#include "vision/onnx/Failure.h"

#include <onnxruntime_c_api.h>

#include <optional>
#include <string>

namespace kestrelid::vision {

// Takes the status that a call of the runtime gave; none where the call succeeded.
[[nodiscard]] inline std::optional<Failure> onnxError(const OrtApi& api, OrtStatus* status) {
    if (!status)
        return std::nullopt;
    Failure error = failure(std::string("ONNX Runtime: ") + api.GetErrorMessage(status));
    api.ReleaseStatus(status);
    return error;
}

}  // namespace kestrelid::vision
