#pragma once

#include <kestrelid/MachineReadableZone.h>

#include <algorithm>
#include <string>
#include <vector>

namespace kestrelid::test {

// Whether no line is missing or of another length.
inline bool isWhole(const MachineReadableZone& zone) {
    return std::none_of(zone.problems.begin(), zone.problems.end(),
                        [](const auto& p) { return p.kind <= ZoneProblem::Kind::wrongLength; });
}

inline std::string placeText(ZonePlace place) {
    return std::to_string(place.line) + ":" + std::to_string(place.column);
}

// A zone in one line: "TD3 P,UTO,...,740812+,...,- !digit@1:43"; the check digits as + and -.
inline std::string summary(const MachineReadableZone& zone) {
    static const char* const kProblems[] = {"small",   "blurred", "missing", "length",
                                            "allowed", "digit",   "date",    "unclear"};
    std::string text(nameOf(zone.format));
    for (const ZoneField& field : zone.fields) {
        text += &field == zone.fields.data() ? " " : ",";
        text += field.text.view();
        text += field.checkDigit == CheckDigit::passed   ? "+"
                : field.checkDigit == CheckDigit::failed ? "-"
                                                         : "";
    }
    for (const ZoneProblem& problem : zone.problems)
        text += std::string(" !") + kProblems[static_cast<int>(problem.kind)] + "@" +
                placeText(problem.place.value());
    return text;
}

inline std::string summary(const std::vector<MachineReadableZone>& zones) {
    std::string text;
    for (const MachineReadableZone& zone : zones)
        text += (text.empty() ? "" : "\n") + summary(zone);
    return text;
}

}  // namespace kestrelid::test
