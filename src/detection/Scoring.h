#pragma once

#include <kestrelid/TextEvidence.h>

#include <string>
#include <string_view>
#include <vector>

namespace kestrelid::detection {

struct Score {
    bool isPassport = false;
    double confidence = 0.0;           // 0..1
    std::vector<std::string> reasons;  // outline, keywords, machine-readable zone
};

// "Keywords matched: ..." with the keywords and their distances, or that there are none.
[[nodiscard]] std::string keywordReason(const std::vector<KeywordMatch>& matches);

// The three findings as one score. The outline's reason is left out where it is empty.
[[nodiscard]] Score combine(double rectangleScore, const std::string& rectangleReason,
                            const std::vector<KeywordMatch>& matches, const MrzLikeLines& mrzLike);

}  // namespace kestrelid::detection
