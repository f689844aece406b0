#pragma once

#include <kestrelid/MachineReadableZone.h>

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace kestrelid::vision {

// A character where the network saw one.
struct ZoneMark {
    char character = '<';
    int first = 0;  // frames
    int last = 0;
    float probability = 0.0f;

    [[nodiscard]] double middle() const { return (first + last) / 2.0; }
};

// What the network says of a line: for each frame how likely each class is.
class LineScores {
public:
    // scores: kZoneClasses rows of one value a frame, not normalised.
    explicit LineScores(std::span<const float> scores);

    // The likeliest class of each frame, repetitions joined, blanks left out.
    [[nodiscard]] const Wiped<ZoneMark>& marks() const noexcept { return marks_; }

    // Of the marks: 0..1; 0 if there is none.
    [[nodiscard]] float meanProbability() const noexcept;

    struct Aligned {
        Wiped<ZoneCharacter> characters;
        std::vector<double> frames;  // the middle of each character
        float quality = 0.0f;        // geometric mean of the characters' probabilities
    };

    // The likeliest reading of exactly count characters; none if there are fewer frames. A place
    // where the network saw nothing has a small probability, and so have neighbours that stand
    // farther apart or nearer than print does.
    [[nodiscard]] std::optional<Aligned> align(std::size_t count) const;

private:
    static void doubtUnevenPlaces(Aligned& aligned);
    [[nodiscard]] float logProbability(std::size_t frame, std::size_t type) const;
    [[nodiscard]] ZoneCharacter characterIn(std::size_t first, std::size_t last) const;

    std::size_t frames_;
    Wiped<float> logProbabilities_;  // frame by frame
    Wiped<ZoneMark> marks_;
};

}  // namespace kestrelid::vision
