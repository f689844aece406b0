#include <kestrelid/TextEvidence.h>

#include "base/UnicodeText.h"
#include "detection/KeywordTable.h"
#include "detection/MrzLikeLines.h"
#include "detection/NormalizedText.h"
#include "detection/Scoring.h"

namespace kestrelid {

TextEvidence textEvidence(std::string_view text) {
    TextEvidence evidence;
    evidence.cleaned = detection::normalize(text);
    evidence.matches = detection::KeywordTable::passport().matches(evidence.cleaned);
    evidence.keywordReason = detection::keywordReason(evidence.matches);
    evidence.mrzLike = detection::detectMRZLikeLines(text);
    return evidence;
}

std::optional<std::size_t> invalidUtf8Offset(std::string_view text) {
    const std::size_t length = base::wellFormedLength(text);
    return length < text.size() ? std::optional(length) : std::nullopt;
}

}  // namespace kestrelid
