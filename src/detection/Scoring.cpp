#include "detection/Scoring.h"

#include "detection/VerdictNumbers.h"

#include <cmath>

namespace kestrelid::detection {

namespace {

constexpr double kPassportConfidence = 0.5;

}  // namespace

std::string keywordReason(const std::vector<KeywordMatch>& matches) {
    if (matches.empty())
        return "No passport keywords found.";
    std::string reason = "Keywords matched: ";
    for (const KeywordMatch& match : matches) {
        if (&match != &matches.front())
            reason += "; ";
        reason.append(match.keyword).append(" (distance ").append(std::to_string(match.distance));
        reason += ')';
    }
    return reason;
}

Score combine(double rectangleScore, const std::string& rectangleReason,
              const std::vector<KeywordMatch>& matches, const MrzLikeLines& mrzLike) {
    Score score;
    if (!rectangleReason.empty())
        score.reasons.push_back(rectangleReason);
    score.reasons.push_back(keywordReason(matches));
    score.reasons.push_back(mrzLike.found ? "MRZ-like text detected (" + mrzLike.reason + ")."
                                          : "No MRZ found.");

    const double keywordScore = std::fmin(
        static_cast<double>(matches.size()) / static_cast<double>(kKeywordMatchThreshold), 1.0);
    const double mrzScore = mrzLike.found ? kMrzConfidenceWeight : 0.0;
    // fmin: a NaN counts as missing, so that the result is always within its bounds.
    score.confidence = std::fmin(rectangleScore * kRectConfidenceWeight +
                                     (keywordScore * kKeywordConfidenceWeight + mrzScore),
                                 1.0);
    score.isPassport = score.confidence >= kPassportConfidence || mrzLike.found;
    return score;
}

}  // namespace kestrelid::detection
