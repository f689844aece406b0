#pragma once

#include <kestrelid/Export.h>
#include <kestrelid/VisionServices.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string_view>

namespace kestrelid {

/// What would make the next photo better.
enum class Advice : std::uint8_t {
    none,       ///< nothing: the page is well in view
    tooDark,    ///< more light
    noPage,     ///< no page is in view
    wholePage,  ///< a part of the page lies outside the picture
    moveCloser,
    moveBack,
    glare,      ///< a lamp or window is reflected on the page
    holdStill,  ///< it moves, or it is not sharp
};

/// A word for each, for QML and for logs: "none", "tooDark", "noPage" and so on.
[[nodiscard]] KESTRELID_EXPORT std::string_view keyOf(Advice advice) noexcept;

/// From where on a page is too dark, too small and so on. docs/guidance.md tells how often pictures
/// with known faults are recognised with these values.
struct GuidanceLimits {
    double leastBrightness = 0.2;  ///< mean grey value of the page, or of the picture without one
    double leastArea = 0.2;        ///< of the picture, that the page takes
    double greatestArea = 0.95;
    double leastMargin = 0.01;     ///< of the picture's side: a page closer to an edge is cut by it
    double mostGlare = 0.01;       ///< of the page, that has lost its print to light
    double leastSharpness = 0.15;  ///< as PictureQuality::sharpness
    double mostMotion = 0.1;       ///< of the picture's diagonal, in a second

    /// A change of advice is told only once the last one has stood for so long.
    std::chrono::duration<double> hold{1.5};
};

/// What one frame shows of a page. All shares are 0..1.
struct PageLook {
    std::optional<RectangleObservation> outline{};  ///< the largest document in view
    double brightness = 0.0;  ///< of the page, or of the whole picture without one: mean grey value
    double glare = 0.0;       ///< of the page: flat areas as bright as anything in the picture gets
    double sharpness = 0.0;   ///< of the page, or of the whole picture
};

/// What the frames of a camera say of the page in view.
struct LivePage {
    /// The most pressing one; held for a while, so that it can be read.
    Advice advice = Advice::none;
    /// In the last frame, as the sensor saw it: not turned upright. None if no page was found.
    std::optional<RectangleObservation> outline{};
    /// The last frames would make a good photo: a whole page, near, sharp, still, evenly lit.
    bool isSteady = false;
};

/// Turns looks at frames into advice. Thread: one at a time.
class KESTRELID_EXPORT PageTracker {
public:
    /// Seconds on a clock that never goes back.
    using Time = std::chrono::duration<double>;

    explicit PageTracker(GuidanceLimits limits = {}) : limits_(limits) {}

    /// What a frame showed, and when.
    void see(const PageLook& look, Time now) noexcept;

    /// No frames come any more: nothing is known.
    void forget() noexcept;

    /// What is known after the last look.
    [[nodiscard]] const LivePage& live() const noexcept { return live_; }

private:
    [[nodiscard]] Advice adviceFor(const PageLook& look, double motion) const noexcept;

    GuidanceLimits limits_;
    LivePage live_;
    std::optional<PageLook> before_{};
    Time lastTime_{};
    Time advisedAt_{};
    bool isAdvised_ = false;
};

}  // namespace kestrelid
