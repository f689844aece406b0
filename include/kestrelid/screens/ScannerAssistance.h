#pragma once

#include <kestrelid/Guidance.h>

namespace kestrelid {

/// What a scanning screen offers beyond the plain one. Everything is off unless a host asks for it.
struct ScannerAssistance {
    bool guides = false;          ///< one line of guidance; what to do where the camera fails
    bool outlinesPage = false;    ///< the found page is outlined in the live picture
    bool offersControls = false;  ///< torch, zoom and choice of camera, where there are any
    bool importsPhotos = false;   ///< a photo from a file, dropped or pasted, instead of one taken
    /// A photo is taken once a passport has been in view, still and sharp, for a second.
    bool capturesByItself = false;

    /// From where on a page is too dark, too small and so on.
    GuidanceLimits limits{};

    /// All but the photo that is taken by itself.
    [[nodiscard]] static ScannerAssistance all() noexcept {
        return {
            .guides = true, .outlinesPage = true, .offersControls = true, .importsPhotos = true};
    }
};

/// How a scanning screen uses its room.
struct ScannerLayout {
    bool showsWholeFrame = false;  ///< the whole live picture, instead of one that fills and is cut
    /// Small heights get a layout that leaves the picture more room; large screens larger texts and
    /// controls.
    bool adaptsToSize = false;
};

}  // namespace kestrelid
