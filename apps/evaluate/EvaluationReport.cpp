#include "apps/evaluate/EvaluationReport.h"

#include "apps/evaluate/TextTable.h"

#include "apps/cli/ChoiceOption.h"
#include "apps/cli/TerminalText.h"

#include <cstdio>
#include <set>

namespace kestrelid::evaluation {
namespace {

std::string decimals(double value, int places) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.*f", places, value);
    return buffer;
}

std::string fraction(std::size_t part, std::size_t whole) {
    return std::to_string(part) + "/" + std::to_string(whole);
}

const char* recognizerWord(const Combination& combination) {
    return cli::wordFor(kRecognizers, combination.recognizer);
}

const char* effortWord(const Combination& combination) {
    return cli::wordFor(cli::kEfforts, combination.effort);
}

// The kinds of the set, passports first.
std::vector<std::string> kindsInOrder(const std::vector<LabelledPicture>& pictures) {
    std::set<std::pair<bool, std::string>> kinds;
    for (const LabelledPicture& picture : pictures)
        kinds.emplace(!picture.isPassport(), picture.kind);
    std::vector<std::string> names;
    for (const auto& kind : kinds)
        names.push_back(kind.second);
    return names;
}

std::string total(const Summary& summary, bool passports) {
    std::size_t called = 0;
    std::size_t judged = 0;
    for (const auto& [kind, count] : summary.kinds) {
        if (count.isPassport == passports) {
            called += count.called;
            judged += count.judged;
        }
    }
    return fraction(called, judged);
}

std::string combinationsTable(const Evaluation& evaluation) {
    const std::vector<std::string> kinds = kindsInOrder(evaluation.pictures);
    TextTable table;
    std::vector<std::string> header{"recognizer", "effort", "hits", "false hits"};
    for (const std::string& kind : kinds)
        header.push_back(cli::terminalText(kind));
    header.insert(header.end(), {"no verdict", "median ms", "p90 ms", "peak MiB"});
    table.add(header);
    for (const Measurement& measurement : evaluation.measurements) {
        const Summary summary = summarize(evaluation.pictures, measurement);
        std::vector<std::string> row{recognizerWord(measurement.combination),
                                     effortWord(measurement.combination), total(summary, true),
                                     total(summary, false)};
        for (const std::string& kind : kinds) {
            const auto count = summary.kinds.find(kind);
            row.push_back(count == summary.kinds.end()
                              ? "-"
                              : fraction(count->second.called, count->second.judged));
        }
        row.insert(row.end(),
                   {std::to_string(summary.failed), decimals(summary.medianDelay, 0),
                    decimals(summary.delayAt90, 0), decimals(measurement.peakMemory, 0)});
        table.add(row);
    }
    return table.text();
}

std::string outlineLine(const OverlapSummary& overlap) {
    if (overlap.known == 0)
        return "Outlines: the manifest gives none.\n";
    return "Outlines: overlap median " + decimals(overlap.median, 3) + ", 10th percentile " +
           decimals(overlap.at10, 3) + ", at least " + decimals(kGoodOverlap, 1) + " in " +
           fraction(overlap.good, overlap.known) + ".\n";
}

std::string agreementLines(const Evaluation& evaluation) {
    std::set<Recognizer> recognizers;
    for (const Measurement& measurement : evaluation.measurements)
        recognizers.insert(measurement.combination.recognizer);
    if (recognizers.size() == evaluation.measurements.size())
        return "";  // one effort each: nothing to compare
    if (evaluation.disagreements.empty())
        return "Efforts agree on every verdict and confidence.\n";
    std::string lines = "Efforts DISAGREE:\n";
    for (const Disagreement& disagreement : evaluation.disagreements)
        lines += "  " + std::string(cli::wordFor(kRecognizers, disagreement.recognizer)) + ": " +
                 cli::terminalText(disagreement.name) + "\n";
    return lines;
}

}  // namespace

std::string reportAsTable(const Evaluation& evaluation) {
    return combinationsTable(evaluation) + outlineLine(evaluation.overlap) +
           agreementLines(evaluation);
}

std::string picturesAsTable(const Evaluation& evaluation) {
    TextTable table;
    table.add(
        {"recognizer", "effort", "verdict", "fault", "area", "overlap", "matched", "ms", "file"});
    for (const Measurement& measurement : evaluation.measurements) {
        for (std::size_t i = 0; i < evaluation.pictures.size(); ++i) {
            const LabelledPicture& picture = evaluation.pictures[i];
            const PictureRow& row = measurement.rows[i];
            const std::optional<double>& overlap = evaluation.overlap.overlaps[i];
            const bool failed = !row.error.empty();
            const char* verdict = row.isPassport ? "passport" : "not a passport";
            const char* fault = row.isPassport == picture.isPassport() ? ""
                                : row.isPassport                       ? "FALSE HIT"
                                                                       : "MISS";
            table.add({recognizerWord(measurement.combination), effortWord(measurement.combination),
                       failed ? "none" : verdict, failed ? "FAILED" : fault,
                       row.box ? decimals(row.box->area(), 3) : "-",
                       overlap ? decimals(*overlap, 3) : "-", std::to_string(row.matched),
                       decimals(row.milliseconds, 0), cli::terminalText(picture.name)});
        }
    }
    return table.text();
}

}  // namespace kestrelid::evaluation
