#include "cli/DoctorCommand.h"

#include "cli/JsonLine.h"
#include "cli/StandardStreams.h"
#include "cli/TerminalText.h"

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

// Parts that are all present may still fail together, so the recogniser is tried. Why it does not
// work, if so.
std::optional<std::string> trialFailure(const DefaultServicesOptions& options) {
    const PlatformServices services = defaultServices(options);
    const Bitmap picture = blankPicture();
    std::optional<RequestError> failure;
    const auto completion = [&](const RequestReport& report) {
        if (report.error)
            failure = report.error;
    };
    if (auto error = services.rectangles->perform(picture, {}, completion))
        failure = std::move(error);
    if (!failure) {
        if (auto error = services.text->perform(picture, {}, completion))
            failure = std::move(error);
    }
    if (!failure)
        return std::nullopt;
    return failure->description;
}

std::string asJson(const std::vector<ServiceStatus>& parts,
                   const std::optional<std::string>& failure) {
    auto list = nlohmann::ordered_json::array();
    for (const ServiceStatus& part : parts)
        list.push_back(
            {{"name", part.name}, {"available", part.available}, {"details", part.details}});
    nlohmann::ordered_json object{
        {"version", KESTRELID_VERSION}, {"complete", !failure}, {"parts", std::move(list)}};
    if (failure)
        object["error"] = *failure;
    return jsonLine(object);
}

std::string asText(const std::vector<ServiceStatus>& parts,
                   const std::optional<std::string>& failure) {
    std::size_t width = 0;
    for (const ServiceStatus& part : parts)
        width = std::max(width, part.name.size());
    std::string text = "Kestrelid " KESTRELID_VERSION "\n";
    for (const ServiceStatus& part : parts) {
        text += part.available ? "  found    " : "  missing  ";
        text += terminalText(part.name) + std::string(width - part.name.size() + 2, ' ');
        text += terminalText(part.details) + "\n";
    }
    text += failure ? "The default recogniser does not work: " + terminalText(*failure) + "\n"
                    : "The default recogniser works.\n";
    return text;
}

}  // namespace

ExitStatus doctor(const DoctorOptions& options) {
    const DefaultServicesOptions services{.resources = options.resources};
    const std::vector<ServiceStatus> parts = diagnose(services);
    const std::optional<std::string> failure = trialFailure(services);
    writeOutput(options.json ? asJson(parts, failure) : asText(parts, failure));
    return graver(failure ? ExitStatus::inputFailed : ExitStatus::done, outputStatus());
}

}  // namespace kestrelid::cli
