#pragma once

#include <kestrelid/DefaultServices.h>
#include <kestrelid/Image.h>
#include <kestrelid/kestrelid.h>
#include <kestrelid/MachineReadableZone.h>
#include <kestrelid/PassportDetector.h>
#include <kestrelid/PassportValidationResult.h>

#include <array>
#include <cstdint>
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

    // Of an examination.
    struct Match {
        std::string keyword;
        std::int32_t distance = 0;
    };
    std::optional<std::array<KestrelidPoint, 4>> outline{};
    std::vector<Match> matches{};

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

// NormalizedPoint has its origin at the lower left.
inline KestrelidPoint pointForC(const NormalizedPoint& point) {
    return {point.x, 1.0 - point.y};
}

// asOf: may be null. Throws a Failure if it is no day.
ZoneRules zoneRules(const KestrelidDay* asOf);

}  // namespace kestrelid::c
