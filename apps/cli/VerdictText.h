#pragma once

#include <kestrelid/Examination.h>

#include <string>
#include <string_view>

namespace kestrelid::cli {

// A line with the verdict, then an indented line for each reason, and one for the zone.
// milliseconds: from the start of decoding to the verdict.
[[nodiscard]] std::string verdictAsText(std::string_view name, const Examination& examination,
                                        double milliseconds);

// One JSON object on a line: file, isPassport, confidence, reasons, recognizedText, milliseconds,
// outline, zones.
[[nodiscard]] std::string verdictAsJson(std::string_view name, const Examination& examination,
                                        double milliseconds);

// One JSON object on a line: file, error.
[[nodiscard]] std::string errorAsJson(std::string_view name, std::string_view cause);

}  // namespace kestrelid::cli
