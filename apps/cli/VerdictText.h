#pragma once

#include <kestrelid/PassportValidationResult.h>
#include <kestrelid/VisionServices.h>

#include <optional>
#include <string>
#include <string_view>

namespace kestrelid::cli {

struct Verdict {
    PassportValidationResult result;
    double milliseconds = 0.0;                    // from the start of decoding to the verdict
    std::optional<RectangleObservation> outline;  // the largest one found
};

// A line with the verdict, then an indented line for each reason.
[[nodiscard]] std::string verdictAsText(std::string_view name, const Verdict& verdict);

// One JSON object on a line: file, isPassport, confidence, reasons, recognizedText, milliseconds,
// outline.
[[nodiscard]] std::string verdictAsJson(std::string_view name, const Verdict& verdict);

// One JSON object on a line: file, error.
[[nodiscard]] std::string errorAsJson(std::string_view name, std::string_view cause);

}  // namespace kestrelid::cli
