#include "detection/Request.h"

#include <exception>
#include <string>

namespace kestrelid::detection {

void carryOut(const PerformRequest& perform, const FailureLabels& labels,
              const ConsoleSink& console,
              const std::function<void(const std::vector<Observation>&)>& continuation) {
    const auto print = [&console](std::string_view label, std::string_view description) {
        console(std::string(label) + " " + std::string(description));
    };
    bool isContinued = false;
    // An exception of the host's own code must not pass for one of the service's, so it ends here.
    const auto continueOnce = [&](const std::vector<Observation>& results) noexcept {
        if (!isContinued) {
            isContinued = true;
            continuation(results);
        }
    };
    const auto report = [&](const RequestReport& outcome) {
        if (outcome.error)
            print(labels.reported, outcome.error->description);
        continueOnce(outcome.error || !outcome.results ? std::vector<Observation>{}
                                                       : *outcome.results);
    };
    std::optional<RequestError> failure;
    try {
        failure = perform(report);
    } catch (const std::exception& exception) {
        failure = RequestError{exception.what()};
    }
    if (failure)
        print(labels.failed, failure->description);
    continueOnce({});
}

}  // namespace kestrelid::detection
