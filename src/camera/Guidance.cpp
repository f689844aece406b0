#include <kestrelid/Guidance.h>

#include <algorithm>
#include <cmath>

namespace kestrelid {

namespace {

// Twice the area of the quadrilateral, in shares of the picture.
double doubleArea(const std::array<NormalizedPoint, 4>& corners) {
    double sum = 0.0;
    for (std::size_t index = 0; index < corners.size(); ++index) {
        const NormalizedPoint& a = corners[index];
        const NormalizedPoint& b = corners[(index + 1) % corners.size()];
        sum += a.x * b.y - b.x * a.y;
    }
    return std::abs(sum);
}

// How far the farthest corner has gone, in shares of the picture's diagonal.
double distance(const RectangleObservation& from, const RectangleObservation& to) {
    double farthest = 0.0;
    for (std::size_t index = 0; index < from.corners.size(); ++index)
        farthest = std::max(farthest, std::hypot(to.corners[index].x - from.corners[index].x,
                                                 to.corners[index].y - from.corners[index].y));
    return farthest / std::sqrt(2.0);
}

// The sides of the picture that the outline touches.
int sidesTouched(const RectangleObservation& outline, double margin) {
    const auto any = [&](auto&& isThere) {
        return std::any_of(outline.corners.begin(), outline.corners.end(), isThere) ? 1 : 0;
    };
    return any([&](const NormalizedPoint& at) { return at.x < margin; }) +
           any([&](const NormalizedPoint& at) { return at.x > 1.0 - margin; }) +
           any([&](const NormalizedPoint& at) { return at.y < margin; }) +
           any([&](const NormalizedPoint& at) { return at.y > 1.0 - margin; });
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
    double motion = 0.0;
    if (before_ && before_->outline && look.outline && now > lastTime_)
        motion = distance(*before_->outline, *look.outline) / (now - lastTime_).count();
    const bool wasSeen = before_ && before_->outline;
    const Advice advice = adviceFor(look, motion);
    live_.outline = look.outline;
    live_.isSteady = wasSeen && advice == Advice::none;
    if (!isAdvised_ || (advice != live_.advice && now - advisedAt_ >= limits_.hold)) {
        live_.advice = advice;
        advisedAt_ = now;
        isAdvised_ = true;
    }
    before_ = look;
    lastTime_ = now;
}

void PageTracker::forget() noexcept {
    live_ = {};
    before_.reset();
    isAdvised_ = false;
}

Advice PageTracker::adviceFor(const PageLook& look, double motion) const noexcept {
    if (look.brightness < limits_.leastBrightness)
        return Advice::tooDark;
    if (!look.outline)
        return Advice::noPage;
    const double area = doubleArea(look.outline->corners) / 2.0;
    const int touched = sidesTouched(*look.outline, limits_.leastMargin);
    if (area > limits_.greatestArea || touched >= 3)
        return Advice::moveBack;
    if (touched > 0)
        return Advice::wholePage;
    if (area < limits_.leastArea)
        return Advice::moveCloser;
    if (look.glare > limits_.mostGlare)
        return Advice::glare;
    if (motion > limits_.mostMotion || look.sharpness < limits_.leastSharpness)
        return Advice::holdStill;
    return Advice::none;
}

}  // namespace kestrelid
