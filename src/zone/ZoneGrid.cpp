#include "zone/ZoneGrid.h"

#include <algorithm>

namespace kestrelid::zone {
namespace {

// A choice below this is what a network gives to everything, not something that it saw.
constexpr float kLeastProbability = 0.02f;

// The choices as they are promised, whatever a host's reader gives: best first, 0..1.
std::array<ZoneCharacter::Choice, 4> orderly(const ZoneCharacter& character) {
    auto choices = character.choices;
    for (ZoneCharacter::Choice& choice : choices)
        choice.probability = choice.probability > 0 ? std::min(choice.probability, 1.0f) : 0.0f;
    std::stable_sort(choices.begin(), choices.end(),
                     [](const auto& a, const auto& b) { return a.probability > b.probability; });
    return choices;
}

}  // namespace

ZoneGrid::ZoneGrid(const ZoneLayout& layout, std::span<const ZoneLineReading* const> lines)
    : layout_(&layout) {
    const auto length = static_cast<std::size_t>(layout.length);
    for (const ZoneLineReading* line : lines) {
        cells_.emplace_back(length);
        states_.push_back(!line                               ? LineState::missing
                          : line->characters.size() == length ? LineState::complete
                                                              : LineState::wrongLength);
    }
    for (const FieldLayout& field : layout.fields) {
        const ZoneLineReading* line = lines[static_cast<std::size_t>(field.line)];
        WipedText before;
        for (int i = 0; i < field.length; ++i) {
            decide(field.place(i), field.alphabet, before.view(), line);
            const char taken = at(field.place(i)).now().character;
            before.append({&taken, 1});
        }
        if (field.digit != DigitRule::none)
            decide(field.digitPlace(),
                   field.digit == DigitRule::printed ? Alphabet::checkDigit
                                                     : Alphabet::checkDigitOrFiller,
                   {}, line);
    }
    if (!layout.composite.empty())
        decide(layout.compositeDigit, Alphabet::checkDigit, {},
               lines[static_cast<std::size_t>(layout.compositeDigit.line)]);
}

void ZoneGrid::decide(ZonePlace place, Alphabet alphabet, std::string_view before,
                      const ZoneLineReading* line) {
    if (!line || static_cast<std::size_t>(place.column) >= line->characters.size())
        return;
    const auto choices = orderly(line->characters[static_cast<std::size_t>(place.column)]);
    Cell& cell = at(place);
    cell.read = choices[0];
    cell.dependsOnOthers = alphabet == Alphabet::names || alphabet == Alphabet::state;
    for (const ZoneCharacter::Choice& choice : choices) {
        const auto known =
            std::span(cell.allowed).first(static_cast<std::size_t>(cell.allowedCount));
        const bool isNew = std::none_of(known.begin(), known.end(), [&](const auto& other) {
            return other.character == choice.character;
        });
        if (isNew && choice.probability >= kLeastProbability &&
            isAllowed(*layout_, alphabet, before, choice.character))
            cell.allowed[static_cast<std::size_t>(cell.allowedCount++)] = choice;
    }
}

Cell& ZoneGrid::at(ZonePlace place) {
    return cells_[static_cast<std::size_t>(place.line)][static_cast<std::size_t>(place.column)];
}

const Cell& ZoneGrid::at(ZonePlace place) const {
    return cells_[static_cast<std::size_t>(place.line)][static_cast<std::size_t>(place.column)];
}

bool ZoneGrid::isComplete() const noexcept {
    return std::all_of(states_.begin(), states_.end(),
                       [](LineState state) { return state == LineState::complete; });
}

bool ZoneGrid::hasPrefix() const {
    if (states_.front() == LineState::missing)
        return true;
    int column = 0;
    for (const char expected : layout_->prefix) {
        if (at({0, column++}).now().character != expected)
            return false;
    }
    return at({0, 0}).isAllowed();
}

int ZoneGrid::strangers() const {
    std::ptrdiff_t count = 0;
    for (std::size_t line = 0; line < cells_.size(); ++line) {
        if (states_[line] == LineState::complete)
            count += std::count_if(cells_[line].begin(), cells_[line].end(),
                                   [](const Cell& cell) { return !cell.isAllowed(); });
    }
    return static_cast<int>(count);
}

}  // namespace kestrelid::zone
