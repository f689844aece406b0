#pragma once

#include "vision/onnx/ResourceFolders.h"

#include <kestrelid/ServiceStatus.h>
#include <kestrelid/VisionServices.h>

#include <filesystem>
#include <memory>
#include <mutex>
#include <vector>

namespace kestrelid::vision {

class OutlineNetwork;

// When the other finder is asked beside the network.
enum class OutlineMixture { doubtful, never };

// Finds outlines of documents by the outline network. If its first look leaves doubt it looks
// again, in the eight ways that a picture can be turned and mirrored. If that leaves doubt, another
// finder is asked too. Library and network are loaded by the first request. If one is missing, the
// other finder answers alone, as if there were no network, and the next request looks again.
//
// Confidence is meant as the chance that the outline overlaps a document by 0.8 or more. On 210
// pictures drawn for it, 24 of 42 outlines between 0.4 and 0.7 did, 47 of 68 between 0.7 and 0.9,
// 696 of 705 above, and 7 of 44 below the default floor of 0.4 (outlines of 2% of the picture or
// more, several of one document among them). The other finder's confidences have their own scale.
class NetworkRectangleService final : public RectangleService {
public:
    // resources: searched in order for the network and the ONNX Runtime library. other: asked in
    // doubt; never null.
    NetworkRectangleService(std::vector<std::filesystem::path> resources,
                            std::shared_ptr<RectangleService> other,
                            OutlineMixture mixture = OutlineMixture::doubtful);
    ~NetworkRectangleService() override;

    [[nodiscard]] RectangleResult perform(const Bitmap& bitmap,
                                          const RectangleRequest& request) override;

    // The network, loaded once for the occasion. Thread: any.
    [[nodiscard]] ServiceStatus diagnose() const;

private:
    [[nodiscard]] std::shared_ptr<const OutlineNetwork> network();

    ResourceFolders resources_;
    std::shared_ptr<RectangleService> other_;
    OutlineMixture mixture_;
    std::mutex loading_;
    std::shared_ptr<const OutlineNetwork> network_;
};

}  // namespace kestrelid::vision
