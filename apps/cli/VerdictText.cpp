#include "apps/cli/VerdictText.h"

#include "apps/cli/JsonLine.h"
#include "apps/cli/TerminalText.h"

#include <cmath>
#include <cstdio>

namespace kestrelid::cli {

std::string verdictAsText(std::string_view name, const Verdict& verdict) {
    // Three decimals: with two, 0.499 would look like the 0.5 that makes a passport.
    char numbers[64];
    std::snprintf(numbers, sizeof numbers, ", confidence %.3f, %.0f ms\n",
                  verdict.result.confidence(), verdict.milliseconds);
    std::string text = terminalText(name);
    text += verdict.result.isPassport() ? ": passport" : ": not a passport";
    text += numbers;
    for (const std::string& reason : verdict.result.reasons())
        text += "    " + terminalText(reason) + "\n";
    return text;
}

std::string verdictAsJson(std::string_view name, const Verdict& verdict) {
    return jsonLine({{"file", name},
                     {"isPassport", verdict.result.isPassport()},
                     {"confidence", verdict.result.confidence()},
                     {"reasons", verdict.result.reasons()},
                     {"recognizedText", verdict.result.recognizedText()},
                     {"milliseconds", std::round(verdict.milliseconds * 10.0) / 10.0}});
}

std::string errorAsJson(std::string_view name, std::string_view cause) {
    return jsonLine({{"file", name}, {"error", cause}});
}

}  // namespace kestrelid::cli
