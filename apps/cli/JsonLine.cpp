#include "apps/cli/JsonLine.h"

#include "apps/cli/TerminalText.h"

#include <kestrelid/TextEvidence.h>

#include <cstdio>
#include <utility>

namespace kestrelid::cli {

std::string jsonLine(const nlohmann::ordered_json& object) {
    const std::string dump =
        object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);

    // Outside strings a dump on one line is ASCII without control characters, so each one found
    // lies in a string.
    std::string line = withoutControls(dump, [](char32_t codePoint) {
        char buffer[8];
        const int length = std::snprintf(buffer, sizeof buffer, "\\u%04x",
                                         static_cast<unsigned>(codePoint) & 0xFFFFu);
        return std::string(buffer, static_cast<std::size_t>(length));
    });
    line += '\n';
    return line;
}

nlohmann::ordered_json fileAsJson(std::string_view name, int page) {
    nlohmann::ordered_json object{{"schema", kJsonSchema}, {"file", name}};
    if (invalidUtf8Offset(name)) {
        constexpr std::string_view kDigits = "0123456789abcdef";
        std::string bytes;
        for (const char byte : name) {
            bytes += kDigits[static_cast<unsigned char>(byte) >> 4];
            bytes += kDigits[static_cast<unsigned char>(byte) & 15];
        }
        object["fileBytes"] = std::move(bytes);
    }
    if (page > 0)
        object["page"] = page;
    return object;
}

}  // namespace kestrelid::cli
