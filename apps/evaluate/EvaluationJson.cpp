#include "apps/evaluate/EvaluationReport.h"

#include "apps/cli/ChoiceOption.h"
#include "apps/cli/JsonLine.h"

namespace kestrelid::evaluation {
namespace {

using Json = nlohmann::ordered_json;

Json kindsAsJson(const Summary& summary, bool passports) {
    Json kinds = Json::object();
    for (const auto& [kind, count] : summary.kinds) {
        if (count.isPassport == passports)
            kinds[kind] = {{"calledPassport", count.called}, {"judged", count.judged}};
    }
    return kinds;
}

Json pictureAsJson(const LabelledPicture& picture, const PictureRow& row,
                   const std::optional<double>& overlap) {
    Json json{{"file", picture.name}, {"kind", picture.kind}};
    if (!row.error.empty()) {
        json["error"] = row.error;
        return json;
    }
    json["isPassport"] = row.isPassport;
    json["confidence"] = row.confidence;
    json["matched"] = row.matched;
    json["milliseconds"] = row.milliseconds;
    if (row.box)
        json["area"] = row.box->area();
    if (overlap)
        json["overlap"] = *overlap;
    return json;
}

Json measurementAsJson(const Evaluation& evaluation, const Measurement& measurement) {
    const Summary summary = summarize(evaluation.pictures, measurement);
    Json pictures = Json::array();
    for (std::size_t i = 0; i < evaluation.pictures.size(); ++i)
        pictures.push_back(pictureAsJson(evaluation.pictures[i], measurement.rows[i],
                                         evaluation.overlap.overlaps[i]));
    return {{"recognizer", cli::wordFor(kRecognizers, measurement.combination.recognizer)},
            {"effort", cli::wordFor(cli::kEfforts, measurement.combination.effort)},
            {"passports", kindsAsJson(summary, true)},
            {"others", kindsAsJson(summary, false)},
            {"noVerdict", summary.failed},
            {"medianMilliseconds", summary.medianDelay},
            {"p90Milliseconds", summary.delayAt90},
            {"peakMemoryMiB", measurement.peakMemory},
            {"pictures", std::move(pictures)}};
}

}  // namespace

std::string reportAsJson(const Evaluation& evaluation) {
    Json measurements = Json::array();
    for (const Measurement& measurement : evaluation.measurements)
        measurements.push_back(measurementAsJson(evaluation, measurement));
    Json disagreements = Json::array();
    for (const Disagreement& disagreement : evaluation.disagreements)
        disagreements.push_back(
            {{"recognizer", cli::wordFor(kRecognizers, disagreement.recognizer)},
             {"file", disagreement.name}});
    const OverlapSummary& overlap = evaluation.overlap;
    return cli::jsonLine({{"manifest", evaluation.manifest},
                          {"combinations", std::move(measurements)},
                          {"outlines",
                           {{"known", overlap.known},
                            {"good", overlap.good},
                            {"median", overlap.median},
                            {"p10", overlap.at10}}},
                          {"disagreements", std::move(disagreements)}});
}

}  // namespace kestrelid::evaluation
