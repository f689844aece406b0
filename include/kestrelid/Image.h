#pragma once

#include <kestrelid/Bitmap.h>
#include <kestrelid/Export.h>

#include <cstdint>
#include <optional>

namespace kestrelid {

/// Where the stored rows lie in the scene; values as the EXIF tag 0x0112 (CIPA DC-008, 4.6.4) has
/// them.
enum class Orientation : std::uint8_t {
    up = 1,
    upMirrored = 2,     ///< shown after mirroring left to right
    down = 3,           ///< shown after half a turn
    downMirrored = 4,   ///< shown after mirroring top to bottom
    leftMirrored = 5,   ///< shown after mirroring along the main diagonal
    right = 6,          ///< shown after a quarter turn clockwise
    rightMirrored = 7,  ///< shown after mirroring along the other diagonal
    left = 8,           ///< shown after a quarter turn counter-clockwise
};

/// A still picture: a bitmap, or none, and its orientation. A value; copies share the pixels.
/// Thread: any.
class KESTRELID_EXPORT Image {
public:
    /// An image without a bitmap.
    Image() = default;

    /// The bitmap as it is stored, and how it is meant to be seen.
    explicit Image(Bitmap bitmap, Orientation orientation = Orientation::up);

    /// The rows as they are stored, whatever the orientation.
    [[nodiscard]] const std::optional<Bitmap>& bitmap() const noexcept { return bitmap_; }
    /// How the rows must be turned to stand upright.
    [[nodiscard]] Orientation orientation() const noexcept { return orientation_; }

    /// The same picture with its rows as they are shown, orientation `up`. Copies the pixels unless
    /// they stand so already.
    [[nodiscard]] Image upright() const;

private:
    std::optional<Bitmap> bitmap_;
    Orientation orientation_ = Orientation::up;
};

}  // namespace kestrelid
