#pragma once

#include <kestrelid/DefaultServices.h>
#include <kestrelid/Image.h>
#include <kestrelid/kestrelid.h>
#include <kestrelid/PassportDetector.h>
#include <kestrelid/PassportValidationResult.h>

#include <memory>
#include <optional>

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

struct KestrelidDetector {
    kestrelid::PlatformServices services;  // for other detectors to share
    std::shared_ptr<kestrelid::PassportDetector> detector;
};
