#pragma once

#include "vision/onnx/OnnxRuntime.h"
#include "vision/text/LineRecognizer.h"
#include "vision/text/PageDirection.h"
#include "vision/text/TextDetector.h"

#include <kestrelid/ServiceStatus.h>

#include <memory>
#include <vector>

namespace kestrelid::vision {

// The three networks that read text, loaded. Thread: any.
struct TextModels {
    TextDetector detector;
    PageDirection direction;
    LineRecognizer recognizer;

    // threads: those that share one run of the detector. Lines are shared out instead: one thread
    // each.
    [[nodiscard]] static Expected<std::shared_ptr<const TextModels>>
    load(const ResourceFolders& resources, int threads);

    // Looks at each part by itself, so that all that is missing shows at once.
    [[nodiscard]] static std::vector<ServiceStatus> diagnose(const ResourceFolders& resources);
};

}  // namespace kestrelid::vision
