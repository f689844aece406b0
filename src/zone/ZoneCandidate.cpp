#include "zone/ZoneCandidate.h"

#include "zone/StateCodes.h"
#include "zone/ZoneFields.h"
#include "zone/ZoneText.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace kestrelid::zone {
namespace {

// Text that is no zone has letters where a zone has dates and digits where it has names: a quarter
// of the places at least. One place in this many may be wrong.
constexpr int kPlacesAStranger = 8;

// In part, a zone is told if so many digits pass; by chance they do once in a hundred times.
constexpr int kDigitsInPart = 2;

using Lines = std::vector<const ZoneLineReading*>;

struct Fit {
    ZoneGrid grid;
    Checks checks;
    Lines lines;

    // What speaks against it less what speaks for it. Of two layouts that a doubtful first letter
    // allows, the one with more digits that pass is the right one.
    [[nodiscard]] int faults() const {
        const Cell& first = grid.at({0, 0});
        const bool isCorrected = first.isAllowed() && first.now().character != first.read.character;
        return grid.strangers() + checks.failed() - checks.passed() + isCorrected;
    }
};

// Whether a state stands where a licence, whose layout says little else, has it.
bool namesState(const ZoneGrid& grid) {
    const char code[] = {grid.at({0, 2}).now().character, grid.at({0, 3}).now().character,
                         grid.at({0, 4}).now().character};
    const std::string_view text(code, sizeof code);
    return !stateName(text.substr(0, text.find_last_not_of('<') + 1)).empty();
}

bool isZone(const Fit& fit) {
    const ZoneLayout& layout = fit.grid.layout();
    if (std::find(fit.lines.begin(), fit.lines.end(), nullptr) != fit.lines.end())
        return fit.checks.failed() == 0 && fit.checks.composite == CheckDigit::passed;
    if (!fit.grid.isComplete())
        return fit.checks.passed() >= kDigitsInPart;
    if (layout.format == ZoneFormat::drivingLicence && !namesState(fit.grid))
        return false;
    return fit.grid.strangers() == 0 || fit.checks.passed() > 0;
}

// The layout's line that may be missing: that of the names, where no digit covers them.
std::optional<std::size_t> optionalLine(const ZoneLayout& layout) {
    const auto names =
        std::find_if(layout.fields.begin(), layout.fields.end(), [](const FieldLayout& field) {
            return field.kind == ZoneFieldKind::primaryIdentifier;
        });
    if (names == layout.fields.end() || layout.composite.empty() ||
        std::any_of(layout.composite.begin(), layout.composite.end(),
                    [&](const Run& run) { return run.line == names->line; }))
        return std::nullopt;
    return static_cast<std::size_t>(names->line);
}

// What of the layout the first lines may be, from complete to incomplete.
enum class Way : std::uint8_t { exact, nearly, withoutNames };

std::optional<Lines> linesFor(const ZoneLayout& layout, std::span<const ZoneLineReading> given,
                              Way way) {
    std::size_t count = static_cast<std::size_t>(layout.lineCount);
    const auto missing = way == Way::withoutNames ? optionalLine(layout) : std::nullopt;
    if (way == Way::withoutNames) {
        if (!missing)
            return std::nullopt;
        --count;
    }
    if (given.size() < count || (way == Way::nearly && count == 1))
        return std::nullopt;
    Lines lines;
    for (const ZoneLineReading& line : given.first(count)) {
        const long length = static_cast<long>(line.characters.size());
        const long tolerance = way == Way::nearly ? kLengthTolerance : 0;
        if (std::abs(length - layout.length) > tolerance)
            return std::nullopt;
        lines.push_back(&line);
    }
    if (missing)
        lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(*missing), nullptr);
    return lines;
}

std::optional<Fit> fitOf(const ZoneLayout& layout, Lines lines) {
    ZoneGrid grid(layout, lines);
    if (!grid.hasPrefix() || grid.strangers() * kPlacesAStranger > layout.lineCount * layout.length)
        return std::nullopt;
    Checks checks = checkAndCorrect(grid);
    Fit fit{std::move(grid), std::move(checks), std::move(lines)};
    return isZone(fit) ? std::optional(std::move(fit)) : std::nullopt;
}

}  // namespace

std::optional<Candidate> zoneAt(std::span<const ZoneLineReading> lines, bool isAll,
                                const ZoneRules& rules) {
    for (const Way way : {Way::exact, Way::nearly, Way::withoutNames}) {
        std::optional<Fit> best;
        for (const ZoneLayout& layout : zoneLayouts()) {
            auto taken = linesFor(layout, lines, way);
            if (!taken)
                continue;
            auto fit = fitOf(layout, std::move(*taken));
            if (fit && (!best || fit->faults() < best->faults()))
                best = std::move(fit);
        }
        if (!best)
            continue;
        const auto count = static_cast<std::size_t>(
            std::count_if(best->lines.begin(), best->lines.end(),
                          [](const ZoneLineReading* line) { return line != nullptr; }));
        if (!isAll || count == lines.size())
            return Candidate{zoneFrom(best->grid, best->checks, best->lines, rules), count};
    }
    return std::nullopt;
}

}  // namespace kestrelid::zone
