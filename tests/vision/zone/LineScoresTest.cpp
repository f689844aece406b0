#include "vision/zone/LineScores.h"

#include "vision/zone/ZoneAlphabet.h"

#include <gtest/gtest.h>

namespace kestrelid::vision {
namespace {

// What the network gives where it is sure of each frame; '.' is a blank.
std::vector<float> sureScores(std::string_view frames) {
    std::vector<float> scores(kZoneClasses * frames.size(), 0.0f);
    for (std::size_t frame = 0; frame < frames.size(); ++frame) {
        const std::size_t type =
            frames[frame] == '.' ? kBlankClass : kZoneCharacters.find(frames[frame]) + 1;
        scores[type * frames.size() + frame] = 9.0f;
    }
    return scores;
}

TEST(LineScores, MarksAreTheRunsOfFrames) {
    const LineScores line(sureScores(".AA.A<<.<7."));
    std::string text;
    for (const ZoneMark& mark : line.marks())
        text += mark.character;
    EXPECT_EQ(text, "AA<<7");
    EXPECT_EQ(line.marks()[0].middle(), 1.5);
    EXPECT_GT(line.meanProbability(), 0.99f);
    EXPECT_EQ(LineScores({}).meanProbability(), 0.0f);
}

TEST(LineScores, AlignsExactlySoManyCharacters) {
    const struct {
        const char* frames;
        std::size_t count;
        const char* text;    // '?': whatever, for nothing is to be seen there
        std::size_t unsure;  // characters
    } rows[] = {
        {".A.B.C.", 3, "ABC", 0},   {"A.AA.<.<<", 4, "AA<<", 0},
        {"..A....B..", 2, "AB", 0}, {".A......B.", 3, "A?B", 2},
        {"ABC", 3, "ABC", 0},       {"A..B..C........D..E", 5, "ABCDE", 2},
        {".A.B.C.", 2, "??", 0},    {"AB", 3, nullptr, 0},
        {"", 1, nullptr, 0},        {"AB", 0, nullptr, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.frames) + " " + std::to_string(row.count));
        const auto aligned = LineScores(sureScores(row.frames)).align(row.count);
        ASSERT_EQ(aligned.has_value(), row.text != nullptr);
        if (!aligned)
            continue;
        ASSERT_EQ(aligned->characters.size(), row.count);
        std::size_t unsure = 0;
        for (std::size_t place = 0; place < row.count; ++place) {
            const ZoneCharacter::Choice& best = aligned->characters[place].choices[0];
            if (row.text[place] != '?') {
                EXPECT_EQ(best.character, row.text[place]);
            }
            unsure += best.probability < 0.5f;
            EXPECT_TRUE(place == 0 || aligned->frames[place] > aligned->frames[place - 1]);
        }
        EXPECT_EQ(unsure, row.unsure);
        EXPECT_EQ(aligned->quality > 0.99f, unsure == 0);
    }
}

}  // namespace
}  // namespace kestrelid::vision
