#pragma once

#include "base/Failures.h"
#include "detection/Console.h"

#include <kestrelid/VisionServices.h>

#include <utility>
#include <variant>

namespace kestrelid::detection {

inline constexpr std::string_view kRectangleRequestFailed = "Rectangle request failed:";
inline constexpr std::string_view kTextRequestFailed = "Text request failed:";
inline constexpr std::string_view kZoneRequestFailed = "Zone request failed:";

// What stands before a failure on the console.
struct FailureLabels {
    std::string_view reported;
    std::string_view notPerformed;
};

// What perform() gives. A failure is a line on the console and counts as nothing found, and so does
// whatever perform() throws.
template <typename Perform>
[[nodiscard]] auto findings(const Perform& perform, const FailureLabels& labels,
                            const Console& console) {
    using Result = decltype(perform());
    Result result = [&]() -> Result {
        try {
            return perform();
        } catch (...) {
            return RequestError{base::caughtFailure()};
        }
    }();
    if (const auto* error = std::get_if<RequestError>(&result)) {
        const bool isReported = error->kind == RequestError::Kind::reported;
        console.tell(isReported ? labels.reported : labels.notPerformed, error->description);
        return std::variant_alternative_t<0, Result>{};
    }
    return std::get<0>(std::move(result));
}

}  // namespace kestrelid::detection
