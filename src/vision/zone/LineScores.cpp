#include "vision/zone/LineScores.h"

#include "vision/zone/ZoneAlphabet.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>

namespace kestrelid::vision {
namespace {

constexpr std::size_t kClasses = kZoneClasses;
constexpr float kImpossible = -1e9f;

}  // namespace

LineScores::LineScores(std::span<const float> scores)
    : frames_(scores.size() / kClasses), logProbabilities_(scores.size()) {
    std::size_t before = kBlankClass;
    for (std::size_t frame = 0; frame < frames_; ++frame) {
        float* const row = logProbabilities_.data() + frame * kClasses;
        float largest = -std::numeric_limits<float>::infinity();
        std::size_t best = 0;
        for (std::size_t type = 0; type < kClasses; ++type) {
            row[type] = scores[type * frames_ + frame];
            if (row[type] > largest) {
                largest = row[type];
                best = type;
            }
        }
        float sum = 0.0f;
        for (std::size_t type = 0; type < kClasses; ++type)
            sum += std::exp(row[type] - largest);
        const float log = largest + std::log(sum);
        for (std::size_t type = 0; type < kClasses; ++type)
            row[type] -= log;
        const float probability = std::exp(row[best]);
        const int place = static_cast<int>(frame);
        if (best != kBlankClass && best == before) {
            marks_.back().last = place;
            marks_.back().probability = std::max(marks_.back().probability, probability);
        } else if (best != kBlankClass) {
            marks_.push_back({kZoneCharacters[best - 1], place, place, probability});
        }
        before = best;
    }
}

float LineScores::logProbability(std::size_t frame, std::size_t type) const {
    return logProbabilities_[frame * kClasses + type];
}

float LineScores::meanProbability() const noexcept {
    if (marks_.empty())
        return 0.0f;
    const float sum =
        std::accumulate(marks_.begin(), marks_.end(), 0.0f,
                        [](float all, const ZoneMark& mark) { return all + mark.probability; });
    return sum / static_cast<float>(marks_.size());
}

ZoneCharacter LineScores::characterIn(std::size_t first, std::size_t last) const {
    std::array<ZoneCharacter::Choice, kClasses - 1> all;
    for (std::size_t type = 1; type < kClasses; ++type) {
        float best = kImpossible;
        for (std::size_t frame = first; frame <= last; ++frame)
            best = std::max(best, logProbability(frame, type));
        all[type - 1] = {kZoneCharacters[type - 1], std::exp(best)};
    }
    ZoneCharacter character;
    std::partial_sort_copy(
        all.begin(), all.end(), character.choices.begin(), character.choices.end(),
        [](const auto& a, const auto& b) { return a.probability > b.probability; });
    return character;
}

// Print is evenly spaced. Where two characters stand too far apart something between them was
// hidden, and where they stand too near there is one too many: the count alone would hide both.
void LineScores::doubtUnevenPlaces(Aligned& aligned) {
    constexpr double kNearest = 0.5;  // of the usual step
    constexpr double kFarthest = 1.65;
    constexpr float kDoubt = 0.5f;  // what is left of the probabilities
    std::vector<double> steps;
    for (std::size_t place = 1; place < aligned.frames.size(); ++place)
        steps.push_back(aligned.frames[place] - aligned.frames[place - 1]);
    if (steps.empty())
        return;
    std::vector<double> sorted = steps;
    const auto middle = sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 2);
    std::nth_element(sorted.begin(), middle, sorted.end());
    for (std::size_t place = 1; place < aligned.frames.size(); ++place) {
        const double step = steps[place - 1] / *middle;
        if (step >= kNearest && step <= kFarthest)
            continue;
        for (ZoneCharacter* const beside :
             {&aligned.characters[place - 1], &aligned.characters[place]}) {
            for (ZoneCharacter::Choice& choice : beside->choices)
                choice.probability *= kDoubt;
        }
    }
}

// Viterbi over states (characters done, class of the running one). A class directly after itself
// needs a blank between, as the network was trained.
std::optional<LineScores::Aligned> LineScores::align(std::size_t count) const {
    if (count == 0 || frames_ < count)
        return std::nullopt;
    constexpr std::size_t kTypes = kClasses - 1;
    enum : std::uint8_t { kStays, kFromBlank, kFromCharacter };
    struct Step {
        std::uint8_t from = kStays;
        std::uint8_t type = 0;  // of the character before
    };
    std::vector<float> running(count * kTypes, kImpossible);
    std::vector<float> blank(count + 1, kImpossible);
    blank[0] = 0.0f;
    std::vector<Step> steps(frames_ * count * kTypes);
    // The class whose end led to the blank after k characters, plus one; 0: it was blank before.
    std::vector<std::uint8_t> blankSteps(frames_ * (count + 1));
    struct Best {
        float first = kImpossible;
        float second = kImpossible;
        std::uint8_t firstType = 0;
        std::uint8_t secondType = 0;
    };
    std::vector<Best> best(count);
    for (std::size_t frame = 0; frame < frames_; ++frame) {
        for (std::size_t k = 0; k < count; ++k) {
            best[k] = {};
            for (std::size_t type = 0; type < kTypes; ++type) {
                const float value = running[k * kTypes + type];
                if (value > best[k].first) {
                    best[k].second = best[k].first;
                    best[k].secondType = best[k].firstType;
                    best[k].first = value;
                    best[k].firstType = static_cast<std::uint8_t>(type);
                } else if (value > best[k].second) {
                    best[k].second = value;
                    best[k].secondType = static_cast<std::uint8_t>(type);
                }
            }
        }
        const float* const row = logProbabilities_.data() + frame * kClasses;
        for (std::size_t k = count; k-- > 0;) {
            Step* const step = steps.data() + (frame * count + k) * kTypes;
            for (std::size_t type = 0; type < kTypes; ++type) {
                float value = running[k * kTypes + type];
                step[type].from = kStays;
                if (blank[k] > value) {
                    value = blank[k];
                    step[type].from = kFromBlank;
                }
                if (k > 0) {
                    const bool isSame = best[k - 1].firstType == type;
                    const float other = isSame ? best[k - 1].second : best[k - 1].first;
                    if (other > value) {
                        value = other;
                        step[type] = {kFromCharacter,
                                      isSame ? best[k - 1].secondType : best[k - 1].firstType};
                    }
                }
                running[k * kTypes + type] = value + row[type + 1];
            }
        }
        std::uint8_t* const toBlank = blankSteps.data() + frame * (count + 1);
        for (std::size_t k = count + 1; k-- > 0;) {
            toBlank[k] = 0;
            if (k > 0 && best[k - 1].first > blank[k]) {
                blank[k] = best[k - 1].first;
                toBlank[k] = static_cast<std::uint8_t>(best[k - 1].firstType + 1);
            }
            blank[k] += row[kBlankClass];
        }
    }

    // Back from the end.
    struct Span {
        std::size_t first = 0;
        std::size_t last = 0;
    };
    std::vector<Span> spans(count);
    const auto end = std::max_element(running.end() - kTypes, running.end());
    bool isBlank = blank[count] > *end;
    std::size_t k = isBlank ? count : count - 1;
    std::size_t type = isBlank ? 0 : static_cast<std::size_t>(end - (running.end() - kTypes));
    bool isOpen = false;  // whether the character's last frame is known
    for (std::size_t frame = frames_; frame-- > 0;) {
        if (isBlank) {
            const std::uint8_t before = blankSteps[frame * (count + 1) + k];
            if (before == 0)
                continue;
            isBlank = false;
            type = before - 1u;
            --k;
            continue;
        }
        if (!isOpen)
            spans[k].last = frame;
        isOpen = true;
        spans[k].first = frame;
        const Step step = steps[(frame * count + k) * kTypes + type];
        if (step.from == kStays)
            continue;
        isOpen = false;
        if (step.from == kFromBlank) {
            isBlank = true;
        } else {
            --k;
            type = step.type;
        }
    }

    Aligned aligned;
    for (std::size_t index = 0; index < count; ++index) {
        // A frame to each side where it belongs to no neighbour: a second choice may peak there.
        const std::size_t before = index > 0 ? spans[index - 1].last + 1 : 0;
        const std::size_t after = index + 1 < count ? spans[index + 1].first : frames_;
        const std::size_t first =
            std::max(before, spans[index].first > 0 ? spans[index].first - 1 : 0);
        const std::size_t last = std::max(first, std::min(after - 1, spans[index].last + 1));
        aligned.characters.push_back(characterIn(first, last));
        aligned.frames.push_back(static_cast<double>(spans[index].first + spans[index].last) / 2.0);
    }
    doubtUnevenPlaces(aligned);
    float sum = 0.0f;
    for (const ZoneCharacter& character : aligned.characters)
        sum += std::log(std::max(character.choices[0].probability, 1e-6f));
    aligned.quality = std::exp(sum / static_cast<float>(count));
    return aligned;
}

}  // namespace kestrelid::vision
