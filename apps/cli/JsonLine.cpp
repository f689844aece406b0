#include "apps/cli/JsonLine.h"

#include "apps/cli/TerminalText.h"

#include <kestrelid/TextEvidence.h>

#include <cstdio>
#include <utility>

namespace kestrelid::cli {

std::string jsonLine(const nlohmann::ordered_json& object) {
    return jsonText(object) + "\n";
}

std::string jsonText(const nlohmann::ordered_json& value) {
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

std::string jsonObject(const JsonMembers& members) {
    std::string object;
    for (const auto& [name, value] : members) {
        object += object.empty() ? "{\"" : ",\"";
        object += name;
        object += "\":" + value;
    }
    return object + "}";
}

JsonMembers fileMembers(std::string_view name, int page) {
    JsonMembers members{{"schema", std::to_string(kJsonSchema)}, {"file", jsonText(name)}};
    if (invalidUtf8Offset(name)) {
        constexpr std::string_view kDigits = "0123456789abcdef";
        std::string bytes = "\"";
        for (const char byte : name) {
            bytes += kDigits[static_cast<unsigned char>(byte) >> 4];
            bytes += kDigits[static_cast<unsigned char>(byte) & 15];
        }
        members.emplace_back("fileBytes", bytes + "\"");
    }
    if (page > 0)
        members.emplace_back("page", std::to_string(page));
    return members;
}

}  // namespace kestrelid::cli
