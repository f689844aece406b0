#include "detection/MrzLikeLines.h"

#include <gtest/gtest.h>
#include <string>

namespace kestrelid::detection {
namespace {

const std::string kFirst = "P<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<<<<";
const std::string kSecond = "L898902C36UTO7408122F1204159ZE184226B<<<<<10";
const std::string kTooFew = "Less than 2 lines OCRed.";
const std::string kCombined = "Found combined MRZ-like content.";
const std::string kNone = "No MRZ-like pattern.";

std::string two(int a, int b) {
    return "Found two MRZ-like lines of lengths " + std::to_string(a) + ", " + std::to_string(b) +
           ".";
}

std::string line(std::size_t length) {
    return std::string(length, 'A');
}

TEST(DetectMrzLikeLines, SaysWhy) {
    const struct {
        const char* name;
        std::string text;
        std::string reason;
    } rows[] = {
        {"empty", "", kTooFew},
        {"secondLineOnlySpaces", kFirst + "\n   ", kTooFew},
        {"blankLineBetween", kFirst + "\n  \n" + kSecond, two(44, 44)},
        {"lowerCase", "p<utoeriksson<<anna<maria<<<<<<<<<<<<<<<<<<<\n" + kSecond, two(44, 44)},
        {"spacesInside", "P<UTO ERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<<<<\n" + kSecond, two(44, 44)},
        {"combinedAt66", line(29) + "\n" + line(37), kCombined},
        {"below66", line(29) + "\n" + line(36), kNone},
        {"laterPair", "SURNAME\n" + kFirst + "\n" + kSecond, two(44, 44)},
        {"accent", line(43) + "\u00C9\n" + line(44), kNone},
        // Two clusters of length, "SS" in capitals: the lengths are those before upper-casing.
        {"sharpS", "\u00DF" + line(29) + "\n" + line(30), two(30, 30)}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const MrzLikeLines answer = detectMRZLikeLines(row.text);
        EXPECT_EQ(answer.reason, row.reason);
        EXPECT_EQ(answer.found, answer.reason.starts_with("Found"));
    }
}

}  // namespace
}  // namespace kestrelid::detection
