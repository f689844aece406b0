#include "tests/support/FakeServices.h"

#include "base/AsioQueue.h"

#include <gmock/gmock.h>

namespace kestrelid {
namespace {

using namespace test;

struct FakeZones final : ZoneService {
    ZoneResult perform(const Bitmap&, const ZoneRequest& request) override {
        lastRequest = request;
        if (duringRequest)
            duringRequest();
        if (isThrown)
            throw 42;
        return result;
    }
    ZoneResult result;
    ZoneRequest lastRequest;
    std::function<void()> duringRequest;
    bool isThrown = false;
};

ZoneReading passportZone() {
    ZoneReading reading;
    for (const std::string_view line : {"P<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<<<<",
                                        "L898902C36UTO7408122F1204159ZE184226B<<<<<10"}) {
        reading.lines.emplace_back();
        for (const char character : line) {
            reading.lines.back().characters.push_back({});
            reading.lines.back().characters.back().choices[0] = {character, 0.98f};
        }
    }
    reading.pixelsPerCharacter = 17.0;
    return reading;
}

struct ExaminationTest : testing::Test {
    ExaminationTest() {
        rectangles = {rectangleOf(0.2, 0.2), rectangleOf(0.5, 0.5), rectangleOf(0.5, 0.5)};
        rectangles[1].boundingBox.x = 0.25;
        rectangles[1].boundingBox.y = 0.25;
        zones->result = std::vector{passportZone()};
    }

    std::shared_ptr<PassportDetector> detector() {
        return PassportDetector::create(
            {.rectangles = std::make_shared<FakeRectangles>(rectangles),
             .text = text,
             .queue = std::make_shared<base::AsioQueue>("test", 2),
             .console = [this](std::string_view line) { console.emplace_back(line); },
             .zones = zones});
    }

    static std::vector<double> sidesOf(const TextObservation& line) {
        const NormalizedRect& box = line.boundingBox();
        return {box.x, box.y, box.width, box.height};
    }

    std::vector<RectangleObservation> rectangles;
    std::shared_ptr<FakeText> text = std::make_shared<FakeText>(std::vector{
        TextObservation({0.5, 0.25, 0.5, 0.5}, {{"SURNAME NATIONALITY PASSPORT", 0.9f}})});
    std::shared_ptr<FakeZones> zones = std::make_shared<FakeZones>();
    std::vector<std::string> console;
    Image image{blankBitmap(200, 100)};
};

TEST_F(ExaminationTest, GivesTheVerdictAndEverythingBesideIt) {
    const auto judge = detector();
    const auto verdict = std::get<PassportValidationResult>(judge->judge(image));
    const auto examined = std::get<Examination>(judge->examineNow(image));
    EXPECT_EQ(examined.verdict, verdict);
    EXPECT_TRUE(verdict.isPassport());
    EXPECT_EQ(examined.outlines.size(), 3u);
    EXPECT_EQ(examined.chosenOutline, 1u);
    EXPECT_EQ(zones->lastRequest.outlines.at(0).boundingBox.x, 0.25) << "the first of the largest";
    // Read in the middle half of the columns and rows.
    ASSERT_EQ(examined.lines.size(), 1u);
    EXPECT_EQ(examined.lines[0].topCandidates(1).at(0).confidence, 0.9f);
    EXPECT_THAT(sidesOf(examined.lines[0]),
                testing::Pointwise(testing::DoubleNear(1e-9), {0.5, 0.375, 0.25, 0.25}));
    EXPECT_GE(examined.matches.size(), 3u);
    EXPECT_EQ(examined.quality.pixelsPerCharacter, 17.0);
    EXPECT_GT(examined.times.outlines.count(), 0.0);
    ASSERT_TRUE(examined.strictPassportZone());
    EXPECT_TRUE(examined.isPassport(PassportProof::both));
    EXPECT_TRUE(console.empty());
}

TEST_F(ExaminationTest, PlacesLinesOfAnOutlineThatLeavesThePicture) {
    rectangles[1].boundingBox = {-0.25, 0.75, 0.5, 0.5};  // read in columns 0..50 of rows 0..25
    EXPECT_THAT(sidesOf(std::get<Examination>(detector()->examineNow(image)).lines.at(0)),
                testing::Pointwise(testing::DoubleNear(1e-9), {0.125, 0.8125, 0.125, 0.125}));
}

TEST_F(ExaminationTest, ProofsAreIndependent) {
    auto examined = std::get<Examination>(detector()->examineNow(image));
    examined.zones[0].problems.push_back({});
    EXPECT_FALSE(examined.isPassport(PassportProof::strictZone));
    EXPECT_FALSE(examined.isPassport(PassportProof::both));
    EXPECT_TRUE(examined.isPassport(PassportProof::verdict));
    rectangles.clear();
    examined = std::get<Examination>(detector()->examineNow(image));
    EXPECT_FALSE(examined.isPassport(PassportProof::verdict));
    EXPECT_TRUE(examined.isPassport(PassportProof::strictZone));
    EXPECT_FALSE(examined.chosenOutline);
    EXPECT_EQ(sidesOf(examined.lines.at(0)), (std::vector{0.5, 0.25, 0.5, 0.5}));
}

TEST_F(ExaminationTest, ZonesThatFailLeaveTheVerdict) {
    zones->result = RequestError{"no network"};
    EXPECT_TRUE(std::get<Examination>(detector()->examineNow(image)).verdict.isPassport());
    zones->isThrown = true;
    EXPECT_TRUE(std::get<Examination>(detector()->examineNow(image)).zones.empty());
    EXPECT_THAT(console, testing::ElementsAre("Zone request failed: no network",
                                              testing::StartsWith("Zone request failed: ")));
    zones.reset();
    EXPECT_TRUE(std::get<Examination>(detector()->examineNow(image)).zones.empty());
    EXPECT_EQ(console.size(), 2u) << "who gives no service wants no zones";
    const auto invalid = std::get<Examination>(detector()->examineNow(Image()));
    EXPECT_THAT(invalid.verdict.reasons(), testing::ElementsAre("Invalid image"));
}

TEST_F(ExaminationTest, StopsBetweenItsParts) {
    for (const bool isDuringText : {true, false}) {
        std::stop_source stop;
        (isDuringText ? text->duringRequest : zones->duringRequest) = [&] { stop.request_stop(); };
        const auto result =
            detector()->examineNow(image, {.zoneRules = {}, .stop = stop.get_token()});
        ASSERT_TRUE(std::holds_alternative<NoVerdict>(result));
        EXPECT_EQ(std::get<NoVerdict>(result).reason, NoVerdict::Reason::abandoned);
        EXPECT_EQ(zones->lastRequest.outlines.empty(), isDuringText)
            << "looked for what nobody wants";
        text->duringRequest = nullptr;
    }
}

TEST_F(ExaminationTest, QualityIsThatOfTheDocument) {
    // Left half: stripes of two pixels, dark and clipped. Right half: dark.
    const std::shared_ptr<std::byte[]> pixels(new std::byte[200 * 100]{});
    for (int index = 0; index < 200 * 100; ++index) {
        if (index % 200 < 100 && index % 4 < 2)
            pixels[index] = std::byte{255};
    }
    image = Image(*Bitmap::wrap(200, 100, 200, PixelFormat::gray8, pixels, 200 * 100));
    rectangles[1].corners = {{{0.0, 1.0}, {0.5, 1.0}, {0.5, 0.0}, {0.0, 0.0}}};
    PictureQuality quality = std::get<Examination>(detector()->examineNow(image)).quality;
    EXPECT_NEAR(quality.brightness, 0.5, 0.01);
    EXPECT_NEAR(quality.clippedHighlights, 0.5, 0.01);
    EXPECT_EQ(quality.sharpness, 1.0);
    rectangles.clear();
    quality = std::get<Examination>(detector()->examineNow(image)).quality;
    EXPECT_NEAR(quality.brightness, 0.25, 0.01);
    image = Image(blankBitmap(20, 10));
    EXPECT_EQ(std::get<Examination>(detector()->examineNow(image)).quality.sharpness, 0.0);
}

}  // namespace
}  // namespace kestrelid
