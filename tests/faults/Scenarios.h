#pragma once

#include <functional>
#include <string>
#include <vector>

namespace kestrelid::test {

// Something that a host does, from a new beginning to its end. Its answer begins with "error: " if
// the library said that it failed; otherwise it is always the same.
struct Scenario {
    std::string name;
    std::function<std::string()> run;
};

[[nodiscard]] std::vector<Scenario> scenarios();

}  // namespace kestrelid::test
