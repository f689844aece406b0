#include "apps/evaluate/Measurement.h"

#include "apps/cli/JsonLine.h"
#include "apps/cli/OrderedJobs.h"
#include "apps/cli/OutlineRecorder.h"
#include "apps/cli/PictureJudge.h"
#include "apps/cli/StandardStreams.h"

#include <kestrelid/TextEvidence.h>

#include <algorithm>
#include <memory>
#include <thread>

namespace kestrelid::evaluation {
namespace {

// Reads a white sheet, so that no picture's delay holds the loading of the models. What fails here
// fails again, and is told, with the first picture.
void warmUp(const PlatformServices& services) {
    constexpr int kSide = 256;  // pixels
    const std::shared_ptr<std::byte[]> pixels(new std::byte[kSide * kSide]);
    std::fill_n(pixels.get(), kSide * kSide, std::byte{0xFF});
    const auto sheet = Bitmap::wrap(kSide, kSide, kSide, PixelFormat::gray8, pixels, kSide * kSide);
    (void)services.rectangles->perform(*sheet, {}, [](const RequestReport&) {});
    (void)services.text->perform(*sheet, {}, [](const RequestReport&) {});
}

std::string rowLine(cli::PictureJudge& judge, const LabelledPicture& picture) {
    const cli::JudgeResult judged = judge.judge(picture.file);
    if (const auto* error = std::get_if<cli::JudgeError>(&judged))
        return cli::jsonLine({{"error", error->cause}});
    const auto& found = std::get<cli::JudgedPicture>(judged);
    nlohmann::ordered_json row{
        {"isPassport", found.result.isPassport()},
        {"confidence", found.result.confidence()},
        {"milliseconds", found.milliseconds},
        {"matched", textEvidence(found.result.recognizedText()).matches.size()}};
    if (const auto outline = cli::chosenOutline(found.outlines)) {
        const NormalizedRect& box = outline->boundingBox;
        row["box"] = {box.x, box.y, box.width, box.height};
    }
    return cli::jsonLine(row);
}

}  // namespace

void measureHere(const std::vector<LabelledPicture>& pictures, const Combination& combination,
                 const MeasureOptions& options) {
    const std::size_t processors = std::max(1u, std::thread::hardware_concurrency());
    const auto textThreads =
        static_cast<int>(std::clamp<std::size_t>(processors / options.jobs, 1, 4));
    const PlatformServices services =
        defaultServices({.resources = options.resources, .textThreads = textThreads});
    warmUp(services);
    std::vector<std::unique_ptr<cli::PictureJudge>> judges(options.jobs);
    for (auto& judge : judges)
        judge = std::make_unique<cli::PictureJudge>(services, combination.effort);
    cli::runInOrder(
        pictures.size(), options.jobs,
        [&](std::size_t worker, std::size_t index) {
            return rowLine(*judges[worker], pictures[index]);
        },
        [](std::size_t, const std::string& line) { cli::writeOutput(line); }, [](std::size_t) {});
}

}  // namespace kestrelid::evaluation
