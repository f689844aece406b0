#pragma once

#include <kestrelid/PassportDetector.h>

#include <functional>
#include <memory>

namespace kestrelid::cli {

// Passes pictures on to a detector and reports each verdict before the caller gets it.
class VerdictRecorder final : public PassportDetector {
public:
    using OnVerdict = std::function<void(bool isPassport, double confidence)>;  // any thread

    VerdictRecorder(std::shared_ptr<PassportDetector> detector, OnVerdict onVerdict);

    void validate(const Image& image, Completion completion) override;

private:
    const std::shared_ptr<PassportDetector> detector_;
    const OnVerdict onVerdict_;
};

}  // namespace kestrelid::cli
