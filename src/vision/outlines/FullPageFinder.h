#pragma once

#include "vision/outlines/OutlineFinder.h"

namespace kestrelid::vision {

// Measures that the whole picture is one page.
struct FullPageEvidence {
    double lines = 0.0;    // of print
    double strokes = 0.0;  // in those lines
    double span =
        0.0;  // part of the picture's width or height, the lesser, from the first print to the last
    double spread = 0.0;   // of sixteen equal parts of the picture, the part that holds print
    double inkPart = 0.0;  // of all dark strokes, the part that lies in lines of print
    double parallel =
        0.0;  // of the print, the part in lines that run within two degrees of the middle one
    double runsOut = 0.0;  // of the print, the part in lines that run out of the picture: keys and
                           // tiles have no margin
    double clutter =
        0.0;  // part of the picture with long edges that are no print: shelves, keys, tiles
};

[[nodiscard]] FullPageEvidence weighFullPage(const Scene& scene);

// The whole picture as one page: a scan, or a page held so close that its outline lies outside.
// Since there is no outline to see, print that reaches over the picture must show that it is a
// page.
class FullPageFinder final : public OutlineFinder {
public:
    [[nodiscard]] std::vector<OutlineCandidate> find(const Scene& scene) const override;
};

}  // namespace kestrelid::vision
