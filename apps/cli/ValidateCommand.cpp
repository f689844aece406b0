#include "apps/cli/ValidateCommand.h"

#include "apps/cli/Annotation.h"
#include "apps/cli/AnnotationNames.h"
#include "apps/cli/OrderedJobs.h"
#include "apps/cli/PictureInputs.h"
#include "apps/cli/PictureJudge.h"
#include "apps/cli/ProgressBar.h"
#include "apps/cli/StandardStreams.h"
#include "apps/cli/VerdictText.h"

#include <kestrelid/ImageFile.h>

#include <algorithm>
#include <exception>
#include <memory>
#include <optional>
#include <system_error>
#include <thread>

namespace kestrelid::cli {
namespace {

namespace fs = std::filesystem;

// Beyond it every picture takes longer and more memory, and few more are judged in a minute.
constexpr std::size_t kMostJobsUnasked = 4;
constexpr std::size_t kMostTextThreads = 4;

// What is kept of an input once its pixels are gone.
struct Outcome {
    std::variant<std::string, JudgeError> report;  // as it is written
    std::optional<ImageError> annotationError;
};

// annotation: the path of the annotated copy, or null for none.
Outcome outcomeOf(PictureJudge& judge, const PictureInput& input, const fs::path* annotation,
                  const ValidateOptions& options) try {
    JudgeResult judged = judge.judge(input);
    if (auto* error = std::get_if<JudgeError>(&judged))
        return {std::move(*error), {}};
    auto& picture = std::get<JudgedPicture>(judged);
    std::optional<ImageError> annotationError;
    if (annotation != nullptr)
        annotationError = writeImage(*annotation, annotated(picture));
    std::string report =
        options.json
            ? verdictAsJson(input, picture.examination, picture.milliseconds, options.withText)
            : verdictAsText(shownName(input), picture.examination, picture.milliseconds);
    return {std::move(report), std::move(annotationError)};
} catch (const std::exception& error) {
    return {JudgeError{error.what()}, {}};  // no memory left for this picture; the next may fit
}

// Writes the outcome; gives the cause if the input failed.
std::optional<std::string> report(const PictureInput& input, const Outcome& outcome, bool json) {
    std::string cause;
    if (const auto* error = std::get_if<JudgeError>(&outcome.report)) {
        if (json)
            writeOutput(errorAsJson(input, error->cause));
        cause = error->cause;
    } else {
        writeOutput(std::get<std::string>(outcome.report));
        if (!outcome.annotationError)
            return std::nullopt;
        cause = "cannot write the annotated copy: " + outcome.annotationError->cause;
    }
    writeError(shownName(input), cause);
    return cause;
}

// What failed stands far up by now.
void reportAgain(const std::vector<std::pair<std::string, std::string>>& failed,
                 std::size_t total) {
    constexpr std::size_t kScreenful = 20;  // inputs
    if (failed.empty() || total <= kScreenful)
        return;
    writeError(std::to_string(failed.size()) + " of " + std::to_string(total) + " failed:");
    for (const auto& [name, cause] : failed)
        writeError(name, cause);
}

}  // namespace

ExitStatus validate(const ValidateOptions& options) {
    const PictureInputs found = pictureInputs(options.inputs);
    const std::vector<PictureInput>& inputs = found.pictures;
    if (const std::string line = passedOver(found); !line.empty())
        writeError(line);
    const std::size_t processors = std::max(1u, std::thread::hardware_concurrency());
    const std::size_t allowed = options.jobs > 0 ? static_cast<std::size_t>(options.jobs)
                                                 : std::min(processors, kMostJobsUnasked);
    const std::size_t jobs = std::min(allowed, inputs.size());

    std::vector<fs::path> annotations;
    if (!options.annotate.empty()) {
        std::error_code error;
        fs::create_directories(options.annotate, error);
        if (error) {
            writeError(options.annotate.native(), "cannot create the folder: " + error.message());
            return ExitStatus::wrongUsage;
        }
        annotations = annotationPaths(options.annotate, inputs);
    }

    // The jobs share the processors: several pictures at once beat several threads on one.
    const std::size_t textThreads = std::clamp(processors / jobs, std::size_t{1}, kMostTextThreads);
    const PlatformServices services = defaultServices(
        {.resources = options.resources, .textThreads = static_cast<int>(textThreads)});
    std::vector<std::unique_ptr<PictureJudge>> judges(jobs);
    for (auto& judge : judges)
        judge = std::make_unique<PictureJudge>(services, options.effort);

    ProgressBar progress(inputs.size());
    ExitStatus status = ExitStatus::done;
    std::size_t finished = 0;
    std::vector<std::pair<std::string, std::string>> failed;
    runInOrder(
        inputs.size(), jobs,
        [&](std::size_t worker, std::size_t index) {
            const fs::path* annotation = annotations.empty() ? nullptr : &annotations[index];
            return outcomeOf(*judges[worker], inputs[index], annotation, options);
        },
        [&](std::size_t index, const Outcome& outcome) {
            progress.clear();
            if (auto cause = report(inputs[index], outcome, options.json)) {
                failed.emplace_back(shownName(inputs[index]), *std::move(cause));
                status = ExitStatus::inputFailed;
            }
            progress.show(finished);
        },
        [&](std::size_t number) {
            finished = number;
            progress.show(finished);
        });
    progress.clear();
    reportAgain(failed, inputs.size());
    return graver(status, outputStatus());
}

}  // namespace kestrelid::cli
