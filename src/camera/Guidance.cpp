#include <kestrelid/Guidance.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>

namespace kestrelid {

namespace {

// After so long without a look nothing is left of the last one.
constexpr PageTracker::Time kLongestGap{5.0};

// Of the picture.
double areaOf(const std::array<NormalizedPoint, 4>& corners) {
    double sum = 0.0;
    for (std::size_t index = 0; index < corners.size(); ++index) {
        const NormalizedPoint& a = corners[index];
        const NormalizedPoint& b = corners[(index + 1) % corners.size()];
        sum += a.x * b.y - b.x * a.y;
    }
    return std::abs(sum) / 2.0;
}

// How far the farthest corner has gone, in shares of the picture's diagonal. A page that turns may
// have its corners named anew.
double distance(const RectangleObservation& from, const RectangleObservation& to) {
    constexpr std::size_t kCorners = 4;
    double least = std::numeric_limits<double>::infinity();
    for (std::size_t shift = 0; shift < kCorners; ++shift) {
        double farthest = 0.0;
        for (std::size_t index = 0; index < kCorners; ++index) {
            const NormalizedPoint& a = from.corners[index];
            const NormalizedPoint& b = to.corners[(index + shift) % kCorners];
            farthest = std::max(farthest, std::hypot(b.x - a.x, b.y - a.y));
        }
        least = std::min(least, farthest);
    }
    return least / std::numbers::sqrt2;
}

// How a page lies in the picture.
enum class Fit : std::uint8_t { inside, cut, tooLarge };

Fit fitOf(const RectangleObservation& outline, const GuidanceLimits& limits) {
    const double margin = limits.leastMargin;
    const auto any = [&](auto&& isThere) { return std::ranges::any_of(outline.corners, isThere); };
    const bool left = any([&](const NormalizedPoint& at) { return at.x < margin; });
    const bool right = any([&](const NormalizedPoint& at) { return at.x > 1.0 - margin; });
    const bool below = any([&](const NormalizedPoint& at) { return at.y < margin; });
    const bool above = any([&](const NormalizedPoint& at) { return at.y > 1.0 - margin; });
    // Cut on both sides it fits nowhere.
    if ((left && right) || (below && above) || areaOf(outline.corners) > limits.greatestArea)
        return Fit::tooLarge;
    return left || right || below || above ? Fit::cut : Fit::inside;
}

}  // namespace

std::string_view keyOf(Advice advice) noexcept {
    switch (advice) {
    case Advice::none:
        return "none";
    case Advice::tooDark:
        return "tooDark";
    case Advice::noPage:
        return "noPage";
    case Advice::wholePage:
        return "wholePage";
    case Advice::moveCloser:
        return "moveCloser";
    case Advice::moveBack:
        return "moveBack";
    case Advice::glare:
        return "glare";
    case Advice::holdStill:
        return "holdStill";
    }
    return "none";
}

void PageTracker::see(const PageLook& look, Time now) noexcept {
    if (lastTime_ && now - *lastTime_ > kLongestGap)
        forget();
    if (!lastTime_)
        toldAt_ = now;  // that nothing is wrong
    lastTime_ = now;

    const Advice advice = adviceFor(look, look.outline ? motionTo(*look.outline, now) : 0.0);
    consider(advice, now);
    sightings_ = {Sighting{look.outline, now}, sightings_[0]};
    live_.outline = look.outline;
    live_.isSteady = wasGood_ && advice == Advice::none;
    wasGood_ = advice == Advice::none;
}

// Against both of the last two looks: where one of them has mistaken something else for the page,
// nothing has moved.
double PageTracker::motionTo(const RectangleObservation& outline, Time now) const noexcept {
    std::optional<double> least;
    for (const Sighting& sighting : sightings_) {
        if (!sighting.outline || now <= sighting.time)
            continue;
        const double motion = distance(*sighting.outline, outline) / (now - sighting.time).count();
        least = std::min(least.value_or(motion), motion);
    }
    return least.value_or(0.0);
}

void PageTracker::consider(Advice advice, Time now) noexcept {
    const bool isAgreed = advice == before_ || advice == earlier_;
    const Advice agreed = isAgreed ? advice : before_ == earlier_ ? before_ : live_.advice;
    if (agreed != live_.advice && now - toldAt_ >= limits_.hold) {
        live_.advice = agreed;
        toldAt_ = now;
    }
    earlier_ = before_;
    before_ = advice;
}

void PageTracker::forget() noexcept {
    *this = PageTracker(limits_);
}

// The most pressing first: what hides the others, and what is mended before them.
Advice PageTracker::adviceFor(const PageLook& look, double motion) const noexcept {
    // A dark desk alone may be well lit.
    if (look.brightness < limits_.leastBrightness * (look.outline ? 1.0 : 0.5))
        return Advice::tooDark;
    if (!look.outline)
        return Advice::noPage;
    switch (fitOf(*look.outline, limits_)) {
    case Fit::tooLarge:
        return Advice::moveBack;
    case Fit::cut:
        return Advice::wholePage;
    case Fit::inside:
        break;
    }
    if (areaOf(look.outline->corners) < limits_.leastArea)
        return Advice::moveCloser;
    if (look.glare > limits_.mostGlare)
        return Advice::glare;
    if (motion > limits_.mostMotion || look.sharpness < limits_.leastSharpness)
        return Advice::holdStill;
    return Advice::none;
}

}  // namespace kestrelid
