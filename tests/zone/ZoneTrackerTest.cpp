#include <kestrelid/ZoneTracker.h>

#include <gtest/gtest.h>

namespace kestrelid {
namespace {

constexpr float kClear = 0.98f;

ZoneReading readingOf(const std::vector<std::string>& lines) {
    ZoneReading reading;
    for (const std::string& line : lines) {
        reading.lines.emplace_back();
        for (const char character : line) {
            reading.lines.back().characters.push_back({});
            reading.lines.back().characters.back().choices[0] = {character, kClear};
        }
    }
    return reading;
}

const ZoneReading kPage = readingOf({"P<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<<<<",
                                     "L898902C36UTO7408122F1204159ZE184226B<<<<<10"});
const ZoneReading kOther = readingOf({"P<UTOSPECIMEN<<OTTO<<<<<<<<<<<<<<<<<<<<<<<<<",
                                      "X000000007UTO8001014M2501017<<<<<<<<<<<<<<02"});

// Of the page, one character of a name read as another, with that probability.
ZoneReading misread(char instead, float probability) {
    ZoneReading reading = kPage;
    auto& choices = reading.lines[0].characters[7].choices;
    choices[1] = {choices[0].character, 1.0f - probability};
    choices[0] = {instead, probability};
    return reading;
}

TEST(ZoneTracker, IsStrictFromTheSecondClearFrameOn) {
    ZoneTracker tracker;
    EXPECT_FALSE(tracker.see(nullptr));
    EXPECT_TRUE(tracker.see(&kPage));
    EXPECT_TRUE(tracker.live().zone->isTrustworthy());
    EXPECT_FALSE(tracker.live().isStrict()) << "one frame";
    EXPECT_TRUE(tracker.see(&kPage));
    EXPECT_TRUE(tracker.live().isStrict());
    EXPECT_EQ(tracker.live().frames, 2);
}

TEST(ZoneTracker, SurerFramesOutweighDoubtfulOnes) {
    const ZoneReading doubtful = misread('J', 0.55f);
    ZoneTracker tracker;
    tracker.see(&doubtful);
    EXPECT_FALSE(tracker.live().isStrict());
    for (int frame = 0; frame < 9; ++frame)
        tracker.see(&kPage);
    EXPECT_EQ(tracker.live().zone->field(ZoneFieldKind::primaryIdentifier)->text, "ERIKSSON");
    EXPECT_TRUE(tracker.live().isStrict());
}

TEST(ZoneTracker, ForgetsThePageThatLeavesOrGivesWayToAnother) {
    ZoneTracker tracker;
    tracker.see(&kPage);
    tracker.see(&kPage);
    EXPECT_FALSE(tracker.see(nullptr));
    EXPECT_FALSE(tracker.see(nullptr));
    EXPECT_TRUE(tracker.live().isStrict()) << "two frames without it are no absence";
    EXPECT_TRUE(tracker.see(nullptr));
    EXPECT_FALSE(tracker.live().zone);
    EXPECT_FALSE(tracker.see(nullptr)) << "no news";

    tracker.see(&kPage);
    tracker.see(&kPage);
    tracker.see(&kOther);
    EXPECT_EQ(tracker.live().frames, 1);
    EXPECT_FALSE(tracker.live().isStrict());
    const ZoneReading card =
        readingOf({std::string(30, '<'), std::string(30, '<'), std::string(30, '<')});
    tracker.see(&card);
    EXPECT_FALSE(tracker.live().isStrict()) << "other lines";
}

TEST(ZoneTracker, AFrameThatCannotBeReadChangesNothingThatIsKnown) {
    ZoneReading blurred = kPage;
    blurred.legibility = ZoneReading::Legibility::blurred;
    ZoneTracker tracker;
    EXPECT_TRUE(tracker.see(&blurred));
    ASSERT_TRUE(tracker.live().zone);
    EXPECT_EQ(tracker.live().zone->problems.at(0).kind, ZoneProblem::Kind::blurred);
    EXPECT_TRUE(tracker.live().zone->fields.empty()) << "what it seems to say is not told";
    EXPECT_EQ(tracker.live().frames, 0);
    tracker.see(&kPage);
    EXPECT_FALSE(tracker.see(&blurred));
    tracker.see(&kPage);
    EXPECT_TRUE(tracker.live().isStrict());
}

}  // namespace
}  // namespace kestrelid
