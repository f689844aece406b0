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

std::string verdictAsJson(const PictureInput& input, const Examination& examination,
                          double milliseconds, bool withText) {
    const PassportValidationResult& verdict = examination.verdict;
    nlohmann::ordered_json outline;
    if (examination.chosenOutline)
        outline = outlineAsJson(examination.outlines[*examination.chosenOutline]);
    JsonMembers members = fileMembers(input.name, input.page);
    const auto add = [&](const char* name, const nlohmann::ordered_json& value) {
        members.emplace_back(name, jsonText(value));
    };
    add("isPassport", verdict.isPassport());
    add("confidence", verdict.confidence());
    add("reasons", verdict.reasons());
    if (withText)
        add("recognizedText", verdict.recognizedText());
    add("milliseconds", std::round(milliseconds * 10.0) / 10.0);
    add("outline", outline);
    add("zones", zonesAsJson(examination.zones, withText));
    return jsonObject(members) + "\n";
}

std::string errorAsJson(const PictureInput& input, std::string_view cause) {
    JsonMembers members = fileMembers(input.name, input.page);
    members.emplace_back("error", jsonText(cause));
    return jsonObject(members) + "\n";
}

}  // namespace kestrelid::cli
