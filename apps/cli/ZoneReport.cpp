#include "apps/cli/ZoneReport.h"

#include "apps/cli/TerminalText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cstdio>
#include <vector>

namespace kestrelid::cli {
namespace {

using Json = nlohmann::ordered_json;

std::string twoDigits(std::optional<int> number) {
    if (!number)
        return "??";
    char buffer[8];
    std::snprintf(buffer, sizeof buffer, "%02d", *number % 100);
    return buffer;
}

std::string asText(const ZoneDate& date) {
    const std::string year = date.year ? std::to_string(*date.year) : twoDigits(date.twoDigitYear);
    return year + "-" + twoDigits(date.month) + "-" + twoDigits(date.day);
}

std::string valueOf(const ZoneField& field) {
    std::string value = terminalText(field.text.view());
    if (field.date)
        value = asText(*field.date);
    if (field.state)
        value +=
            field.state->isKnown ? ", " + std::string(field.state->name) : ", not a known code";
    if (field.isPerhapsTruncated)
        value += " (perhaps cut short)";
    if (!field.corrections.empty())
        value += " (" + std::to_string(field.corrections.size()) + " corrected)";
    if (!field.doubtful.empty())
        value += " (" + std::to_string(field.doubtful.size()) + " in doubt)";
    return value;
}

using Row = std::array<std::string, 3>;

std::size_t width(std::string_view text) {
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char byte) { return (byte & 0xC0) != 0x80; }));
}

Json placeAsJson(ZonePlace place) {
    return {{"line", place.line}, {"column", place.column}};
}

Json optionalAsJson(const std::optional<int>& number) {
    return number ? Json(*number) : Json();
}

Json fieldAsJson(const ZoneField& field) {
    auto corrections = Json::array();
    for (const ZoneCorrection& correction : field.corrections) {
        Json entry = placeAsJson(correction.place);
        entry["from"] = std::string(1, correction.from);
        entry["to"] = std::string(1, correction.to);
        entry["evidence"] =
            correction.evidence == ZoneCorrection::Evidence::grammar ? "grammar" : "checkDigit";
        corrections.push_back(std::move(entry));
    }
    auto doubtful = Json::array();
    for (const ZonePlace place : field.doubtful)
        doubtful.push_back(placeAsJson(place));
    Json object{{"kind", keyOf(field.kind)},
                {"text", field.text.view()},
                {"characters", field.characters.view()},
                {"checkDigit", keyOf(field.checkDigit)},
                {"corrections", std::move(corrections)},
                {"doubtful", std::move(doubtful)}};
    if (field.date)
        object["date"] = {{"year", optionalAsJson(field.date->year)},
                          {"twoDigitYear", optionalAsJson(field.date->twoDigitYear)},
                          {"month", optionalAsJson(field.date->month)},
                          {"day", optionalAsJson(field.date->day)}};
    if (field.state)
        object["state"] = {{"name", field.state->name}, {"isKnown", field.state->isKnown}};
    if (field.kind == ZoneFieldKind::primaryIdentifier ||
        field.kind == ZoneFieldKind::secondaryIdentifier)
        object["isPerhapsTruncated"] = field.isPerhapsTruncated;
    return object;
}

Json problemAsJson(const ZoneProblem& problem) {
    Json object{{"kind", keyOf(problem.kind)},
                {"field", problem.field ? Json(keyOf(*problem.field)) : Json()}};
    if (problem.place)
        object.update(placeAsJson(*problem.place));
    object["text"] = describe(problem);
    return object;
}

Json zoneAsJson(const MachineReadableZone& zone, bool withText) {
    if (!withText)
        return {{"format", nameOf(zone.format)}, {"strict", zone.isTrustworthy()}};
    auto lines = Json::array();
    for (const ZoneLine& line : zone.lines)
        lines.push_back(line.text.view());
    auto fields = Json::array();
    for (const ZoneField& field : zone.fields)
        fields.push_back(fieldAsJson(field));
    auto problems = Json::array();
    for (const ZoneProblem& problem : zone.problems)
        problems.push_back(problemAsJson(problem));
    return {{"format", nameOf(zone.format)},
            {"lines", std::move(lines)},
            {"strict", zone.isTrustworthy()},
            {"fields", std::move(fields)},
            {"problems", std::move(problems)}};
}

}  // namespace

std::string zoneTable(const MachineReadableZone& zone) {
    if (zone.fields.empty())
        return {};
    std::vector<Row> rows{{"field", "value", "check digit"}};
    for (const ZoneField& field : zone.fields)
        rows.push_back({std::string(nameOf(field.kind)), valueOf(field),
                        field.checkDigit == CheckDigit::nonePrinted
                            ? "-"
                            : std::string(keyOf(field.checkDigit))});
    Row::size_type last = rows.front().size() - 1;
    std::string table;
    for (const Row& row : rows) {
        table += "    ";
        for (std::size_t column = 0; column < last; ++column) {
            std::size_t widest = 0;
            for (const Row& other : rows)
                widest = std::max(widest, width(other[column]));
            table += row[column] + std::string(widest - width(row[column]) + 2, ' ');
        }
        table += row[last] + "\n";
    }
    return table;
}

std::string zoneSummary(const MachineReadableZone& zone) {
    std::string text = "Zone " + std::string(nameOf(zone.format));
    if (zone.isTrustworthy())
        return text + ", strict";
    text += ", not strict: " + describe(zone.problems.front());
    const std::size_t others = zone.problems.size() - 1;
    return others == 0 ? text : text + " (and " + std::to_string(others) + " more)";
}

nlohmann::ordered_json zonesAsJson(std::span<const MachineReadableZone> zones, bool withText) {
    auto list = Json::array();
    for (const MachineReadableZone& zone : zones)
        list.push_back(zoneAsJson(zone, withText));
    return list;
}

std::string zonesAsText(std::string_view name, std::span<const MachineReadableZone> zones) {
    std::string text;
    for (const MachineReadableZone& zone : zones) {
        text += terminalText(name) + ": " + std::string(nameOf(zone.format)) +
                (zone.isTrustworthy() ? ", strict: yes\n" : ", strict: no\n") + zoneTable(zone);
        for (const ZoneProblem& problem : zone.problems)
            text += "    Problem: " + describe(problem) + "\n";
    }
    return zones.empty() ? terminalText(name) + ": no machine-readable zone\n" : text;
}

}  // namespace kestrelid::cli
