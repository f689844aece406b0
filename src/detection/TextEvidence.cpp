#include <kestrelid/TextEvidence.h>

#include "detection/KeywordTable.h"
#include "detection/MrzLikeLines.h"
#include "detection/NormalizedText.h"
#include "detection/Scoring.h"

namespace kestrelid {

TextEvidence textEvidence(std::string_view text) {
    TextEvidence evidence;
    evidence.cleaned = normalize(text);
    evidence.matches = KeywordTable::passport().matches(evidence.cleaned);
    evidence.keywordReason = keywordReason(evidence.matches);
    evidence.mrzLike = detectMRZLikeLines(text);
    return evidence;
}

}  // namespace kestrelid
