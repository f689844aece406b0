#include "vision/text/TextModels.h"

#include <string>
#include <string_view>
#include <utility>

namespace kestrelid::vision {
namespace {

constexpr std::string_view kDetectorName = "text-detector.onnx";
constexpr std::string_view kDirectionName = "text-direction.onnx";
constexpr std::string_view kRecognizerName = "text-recogniser.onnx";

Expected<OnnxSession> openModel(const OnnxRuntime& runtime, const ResourceFolders& resources,
                                std::string_view name, int threads) {
    const auto path = resources.find(name);
    if (!path)
        return failure(resources.missing(name));
    return runtime.open(*path, threads);
}

template <class Part>
ServiceStatus status(std::string name, const Expected<Part>& part, std::string details) {
    if (!part)
        return {std::move(name), false, part.error().description};
    return {std::move(name), true, std::move(details)};
}

}  // namespace

Expected<std::shared_ptr<const TextModels>> TextModels::load(const ResourceFolders& resources,
                                                             int threads) {
    const auto runtime = OnnxRuntime::load(resources);
    if (!runtime)
        return Failure(runtime.error());
    std::vector<OnnxSession> sessions;
    for (const auto& [name, share] :
         {std::pair(kDetectorName, threads), std::pair(kDirectionName, 1),
          std::pair(kRecognizerName, 1)}) {
        auto session = openModel(**runtime, resources, name, share);
        if (!session)
            return Failure(session.error());
        sessions.push_back(*std::move(session));
    }
    return std::make_shared<const TextModels>(TextModels{TextDetector(std::move(sessions[0])),
                                                         PageDirection(std::move(sessions[1])),
                                                         LineRecognizer(std::move(sessions[2]))});
}

std::vector<ServiceStatus> TextModels::diagnose(const ResourceFolders& resources) {
    std::vector<ServiceStatus> parts;
    const auto runtime = OnnxRuntime::load(resources);
    parts.push_back(status("ONNX Runtime", runtime,
                           runtime ? (*runtime)->version() + ", " + (*runtime)->library().string()
                                   : std::string()));
    for (const auto& [name, file] : {std::pair("text detector", kDetectorName),
                                     std::pair("text direction model", kDirectionName),
                                     std::pair("text recognizer", kRecognizerName)}) {
        const auto path = resources.find(file);
        if (!path)
            parts.push_back({name, false, resources.missing(file)});
        else if (!runtime)
            parts.push_back({name, false, path->string() + ", which needs ONNX Runtime"});
        else
            parts.push_back(status(name, (*runtime)->open(*path, 1), path->string()));
    }
    return parts;
}

}  // namespace kestrelid::vision
