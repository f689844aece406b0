#pragma once

#include "benchmarks/chaos/Screen.h"
#include "benchmarks/chaos/Witness.h"

#include <functional>
#include <set>
#include <string>

namespace kestrelid::chaos {

struct RunOptions {
    double seconds = 60.0;
    unsigned seed = 1;
    int patience = 1;
    int from = 1;  // the first round that is played
    std::set<std::string, std::less<>> without;
};

// stopFor: stops this process for so many milliseconds. Returns the number of findings.
int run(const RunOptions& options, const std::function<void(int milliseconds)>& stopFor);

}  // namespace kestrelid::chaos
