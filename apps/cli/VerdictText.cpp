#include "apps/cli/VerdictText.h"

#include "apps/cli/JsonLine.h"
#include "apps/cli/TerminalText.h"

#include <cmath>
#include <cstdio>
#include <utility>

namespace kestrelid::cli {
namespace {

// Beyond 5 decimals lie hundredths of a pixel. Adding 0 makes a negative zero positive.
double share(double value) {
    return std::round(value * 1e5) / 1e5 + 0.0;
}

// In shares of the picture, from its upper left corner, as pictures are usually measured.
nlohmann::ordered_json outlineAsJson(const RectangleObservation& outline) {
    auto corners = nlohmann::ordered_json::array();
    for (const NormalizedPoint& corner : outline.corners)
        corners.push_back({share(corner.x), share(1.0 - corner.y)});
    const NormalizedRect& box = outline.boundingBox;
    return {{"corners", std::move(corners)},
            {"box",
             {share(box.x), share(1.0 - box.y - box.height), share(box.width), share(box.height)}}};
}

}  // namespace

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
    nlohmann::ordered_json outline;
    if (verdict.outline)
        outline = outlineAsJson(*verdict.outline);
    return jsonLine({{"file", name},
                     {"isPassport", verdict.result.isPassport()},
                     {"confidence", verdict.result.confidence()},
                     {"reasons", verdict.result.reasons()},
                     {"recognizedText", verdict.result.recognizedText()},
                     {"milliseconds", std::round(verdict.milliseconds * 10.0) / 10.0},
                     {"outline", std::move(outline)}});
}

std::string errorAsJson(std::string_view name, std::string_view cause) {
    return jsonLine({{"file", name}, {"error", cause}});
}

}  // namespace kestrelid::cli
