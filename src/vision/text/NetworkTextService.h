#pragma once

#include "vision/onnx/Failure.h"
#include "vision/onnx/ResourceFolders.h"

#include <kestrelid/ServiceStatus.h>
#include <kestrelid/VisionServices.h>

#include <atomic>
#include <filesystem>
#include <memory>
#include <mutex>
#include <vector>

namespace kestrelid::vision {

struct TextModels;

// Reads English text with the networks of models/, by ONNX Runtime. Library and models are loaded
// by the first request and shared by all; a load that failed is that request's error and tried
// again by the next one. TextRequest: usesLanguageCorrection has no effect, the networks know no
// words; recognitionLanguages must hold "en".
class NetworkTextService final : public TextService {
public:
    // resources: searched in order, each file taken from the first that has it. threads: that one
    // request may use, the calling one included.
    NetworkTextService(std::vector<std::filesystem::path> resources, int threads);
    ~NetworkTextService() override;

    [[nodiscard]] TextResult perform(const Bitmap& bitmap, const TextRequest& request) override;

    // Of perform(). Thread: any.
    [[nodiscard]] int pagesUnderWay() const { return pagesUnderWay_; }

    // Every part, loaded once for the occasion. Thread: any.
    [[nodiscard]] std::vector<ServiceStatus> diagnose() const;

private:
    [[nodiscard]] Expected<std::shared_ptr<const TextModels>> models();

    ResourceFolders resources_;
    int threads_;
    std::atomic<int> pagesUnderWay_ = 0;
    std::mutex loading_;
    std::shared_ptr<const TextModels> models_;
};

}  // namespace kestrelid::vision
