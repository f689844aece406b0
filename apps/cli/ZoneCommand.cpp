#include "apps/cli/ZoneCommand.h"

#include "apps/cli/FileBytes.h"
#include "apps/cli/InputImage.h"
#include "apps/cli/JsonLine.h"
#include "apps/cli/PdfPages.h"
#include "apps/cli/PictureInputs.h"
#include "apps/cli/StandardStreams.h"
#include "apps/cli/VerdictText.h"
#include "apps/cli/ZoneReport.h"

#include <kestrelid/DefaultServices.h>
#include <kestrelid/ImageFile.h>

#include <charconv>
#include <chrono>
#include <span>
#include <variant>

namespace kestrelid::cli {
namespace {

// The text of a page has a few thousand bytes; this stops a file named by mistake.
constexpr std::size_t kMaximumTextSize = 16u * 1024 * 1024;  // bytes

using Zones = std::vector<MachineReadableZone>;

std::variant<Zones, std::string> zonesInText(const std::string& name, const ZoneRules& rules) {
    const BytesResult bytes = name == kStandardInputName ? readStandardInput(kMaximumTextSize)
                                                         : readFile(name, kMaximumTextSize);
    if (const auto* error = std::get_if<ReadError>(&bytes))
        return error->cause;
    const auto& content = std::get<std::string>(bytes);
    if (isImageFormat(std::as_bytes(std::span(content))) || isPdf(content))
        return std::string("no text, but pictures: leave --text out");
    return parseZones(content, rules);
}

// Finds no words: nothing but the outline, which shows how the page lies, and the zones.
std::variant<Zones, std::string> zonesInPicture(const PictureInput& input,
                                                const PlatformServices& services,
                                                const ZoneRules& rules) {
    const auto read = inputImage(input);
    if (const auto* cause = std::get_if<std::string>(&read))
        return *cause;
    if (!services.rectangles || !services.zones)
        return std::string("out of memory");
    const Bitmap& bitmap = *std::get<Image>(read).bitmap();
    const RectangleResult outlines = services.rectangles->perform(bitmap, {});
    ZoneRequest request;
    if (const auto* found = std::get_if<std::vector<RectangleObservation>>(&outlines))
        request.outlines = *found;
    const ZoneResult readings = services.zones->perform(bitmap, request);
    if (const auto* error = std::get_if<RequestError>(&readings))
        return error->description;
    Zones zones;
    for (const ZoneReading& reading : std::get<std::vector<ZoneReading>>(readings)) {
        if (auto zone = parseZone(reading, rules))
            zones.push_back(*std::move(zone));
    }
    return zones;
}

// Writes what was found, or why nothing could be looked for.
ExitStatus report(const PictureInput& input, const std::variant<Zones, std::string>& result,
                  bool json) {
    if (const auto* cause = std::get_if<std::string>(&result)) {
        if (json)
            writeOutput(errorAsJson(input, *cause));
        writeError(shownName(input), *cause);
        return ExitStatus::inputFailed;
    }
    const auto& zones = std::get<Zones>(result);
    if (json) {
        JsonMembers members = fileMembers(input.name, input.page);
        members.emplace_back("zones", jsonText(zonesAsJson(zones)));
        writeOutput(jsonObject(members) + "\n");
    } else {
        writeOutput(zonesAsText(shownName(input), zones));
    }
    return ExitStatus::done;
}

std::optional<int> number(std::string_view digits) {
    int value = 0;
    const auto [end, error] = std::from_chars(digits.begin(), digits.end(), value);
    return error == std::errc() && end == digits.end() && digits.front() != '-'
               ? std::optional(value)
               : std::nullopt;
}

}  // namespace

std::optional<CalendarDay> calendarDay(std::string_view text) {
    if (text.size() != 10 || text[4] != '-' || text[7] != '-')
        return std::nullopt;
    const auto year = number(text.substr(0, 4));
    const auto month = number(text.substr(5, 2));
    const auto day = number(text.substr(8, 2));
    if (!year || !month || !day || *year < 1)
        return std::nullopt;
    const std::chrono::year_month_day date{std::chrono::year(*year),
                                           std::chrono::month(static_cast<unsigned>(*month)),
                                           std::chrono::day(static_cast<unsigned>(*day))};
    return date.ok() ? std::optional(CalendarDay{*year, *month, *day}) : std::nullopt;
}

ExitStatus zone(const ZoneOptions& options) {
    ExitStatus status = ExitStatus::done;
    ZoneRules rules;
    rules.asOf = options.asOf;
    if (options.isText) {
        const std::vector<std::string> standardInput{std::string(kStandardInputName)};
        for (const std::string& name : options.files.empty() ? standardInput : options.files)
            status = graver(status, report({name, name}, zonesInText(name, rules), options.json));
        return graver(status, outputStatus());
    }
    const PlatformServices services = defaultServices({.resources = options.resources});
    const PictureInputs inputs = pictureInputs(options.files);
    if (const std::string line = passedOver(inputs); !line.empty())
        writeError(line);
    for (const PictureInput& input : inputs.pictures)
        status =
            graver(status, report(input, zonesInPicture(input, services, rules), options.json));
    return graver(status, outputStatus());
}

}  // namespace kestrelid::cli
