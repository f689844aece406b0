#include "apps/cli/VerdictText.h"

#include "apps/cli/JsonLine.h"
#include "apps/cli/TerminalText.h"
#include "apps/cli/ZoneReport.h"

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

std::string verdictAsText(std::string_view name, const Examination& examination,
                          double milliseconds) {
    const PassportValidationResult& verdict = examination.verdict;
    // Three decimals: with two, 0.499 would look like the 0.5 that makes a passport.
    char numbers[64];
    std::snprintf(numbers, sizeof numbers, ", confidence %.3f, %.0f ms\n", verdict.confidence(),
                  milliseconds);
    std::string text = terminalText(name);
    text += verdict.isPassport() ? ": passport" : ": not a passport";
    text += numbers;
    for (const std::string& reason : verdict.reasons())
        text += "    " + terminalText(reason) + "\n";
    for (const MachineReadableZone& zone : examination.zones)
        text += "    " + zoneSummary(zone) + "\n";
    return text;
}

std::string verdictAsJson(std::string_view name, const Examination& examination,
                          double milliseconds) {
    const PassportValidationResult& verdict = examination.verdict;
    nlohmann::ordered_json outline;
    if (examination.chosenOutline)
        outline = outlineAsJson(examination.outlines[*examination.chosenOutline]);
    return jsonLine({{"file", name},
                     {"isPassport", verdict.isPassport()},
                     {"confidence", verdict.confidence()},
                     {"reasons", verdict.reasons()},
                     {"recognizedText", verdict.recognizedText()},
                     {"milliseconds", std::round(milliseconds * 10.0) / 10.0},
                     {"outline", std::move(outline)},
                     {"zones", zonesAsJson(examination.zones)}});
}

std::string errorAsJson(std::string_view name, std::string_view cause) {
    return jsonObject({{"file", jsonString(name)}, {"error", jsonString(cause)}}) + "\n";
}

}  // namespace kestrelid::cli
