#include <kestrelid/ZoneTracker.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <string_view>
#include <utility>

namespace kestrelid {

namespace {

constexpr std::string_view kCharacters = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789<";
constexpr int kFramesToForget = 3;
constexpr double kSamePage = 0.75;  // of the characters

const ZoneCharacter::Choice& best(const ZoneCharacter& character) {
    return character.choices.front();
}

bool hasSameShape(const ZoneReading& a, const ZoneReading& b) {
    return std::ranges::equal(
        a.lines, b.lines, {}, [](const ZoneLineReading& line) { return line.characters.size(); },
        [](const ZoneLineReading& line) { return line.characters.size(); });
}

// Share of the places where both read the same character.
double agreement(const ZoneReading& a, const ZoneReading& b) {
    std::size_t same = 0;
    std::size_t all = 0;
    for (std::size_t line = 0; line < a.lines.size(); ++line) {
        const auto& first = a.lines[line].characters;
        const auto& second = b.lines[line].characters;
        for (std::size_t place = 0; place < first.size(); ++place)
            same += best(first[place]).character == best(second[place]).character;
        all += first.size();
    }
    return all == 0 ? 0.0 : static_cast<double>(same) / static_cast<double>(all);
}

// The likeliest characters by the sums of their weighted probabilities.
ZoneCharacter likeliest(std::span<const float> sums, float weight) {
    std::array<ZoneCharacter::Choice, kCharacters.size()> all;
    for (std::size_t index = 0; index < all.size(); ++index)
        all[index] = {kCharacters[index], weight > 0.0f ? sums[index] / weight : 0.0f};
    ZoneCharacter character;
    std::partial_sort_copy(
        all.begin(), all.end(), character.choices.begin(), character.choices.end(),
        [](const auto& a, const auto& b) { return a.probability > b.probability; });
    return character;
}

}  // namespace

bool ZoneTracker::see(const ZoneReading* reading) noexcept try {
    if (!reading)
        return ++framesWithout_ >= kFramesToForget && forget();
    framesWithout_ = 0;
    if (reading->legibility == ZoneReading::Legibility::readable)
        return join(*reading);
    if (live_.frames > 0)
        return false;  // one bad frame of a page that is known
    live_.zone = parseZone(*reading, rules_);
    return true;
} catch (...) {
    return false;
}

bool ZoneTracker::forget() noexcept {
    sums_.clear();
    joined_ = {};
    return std::exchange(live_, {}).zone.has_value();
}

bool ZoneTracker::join(const ZoneReading& reading) {
    constexpr std::size_t kSums = kCharacters.size() + 1;  // and the sum of the weights
    if (live_.frames == 0 || !hasSameShape(joined_, reading) ||
        agreement(joined_, reading) < kSamePage) {
        forget();
        joined_ = reading;
        for (const ZoneLineReading& line : reading.lines)
            sums_.emplace_back(line.characters.size() * kSums, 0.0f);
    }
    for (std::size_t line = 0; line < reading.lines.size(); ++line) {
        joined_.lines[line].corners = reading.lines[line].corners;
        for (std::size_t place = 0; place < reading.lines[line].characters.size(); ++place) {
            const ZoneCharacter& seen = reading.lines[line].characters[place];
            const std::span sums(sums_[line].data() + place * kSums, kSums);
            const float weight = best(seen).probability;
            for (const ZoneCharacter::Choice& choice : seen.choices) {
                const std::size_t index = kCharacters.find(choice.character);
                if (index != std::string_view::npos)
                    sums[index] += weight * choice.probability;
            }
            sums.back() += weight;
            joined_.lines[line].characters[place] = likeliest(sums, sums.back());
        }
    }
    joined_.pixelsPerCharacter = reading.pixelsPerCharacter;
    ++live_.frames;
    live_.zone = parseZone(joined_, rules_);
    return true;
}

}  // namespace kestrelid
