#pragma once

#include "vision/outlines/EdgeField.h"
#include "vision/outlines/Quad.h"
#include "vision/outlines/TextLayout.h"
#include "vision/outlines/WorkingPicture.h"

#include <vector>

namespace kestrelid::vision {

struct OutlineCandidate {
    Quad quad;
    double confidence = 0.0;  // 0..1, on the scale that OpenCvRectangleService.h describes
    double printKept = 1.0;   // of all print in the picture, the part inside
};

// What all finders share of one picture.
struct Scene {
    WorkingPicture picture;
    EdgeField edges;
    TextLayout text;
};

// One way to find outlines. Stateless: several calls may run at once on one object.
class OutlineFinder {
public:
    virtual ~OutlineFinder() = default;
    // Candidates in any order, near-duplicates and nested ones included; the service sorts them
    // out.
    [[nodiscard]] virtual std::vector<OutlineCandidate> find(const Scene& scene) const = 0;
};

}  // namespace kestrelid::vision
