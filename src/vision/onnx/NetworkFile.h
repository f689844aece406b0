#pragma once

#include "vision/onnx/Failure.h"
#include "vision/onnx/OnnxRuntime.h"
#include "vision/onnx/ResourceFolders.h"

#include <kestrelid/ServiceStatus.h>

#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kestrelid::vision {

// A network in a file of its own. Library and network are loaded by the first request that needs
// them; a load that failed is that request's error and tried again by the next one. Thread: any.
//
// Network: made from an OnnxSession, which runs on the calling thread alone.
template <typename Network>
class NetworkFile {
public:
    using Opened = Expected<std::shared_ptr<const Network>>;

    // resources: searched in order for the file and the ONNX Runtime library.
    NetworkFile(std::vector<std::filesystem::path> resources, std::string_view file)
        : resources_(std::move(resources)), file_(file) {}

    [[nodiscard]] Opened network() {
        const std::scoped_lock lock(loading_);
        if (!network_) {
            auto opened = open();
            if (!opened)
                return opened;
            network_ = *std::move(opened);
        }
        return network_;
    }

    // The network, loaded once for the occasion. name: what a person calls it. without: what does
    // not work where it is missing.
    [[nodiscard]] ServiceStatus diagnose(std::string name, std::string_view without) const {
        const Opened opened = open();
        if (!opened)
            return {std::move(name), false,
                    opened.error().description + "; " + std::string(without)};
        return {std::move(name), true, resources_.find(file_)->string()};
    }

private:
    [[nodiscard]] Opened open() const {
        const auto path = resources_.find(file_);
        if (!path)
            return failure(resources_.missing(file_));
        const auto runtime = OnnxRuntime::load(resources_);
        if (!runtime)
            return Failure(runtime.error());
        auto session = (*runtime)->open(*path, 1);
        if (!session)
            return Failure(session.error());
        return std::make_shared<const Network>(*std::move(session));
    }

    ResourceFolders resources_;
    std::string file_;
    std::mutex loading_;
    std::shared_ptr<const Network> network_;
};

}  // namespace kestrelid::vision
