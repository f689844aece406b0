#include "apps/evaluate/OutlineReport.h"

#include "apps/evaluate/Statistics.h"
#include "apps/evaluate/TextTable.h"

#include "apps/cli/ChoiceOption.h"
#include "apps/cli/JsonLine.h"
#include "apps/cli/TerminalText.h"

#include <cstdio>
#include <map>
#include <utility>

namespace kestrelid::evaluation {
namespace {

using Json = nlohmann::ordered_json;

constexpr double kLargeOutline = 0.15;  // of the picture, as the detector's threshold

std::string decimals(double value, int places) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.*f", places, value);
    return buffer;
}

// What one finder made of the pictures of one kind, or of all.
struct KindFigures {
    std::size_t large = 0;  // those with an outline of kLargeOutline or more
    std::size_t good = 0;   // those with an overlap of kGoodOverlap or more
    std::vector<double> overlaps;
    std::vector<double> delays;  // milliseconds, of all without an error

    void add(const OutlineRow& row) {
        if (!row.error.empty())
            return;
        large += row.largest >= kLargeOutline;
        delays.push_back(row.milliseconds);
        if (row.overlap) {
            overlaps.push_back(*row.overlap);
            good += *row.overlap >= kGoodOverlap;
        }
    }
};

// By kind, "all" last.
std::vector<std::pair<std::string, KindFigures>>
figuresOf(const std::vector<LabelledPicture>& pictures, const OutlineMeasurement& measurement) {
    std::map<std::string, KindFigures> kinds;
    KindFigures all;
    for (std::size_t i = 0; i < pictures.size(); ++i) {
        kinds[pictures[i].kind].add(measurement.rows[i]);
        all.add(measurement.rows[i]);
    }
    std::vector<std::pair<std::string, KindFigures>> figures(kinds.begin(), kinds.end());
    figures.emplace_back("all", all);
    return figures;
}

std::string share(std::size_t part, std::size_t whole) {
    return std::to_string(part) + "/" + std::to_string(whole);
}

std::vector<std::string> cells(const std::string& finder, const std::string& kind,
                               const KindFigures& figures) {
    const bool known = !figures.overlaps.empty();
    return {finder,
            kind,
            std::to_string(figures.delays.size()),
            known ? decimals(percentile(figures.overlaps, 0.5), 3) : "-",
            known ? decimals(percentile(figures.overlaps, 0.1), 3) : "-",
            known ? share(figures.good, figures.overlaps.size()) : "-",
            share(figures.large, figures.delays.size()),
            decimals(percentile(figures.delays, 0.5), 1),
            decimals(percentile(figures.delays, 0.9), 1)};
}

Json kindAsJson(const KindFigures& figures) {
    Json json{{"pictures", figures.delays.size()},
              {"large", figures.large},
              {"known", figures.overlaps.size()},
              {"good", figures.good}};
    if (!figures.overlaps.empty()) {
        json["median"] = percentile(figures.overlaps, 0.5);
        json["p10"] = percentile(figures.overlaps, 0.1);
    }
    json["medianMilliseconds"] = percentile(figures.delays, 0.5);
    json["p90Milliseconds"] = percentile(figures.delays, 0.9);
    return json;
}

Json pictureAsJson(const LabelledPicture& picture, const OutlineRow& row) {
    Json json{{"file", picture.name}, {"kind", picture.kind}};
    if (!row.error.empty()) {
        json["error"] = row.error;
        return json;
    }
    json["largest"] = row.largest;
    if (row.overlap)
        json["overlap"] = *row.overlap;
    json["milliseconds"] = row.milliseconds;
    return json;
}

}  // namespace

std::string outlinesAsTable(const std::vector<LabelledPicture>& pictures,
                            const std::vector<OutlineMeasurement>& measurements) {
    TextTable table;
    table.add({"outlines", "kind", "pictures", "median", "p10", "0.8 or more", "15% or more",
               "median ms", "p90 ms"});
    for (const OutlineMeasurement& measurement : measurements) {
        const std::string finder = cli::wordFor(cli::kOutlineFinders, measurement.finder);
        for (const auto& [kind, figures] : figuresOf(pictures, measurement))
            table.add(cells(finder, cli::terminalText(kind), figures));
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

std::string outlinesAsJson(const std::string& manifest,
                           const std::vector<LabelledPicture>& pictures,
                           const std::vector<OutlineMeasurement>& measurements) {
    Json finders = Json::array();
    for (const OutlineMeasurement& measurement : measurements) {
        Json kinds = Json::object();
        for (const auto& [kind, figures] : figuresOf(pictures, measurement))
            kinds[kind] = kindAsJson(figures);
        Json rows = Json::array();
        for (std::size_t i = 0; i < pictures.size(); ++i)
            rows.push_back(pictureAsJson(pictures[i], measurement.rows[i]));
        finders.push_back({{"outlines", cli::wordFor(cli::kOutlineFinders, measurement.finder)},
                           {"kinds", std::move(kinds)},
                           {"pictures", std::move(rows)}});
    }
    return cli::jsonLine({{"manifest", manifest}, {"finders", std::move(finders)}});
}

}  // namespace kestrelid::evaluation
