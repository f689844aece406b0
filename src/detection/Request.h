#pragma once

#include <kestrelid/VisionServices.h>

#include <functional>
#include <optional>
#include <string_view>
#include <vector>

namespace kestrelid::detection {

using ConsoleSink = std::function<void(std::string_view line)>;

// What stands before a failure on the console.
struct FailureLabels {
    std::string_view reported;  // the request reported an error
    std::string_view failed;    // the request could not be carried out
};

// Starts a request with the given completion; an error where it could not be carried out.
using PerformRequest = std::function<std::optional<RequestError>(const RequestCompletion&)>;

// Carries out a request on the calling thread and calls continuation exactly once with its results,
// during the request where it reports and otherwise after it. Each failure is a line on the console
// and counts as no results, and so does an exception out of perform.
void carryOut(const PerformRequest& perform, const FailureLabels& labels,
              const ConsoleSink& console,
              const std::function<void(const std::vector<Observation>&)>& continuation);

// The observations as one kind; empty where any is of another kind.
template <typename Kind>
[[nodiscard]] std::vector<Kind> allOfKind(const std::vector<Observation>& observations) {
    std::vector<Kind> result;
    for (const Observation& observation : observations) {
        const Kind* const kind = std::get_if<Kind>(&observation);
        if (!kind)
            return {};
        result.push_back(*kind);
    }
    return result;
}

}  // namespace kestrelid::detection
