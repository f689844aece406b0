#pragma once

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kestrelid::cli {

// The object on one line, with its line feed. Ill-formed UTF-8 becomes U+FFFD; what a terminal
// could act on is escaped, since a reader sees the same string either way.
[[nodiscard]] std::string jsonLine(const nlohmann::ordered_json& object);

// The value without a line feed.
[[nodiscard]] std::string jsonText(const nlohmann::ordered_json& value);

// Names and values, which are JSON already. Not a value that holds others: the destructor of one
// takes memory, and ends the program where there is none.
using JsonMembers = std::vector<std::pair<const char*, std::string>>;
[[nodiscard]] std::string jsonObject(const JsonMembers& members);

// Of the objects that tell about a file; a program that reads them checks it first.
inline constexpr int kJsonSchema = 1;

// What such an object begins with: schema, file, fileBytes (in hexadecimal digits) where the name
// is not UTF-8, and page where there are several (0: there is one).
[[nodiscard]] JsonMembers fileMembers(std::string_view name, int page = 0);

}  // namespace kestrelid::cli
