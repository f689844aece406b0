#pragma once

#include <kestrelid/Image.h>

#include <QSizeF>
#include <QTransform>

namespace kestrelid::screens {

[[nodiscard]] constexpr bool swapsSides(Orientation orientation) noexcept {
    return orientation >= Orientation::leftMirrored;
}

// The size as it is shown.
[[nodiscard]] inline QSizeF uprightSize(Orientation orientation, const QSizeF& stored) {
    return swapsSides(orientation) ? stored.transposed() : stored;
}

// Takes a picture of the stored size, origin at its top left, to the one that is shown, origin at
// the top left again.
[[nodiscard]] inline QTransform uprightTransform(Orientation orientation, const QSizeF& stored) {
    const qreal w = stored.width();
    const qreal h = stored.height();
    switch (orientation) {
    case Orientation::up:
        break;
    case Orientation::upMirrored:
        return {-1, 0, 0, 1, w, 0};
    case Orientation::down:
        return {-1, 0, 0, -1, w, h};
    case Orientation::downMirrored:
        return {1, 0, 0, -1, 0, h};
    case Orientation::leftMirrored:
        return {0, 1, 1, 0, 0, 0};
    case Orientation::right:
        return {0, 1, -1, 0, h, 0};
    case Orientation::rightMirrored:
        return {0, -1, -1, 0, h, w};
    case Orientation::left:
        return {0, -1, 1, 0, 0, w};
    }
    return {};
}

}  // namespace kestrelid::screens
