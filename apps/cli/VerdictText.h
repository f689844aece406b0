#pragma once

#include "apps/cli/PictureInputs.h"

#include <kestrelid/Examination.h>

#include <string>
#include <string_view>

namespace kestrelid::cli {

// A line with the verdict, then an indented line for each reason, and one for the zone.
// milliseconds: from the start of decoding to the verdict.
[[nodiscard]] std::string verdictAsText(std::string_view name, const Examination& examination,
                                        double milliseconds);

// One JSON object on a line: the file, isPassport, confidence, reasons, recognizedText,
// milliseconds, outline, zones. Without text, there is no recognizedText, and zones say only format
// and strict.
[[nodiscard]] std::string verdictAsJson(const PictureInput& input, const Examination& examination,
                                        double milliseconds, bool withText);

// One JSON object on a line: the file, error.
[[nodiscard]] std::string errorAsJson(const PictureInput& input, std::string_view cause);

}  // namespace kestrelid::cli
