#include "apps/evaluate/Statistics.h"

#include <kestrelid/ImageFile.h>

#include <algorithm>
#include <cmath>

namespace kestrelid::evaluation {
namespace {

struct Size {
    double width;
    double height;
};

// Known outlines are in pixels of the whole picture, found ones relative to it.
std::optional<Size> uprightSize(const LabelledPicture& picture) {
    const ImageResult decoded = readImage(picture.file);
    const auto* image = std::get_if<Image>(&decoded);
    if (image == nullptr || !image->bitmap())
        return std::nullopt;
    const Size size{static_cast<double>(image->bitmap()->width()),
                    static_cast<double>(image->bitmap()->height())};
    const bool turned = image->orientation() >= Orientation::leftMirrored;
    return turned ? Size{size.height, size.width} : size;
}

bool agree(const PictureRow& a, const PictureRow& b) {
    return a.isPassport == b.isPassport && a.confidence == b.confidence &&
           a.error.empty() == b.error.empty();
}

}  // namespace

NormalizedRect normalizedBox(const std::array<PixelPoint, 4>& quad, double width, double height) {
    const auto [left, right] = std::minmax({quad[0].x, quad[1].x, quad[2].x, quad[3].x});
    const auto [top, bottom] = std::minmax({quad[0].y, quad[1].y, quad[2].y, quad[3].y});
    return {left / width, 1.0 - bottom / height, (right - left) / width, (bottom - top) / height};
}

double percentile(std::vector<double> values, double part) {
    if (values.empty())
        return 0.0;
    std::sort(values.begin(), values.end());
    const double rank = std::ceil(part * static_cast<double>(values.size()));
    return values[static_cast<std::size_t>(std::max(rank, 1.0)) - 1];
}

double overlap(const NormalizedRect& a, const NormalizedRect& b) {
    const double width = std::min(a.x + a.width, b.x + b.width) - std::max(a.x, b.x);
    const double height = std::min(a.y + a.height, b.y + b.height) - std::max(a.y, b.y);
    if (width <= 0.0 || height <= 0.0)
        return 0.0;
    const double common = width * height;
    return common / (a.area() + b.area() - common);
}

Summary summarize(const std::vector<LabelledPicture>& pictures, const Measurement& measurement) {
    Summary summary;
    std::vector<double> delays;
    for (std::size_t i = 0; i < pictures.size(); ++i) {
        const PictureRow& row = measurement.rows[i];
        if (!row.error.empty()) {
            ++summary.failed;
            continue;
        }
        KindCount& kind = summary.kinds[pictures[i].kind];
        kind.isPassport = pictures[i].isPassport();
        kind.called += row.isPassport;
        ++kind.judged;
        delays.push_back(row.milliseconds);
    }
    summary.medianDelay = percentile(delays, 0.5);
    summary.delayAt90 = percentile(delays, 0.9);
    return summary;
}

OverlapSummary overlapSummary(const std::vector<LabelledPicture>& pictures,
                              const std::vector<PictureRow>& rows) {
    OverlapSummary summary;
    std::vector<double> values;
    for (std::size_t i = 0; i < pictures.size(); ++i) {
        auto& entry = summary.overlaps.emplace_back();
        const auto size = pictures[i].quad ? uprightSize(pictures[i]) : std::nullopt;
        if (!size)
            continue;
        const NormalizedRect truth = normalizedBox(*pictures[i].quad, size->width, size->height);
        entry = rows[i].box ? overlap(truth, *rows[i].box) : 0.0;
        values.push_back(*entry);
    }
    summary.known = values.size();
    summary.good = static_cast<std::size_t>(std::count_if(
        values.begin(), values.end(), [](double value) { return value >= kGoodOverlap; }));
    summary.median = percentile(values, 0.5);
    summary.at10 = percentile(values, 0.1);
    return summary;
}

std::vector<Disagreement> disagreements(const std::vector<LabelledPicture>& pictures,
                                        const std::vector<Measurement>& measurements) {
    std::vector<Disagreement> found;
    for (auto first = measurements.begin(); first != measurements.end(); ++first) {
        for (auto second = first + 1; second != measurements.end(); ++second) {
            if (first->combination.recognizer != second->combination.recognizer)
                continue;
            for (std::size_t i = 0; i < pictures.size(); ++i) {
                if (!agree(first->rows[i], second->rows[i]))
                    found.push_back({first->combination.recognizer, pictures[i].name});
            }
        }
    }
    return found;
}

}  // namespace kestrelid::evaluation
