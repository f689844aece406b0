#pragma once

#include <kestrelid/Export.h>
#include <kestrelid/VisionServices.h>

#include <array>
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

/// From where on a page is too dark, too small and so on; in the words of PageLook.
/// docs/guidance.md tells how often pictures with known faults are recognised with these values.
struct GuidanceLimits {
    double leastBrightness = 0.2;  ///< of the page; where there is none, half of it is enough
    double leastArea = 0.2;        ///< of the picture, that the page takes
    double greatestArea = 0.95;
    double leastMargin = 0.01;  ///< of the picture's side: a page closer to an edge is cut by it
    double mostGlare = 0.01;
    double leastSharpness = 0.3;
    double mostMotion = 0.08;  ///< of the picture's diagonal, that a corner goes in a second

    /// Another advice is told only once the last one has stood for so long.
    std::chrono::duration<double> hold{1.5};
};

/// What one frame shows of a page. All shares are 0..1.
struct PageLook {
    std::optional<RectangleObservation> outline{};  ///< the largest document in view
    double brightness = 0.0;  ///< of the page, or of the whole picture without one: mean grey value
    double glare = 0.0;  ///< of the page: areas as white as the picture gets, on paper that is less

    /// Of the page, or of the whole picture: the share of an edge that lies between two
    /// neighbouring pixels, in the direction that is less sharp. 1 where nothing is printed.
    double sharpness = 0.0;
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

/// Turns looks at frames into advice. What one look alone shows is no advice yet: two of the last
/// three looks must agree. Before the first one nothing is wrong, so that a screen that opens is
/// not greeted by advice. Thread: one at a time.
class KESTRELID_EXPORT PageTracker {
public:
    /// Seconds on a clock that never goes back.
    using Time = std::chrono::duration<double>;

    /// limits: for all its advice.
    explicit PageTracker(GuidanceLimits limits = {}) : limits_(limits) {}

    /// What a frame showed, and when it was taken. After some seconds without any look all begins
    /// anew.
    void see(const PageLook& look, Time now) noexcept;

    /// No frames come any more: nothing is known.
    void forget() noexcept;

    /// What is known after the last look.
    [[nodiscard]] const LivePage& live() const noexcept { return live_; }

private:
    struct Sighting {
        std::optional<RectangleObservation> outline{};
        Time time{};
    };

    [[nodiscard]] double motionTo(const RectangleObservation& outline, Time now) const noexcept;
    [[nodiscard]] Advice adviceFor(const PageLook& look, double motion) const noexcept;
    void consider(Advice advice, Time now) noexcept;

    GuidanceLimits limits_;
    LivePage live_;
    std::optional<Time> lastTime_{};       // of the last look
    std::array<Sighting, 2> sightings_{};  // the last one first
    Time toldAt_{};                        // when live_.advice became what it is
    Advice before_ = Advice::none;         // of the last look, and of the one before it
    Advice earlier_ = Advice::none;
    bool wasGood_ = false;  // the last look
};

}  // namespace kestrelid
