#pragma once

#include <kestrelid/VisionServices.h>

#include <optional>

namespace kestrelid::vision {

// The error of a request that does not ask for English, from a recogniser that reads nothing else.
[[nodiscard]] std::optional<RequestError> refuseUnlessEnglish(const TextRequest& request);

}  // namespace kestrelid::vision
