#include "base/UnicodeText.h"

#include <algorithm>
#include <new>
#include <unicode/bytestream.h>
#include <unicode/casemap.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/uscript.h>
#include <unicode/utf8.h>

// ICU's UTF-8 macros narrow their own intermediate values.
#pragma GCC diagnostic ignored "-Wconversion"

namespace kestrelid::base {

namespace {

icu::StringPiece piece(std::string_view text) {
    return {text.data(), static_cast<int32_t>(text.size())};
}

// A mark that any letter may carry, such as an acute accent; the Inherited script is Unicode's name
// for "any".
bool isAccent(UChar32 scalar) {
    UErrorCode status = U_ZERO_ERROR;
    return u_charType(scalar) == U_NON_SPACING_MARK &&
           uscript_getScript(scalar, &status) == USCRIPT_INHERITED;
}

// ICU's tables are built into it: what fails is that memory is short.
void check(UErrorCode status) {
    if (U_FAILURE(status))
        throw std::bad_alloc();
}

using Form = const icu::Normalizer2*(UErrorCode&);

std::string normalized(Form& form, std::string_view text) {
    std::string result;
    icu::StringByteSink<std::string> sink(&result, static_cast<int32_t>(text.size()));
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* normalizer = form(status);
    check(status);
    normalizer->normalizeUTF8(0, piece(text), sink, nullptr, status);
    check(status);
    return result;
}

}  // namespace

bool isAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

std::string wellFormed(std::string_view bytes) {
    std::string result;
    result.reserve(bytes.size());
    for (std::size_t offset = 0; offset < bytes.size();) {
        const std::size_t start = offset;
        if (nextScalar(bytes, offset) == kReplacementCharacter)
            result += "\uFFFD";
        else
            result.append(bytes, start, offset - start);
    }
    return result;
}

std::string upperCased(std::string_view text) {
    std::string result;
    if (isAscii(text)) {
        result.assign(text);
        for (char& byte : result)
            if (byte >= 'a' && byte <= 'z')
                byte = static_cast<char>(byte - 'a' + 'A');
        return result;
    }
    icu::StringByteSink<std::string> sink(&result, static_cast<int32_t>(text.size()));
    UErrorCode status = U_ZERO_ERROR;
    icu::CaseMap::utf8ToUpper("", 0, piece(text), sink, nullptr, status);
    check(status);
    return result;
}

std::string withoutDiacritics(std::string_view text) {
    if (isAscii(text))
        return std::string(text);
    const std::string decomposed = normalized(*icu::Normalizer2::getNFDInstance, text);
    std::string bare;
    bare.reserve(decomposed.size());
    for (std::size_t offset = 0; offset < decomposed.size();) {
        const std::size_t start = offset;
        const char32_t scalar = nextScalar(decomposed, offset);
        if (!isAccent(static_cast<UChar32>(scalar)))
            bare.append(decomposed, start, offset - start);
    }
    return composed(bare);
}

std::string composed(std::string_view text) {
    return isAscii(text) ? std::string(text) : normalized(*icu::Normalizer2::getNFCInstance, text);
}

bool isAlphanumeric(char32_t scalar) {
    constexpr uint32_t kLettersMarksNumbers = U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK;
    return (U_MASK(u_charType(static_cast<UChar32>(scalar))) & kLettersMarksNumbers) != 0;
}

char32_t nextScalar(std::string_view text, std::size_t& offset) {
    UChar32 scalar = 0;
    U8_NEXT_OR_FFFD(text.data(), offset, text.size(), scalar);
    return static_cast<char32_t>(scalar);
}

std::size_t wellFormedLength(std::string_view text) {
    for (std::size_t offset = 0; offset < text.size();) {
        const std::size_t start = offset;
        UChar32 scalar = 0;
        U8_NEXT(text.data(), offset, text.size(), scalar);
        if (scalar < 0)
            return start;
    }
    return text.size();
}

}  // namespace kestrelid::base
