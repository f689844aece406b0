#include "apps/cli/JsonLine.h"

#include "apps/cli/TerminalText.h"

#include <cstdio>

namespace kestrelid::cli {
namespace {

std::string dumped(const nlohmann::ordered_json& value) {
    const std::string dump =
        value.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);

    // Outside strings a dump on one line is ASCII without control characters, so each one found
    // lies in a string.
    return withoutControls(dump, [](char32_t codePoint) {
        char buffer[8];
        const int length = std::snprintf(buffer, sizeof buffer, "\\u%04x",
                                         static_cast<unsigned>(codePoint) & 0xFFFFu);
        return std::string(buffer, static_cast<std::size_t>(length));
    });
}

}  // namespace

std::string jsonLine(const nlohmann::ordered_json& object) {
    return dumped(object) + "\n";
}

std::string jsonObject(std::initializer_list<std::pair<const char*, std::string>> members) {
    std::string object;
    for (const auto& [name, value] : members) {
        object += object.empty() ? "{\"" : ",\"";
        object += name;
        object += "\":" + value;
    }
    return object + "}";
}

std::string jsonString(std::string_view text) {
    return dumped(text);
}

}  // namespace kestrelid::cli
