#include "vision/text/PageDirection.h"

#include "vision/onnx/ResourceFolders.h"
#include "vision/SideBySide.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

namespace kestrelid::vision {
namespace {

constexpr int kInputHeight = 48;
constexpr int kInputWidth = 192;
constexpr std::size_t kVoters = 12;
constexpr std::size_t kLeastVoters = 3;
constexpr float kUnanimousVote = 0.9f;    // so far: the others need not be asked
constexpr float kClearVote = 0.4f;        // mean of the votes from -1 (upright) to 1 (upside down)
constexpr std::size_t kReadBothWays = 3;  // lines that settle an unclear vote
constexpr float kEnoughReading = 4.0f;    // lead of one way, in logarithms of odds
constexpr float kVoteWeight = 4.0f;       // lead that a mean vote of 1 would give
constexpr float kSurest = 0.9999f;        // beyond it rounding decides

// Lines that show their direction best: large letters, and several of them. Very long lines cost
// more than they are worth.
std::vector<LineBox> clearestLines(const PageLines& page) {
    std::vector<LineBox> lines;
    std::copy_if(
        page.lines.begin(), page.lines.end(), std::back_inserter(lines),
        [](const LineBox& line) { return !line.crosswise && line.length > 1.5f * line.height; });
    const auto clarity = [](const LineBox& line) {
        return line.height * std::min(line.length, 6.0f * line.height);
    };
    std::stable_sort(lines.begin(), lines.end(),
                     [&](const LineBox& a, const LineBox& b) { return clarity(a) > clarity(b); });
    return lines;
}

// Logarithm of the odds, so that 0.9999 against 0.98 counts, and 0.6 against 0.7 does not.
float odds(float certainty) {
    const float sure = std::clamp(certainty, 1.0f - kSurest, kSurest);
    return std::log(sure / (1.0f - sure));
}

}  // namespace

Expected<float> PageDirection::reversed(const cv::Mat& picture, const LineBox& line) const {
    LineBox part = line;
    part.length = std::min(line.length, line.height * kInputWidth / kInputHeight);
    const std::vector<float> values =
        linePlanes(cropLine(picture, part, kInputHeight, kInputWidth), kInputWidth);
    const std::array<std::int64_t, 4> shape{1, 3, kInputHeight, kInputWidth};
    const OnnxInput input{values, shape};
    const auto outputs = classifier_.run({&input, 1});
    if (!outputs)
        return Failure(outputs.error());
    const OnnxTensor& answer = outputs->front();
    if (answer.values().size() != 2)
        return failure("the direction model does not tell two directions apart: " +
                       std::string(kModelRemedy));
    return answer.values()[1];
}

void PageDirection::askNext(const cv::Mat& picture, const std::vector<LineBox>& lines, int threads,
                            std::vector<Expected<float>>& answers) const {
    const std::size_t first = answers.size();
    answers.resize(std::min(first + static_cast<std::size_t>(threads), lines.size()));
    sideBySide(answers.size() - first, threads, [&](std::size_t index) {
        answers[first + index] = reversed(picture, lines[first + index]);
    });
}

Expected<bool> PageDirection::isReversed(const cv::Mat& picture, const PageLines& page,
                                         const LineRecognizer& recognizer, int threads) const {
    std::vector<LineBox> lines = clearestLines(page);
    lines.resize(std::min(lines.size(), kVoters));
    const std::size_t voters = lines.size();
    if (voters == 0)
        return false;
    std::vector<Expected<float>> answers;
    float sum = 0.0f;
    for (std::size_t asked = 1; asked <= voters; ++asked) {
        if (asked > answers.size())
            askNext(picture, lines, threads, answers);
        const Expected<float>& answer = answers[asked - 1];
        if (!answer)
            return Failure(answer.error());
        sum += 2.0f * *answer - 1.0f;
        const float vote = sum / static_cast<float>(asked);
        if (asked >= kLeastVoters &&
            std::abs(vote) >= (asked < voters ? kUnanimousVote : kClearVote))
            return vote > 0.0f;
    }

    // The shorter ones: the time of reading grows with each pixel, and a word is enough. Upside
    // down the recogniser makes as many characters of the strokes, a little less surely.
    std::stable_sort(lines.begin(), lines.end(), [](const LineBox& a, const LineBox& b) {
        return a.length * b.height < b.length * a.height;
    });
    float lead = kVoteWeight * sum / static_cast<float>(voters);
    for (std::size_t index = 0;
         index < std::min(voters, kReadBothWays) && std::abs(lead) < kEnoughReading; ++index) {
        const std::array<LineBox, 2> ways{lines[index], lines[index].reversed()};
        std::array<Expected<CtcReading>, 2> readings;
        sideBySide(ways.size(), threads,
                   [&](std::size_t way) { readings[way] = recognizer.read(picture, ways[way]); });
        for (const auto& reading : readings) {
            if (!reading)
                return Failure(reading.error());
        }
        lead += odds(readings[1]->confidence) - odds(readings[0]->confidence);
    }
    return lead > 0.0f;
}

}  // namespace kestrelid::vision
