#pragma once

#include <kestrelid/VisionServices.h>

#include <string>
#include <vector>

namespace kestrelid::test {

// A reading in which every character was read clearly.
inline ZoneReading clearReading(const std::vector<std::string>& lines) {
    ZoneReading reading;
    for (const std::string& line : lines) {
        reading.lines.emplace_back();
        for (const char character : line)
            reading.lines.back().characters.emplace_back().choices[0] = {character, 0.98f};
    }
    return reading;
}

inline const std::vector<std::string> kSpecimenZone{"P<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<<<<",
                                                    "L898902C36UTO7408122F1204159ZE184226B<<<<<10"};

// Sees in every picture what the test puts there.
struct FakeZones final : ZoneService {
    ZoneResult perform(const Bitmap&, const ZoneRequest&) override { return seen; }

    std::vector<ZoneReading> seen;
};

}  // namespace kestrelid::test
