#pragma once

#include <kestrelid/Export.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelid {

/// An entry of the detector's table that a text holds.
struct KeywordMatch {
    std::string_view keyword;   ///< as it stands in the table
    std::int64_t distance = 0;  ///< edits between the keyword and the closest run of words

    friend bool operator==(const KeywordMatch&, const KeywordMatch&) = default;
};

/// Whether text holds lines that look like a machine-readable zone, and why.
struct MrzLikeLines {
    bool found = false;
    std::string reason;

    friend bool operator==(const MrzLikeLines&, const MrzLikeLines&) = default;
};

/// What a text says for a passport, as the detector weighs it.
struct TextEvidence {
    std::string cleaned;                ///< upper case, accents folded, one space between words
    std::vector<KeywordMatch> matches;  ///< in the order of the table; repeated entries again
    std::string keywordReason;
    MrzLikeLines mrzLike;  ///< of the text as given, with its line breaks
};

/// text: UTF-8; ill-formed bytes count as U+FFFD. Throws std::bad_alloc if memory is short, which
/// is no evidence. Thread: any.
[[nodiscard]] KESTRELID_EXPORT TextEvidence textEvidence(std::string_view text);

/// Byte offset of the first ill-formed sequence. Returns nothing if text is UTF-8. Thread: any.
[[nodiscard]] KESTRELID_EXPORT std::optional<std::size_t> invalidUtf8Offset(std::string_view text);

}  // namespace kestrelid
