#pragma once

#include <kestrelid/DefaultServices.h>
#include <kestrelid/Image.h>
#include <kestrelid/kestrelid.h>
#include <kestrelid/MachineReadableZone.h>
#include <kestrelid/PassportDetector.h>
#include <kestrelid/PassportValidationResult.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

struct KestrelidImage {
    kestrelid::Image image;  // upright, with a bitmap
};

// A result that it owns, or one that is only shown to a completion, which takes no memory.
struct KestrelidResult {
    std::optional<kestrelid::PassportValidationResult> own;
    const kestrelid::PassportValidationResult* shown = nullptr;

    [[nodiscard]] const kestrelid::PassportValidationResult& value() const {
        return shown ? *shown : *own;
    }
};

// Zones with their texts as C wants them: each ends in a zero byte.
struct KestrelidZones {
    explicit KestrelidZones(std::vector<kestrelid::MachineReadableZone> given);
    KestrelidZones(const KestrelidZones&) = delete;
    KestrelidZones& operator=(const KestrelidZones&) = delete;

    std::vector<kestrelid::MachineReadableZone> zones;
    std::vector<std::vector<std::string>> problems;  // of each zone
};

struct KestrelidDetector {
    kestrelid::PlatformServices services;  // for other detectors to share
    std::shared_ptr<kestrelid::PassportDetector> detector;
};

namespace kestrelid::c {

// asOf: may be null. Throws a Failure if it is no day.
ZoneRules zoneRules(const KestrelidDay* asOf);

}  // namespace kestrelid::c
