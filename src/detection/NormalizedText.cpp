#include "detection/NormalizedText.h"

#include "base/UnicodeText.h"

namespace kestrelid::detection {

namespace {

bool isKept(char32_t scalar) {
    return scalar == '<' || scalar == '>' || scalar == '\'' || base::isAlphanumeric(scalar);
}

}  // namespace

std::string normalize(std::string_view raw) {
    const std::string folded = base::withoutDiacritics(base::upperCased(base::wellFormed(raw)));
    std::string cleaned;
    cleaned.reserve(folded.size());
    bool gap = false;
    for (std::size_t offset = 0; offset < folded.size();) {
        const std::size_t start = offset;
        const char32_t scalar = base::nextScalar(folded, offset);
        if (scalar == ' ' || scalar == '\n') {
            gap = !cleaned.empty();
        } else if (isKept(scalar)) {
            if (gap)
                cleaned += ' ';
            gap = false;
            cleaned.append(folded, start, offset - start);
        }
    }
    return cleaned;
}

}  // namespace kestrelid::detection
