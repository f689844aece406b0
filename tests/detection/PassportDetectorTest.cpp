#include "tests/support/FakeServices.h"
#include "tests/support/ManualQueue.h"

#include <kestrelid/PassportDetector.h>
#include <kestrelid/Version.h>

#include <clocale>
#include <cmath>
#include <gmock/gmock.h>
#include <limits>
#include <stdexcept>
#include <string>

namespace kestrelid::detection {
namespace {

using test::rectangleOf;
using testing::ElementsAre;

constexpr const char* kNoRectangle = "No document rectangle found.";
constexpr const char* kNoKeywords = "No passport keywords found.";
constexpr const char* kNoMrz = "No MRZ found.";
constexpr const char* kFourMatches =
    "Keywords matched: PASSPORT (distance 0); PASSEPORT (distance 1); PASAPORTE (distance 2); "
    "PASSPORT (distance 0)";

TextObservation line(std::string text) {
    return {{}, {{std::move(text), 1.0f}}};
}

using Outlines = std::vector<RectangleObservation>;
using Lines = std::vector<TextObservation>;

RequestError reported(const char* cause) {
    return {cause, RequestError::Kind::reported};
}

// A detector on fakes whose queue is cranked by hand.
struct Bench {
    Bench(RectangleResult outlines, TextResult lines)
        : rectangles(std::make_shared<test::FakeRectangles>(std::move(outlines))),
          text(std::make_shared<test::FakeText>(std::move(lines))),
          detector(PassportDetector::create(
              {.rectangles = rectangles,
               .text = text,
               .queue = queue,
               .console = [this](std::string_view printed) { console.emplace_back(printed); }})) {}

    void validate(int width = 100, int height = 100) {
        detector->validate(
            Image(test::blankBitmap(width, height)),
            [this](const PassportValidationResult& result) { answers.push_back(result); });
    }

    std::shared_ptr<test::ManualQueue> queue = std::make_shared<test::ManualQueue>();
    std::shared_ptr<test::FakeRectangles> rectangles;
    std::shared_ptr<test::FakeText> text;
    std::vector<std::string> console;
    std::vector<PassportValidationResult> answers;
    std::shared_ptr<PassportDetector> detector;
};

struct Row {
    const char* name;
    RectangleResult rectangles;
    TextResult text;
    bool isPassport;
    double confidence;
    std::vector<std::string> reasons;
    std::string recognizedText;
    std::vector<std::string> console{};
};
void PrintTo(const Row& row, std::ostream* out) {
    *out << row.name;
}

class Pipeline : public testing::TestWithParam<Row> {};

TEST_P(Pipeline, JudgesOnceAndPrintsFailures) {
    const Row& row = GetParam();
    Bench bench(row.rectangles, row.text);
    bench.validate();
    bench.queue->runAll();
    ASSERT_EQ(bench.answers.size(), 1u);
    const PassportValidationResult& answer = bench.answers.front();
    EXPECT_EQ(answer.isPassport(), row.isPassport);
    EXPECT_DOUBLE_EQ(answer.confidence(), row.confidence);
    EXPECT_EQ(answer.reasons(), row.reasons);
    EXPECT_EQ(answer.recognizedText(), row.recognizedText);
    EXPECT_EQ(bench.console, row.console);
}

const std::string kLargeReason = "Document rectangle detected (area fraction 0.15).";

INSTANTIATE_TEST_SUITE_P(
    Requests, Pipeline,
    testing::Values(
        Row{"nothingFound", {}, {}, false, 0.0, {kNoRectangle, kNoKeywords, kNoMrz}, ""},
        Row{"passportAtExactlyHalf",
            Outlines{rectangleOf(0.5, 0.3)},
            Lines{line("Passport")},
            true,
            0.5,
            {kLargeReason, kFourMatches, kNoMrz},
            "Passport"},
        Row{"smallRectangle",
            Outlines{rectangleOf(0.25, 0.3)},
            Lines{line("PASSPORT")},
            false,
            0.45,
            {"Rectangle present but small (area fraction 0.07).", kFourMatches, kNoMrz},
            "PASSPORT"},
        Row{"areaJustBelow",
            Outlines{rectangleOf(0.495, 0.3)},
            Lines{line("PASSPORT")},
            false,
            0.499,
            {"Rectangle present but small (area fraction 0.15).", kFourMatches, kNoMrz},
            "PASSPORT"},
        Row{"threeMatchesSuffice",
            Outlines{rectangleOf(1, 1)},
            Lines{line("BANGLADESH")},
            true,
            0.5,
            {"Document rectangle detected (area fraction 1.00).",
             "Keywords matched: BANGLADESH (distance 0); BANGLADESHI (distance 1); BANGLADESH "
             "(distance 0)",
             kNoMrz},
            "BANGLADESH"},
        Row{"oneMatch",
            Outlines{rectangleOf(0.5, 0.3)},
            Lines{line("HELLO"), line("WORLD")},
            false,
            0.1 + 0.4 / 3.0,
            {kLargeReason, "Keywords matched: BGD (distance 4)", kNoMrz},
            "HELLO\nWORLD"},
        Row{"keywordAcrossLines",
            {},
            Lines{line("PERMANENT"), line("ADDRESS")},
            false,
            0.4 / 3.0,
            {kNoRectangle, "Keywords matched: PERMANENT ADDRESS (distance 0)", kNoMrz},
            "PERMANENT\nADDRESS"},
        Row{"zoneLinesReachTheTestAsOne",
            {},
            Lines{line("P<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<<<<"),
                  line("L898902C36UTO7408122F1204159ZE184226B<<<<<10")},
            false,
            0.0,
            {kNoRectangle, kNoKeywords, kNoMrz},
            "P<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<<<<\nL898902C36UTO7408122F1204159ZE184226B<<<"
            "<<10"},
        Row{"observationsWithoutCandidate",
            {},
            Lines{TextObservation({}, {}), line("WORLD"), TextObservation({}, {}), line("")},
            false,
            0.4 / 3.0,
            {kNoRectangle, "Keywords matched: BGD (distance 4)", kNoMrz},
            "WORLD\n"},
        Row{"rectangleError",
            reported("no memory"),
            {},
            false,
            0.0,
            {kNoRectangle, kNoKeywords, kNoMrz},
            "",
            {"Rect detect error: no memory"}},
        Row{"rectangleFailure",
            RequestError{"no library"},
            {},
            false,
            0.0,
            {kNoRectangle, kNoKeywords, kNoMrz},
            "",
            {"Rectangle request failed: no library"}},
        Row{"textError",
            Outlines{rectangleOf(0.5, 0.3)},
            reported("damaged"),
            false,
            0.1,
            {kLargeReason, kNoKeywords, kNoMrz},
            "",
            {"Text recognition error: damaged"}},
        Row{"textFailure",
            {},
            RequestError{"no model"},
            false,
            0.0,
            {kNoRectangle, kNoKeywords, kNoMrz},
            "",
            {"Text request failed: no model"}},
        // A size that is no number counts as missing: the bound of each minimum takes its place.
        Row{"areaIsNoNumber",
            Outlines{rectangleOf(std::numeric_limits<double>::quiet_NaN(), 1)},
            {},
            false,
            0.1,
            {"Rectangle present but small (area fraction nan).", kNoKeywords, kNoMrz},
            ""}),
    [](const auto& row) { return row.param.name; });

TEST(PassportDetector, AnswersForAnImageWithoutBitmapBeforeReturning) {
    Bench bench({}, {});
    bench.detector->validate(Image(), [&](const auto& result) { bench.answers.push_back(result); });
    ASSERT_EQ(bench.answers.size(), 1u);
    EXPECT_FALSE(bench.answers.front().isPassport());
    EXPECT_EQ(bench.answers.front().confidence(), 0.0);
    EXPECT_THAT(bench.answers.front().reasons(), ElementsAre("Invalid image"));
    EXPECT_EQ(bench.answers.front().recognizedText(), "");
    EXPECT_EQ(bench.queue->waiting(), 0u);
}

TEST(PassportDetector, TakesTwoHopsOverTheQueue) {
    Bench bench({}, {});
    bench.validate();
    EXPECT_TRUE(bench.queue->runOne());
    EXPECT_TRUE(bench.answers.empty());
    EXPECT_TRUE(bench.queue->runOne());
    EXPECT_EQ(bench.answers.size(), 1u);
    EXPECT_FALSE(bench.queue->runOne());
}

TEST(PassportDetector, AsksWithTheDocumentedLimits) {
    Bench bench({}, {});
    bench.validate();
    bench.queue->runAll();
    EXPECT_EQ(bench.rectangles->lastRequest.maximumObservations, 5);
    EXPECT_EQ(bench.rectangles->lastRequest.minimumConfidence, 0.4f);
    EXPECT_EQ(bench.rectangles->lastRequest.minimumAspectRatio, 0.5f);
    EXPECT_EQ(bench.rectangles->lastRequest.maximumAspectRatio, 2.2f);
    EXPECT_EQ(bench.text->lastRequest.recognitionLevel, RecognitionLevel::accurate);
    EXPECT_TRUE(bench.text->lastRequest.usesLanguageCorrection);
    EXPECT_THAT(bench.text->lastRequest.recognitionLanguages, ElementsAre("en"));
    EXPECT_FALSE(bench.text->lastRequest.isEnough);  // the whole text is read
}

struct CropRow {
    const char* name;
    NormalizedRect box;  // of a bitmap of 100 by 50
    int width;
    int height;
    int column;  // of the crop's first pixel in the bitmap
    int rowFromTop;
};
void PrintTo(const CropRow& row, std::ostream* out) {
    *out << row.name;
}

class Crop : public testing::TestWithParam<CropRow> {};

TEST_P(Crop, IsRoundedOutwardAndInsideTheBitmap) {
    const CropRow& row = GetParam();
    RectangleObservation rectangle = rectangleOf(1, 1);
    rectangle.boundingBox = row.box;
    Bench bench(Outlines{rectangle}, {});
    const Bitmap whole = test::blankBitmap(100, 50);
    bench.detector->validate(Image(whole), [](const auto&) {});
    bench.queue->runAll();
    ASSERT_TRUE(bench.text->lastBitmap);
    EXPECT_EQ(bench.text->lastBitmap->width(), row.width);
    EXPECT_EQ(bench.text->lastBitmap->height(), row.height);
    EXPECT_EQ(bench.text->lastBitmap->row(0) - whole.row(0), row.rowFromTop * 100 + row.column);
}

INSTANTIATE_TEST_SUITE_P(
    Boxes, Crop,
    testing::Values(CropRow{"whole", {0, 0, 1, 1}, 100, 50, 0, 0},
                    CropRow{"topEdge", {0.25, 0.5, 0.5, 0.5}, 50, 25, 25, 0},
                    CropRow{"bottomEdge", {0.25, 0, 0.5, 0.5}, 50, 25, 25, 25},
                    CropRow{"outward", {0.105, 0.11, 0.2, 0.2}, 21, 11, 10, 34},
                    CropRow{"partlyOutside", {-0.5, -0.5, 1, 1}, 50, 25, 0, 25},
                    CropRow{"whollyOutside", {2, 2, 0.5, 0.5}, 100, 50, 0, 0},
                    CropRow{"empty", {0.5, 0.5, 0, 0}, 100, 50, 0, 0},
                    CropRow{"infinite", {-INFINITY, 0, INFINITY, 1}, 100, 50, 0, 0},
                    CropRow{"huge", {-1e300, -1e300, 2e300, 2e300}, 100, 50, 0, 0}),
    [](const auto& row) { return row.param.name; });

TEST(PassportDetector, UsesTheFirstOfTheLargestRectangles) {
    Bench bench(Outlines{rectangleOf(0.3, 0.3), rectangleOf(0.5, 0.8), rectangleOf(0.8, 0.5),
                         rectangleOf(0.6, 0.6)},
                {});
    bench.validate();
    bench.queue->runAll();
    EXPECT_EQ(bench.text->lastBitmap->width(), 50);
    EXPECT_EQ(bench.text->lastBitmap->height(), 80);
}

TEST(PassportDetector, WritesTheAreaWithAFullStopInAnyLocale) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    for (const char* name : {"de_DE.UTF-8", "bn_BD.UTF-8", "C.UTF-8"})
        if (std::setlocale(LC_ALL, name)) {
            Bench bench(Outlines{rectangleOf(0.57, 0.8)}, {});
            bench.validate();
            bench.queue->runAll();
            EXPECT_EQ(bench.answers.front().reasons().front(),
                      "Document rectangle detected (area fraction 0.46).");
        }
    std::setlocale(LC_ALL, before.c_str());
}

TEST(PassportDetector, PrintsWhateverAServiceThrowsAsItsFailure) {
    class Throwing final : public RectangleService {
    public:
        explicit Throwing(std::function<void()> fail) : fail_(std::move(fail)) {}
        RectangleResult perform(const Bitmap&, const RectangleRequest&) override {
            fail_();
            return {};
        }

    private:
        std::function<void()> fail_;
    };
    const std::pair<std::function<void()>, const char*> rows[] = {
        {[] { throw std::runtime_error("lost"); }, "Rectangle request failed: lost"},
        {[] { throw 7; }, "Rectangle request failed: unknown exception"}};
    for (const auto& [fail, printedLine] : rows) {
        std::vector<std::string> console;
        const auto queue = std::make_shared<test::ManualQueue>();
        const auto detector = PassportDetector::create(
            {.rectangles = std::make_shared<Throwing>(fail),
             .text = std::make_shared<test::FakeText>(),
             .queue = queue,
             .console = [&](std::string_view printed) { console.emplace_back(printed); }});
        int answers = 0;
        detector->validate(Image(test::blankBitmap(4, 4)), [&](const auto&) { ++answers; });
        queue->runAll();
        EXPECT_EQ(answers, 1);
        EXPECT_THAT(console, ElementsAre(printedLine));
    }
}

TEST(PassportDetector, GivesUpSilentlyWhenReleasedBeforeTheOutlineIsFound) {
    for (const int cranks : {0, 1, 2}) {
        Bench bench({}, Lines{line("PASSPORT")});
        bench.validate();
        for (int crank = 0; crank < cranks; ++crank)
            bench.queue->runOne();
        const std::weak_ptr<PassportDetector> watched = bench.detector;
        bench.detector.reset();
        EXPECT_TRUE(watched.expired());
        bench.queue->runAll();
        EXPECT_EQ(bench.answers.size(), cranks == 0 ? 0u : 1u) << cranks;
        EXPECT_TRUE(bench.console.empty());
    }
}

TEST(PassportDetector, NeedsEveryService) {
    const PlatformServices complete{.rectangles = std::make_shared<test::FakeRectangles>(),
                                    .text = std::make_shared<test::FakeText>(),
                                    .queue = std::make_shared<test::ManualQueue>()};
    EXPECT_TRUE(PassportDetector::create(complete));
    for (int missing = 0; missing < 3; ++missing) {
        PlatformServices services = complete;
        (missing == 0   ? services.rectangles.reset()
         : missing == 1 ? services.text.reset()
                        : services.queue.reset());
        EXPECT_FALSE(PassportDetector::create(services)) << missing;
    }
}

TEST(PassportDetector, ShowsItsConfiguration) {
    const Bench one({}, {});
    const Bench other({}, {});
    EXPECT_EQ(one.detector->keywords().data(), other.detector->keywords().data());
    EXPECT_EQ(one.detector->keywordMatchThreshold(), 3);
    EXPECT_EQ(one.detector->singleKeywordFuzzyThreshold(), 4);
    EXPECT_EQ(one.detector->rectangleAreaThreshold(), 0.15);
    EXPECT_EQ(one.detector->mrzConfidenceWeight(), 0.5);
    EXPECT_EQ(one.detector->keywordConfidenceWeight(), 0.4);
    EXPECT_EQ(one.detector->rectConfidenceWeight(), 0.1);
}

TEST(Version, IsExported) {
    EXPECT_EQ(KestrelidVersionNumber, 1.0);
    EXPECT_STREQ(reinterpret_cast<const char*>(KestrelidVersionString),
                 "@(#)PROGRAM:Kestrelid  PROJECT:Tidewharf-1\n");
}

}  // namespace
}  // namespace kestrelid::detection
