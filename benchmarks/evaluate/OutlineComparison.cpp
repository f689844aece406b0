#include "benchmarks/evaluate/OutlineComparison.h"

#include "benchmarks/evaluate/Statistics.h"
#include "benchmarks/evaluate/TextTable.h"

#include "cli/ChoiceOption.h"
#include "cli/OutlineRecorder.h"
#include "cli/TerminalText.h"

#include <kestrelid/ImageFile.h>

#include <opencv2/core.hpp>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <map>

namespace kestrelid::evaluation {
namespace {

constexpr double kLargeOutline = 0.15;  // of the picture, as the detector's threshold

std::string decimals(double value, int places) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.*f", places, value);
    return buffer;
}

OutlineRow measured(const PlatformServices& services, const LabelledPicture& picture) {
    OutlineRow row;
    const ImageResult decoded = readImage(picture.file);
    if (const auto* error = std::get_if<ImageError>(&decoded)) {
        row.error = error->cause;
        return row;
    }
    const Image image = std::get<Image>(decoded).upright();
    if (!image.bitmap())
        return row;
    cli::OutlineRecorder recorder(services.rectangles);
    const auto start = std::chrono::steady_clock::now();
    if (auto error = recorder.perform(*image.bitmap(), {}, [](const RequestReport&) {}))
        row.error = error->description;
    const std::chrono::duration<double, std::milli> taken =
        std::chrono::steady_clock::now() - start;
    row.milliseconds = taken.count();
    const std::vector<RectangleObservation> found = recorder.take();
    const auto chosen = cli::chosenOutline(found);
    row.largest = chosen ? chosen->boundingBox.area() : 0.0;
    if (picture.quad) {
        const NormalizedRect truth =
            normalizedBox(*picture.quad, image.bitmap()->width(), image.bitmap()->height());
        row.overlap = chosen ? overlap(truth, chosen->boundingBox) : 0.0;
    }
    return row;
}

std::vector<std::string> cells(const std::string& finder, const std::string& kind,
                               const std::vector<const OutlineRow*>& rows) {
    std::vector<double> overlaps;
    std::vector<double> delays;
    std::size_t large = 0;
    for (const OutlineRow* row : rows) {
        if (!row->error.empty())
            continue;
        delays.push_back(row->milliseconds);
        large += row->largest >= kLargeOutline;
        if (row->overlap)
            overlaps.push_back(*row->overlap);
    }
    const auto good = std::ranges::count_if(overlaps, [](double v) { return v >= kGoodOverlap; });
    const bool known = !overlaps.empty();
    return {finder,
            kind,
            std::to_string(delays.size()),
            known ? decimals(percentile(overlaps, 0.5), 3) : "-",
            known ? decimals(percentile(overlaps, 0.1), 3) : "-",
            known ? std::to_string(good) + "/" + std::to_string(overlaps.size()) : "-",
            std::to_string(large) + "/" + std::to_string(delays.size()),
            decimals(percentile(delays, 0.5), 1),
            decimals(percentile(delays, 0.9), 1)};
}

}  // namespace

OutlineMeasurement measureOutlines(const std::vector<LabelledPicture>& pictures,
                                   OutlineFinder finder, const MeasureOptions& options) {
    cv::setNumThreads(1);
    const PlatformServices services =
        defaultServices({.resources = options.resources, .outlines = finder});
    OutlineMeasurement measurement{finder, {}};
    for (const LabelledPicture& picture : pictures) {
        // The first request loads the network.
        if (measurement.rows.empty())
            (void)measured(services, picture);
        measurement.rows.push_back(measured(services, picture));
    }
    return measurement;
}

std::string outlinesAsTable(const std::vector<LabelledPicture>& pictures,
                            const std::vector<OutlineMeasurement>& measurements) {
    TextTable table;
    table.add({"outlines", "kind", "pictures", "median", "p10", "0.8 or more", "15% or more",
               "median ms", "p90 ms"});
    for (const OutlineMeasurement& measurement : measurements) {
        std::map<std::string, std::vector<const OutlineRow*>> kinds;
        std::vector<const OutlineRow*> all;
        for (std::size_t i = 0; i < pictures.size(); ++i) {
            kinds[pictures[i].kind].push_back(&measurement.rows[i]);
            all.push_back(&measurement.rows[i]);
        }
        const std::string finder = cli::wordFor(cli::kOutlineFinders, measurement.finder);
        for (const auto& [kind, rows] : kinds)
            table.add(cells(finder, cli::terminalText(kind), rows));
        table.add(cells(finder, "all", all));
    }
    return table.text();
}

std::string outlineRowsAsTable(const std::vector<LabelledPicture>& pictures,
                               const std::vector<OutlineMeasurement>& measurements) {
    TextTable table;
    table.add({"outlines", "area", "overlap", "ms", "file"});
    for (const OutlineMeasurement& measurement : measurements)
        for (std::size_t i = 0; i < pictures.size(); ++i) {
            const OutlineRow& row = measurement.rows[i];
            table.add({cli::wordFor(cli::kOutlineFinders, measurement.finder),
                       decimals(row.largest, 3), row.overlap ? decimals(*row.overlap, 3) : "-",
                       decimals(row.milliseconds, 1), cli::terminalText(pictures[i].name)});
        }
    return table.text();
}

}  // namespace kestrelid::evaluation
