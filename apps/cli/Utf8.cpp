#include "apps/cli/Utf8.h"

#include <array>

namespace kestrelid::cli {

Utf8Character firstCharacter(std::string_view text) noexcept {
    struct Lead {
        unsigned char mask;
        unsigned char pattern;
        char32_t smallest;  // below it the form is longer than needed, which UTF-8 forbids
    };
    static constexpr std::array<Lead, 4> kLeads{
        {{0x80, 0x00, 0}, {0xE0, 0xC0, 0x80}, {0xF0, 0xE0, 0x800}, {0xF8, 0xF0, 0x10000}}};

    const auto byte = static_cast<unsigned char>(text.front());
    for (std::size_t extra = 0; extra < kLeads.size(); ++extra) {
        const Lead& lead = kLeads[extra];
        if ((byte & lead.mask) != lead.pattern)
            continue;
        if (text.size() <= extra)
            return {};
        char32_t codePoint = byte & static_cast<unsigned char>(~lead.mask);
        for (std::size_t i = 1; i <= extra; ++i) {
            const auto next = static_cast<unsigned char>(text[i]);
            if ((next & 0xC0) != 0x80)
                return {};
            codePoint = (codePoint << 6) | (next & 0x3F);
        }
        const bool surrogate = codePoint >= 0xD800 && codePoint <= 0xDFFF;
        if (codePoint < lead.smallest || codePoint > 0x10FFFF || surrogate)
            return {};
        return {extra + 1, codePoint, true};
    }
    return {};
}

}  // namespace kestrelid::cli
