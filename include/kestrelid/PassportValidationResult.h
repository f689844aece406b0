#pragma once

#include <kestrelid/Export.h>

#include <string>
#include <vector>

namespace kestrelid {

/// What the detector says of one picture. A value that only the detector builds. Thread: any.
class KESTRELID_EXPORT PassportValidationResult {
public:
    /// The verdict.
    [[nodiscard]] bool isPassport() const noexcept { return isPassport_; }

    /// 0.0 to 1.0.
    [[nodiscard]] double confidence() const noexcept { return confidence_; }

    /// Human-readable findings: outline, keywords, machine-readable zone, in this order; or
    /// "Invalid image" alone.
    [[nodiscard]] const std::vector<std::string>& reasons() const noexcept { return reasons_; }

    /// The lines read off the picture, joined with a line feed. UTF-8. Personal data: never log it.
    [[nodiscard]] const std::string& recognizedText() const noexcept { return recognizedText_; }

    friend bool operator==(const PassportValidationResult&,
                           const PassportValidationResult&) = default;

private:
    friend class PassportDetector;
    PassportValidationResult(bool isPassport, double confidence, std::vector<std::string> reasons,
                             std::string recognizedText);

    bool isPassport_;
    double confidence_;
    std::vector<std::string> reasons_;
    std::string recognizedText_;
};

}  // namespace kestrelid
