#pragma once

#include <algorithm>
#include <chrono>

namespace kestrelid::scanner {

// Tells when a photo is taken without a tap: once a passport has been in view for a second, its
// page whole, sharp and still all the while. There is one such photo for each page that is laid
// down, and none of a page for which the person has said no.
class AutoCapture {
public:
    using Time = std::chrono::duration<double>;

    struct View {
        bool isReady = false;  // a photo can be taken
        bool isPassportInView = false;
        bool hasPage = false;
        bool isSteady = false;  // the page would make a good photo
    };

    static constexpr Time kFill{1.0};
    static constexpr Time kGap{0.4};  // a blink of the finder is no other page

    // True when a photo is to be taken. now: any clock; one that is set back begins anew.
    [[nodiscard]] bool see(const View& view, Time now) noexcept {
        if (!view.hasPage && !view.isPassportInView) {
            appear();
            return false;
        }
        if (isSpent_)
            return false;
        const bool isLate = now - lastGood_ > kGap || now < lastGood_;
        if (!view.isReady || !view.isPassportInView || !view.isSteady) {
            isInterrupted_ = true;
            if (isLate)
                isFilling_ = false;
            return false;
        }
        // Looks that are far apart are no gap: a slow machine has no others.
        if (!isFilling_ || now < lastGood_ || (isInterrupted_ && isLate))
            since_ = now;
        lastGood_ = now;
        isFilling_ = true;
        isInterrupted_ = false;
        if (now - since_ < kFill)
            return false;
        spend();
        return true;
    }

    // How much of the second has passed, 0 to 1.
    [[nodiscard]] double progress() const noexcept {
        return isFilling_ ? std::clamp((lastGood_ - since_) / kFill, 0.0, 1.0) : 0.0;
    }

    // No photo of this page any more: one was taken, or the person does not want it.
    void spend() noexcept {
        isFilling_ = false;
        isSpent_ = true;
    }

    // The screen is shown anew, or the page has left: the next one counts.
    void appear() noexcept {
        isFilling_ = false;
        isSpent_ = false;
    }

private:
    Time since_{};  // the first good look of a row
    Time lastGood_{};
    bool isFilling_ = false;      // there is such a row
    bool isInterrupted_ = false;  // since the last good look
    bool isSpent_ = false;
};

}  // namespace kestrelid::scanner
