#include "detection/Scoring.h"

#include <cmath>

namespace kestrelid::detection {

namespace {

// As the fields of the same names of the detector.
constexpr double kRectangleWeight = 0.1;
constexpr double kKeywordWeight = 0.4;
constexpr double kMrzScore = 0.5;
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
        static_cast<double>(matches.size()) / static_cast<double>(kKeywordsForFullScore), 1.0);
    const double mrzScore = mrzLike.found ? kMrzScore : 0.0;
    // fmin: a NaN counts as missing, so that the result is always within its bounds.
    score.confidence = std::fmin(
        rectangleScore * kRectangleWeight + (keywordScore * kKeywordWeight + mrzScore), 1.0);
    score.isPassport = score.confidence >= kPassportConfidence || mrzLike.found;
    return score;
}

}  // namespace kestrelid::detection
