#pragma once

#include <kestrelid/MachineReadableZone.h>

#include <array>
#include <optional>
#include <vector>

namespace kestrelid::zone {

// A place taken for another choice of its.
struct Change {
    ZonePlace place;
    int choice = 0;  // index into what is allowed there
};

// Changes that make check digits pass.
struct Solution {
    float cost = 0.0f;  // nats: how much less likely it is than what was read
    std::vector<Change> changes;
};

// The likeliest solutions by what they leave of the composite digit's sum, modulo 10: two for each
// remainder, since it matters only which is the likeliest, and whether another comes close.
class Solutions {
public:
    struct Best {
        std::optional<Solution> first;
        std::optional<Solution> second;
    };

    // The one solution that changes nothing.
    [[nodiscard]] static Solutions unchanged(int sum);
    [[nodiscard]] static Solutions nothing() { return unchanged(0); }

    void add(int sum, Solution solution);

    // One solution of each, together.
    [[nodiscard]] Solutions combined(const Solutions& other) const;

    [[nodiscard]] bool isEmpty() const noexcept;
    [[nodiscard]] const Best& at(int sum) const {
        return byRemainder_[static_cast<std::size_t>(sum)];
    }
    [[nodiscard]] Best best() const;  // of all remainders

private:
    std::array<Best, 10> byRemainder_;
};

}  // namespace kestrelid::zone
