#include "zone/ZoneFields.h"

#include "zone/CheckDigits.h"
#include "zone/StateCodes.h"
#include "zone/ZoneDates.h"
#include "zone/ZoneNames.h"

#include <algorithm>

namespace kestrelid::zone {
namespace {

// From this probability on a second choice of the same value modulo 10, which no digit can tell
// from the first, is worth a doubt. An OCR network gives what it does not see less than a
// hundredth.
constexpr float kTwinProbability = 0.05f;

// What is no printable ASCII, as part of a longer sequence for instance, shows as a question mark.
char shown(char character) noexcept {
    return character >= ' ' && character <= '~' ? character : '?';
}

bool holds(const std::vector<ZonePlace>& places, ZonePlace place) {
    return std::find(places.begin(), places.end(), place) != places.end();
}

bool isName(ZoneFieldKind kind) noexcept {
    return kind == ZoneFieldKind::primaryIdentifier || kind == ZoneFieldKind::secondaryIdentifier;
}

class Telling {
public:
    Telling(const ZoneGrid& grid, const Checks& checks, const ZoneRules& rules)
        : grid_(grid), checks_(checks), rules_(rules),
          stopped_(static_cast<std::size_t>(grid.layout().lineCount), false) {
        zone_.format = grid.layout().format;
        if (checks.composite == CheckDigit::passed)
            addComposite(covered_);
        for (const DigitCheck& check : checks.fields) {
            if (check.result == CheckDigit::passed)
                covered_.insert(covered_.end(), check.covered.begin(), check.covered.end());
        }
    }

    MachineReadableZone tell(std::span<const ZoneLineReading* const> lines) {
        for (int line = 0; line < grid_.layout().lineCount; ++line)
            addLine(line, lines[static_cast<std::size_t>(line)]);
        for (const FieldLayout& field : grid_.layout().fields) {
            if (isTold(field))
                addLayoutField(field);
        }
        addCompositeField();
        std::stable_sort(zone_.problems.begin(), zone_.problems.end(),
                         [](const auto& a, const auto& b) { return a.kind < b.kind; });
        return std::move(zone_);
    }

private:
    void addComposite(std::vector<ZonePlace>& places) const {
        for (const Run& run : grid_.layout().composite) {
            for (int i = 0; i < run.length; ++i)
                places.push_back({run.line, run.column + i});
        }
    }

    void addProblem(ZoneProblem::Kind kind, std::optional<ZoneFieldKind> field, ZonePlace place) {
        zone_.problems.push_back({kind, field, place});
    }

    void addLine(int number, const ZoneLineReading* given) {
        ZoneLine line;
        if (given) {
            line.corners = given->corners;
            int column = 0;
            for (const ZoneCharacter& character : given->characters) {
                const bool isDecided = grid_.state(number) == LineState::complete;
                const ZoneCharacter::Choice choice =
                    isDecided ? grid_.at({number, column}).now() : character.choices[0];
                const char text = shown(choice.character);
                line.text.append({&text, 1});
                line.confidences.push_back(choice.probability);
                ++column;
            }
        }
        zone_.lines.push_back(std::move(line));
        if (grid_.state(number) == LineState::missing)
            addProblem(ZoneProblem::Kind::lineMissing, std::nullopt, {number, 0});
        else if (grid_.state(number) == LineState::wrongLength)
            addProblem(ZoneProblem::Kind::wrongLength, std::nullopt, {number, 0});
    }

    // Of a line of wrong length the fields up to the first whose own digit does not hold: behind
    // the place where a character is missing everything stands elsewhere.
    bool isTold(const FieldLayout& field) {
        if (grid_.state(field.line) != LineState::wrongLength)
            return grid_.state(field.line) == LineState::complete;
        const DigitCheck* check = checks_.of(field);
        const auto line = static_cast<std::size_t>(field.line);
        stopped_[line] = stopped_[line] || (check && check->result != CheckDigit::passed);
        return check && !stopped_[line];
    }

    void addLayoutField(const FieldLayout& layout) {
        std::vector<ZonePlace> places;
        const DigitCheck* check = checks_.of(layout);
        if (check) {
            places = check->covered;
        } else {
            const int first = layout.kind == ZoneFieldKind::optionalData ? longNumberEnd() : 0;
            for (int i = first; i < layout.length; ++i)
                places.push_back(layout.place(i));
        }
        if (layout.kind != ZoneFieldKind::primaryIdentifier ||
            hasField(ZoneFieldKind::secondaryIdentifier)) {
            addField(layout.kind, std::move(places), check);
            return;
        }
        const auto start = static_cast<std::ptrdiff_t>(secondaryStart(charactersAt(places).view()));
        addField(layout.kind, {places.begin(), places.begin() + start}, nullptr);
        addField(ZoneFieldKind::secondaryIdentifier, {places.begin() + start, places.end()},
                 nullptr);
        zone_.fields[zone_.fields.size() - 2].isPerhapsTruncated =
            zone_.fields.back().isPerhapsTruncated = grid_.at(places.back()).now().character != '<';
    }

    [[nodiscard]] bool hasField(ZoneFieldKind kind) const {
        const auto fields = grid_.layout().fields;
        return std::any_of(fields.begin(), fields.end(),
                           [&](const FieldLayout& field) { return field.kind == kind; });
    }

    // How many characters of the optional data belong to a long document number.
    [[nodiscard]] int longNumberEnd() const {
        for (const DigitCheck& check : checks_.fields) {
            if (check.isLong())
                return static_cast<int>(check.covered.size()) - check.field->length + 1;
        }
        return 0;
    }

    [[nodiscard]] WipedText charactersAt(const std::vector<ZonePlace>& places) const {
        WipedText text;
        for (const ZonePlace place : places) {
            const char character = shown(grid_.at(place).now().character);
            text.append({&character, 1});
        }
        return text;
    }

    void addCorrection(ZoneField& field, ZonePlace place) const {
        const Cell& cell = grid_.at(place);
        const char to = cell.now().character;
        if (to != cell.read.character)
            field.corrections.push_back({place, shown(cell.read.character), to,
                                         cell.isTakenByCheckDigit
                                             ? ZoneCorrection::Evidence::checkDigit
                                             : ZoneCorrection::Evidence::grammar});
    }

    [[nodiscard]] bool isDoubtful(ZonePlace place) const {
        const Cell& cell = grid_.at(place);
        if (!cell.isAllowed())
            return false;
        const ZoneCharacter::Choice now = cell.now();
        if (!holds(covered_, place))
            return !(now.probability >= rules_.clearProbability);
        const auto allowed =
            std::span(cell.allowed).first(static_cast<std::size_t>(cell.allowedCount));
        return holds(checks_.rivals, place) ||
               std::any_of(allowed.begin(), allowed.end(), [&](const auto& other) {
                   return other.character != now.character &&
                          other.probability >= kTwinProbability &&
                          valueOf(other.character) % 10 == valueOf(now.character) % 10;
               });
    }

    // A place of the field's characters or its digit.
    void lookAt(ZoneField& field, ZonePlace place) {
        addCorrection(field, place);
        if (!grid_.at(place).isAllowed())
            addProblem(ZoneProblem::Kind::notAllowed, field.kind, place);
    }

    void addField(ZoneFieldKind kind, std::vector<ZonePlace> places, const DigitCheck* check) {
        ZoneField field;
        field.kind = kind;
        field.characters = charactersAt(places);
        field.text = textForPeople(field.characters.view(), isName(kind));
        bool isClean = true;
        for (const ZonePlace place : places) {
            lookAt(field, place);
            isClean = isClean && grid_.at(place).isAllowed();
            field.confidences.push_back(grid_.at(place).now().probability);
            if (isDoubtful(place)) {
                field.doubtful.push_back(place);
                if (!(field.confidences.back() >= rules_.clearProbability))
                    addProblem(ZoneProblem::Kind::unclear, kind, place);
            }
        }
        if (check)
            addCheckDigit(field, check->digit, check->result);
        if (isClean &&
            (kind == ZoneFieldKind::dateOfBirth || kind == ZoneFieldKind::dateOfExpiry)) {
            field.date = dateFrom(kind, field.characters.view(), rules_);
            if (!field.date)
                addProblem(ZoneProblem::Kind::impossibleDate, kind, places.front());
        }
        if (kind == ZoneFieldKind::issuingState || kind == ZoneFieldKind::nationality) {
            const std::string_view name = stateName(field.text.view());
            field.state = ZoneState{name, !name.empty()};
        }
        field.isPerhapsTruncated =
            isName(kind) && !field.characters.empty() && !field.characters.view().ends_with('<');
        field.places = std::move(places);
        zone_.fields.push_back(std::move(field));
    }

    void addCheckDigit(ZoneField& field, ZonePlace place, CheckDigit result) {
        field.checkDigit = result;
        field.checkDigitPlace = place;
        lookAt(field, place);
        if (result == CheckDigit::failed)
            addProblem(ZoneProblem::Kind::checkDigitFailed, field.kind, place);
    }

    void addCompositeField() {
        const auto composite = grid_.layout().composite;
        const bool isWhole = std::all_of(composite.begin(), composite.end(), [&](const Run& run) {
            return grid_.state(run.line) == LineState::complete;
        });
        if (composite.empty() || !isWhole)
            return;
        ZoneField field;
        field.kind = ZoneFieldKind::composite;
        addCheckDigit(field, grid_.layout().compositeDigit, checks_.composite);
        zone_.fields.push_back(std::move(field));
    }

    const ZoneGrid& grid_;
    const Checks& checks_;
    const ZoneRules& rules_;
    MachineReadableZone zone_;
    std::vector<ZonePlace> covered_;  // by a digit that passes
    std::vector<bool> stopped_;
};

}  // namespace

MachineReadableZone zoneFrom(const ZoneGrid& grid, const Checks& checks,
                             std::span<const ZoneLineReading* const> lines,
                             const ZoneRules& rules) {
    return Telling(grid, checks, rules).tell(lines);
}

}  // namespace kestrelid::zone
