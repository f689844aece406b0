#pragma once

#include "benchmarks/chaos/Witness.h"

#include <cstdint>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelid::chaos {

// A fault of the camera that is drawn: its lines stand from one moment to another.
struct Fault {
    std::string_view name;
    std::vector<std::string> lines;
    Seconds begin = 0.0;
    Seconds end = 0.0;
    Seconds over = 0.0;  // when what it did last is over
};

// What the host does, or what befalls its process.
struct Deed {
    enum class Kind : std::uint8_t { photos, hide, show, release, open, suspend };
    Kind kind = Kind::photos;
    Seconds at = 0.0;
    int number = 0;  // of photos; milliseconds of a suspension
};

// Some seconds of trouble, after which the camera is whole again, and some of quiet.
struct Round {
    std::vector<Fault> faults;
    std::vector<Deed> deeds;             // by time
    std::vector<std::string> otherCaps;  // of the camera that is plugged in instead, or none
    Seconds capsChange = 0.0;            // when it is
    Seconds over = 0.0;                  // the trouble
    Seconds quiet = 0.0;
    bool isShownAgain = false;  // when the trouble is over; otherwise the camera is left to itself
};

// The lines of the camera that a run begins with.
const std::vector<std::string>& firstCaps();

// Every name that Fault::name and the deeds' counts may have.
std::vector<std::string_view> faultNames();

// without: names of faults that are never drawn.
Round drawRound(std::mt19937& random, const std::set<std::string, std::less<>>& without);

}  // namespace kestrelid::chaos
