#include "apps/cli/JsonLine.h"

#include "apps/cli/TerminalText.h"
#include "apps/cli/Utf8.h"

#include <cstdio>
#include <string_view>

namespace kestrelid::cli {

std::string jsonLine(const nlohmann::ordered_json& object) {
    const std::string dump =
        object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);

    // Outside strings a dump on one line is ASCII without control characters, so each one found
    // lies in a string.
    std::string line;
    line.reserve(dump.size() + 1);
    for (std::string_view rest = dump; !rest.empty();) {
        const Utf8Character character = firstCharacter(rest);
        if (isTerminalControl(character.codePoint)) {
            char buffer[8];
            std::snprintf(buffer, sizeof buffer, "\\u%04x",
                          static_cast<unsigned>(character.codePoint) & 0xFFFFu);
            line += buffer;
        } else {
            line += rest.substr(0, character.length);
        }
        rest.remove_prefix(character.length);
    }
    line += '\n';
    return line;
}

}  // namespace kestrelid::cli
