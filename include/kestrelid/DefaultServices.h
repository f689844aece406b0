#pragma once

#include <kestrelid/detection/PassportDetector.h>
#include <kestrelid/Export.h>
#include <kestrelid/ServiceStatus.h>

#include <filesystem>
#include <vector>

namespace kestrelid {

/// With what a machine's services work.
struct DefaultServicesOptions {
    /// Folder that holds the models (*.onnx) and the ONNX Runtime library. Empty: where the library
    /// lies, installed or built.
    std::filesystem::path resources;

    int textThreads = 2;  ///< threads that one request may use, the calling one included

    friend bool operator==(const DefaultServicesOptions&, const DefaultServicesOptions&) = default;
};

/// The services of this machine. Nothing is loaded before the first request needs it; what is
/// missing becomes an error of that request. Calls with equal options give the same services, with
/// one set of models and threads, for as long as anybody owns them; a host that wants its own makes
/// its own. All are null if there is no memory for them. Thread: any.
[[nodiscard]] KESTRELID_EXPORT PlatformServices
defaultServices(const DefaultServicesOptions& options = {});

/// What PassportDetector::create() takes its services from.
struct ThisMachine {
    /// defaultServices().
    [[nodiscard]] static PlatformServices services() { return defaultServices(); }
};

/// Looks for every part of the text recogniser and for the outline network, and loads them once.
/// Thread: any; takes up to a second.
[[nodiscard]] KESTRELID_EXPORT std::vector<ServiceStatus>
diagnose(const DefaultServicesOptions& options = {});

}  // namespace kestrelid
