#include "apps/cli/DoctorCommand.h"

#include "apps/cli/JsonLine.h"
#include "apps/cli/StandardStreams.h"
#include "apps/cli/TerminalText.h"

#include <kestrelid/DefaultCamera.h>
#include <kestrelid/DefaultServices.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

namespace kestrelid::cli {
namespace {

// A sheet of white paper, large enough for every step of recognition to run.
Bitmap blankPicture() {
    constexpr int kSide = 256;  // pixels
    const std::shared_ptr<std::byte[]> pixels(new std::byte[kSide * kSide]);
    std::fill_n(pixels.get(), kSide * kSide, std::byte{0xFF});
    return *Bitmap::wrap(kSide, kSide, kSide, PixelFormat::gray8, pixels, kSide * kSide);
}

// All parts may be present and still fail together, so the recogniser is tried. Returns why it does
// not work, if it does not.
std::optional<std::string> trialFailure(const DefaultServicesOptions& options) {
    const PlatformServices services = defaultServices(options);
    const Bitmap picture = blankPicture();
    const RectangleResult outlines = services.rectangles->perform(picture, {});
    if (const auto* error = std::get_if<RequestError>(&outlines))
        return error->description;
    const TextResult text = services.text->perform(picture, {});
    if (const auto* error = std::get_if<RequestError>(&text))
        return error->description;
    return std::nullopt;
}

struct Findings {
    std::vector<ServiceStatus> recognition;
    std::optional<std::string> failure;  // of the recogniser's trial
    std::vector<ServiceStatus> capture;
    std::vector<CameraDescription> cameras;
};

nlohmann::ordered_json partsAsJson(const std::vector<ServiceStatus>& parts) {
    auto list = nlohmann::ordered_json::array();
    for (const ServiceStatus& part : parts)
        list.push_back(
            {{"name", part.name}, {"available", part.available}, {"details", part.details}});
    return list;
}

std::string asJson(const Findings& findings) {
    nlohmann::ordered_json object{
        {"version", KESTRELID_VERSION},
        {"complete", !findings.failure},
        {"parts", partsAsJson(findings.recognition)},
        {"camera",
         {{"found", !findings.cameras.empty()}, {"parts", partsAsJson(findings.capture)}}}};
    if (findings.failure)
        object["error"] = *findings.failure;
    return jsonLine(object);
}

std::string partsAsText(const std::vector<ServiceStatus>& parts) {
    std::size_t width = 0;
    for (const ServiceStatus& part : parts)
        width = std::max(width, part.name.size());
    std::string text;
    for (const ServiceStatus& part : parts) {
        text += part.available ? "  found    " : "  missing  ";
        text += terminalText(part.name) + std::string(width - part.name.size() + 2, ' ');
        text += terminalText(part.details) + "\n";
    }
    return text;
}

std::string camerasAsSentence(const std::vector<CameraDescription>& cameras) {
    if (cameras.empty())
        return "No camera found; pictures and text are judged without one.\n";
    std::string names;
    for (const CameraDescription& camera : cameras)
        names += (names.empty() ? "" : ", ") + terminalText(camera.name);
    return "Cameras: " + names + "\n";
}

std::string asText(const Findings& findings) {
    return "Kestrelid " KESTRELID_VERSION "\n" + partsAsText(findings.recognition) +
           (findings.failure
                ? "The default recogniser does not work: " + terminalText(*findings.failure) + "\n"
                : "The default recogniser works.\n") +
           partsAsText(findings.capture) + camerasAsSentence(findings.cameras);
}

}  // namespace

ExitStatus doctor(const DoctorOptions& options) {
    const DefaultServicesOptions services{.resources = options.resources};
    const Findings findings{.recognition = diagnose(services),
                            .failure = trialFailure(services),
                            .capture = diagnoseCamera(),
                            .cameras = cameras()};
    writeOutput(options.json ? asJson(findings) : asText(findings));
    // Servers have no camera, and need none.
    return graver(findings.failure ? ExitStatus::inputFailed : ExitStatus::done, outputStatus());
}

}  // namespace kestrelid::cli
