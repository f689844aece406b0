#include "apps/cli/ZoneCommand.h"

#include "apps/cli/FileBytes.h"
#include "apps/cli/PictureInputs.h"
#include "apps/cli/StandardStreams.h"
#include "apps/cli/VerdictText.h"
#include "apps/cli/ZoneReport.h"

#include <charconv>
#include <chrono>

namespace kestrelid::cli {
namespace {

// The text of a page has a few thousand bytes; this stops a file named by mistake.
constexpr std::size_t kMaximumTextSize = 16u * 1024 * 1024;  // bytes

// The cause if the file could not be read.
std::optional<std::string> report(const std::string& name, const ZoneOptions& options) {
    const BytesResult bytes = name == kStandardInputName ? readStandardInput(kMaximumTextSize)
                                                         : readFile(name, kMaximumTextSize);
    if (const auto* error = std::get_if<ReadError>(&bytes))
        return error->cause;
    ZoneRules rules;
    rules.asOf = options.asOf;
    const auto zones = parseZones(std::get<std::string>(bytes), rules);
    writeOutput(options.json ? zonesAsJson(name, zones) : zonesAsText(name, zones));
    return std::nullopt;
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
    const std::vector<std::string> standardInput{std::string(kStandardInputName)};
    for (const std::string& name : options.files.empty() ? standardInput : options.files) {
        if (const auto cause = report(name, options)) {
            if (options.json)
                writeOutput(errorAsJson(name, *cause));
            writeError(name, *cause);
            status = ExitStatus::inputFailed;
        }
    }
    return graver(status, outputStatus());
}

}  // namespace kestrelid::cli
