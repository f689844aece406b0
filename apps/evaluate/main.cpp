#include "apps/evaluate/EvaluationReport.h"
#include "apps/evaluate/Measurement.h"
#include "apps/evaluate/OutlineReport.h"

#include "apps/cli/ChoiceOption.h"
#include "apps/cli/ProgressBar.h"
#include "apps/cli/StandardStreams.h"

#include <algorithm>
#include <csignal>
#include <exception>
#include <fstream>
#include <iterator>
#include <set>

namespace {

using namespace kestrelid;
using namespace kestrelid::evaluation;
using cli::ExitStatus;

struct Options {
    MeasureOptions measure;
    std::vector<Recognizer> recognizers;
    std::vector<ValidationEffort> efforts;
    std::vector<OutlineFinder> outlines;  // not empty: outlines alone, no verdicts
    std::string json;                     // file; empty: none
    bool verbose = false;
    bool measuresOnly = false;  // the internal command
};

void addMeasureOptions(CLI::App& app, Options& options) {
    app.add_option_function<std::string>(
           "MANIFEST", [&](const std::string& path) { options.measure.manifest = path; },
           "Tab-separated list of pictures: file, kind, quad...")
        ->required()
        ->type_name("");
    cli::addChoiceOption<Recognizer>(
        app, "--recognizer", kRecognizers, "May stand more than once (default: ppocr)",
        [&](Recognizer value) { options.recognizers.push_back(value); }, true);
    cli::addChoiceOption<ValidationEffort>(
        app, "--effort", cli::kEfforts, "May stand more than once (default: both)",
        [&](ValidationEffort value) { options.efforts.push_back(value); }, true);
    app.add_option("--limit", options.measure.limit, "Judge the first N pictures only")
        ->type_name("N");
    app.add_option("--jobs", options.measure.jobs,
                   "Pictures judged at once; more than one disturbs the delays (default: 1)")
        ->type_name("N")
        ->check(CLI::Range(1, 64).description(""));
    app.add_option_function<std::string>(
           "--resources", [&](const std::string& path) { options.measure.resources = path; },
           "Folder that holds the models and the ONNX Runtime library")
        ->type_name("DIR")
        ->check(CLI::Validator(CLI::ExistingDirectory).description(""));
}

std::variant<Options, ExitStatus> parse(int argc, char** argv) {
    Options options;
    options.measuresOnly = argc > 1 && std::string_view(argv[1]) == kMeasureCommand;
    CLI::App app("Measures hits, false hits, delays and memory over a labelled set of pictures.",
                 "kestrelid-evaluate");
    addMeasureOptions(app, options);
    cli::addChoiceOption<OutlineFinder>(
        app, "--outlines", cli::kOutlineFinders,
        "Compare outlines alone, on one thread; may stand more than once",
        [&](OutlineFinder value) { options.outlines.push_back(value); }, true);
    for (const char* verdicts : {"--recognizer", "--effort", "--jobs"})
        app.get_option("--outlines")->excludes(app.get_option(verdicts));
    app.add_option("--json", options.json, "Write the result to FILE as well")->type_name("FILE");
    app.add_flag("--verbose", options.verbose, "Tell of every picture");
    try {
        if (options.measuresOnly)
            app.parse(argc - 1, argv + 1);
        else
            app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        cli::writeOutput(app.help());
        return cli::outputStatus();
    } catch (const CLI::ParseError& error) {
        cli::writeError(error.what());
        return ExitStatus::wrongUsage;
    }
    if (options.recognizers.empty())
        options.recognizers = {Recognizer::ppocr};
    if (options.efforts.empty())
        options.efforts = {ValidationEffort::complete, ValidationEffort::verdictOnly};
    return options;
}

// The list to measure; none after saying what is wrong with it.
std::optional<std::vector<LabelledPicture>> load(const MeasureOptions& options) {
    auto manifest = readManifest(options.manifest);
    if (const auto* error = std::get_if<ManifestError>(&manifest)) {
        std::string place = options.manifest.native();
        if (error->line > 0)
            place += ":" + std::to_string(error->line);
        cli::writeError(place, error->cause);
        return std::nullopt;
    }
    auto pictures = std::get<std::vector<LabelledPicture>>(std::move(manifest));
    if (options.limit > 0 && options.limit < pictures.size())
        pictures.erase(pictures.begin() + static_cast<std::ptrdiff_t>(options.limit),
                       pictures.end());
    return pictures;
}

// False after saying why there is nothing to report.
bool measureAll(const Options& options, Evaluation& evaluation) {
    const std::size_t pictures = evaluation.pictures.size();
    cli::ProgressBar progress(pictures * options.recognizers.size() * options.efforts.size());
    for (const Recognizer recognizer : options.recognizers) {
        for (const ValidationEffort effort : options.efforts) {
            const std::size_t before = evaluation.measurements.size() * pictures;
            auto measured = measureInChild({recognizer, effort}, options.measure,
                                           [&](std::size_t done) { progress.show(before + done); });
            auto* measurement = std::get_if<Measurement>(&measured);
            if (measurement == nullptr || measurement->rows.size() != pictures) {
                progress.clear();
                const auto* error = std::get_if<MeasureError>(&measured);
                cli::writeError(cli::wordFor(kRecognizers, recognizer),
                                error != nullptr ? error->cause : "pictures were left out");
                return false;
            }
            evaluation.measurements.push_back(std::move(*measurement));
        }
    }
    return true;
}

// Says once for each picture and cause why there was no verdict.
ExitStatus reportFailures(const Evaluation& evaluation) {
    std::set<std::pair<std::string, std::string>> told;
    for (const Measurement& measurement : evaluation.measurements) {
        for (std::size_t i = 0; i < measurement.rows.size(); ++i) {
            const std::string& name = evaluation.pictures[i].name;
            const std::string& error = measurement.rows[i].error;
            if (!error.empty() && told.emplace(name, error).second)
                cli::writeError(name, error);
        }
    }
    return told.empty() ? ExitStatus::done : ExitStatus::inputFailed;
}

ExitStatus writeJson(const std::string& path, const std::string& json) {
    std::ofstream file(path, std::ios::binary);
    file << json << std::flush;
    if (file)
        return ExitStatus::done;
    cli::writeError(path, "cannot be written");
    return ExitStatus::inputFailed;
}

ExitStatus compareOutlines(const Options& options, const std::vector<LabelledPicture>& pictures) {
    std::vector<OutlineMeasurement> measurements;
    for (const OutlineFinder finder : options.outlines)
        measurements.push_back(measureOutlines(pictures, finder, options.measure));
    if (options.verbose)
        cli::writeOutput(outlineRowsAsTable(pictures, measurements) + "\n");
    cli::writeOutput(outlinesAsTable(pictures, measurements));
    ExitStatus status = cli::outputStatus();
    for (const OutlineMeasurement& measurement : measurements)
        for (std::size_t i = 0; i < pictures.size(); ++i)
            if (const std::string& error = measurement.rows[i].error; !error.empty()) {
                cli::writeError(pictures[i].name, error);
                status = ExitStatus::inputFailed;
            }
    if (!options.json.empty())
        status = cli::graver(
            status, writeJson(options.json, outlinesAsJson(options.measure.manifest.native(),
                                                           pictures, measurements)));
    return status;
}

ExitStatus run(const Options& options) {
    auto pictures = load(options.measure);
    if (!pictures)
        return ExitStatus::inputFailed;
    if (options.measuresOnly) {
        measureHere(*pictures, {options.recognizers.front(), options.efforts.front()},
                    options.measure);
        return cli::outputStatus();
    }
    if (!options.outlines.empty())
        return compareOutlines(options, *pictures);
    Evaluation evaluation{options.measure.manifest.native(), std::move(*pictures), {}, {}, {}};
    if (!measureAll(options, evaluation))
        return ExitStatus::inputFailed;
    evaluation.overlap = overlapSummary(evaluation.pictures, evaluation.measurements[0].rows);
    evaluation.disagreements = disagreements(evaluation.pictures, evaluation.measurements);

    if (options.verbose)
        cli::writeOutput(picturesAsTable(evaluation) + "\n");
    cli::writeOutput(reportAsTable(evaluation));
    ExitStatus status = reportFailures(evaluation);
    if (!evaluation.disagreements.empty())
        status = ExitStatus::inputFailed;
    if (!options.json.empty())
        status = cli::graver(status, writeJson(options.json, reportAsJson(evaluation)));
    return cli::graver(status, cli::outputStatus());
}

}  // namespace

int main(int argc, char** argv) try {
    std::signal(SIGPIPE, SIG_DFL);
    cli::setProgramName("kestrelid-evaluate");
    const auto parsed = parse(argc, argv);
    if (const auto* status = std::get_if<ExitStatus>(&parsed))
        return static_cast<int>(*status);
    return static_cast<int>(run(std::get<Options>(parsed)));
} catch (const std::exception& error) {
    cli::writeError(error.what());
    return static_cast<int>(ExitStatus::inputFailed);
}
