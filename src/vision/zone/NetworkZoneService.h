#pragma once

#include "vision/onnx/Failure.h"
#include "vision/onnx/ResourceFolders.h"

#include <kestrelid/ServiceStatus.h>
#include <kestrelid/VisionServices.h>

#include <filesystem>
#include <memory>
#include <mutex>
#include <vector>

namespace kestrelid::vision {

class ZoneNetwork;

// Reads machine-readable zones with the zone network. Library and network are loaded by the first
// request; a load that failed is that request's error and tried again by the next one.
class NetworkZoneService final : public ZoneService {
public:
    // resources: searched in order for the network and the ONNX Runtime library.
    NetworkZoneService(std::vector<std::filesystem::path> resources, int threads);
    ~NetworkZoneService() override;

    [[nodiscard]] ZoneResult perform(const Bitmap& bitmap, const ZoneRequest& request) override;

    // The network, loaded once for the occasion. Thread: any.
    [[nodiscard]] ServiceStatus diagnose() const;

private:
    [[nodiscard]] Expected<std::shared_ptr<const ZoneNetwork>> network();

    ResourceFolders resources_;
    int threads_;  // of one request
    std::mutex loading_;
    std::shared_ptr<const ZoneNetwork> network_;
};

}  // namespace kestrelid::vision
