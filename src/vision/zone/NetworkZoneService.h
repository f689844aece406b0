#pragma once

#include "vision/onnx/NetworkFile.h"

#include <kestrelid/ServiceStatus.h>
#include <kestrelid/VisionServices.h>

#include <filesystem>
#include <vector>

namespace kestrelid::vision {

class ZoneNetwork;

// Reads machine-readable zones with the zone network.
class NetworkZoneService final : public ZoneService {
public:
    // resources: searched in order for the network and the ONNX Runtime library.
    NetworkZoneService(std::vector<std::filesystem::path> resources, int threads);
    ~NetworkZoneService() override;

    [[nodiscard]] ZoneResult perform(const Bitmap& bitmap, const ZoneRequest& request) override;

    // The network, loaded once for the occasion. Thread: any.
    [[nodiscard]] ServiceStatus diagnose() const;

private:
    NetworkFile<ZoneNetwork> file_;
    int threads_;  // of one request
};

}  // namespace kestrelid::vision
