#pragma once

#include "vision/outlines/OutlineNetwork.h"
#include "vision/outlines/Quad.h"

#include <vector>

namespace kestrelid::vision {

// A quadrilateral that the maps show, and how well they show it.
struct MapOutline {
    Quad quad;            // in shares of the picture's width and height; corners may lie outside
    double inside = 0.0;  // mean of the page map in the quadrilateral
    double fill = 0.0;    // overlap of the quadrilateral with the region that it was fitted to
    double corners =
        0.0;  // mean of the corner map's peaks at its corners; outside the picture: 0.5
};

// All that could be an outline, in no particular order: a document usually gives several, from its
// page and its core at several levels.
[[nodiscard]] std::vector<MapOutline> outlinesOf(const OutlineMaps& maps);

}  // namespace kestrelid::vision
