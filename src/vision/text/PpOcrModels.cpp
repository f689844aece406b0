#include "vision/text/PpOcrModels.h"

#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace kestrelid::vision {
namespace {

constexpr std::string_view kDetectorName = "ch_PP-OCRv4_det_infer.onnx";
constexpr std::string_view kDirectionName = "ch_ppocr_mobile_v2.0_cls_infer.onnx";
constexpr std::string_view kRecognizerName = "ch_PP-OCRv4_rec_infer.onnx";
constexpr std::string_view kDictionaryName = "ppocr_keys_v1.txt";

OnnxRuntime::Opened openModel(const OnnxRuntime& runtime, const ResourceFolders& resources,
                              std::string_view name, int threads) {
    const auto path = resources.find(name);
    if (!path)
        return resources.missing(name);
    return runtime.open(*path, threads);
}

std::variant<CtcAlphabet, RequestError> readDictionary(const ResourceFolders& resources) {
    const auto path = resources.find(kDictionaryName);
    if (!path)
        return resources.missing(kDictionaryName);
    std::ifstream file(*path, std::ios::binary);
    const std::string content(std::istreambuf_iterator<char>(file), {});
    if (auto alphabet = CtcAlphabet::parse(content))
        return *std::move(alphabet);
    return RequestError{path->string() +
                        " cannot be read or lacks English letters: " + std::string(kModelRemedy)};
}

template <class Part>
ServiceStatus status(std::string name, const std::variant<Part, RequestError>& part,
                     std::string details) {
    if (const auto* error = std::get_if<RequestError>(&part))
        return {std::move(name), false, error->description};
    return {std::move(name), true, std::move(details)};
}

}  // namespace

PpOcrModels::Loaded PpOcrModels::load(const ResourceFolders& resources, int threads) {
    const auto runtime = OnnxRuntime::load(resources);
    if (const auto* error = std::get_if<RequestError>(&runtime))
        return *error;
    const OnnxRuntime& onnx = *std::get<std::shared_ptr<const OnnxRuntime>>(runtime);
    auto alphabet = readDictionary(resources);
    if (const auto* error = std::get_if<RequestError>(&alphabet))
        return *error;
    std::vector<OnnxSession> sessions;
    for (const auto& [name, share] :
         {std::pair(kDetectorName, threads), std::pair(kDirectionName, 1),
          std::pair(kRecognizerName, 1)}) {
        auto session = openModel(onnx, resources, name, share);
        if (const auto* error = std::get_if<RequestError>(&session))
            return *error;
        sessions.push_back(std::get<OnnxSession>(std::move(session)));
    }
    return std::make_shared<const PpOcrModels>(PpOcrModels{
        TextDetector(std::move(sessions[0])), PageDirection(std::move(sessions[1])),
        LineRecognizer(std::move(sessions[2]), std::get<CtcAlphabet>(std::move(alphabet)))});
}

std::vector<ServiceStatus> PpOcrModels::diagnose(const ResourceFolders& resources) {
    std::vector<ServiceStatus> parts;
    const auto runtime = OnnxRuntime::load(resources);
    const auto* loaded = std::get_if<std::shared_ptr<const OnnxRuntime>>(&runtime);
    parts.push_back(status("ONNX Runtime", runtime,
                           loaded ? (*loaded)->version() + ", " + (*loaded)->library().string()
                                  : std::string()));
    for (const auto& [name, file] : {std::pair("text detector", kDetectorName),
                                     std::pair("text direction model", kDirectionName),
                                     std::pair("text recognizer", kRecognizerName)}) {
        const auto path = resources.find(file);
        const std::string place = path ? "PP-OCRv4 mobile, " + path->string() : std::string();
        if (path && !loaded)
            parts.push_back({name, false, place + ", which needs ONNX Runtime"});
        else if (!path)
            parts.push_back({name, false, resources.missing(file).description});
        else
            parts.push_back(status(name, (*loaded)->open(*path, 1), place));
    }
    const auto dictionary = resources.find(kDictionaryName);
    parts.push_back(status("character dictionary", readDictionary(resources),
                           dictionary ? dictionary->string() : std::string()));
    return parts;
}

}  // namespace kestrelid::vision
