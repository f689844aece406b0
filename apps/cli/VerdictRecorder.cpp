#include "apps/cli/VerdictRecorder.h"

#include <utility>

namespace kestrelid::cli {

// Without services: nothing is judged here.
VerdictRecorder::VerdictRecorder(std::shared_ptr<PassportDetector> detector, OnVerdict onVerdict)
    : PassportDetector({}, ValidationEffort::verdictOnly), detector_(std::move(detector)),
      onVerdict_(std::move(onVerdict)) {}

void VerdictRecorder::validate(const Image& image, Completion completion) {
    detector_->validate(image, [onVerdict = onVerdict_, completion = std::move(completion)](
                                   const PassportValidationResult& result) {
        onVerdict(result.isPassport(), result.confidence());
        completion(result);
    });
}

}  // namespace kestrelid::cli
