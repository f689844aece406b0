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

Expected<OnnxSession> openModel(const OnnxRuntime& runtime, const ResourceFolders& resources,
                                std::string_view name, int threads) {
    const auto path = resources.find(name);
    if (!path)
        return failure(resources.missing(name));
    return runtime.open(*path, threads);
}

Expected<CtcAlphabet> readDictionary(const ResourceFolders& resources) {
    const auto path = resources.find(kDictionaryName);
    if (!path)
        return failure(resources.missing(kDictionaryName));
    std::ifstream file(*path, std::ios::binary);
    const std::string content(std::istreambuf_iterator<char>(file), {});
    if (auto alphabet = CtcAlphabet::parse(content))
        return *std::move(alphabet);
    return failure(path->string() +
                   " cannot be read or lacks English letters: " + std::string(kModelRemedy));
}

template <class Part>
ServiceStatus status(std::string name, const Expected<Part>& part, std::string details) {
    if (!part)
        return {std::move(name), false, part.error().description};
    return {std::move(name), true, std::move(details)};
}

}  // namespace

Expected<std::shared_ptr<const PpOcrModels>> PpOcrModels::load(const ResourceFolders& resources,
                                                               int threads) {
    const auto runtime = OnnxRuntime::load(resources);
    if (!runtime)
        return Failure(runtime.error());
    auto alphabet = readDictionary(resources);
    if (!alphabet)
        return Failure(alphabet.error());
    std::vector<OnnxSession> sessions;
    for (const auto& [name, share] :
         {std::pair(kDetectorName, threads), std::pair(kDirectionName, 1),
          std::pair(kRecognizerName, 1)}) {
        auto session = openModel(**runtime, resources, name, share);
        if (!session)
            return Failure(session.error());
        sessions.push_back(*std::move(session));
    }
    return std::make_shared<const PpOcrModels>(
        PpOcrModels{TextDetector(std::move(sessions[0])), PageDirection(std::move(sessions[1])),
                    LineRecognizer(std::move(sessions[2]), *std::move(alphabet))});
}

std::vector<ServiceStatus> PpOcrModels::diagnose(const ResourceFolders& resources) {
    std::vector<ServiceStatus> parts;
    const auto runtime = OnnxRuntime::load(resources);
    parts.push_back(status("ONNX Runtime", runtime,
                           runtime ? (*runtime)->version() + ", " + (*runtime)->library().string()
                                   : std::string()));
    for (const auto& [name, file] : {std::pair("text detector", kDetectorName),
                                     std::pair("text direction model", kDirectionName),
                                     std::pair("text recognizer", kRecognizerName)}) {
        const auto path = resources.find(file);
        const std::string place = path ? "PP-OCRv4 mobile, " + path->string() : std::string();
        if (path && !runtime)
            parts.push_back({name, false, place + ", which needs ONNX Runtime"});
        else if (!path)
            parts.push_back({name, false, resources.missing(file)});
        else
            parts.push_back(status(name, (*runtime)->open(*path, 1), place));
    }
    const auto dictionary = resources.find(kDictionaryName);
    parts.push_back(status("character dictionary", readDictionary(resources),
                           dictionary ? dictionary->string() : std::string()));
    return parts;
}

}  // namespace kestrelid::vision
