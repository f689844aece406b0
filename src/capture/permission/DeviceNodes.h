#pragma once

#include <kestrelid/CaptureServices.h>

#include <filesystem>
#include <vector>

namespace kestrelid::capture {

// What became of opening the nodes video* of a folder. Nodes that cannot capture, which hold
// metadata or are codecs, count only where they refuse to be opened and so cannot be told apart.
struct NodeAccess {
    std::vector<std::filesystem::path> opened;   // also those that another program holds
    std::vector<std::filesystem::path> refused;  // no permission

    // Denied where all refuse. Without a node authorized: what is missing then is a camera.
    [[nodiscard]] AuthorizationStatus status() const;
};

[[nodiscard]] NodeAccess tryDeviceNodes(const std::filesystem::path& folder);

}  // namespace kestrelid::capture
