#include "benchmarks/chaos/Round.h"

#include <algorithm>
#include <functional>

namespace kestrelid::chaos {
namespace {

constexpr std::string_view kSuspension = "suspension";
constexpr std::string_view kOtherFormats = "other formats";

// What stands for as long as the fault does. `#` stands for a number that is drawn below `most`.
struct FaultKind {
    std::string_view name;
    std::vector<std::string_view> lines;
    int most = 0;
    bool lingers = false;  // a call under way at its end takes the milliseconds drawn
};

const std::vector<FaultKind>& kinds() {
    static const std::vector<FaultKind> all{
        {.name = "unplugged", .lines = {"unplugged"}},
        {.name = "unplugged with an error", .lines = {"unplugged error"}},
        {.name = "stall", .lines = {"stall-after 0"}},
        {.name = "error", .lines = {"fail start"}},
        {.name = "busy", .lines = {"fail start", "busy"}},
        {.name = "does not open", .lines = {"fail start", "fail open"}},
        {.name = "hangs as it opens", .lines = {"fail start", "hang open"}},
        {.name = "hangs as it closes", .lines = {"fail start", "hang close"}},
        {.name = "hangs before a frame", .lines = {"caps-change 0", "hang first"}},
        {.name = "opens slowly", .lines = {"delay open #"}, .most = 2500, .lingers = true},
        {.name = "closes slowly", .lines = {"delay close #"}, .most = 2500, .lingers = true},
        {.name = "first frame late", .lines = {"delay first #"}, .most = 2500, .lingers = true},
        {.name = "truncated frames", .lines = {"damage truncated"}},
        {.name = "short frames", .lines = {"damage stride"}},
        {.name = "empty frames", .lines = {"damage empty"}},
        {.name = "other caps unasked", .lines = {"caps-change #"}, .most = 60},
        {.name = "black and blurred frames", .lines = {"settle #", "blurred #"}, .most = 20},
    };
    return all;
}

// Stills in place, stills as motion JPEG for which the camera opens anew, and all in motion JPEG.
const std::vector<std::vector<std::string>>& formats() {
    static const std::vector<std::vector<std::string>> all{
        {"caps video/x-raw,format=YUY2,width=640,height=360,framerate=30/1",
         "caps video/x-raw,format=YUY2,width=1280,height=720,framerate=5/1"},
        {"caps video/x-raw,format=NV12,width=640,height=360,framerate=30/1",
         "caps image/jpeg,width=1280,height=720,framerate=15/1"},
        {"caps image/jpeg,width=640,height=360,framerate=30/1",
         "caps image/jpeg,width=1280,height=720,framerate=15/1"},
    };
    return all;
}

class Dice {
public:
    explicit Dice(std::mt19937& random) : random_(random) {}

    // The standard's distributions differ from library to library; a seed should not.
    Seconds between(Seconds least, Seconds most) {
        return least + (most - least) * (static_cast<double>(random_()) / std::mt19937::max());
    }
    int below(int end) { return static_cast<int>(random_() % static_cast<unsigned>(end)); }
    bool once(int in) { return below(in) == 0; }
    Seconds length() { return once(6) ? between(3.0, 8.0) : between(0.1, 3.0); }

private:
    std::mt19937& random_;
};

Fault draw(Dice& dice, const FaultKind& kind) {
    Fault fault{.name = kind.name, .lines = {}, .begin = dice.between(0.0, 2.0)};
    const int number = kind.most > 0 ? dice.below(kind.most) : 0;
    for (const std::string_view line : kind.lines) {
        std::string text(line);
        if (const auto mark = text.find('#'); mark != std::string::npos)
            text.replace(mark, 1, std::to_string(number));
        fault.lines.push_back(std::move(text));
    }
    fault.end = fault.begin + dice.length();
    fault.over = fault.end + (kind.lingers ? number / 1000.0 : 0.0);
    return fault;
}

void drawHost(Dice& dice, Round& round, Seconds end) {
    for (int number = dice.below(8); number > 0; --number) {
        const Seconds at = dice.between(0.0, end);
        switch (dice.below(5)) {
        case 0:
            round.deeds.push_back({.kind = Deed::Kind::hide, .at = at});
            round.deeds.push_back({.kind = Deed::Kind::show, .at = at + dice.between(0.0, 1.0)});
            break;
        case 1:
            round.deeds.push_back({.kind = Deed::Kind::release, .at = at});
            round.deeds.push_back({.kind = Deed::Kind::open, .at = at + dice.between(0.0, 0.7)});
            break;
        default:
            round.deeds.push_back({.at = at, .number = 1 + dice.below(5)});
        }
    }
}

}  // namespace

const std::vector<std::string>& firstCaps() {
    return formats().front();
}

std::vector<std::string_view> faultNames() {
    std::vector<std::string_view> names{kSuspension, kOtherFormats};
    for (const FaultKind& kind : kinds())
        names.push_back(kind.name);
    return names;
}

Round drawRound(std::mt19937& random, const std::set<std::string, std::less<>>& without) {
    Dice dice(random);
    Round round;
    std::vector<const FaultKind*> left;
    for (const FaultKind& kind : kinds())
        left.push_back(&kind);
    for (int number = 1 + dice.below(3); number > 0; --number) {
        const auto drawn = left.begin() + dice.below(static_cast<int>(left.size()));
        Fault fault = draw(dice, **drawn);
        left.erase(drawn);
        if (!without.contains(fault.name))
            round.faults.push_back(std::move(fault));
    }
    for (const Fault& fault : round.faults)
        round.over = std::max(round.over, fault.over);
    drawHost(dice, round, round.over + 0.5);
    const auto isDrawn = [&](std::string_view name) {
        return dice.once(4) && !without.contains(name);
    };
    const Deed suspension{.kind = Deed::Kind::suspend,
                          .at = dice.between(0.0, 4.0),
                          .number = 200 + dice.below(1800)};
    if (isDrawn(kSuspension))
        round.deeds.push_back(suspension);
    round.capsChange = dice.between(0.0, 4.0);
    const auto& otherCaps = formats()[static_cast<std::size_t>(dice.below(3))];
    if (isDrawn(kOtherFormats))
        round.otherCaps = otherCaps;
    // Some that are under way when a fault begins.
    for (const Fault& fault : round.faults) {
        const Seconds at = std::max(0.0, fault.begin + dice.between(-0.3, 0.1));
        if (dice.once(2))
            round.deeds.push_back({.at = at, .number = 1 + dice.below(3)});
    }
    round.isShownAgain = dice.once(2);
    round.quiet = dice.between(0.3, 2.5);  // photos are taken from 1 s after a start on
    std::ranges::sort(round.deeds, {}, &Deed::at);

    for (const Deed& deed : round.deeds)
        round.over = std::max(round.over, deed.at);
    if (!round.otherCaps.empty())
        round.over = std::max(round.over, round.capsChange);
    return round;
}

}  // namespace kestrelid::chaos
