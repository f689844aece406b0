#pragma once

#include <string>

namespace kestrelid {

/// One part that recognition needs, as found on this machine.
struct ServiceStatus {
    std::string name;  ///< what it is, as a person would call it
    bool available = false;
    std::string
        details;  ///< version and place; if not available, the package or command that brings it
};

}  // namespace kestrelid
