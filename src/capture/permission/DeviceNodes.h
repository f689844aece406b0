#pragma once

#include <kestrelid/CaptureServices.h>

#include <filesystem>
#include <vector>

namespace kestrelid::capture {

// What became of opening the nodes video* of a folder. Nodes that cannot capture, which hold
// metadata or are codecs, count only if they refuse to be opened, because they cannot be told apart
// then.
struct NodeAccess {
    std::vector<std::filesystem::path> opened;   // also those that another program holds
    std::vector<std::filesystem::path> refused;  // no permission

    // Denied if all refuse. Authorized if there is no node: what is missing then is a camera.
    [[nodiscard]] AuthorizationStatus status() const;
};

[[nodiscard]] NodeAccess tryDeviceNodes(const std::filesystem::path& folder);

}  // namespace kestrelid::capture
