#pragma once

#include "vision/zone/LineCandidates.h"
#include "vision/zone/LineScores.h"
#include "vision/zone/PictureLevels.h"
#include "vision/zone/ZoneNetwork.h"
#include "vision/zone/ZoneView.h"

#include <optional>
#include <span>
#include <vector>

namespace kestrelid::vision {

// Where the network is to look in a view.
struct Stretch {
    Baseline line;
    double pitch = 0.0;                // pixels of the view from one character to the next
    double tall = ZoneNetwork::kTall;  // pitches that the crop shows above and below together

    // How many pitches the middle of another line lies below this one.
    [[nodiscard]] double distanceTo(const Baseline& other) const;
};

// A stretch as it was read.
struct SeenLine {
    Stretch stretch;
    LineScores scores;

    [[nodiscard]] std::size_t count() const { return scores.marks().size(); }

    // How much of a zone's line it seems to be: sure characters count most.
    [[nodiscard]] double weight() const;

    // Where a frame lies in the view, on the middle of the line.
    [[nodiscard]] cv::Point2d at(double frame) const;

    // From the first to the last character, with the distance between them as it was seen; none
    // where there are too few characters to tell.
    [[nodiscard]] std::optional<Stretch> seen() const;
};

// Reads stretches of one view.
class LineReader {
public:
    LineReader(const ZoneNetwork& network, const PictureLevels& picture, ZoneView view)
        : network_(&network), picture_(&picture), view_(std::move(view)) {}

    [[nodiscard]] const ZoneView& view() const noexcept { return view_; }

    // One line for each stretch.
    [[nodiscard]] Expected<std::vector<SeenLine>> read(std::span<const Stretch> stretches) const;

    // As many characters as the network is sure about in the middle of each stretch, for choosing
    // among many at little cost.
    [[nodiscard]] Expected<std::vector<LineScores>>
    glance(std::span<const Stretch> stretches) const;

    // Whether the middle of the stretch, either way up, is worth a glance: a look at its pixels
    // takes a fiftieth of the network's time.
    [[nodiscard]] bool isEvenPrint(const Stretch& stretch) const;

private:
    [[nodiscard]] cv::Mat1b crop(const Stretch& stretch, int width) const;
    [[nodiscard]] cv::Mat1b middle(Stretch stretch) const;  // as much as a glance shows

    const ZoneNetwork* network_;
    const PictureLevels* picture_;
    ZoneView view_;
};

}  // namespace kestrelid::vision
