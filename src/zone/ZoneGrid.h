#pragma once

#include "zone/ZoneLayouts.h"

#include <array>
#include <span>
#include <vector>

namespace kestrelid::zone {

// A place of a zone: what was read there, and what it is taken for.
struct Cell {
    ZoneCharacter::Choice read;                      // the best, whether it may stand here or not
    std::array<ZoneCharacter::Choice, 4> allowed{};  // what may stand here, best first
    int allowedCount = 0;                            // 0: nothing that was read may
    int taken = 0;                                   // index into allowed
    bool isTakenByCheckDigit = false;

    // What may stand here depends on what stands before, so that no check digit changes it.
    bool dependsOnOthers = false;

    [[nodiscard]] bool isAllowed() const noexcept { return allowedCount > 0; }
    [[nodiscard]] ZoneCharacter::Choice now() const noexcept {
        return isAllowed() ? allowed[static_cast<std::size_t>(taken)] : read;
    }
};

// Whether a line is there with the length of its layout.
enum class LineState : std::uint8_t { complete, wrongLength, missing };

// The lines of a candidate, cut or filled to the length of the layout, decided by its grammar: at
// each place what the layout allows there and the reader thinks of.
class ZoneGrid {
public:
    // lines: as many as the layout has. None where a line is missing.
    ZoneGrid(const ZoneLayout& layout, std::span<const ZoneLineReading* const> lines);

    [[nodiscard]] const ZoneLayout& layout() const noexcept { return *layout_; }
    [[nodiscard]] Cell& at(ZonePlace place);
    [[nodiscard]] const Cell& at(ZonePlace place) const;
    [[nodiscard]] LineState state(int line) const {
        return states_[static_cast<std::size_t>(line)];
    }
    [[nodiscard]] bool isComplete() const noexcept;

    // Whether the first line begins as the layout wants it.
    [[nodiscard]] bool hasPrefix() const;

    // Places of complete lines where nothing allowed was read.
    [[nodiscard]] int strangers() const;

private:
    void decide(ZonePlace place, Alphabet alphabet, std::string_view before,
                const ZoneLineReading* line);

    const ZoneLayout* layout_;
    std::vector<Wiped<Cell>> cells_;
    std::vector<LineState> states_;
};

}  // namespace kestrelid::zone
