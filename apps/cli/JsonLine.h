#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace kestrelid::cli {

// The object on one line, with its line feed. Ill-formed UTF-8 becomes U+FFFD; what a terminal
// could act on is escaped, since a reader sees the same string either way.
[[nodiscard]] std::string jsonLine(const nlohmann::ordered_json& object);

}  // namespace kestrelid::cli
