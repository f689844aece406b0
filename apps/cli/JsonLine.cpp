#include "apps/cli/JsonLine.h"

#include "apps/cli/TerminalText.h"

#include <cstdio>

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

}  // namespace kestrelid::cli
