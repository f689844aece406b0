#include "zone/ZoneNames.h"

#include <algorithm>

namespace kestrelid::zone {

WipedText textForPeople(std::string_view characters, bool isName) {
    const std::size_t length = characters.find_last_not_of('<') + 1;  // npos + 1 is 0
    WipedText text;
    for (std::size_t i = 0; i < length;) {
        const std::size_t end = std::min(characters.find_first_not_of('<', i), length);
        const std::size_t fillers = end - i;
        const bool isBlank = i > 0 && (fillers == 1 || (isName && fillers > 1));
        text.append(isBlank ? std::string_view(" ") : characters.substr(i, fillers));
        const std::size_t next = std::min(characters.find('<', end), length);
        text.append(characters.substr(end, next - end));
        i = next;
    }
    return text;
}

std::size_t secondaryStart(std::string_view names) noexcept {
    const std::size_t separator = names.find("<<");
    return separator == std::string_view::npos ? names.size() : separator + 2;
}

}  // namespace kestrelid::zone
