#pragma once

#include <nlohmann/json.hpp>

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace kestrelid::cli {

// The object on one line, with its line feed. Ill-formed UTF-8 becomes U+FFFD; what a terminal
// could act on is escaped, since a reader sees the same string either way.
[[nodiscard]] std::string jsonLine(const nlohmann::ordered_json& object);

// The same without a value that holds others: the destructor of one takes memory, and ends the
// program where there is none. The members' values are JSON already.
[[nodiscard]] std::string
jsonObject(std::initializer_list<std::pair<const char*, std::string>> members);
[[nodiscard]] std::string jsonString(std::string_view text);

}  // namespace kestrelid::cli
