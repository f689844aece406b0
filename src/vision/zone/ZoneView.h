#pragma once

#include "vision/zone/PictureLevels.h"

#include <kestrelid/VisionServices.h>

#include <opencv2/core.hpp>

#include <vector>

namespace kestrelid::vision {

// A look at a picture in which a zone's lines should run along the rows, one way up or the other.
struct ZoneView {
    cv::Matx33d toPicture;  // from pixels of the view
    cv::Size size;
};

// A document, flattened: as it lies and by a quarter turn. None where the outline has no area.
[[nodiscard]] std::vector<ZoneView> viewsOfOutline(const RectangleObservation& outline,
                                                   cv::Size picture);

// The tightest rectangle around a document, grown by a tenth, the same two ways: not flattened, so
// that an outline with a corner in the wrong place does no harm.
[[nodiscard]] std::vector<ZoneView> viewsAroundOutline(const RectangleObservation& outline,
                                                       cv::Size picture);

// The whole picture, turned so that what looks like rows of print runs along the rows: as it lies
// and by a quarter turn, the likelier way first.
[[nodiscard]] std::vector<ZoneView> viewsOfPicture(const PictureLevels& picture, int threads);

}  // namespace kestrelid::vision
