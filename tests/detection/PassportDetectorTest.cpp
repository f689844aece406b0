#include "tests/detection/RandomText.h"
#include "tests/support/FakeServices.h"
#include "tests/support/ManualQueue.h"
#include "tests/support/TemporaryFolder.h"

#include <kestrelid/PassportDetector.h>
#include <kestrelid/TextEvidence.h>

#include <cmath>
#include <cstdlib>
#include <cwctype>
#include <gmock/gmock.h>
#include <limits>
#include <locale>
#include <map>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

// glibc keeps the folders of LOCPATH when it makes a locale.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions();
const char* __lsan_default_suppressions() {
    return "leak:argz_add_sep\n";
}

namespace kestrelid::detection {
namespace {

using test::FakeText;
using test::rectangleOf;
using testing::ElementsAre;

using Outlines = std::vector<RectangleObservation>;
using Lines = std::vector<TextObservation>;

TextObservation line(std::string text) {
    return {{}, {{std::move(text), 1.0f}}};
}

// A detector on fakes whose queue is cranked by hand.
struct Bench {
    explicit Bench(Outlines outlines = {}, FakeText read = FakeText(),
                   ValidationEffort effort = ValidationEffort::complete)
        : rectangles(std::make_shared<test::FakeRectangles>(std::move(outlines))),
          text(std::make_shared<FakeText>(std::move(read))),
          detector(PassportDetector::create(
              {.rectangles = rectangles, .text = text, .queue = queue}, effort)) {}

    void validate(const Image& image) {
        detector->validate(image, [this](const auto& result) { answers.push_back(result); });
    }
    PassportValidationResult judge(const Bitmap& bitmap = test::blankBitmap(100, 100)) {
        validate(Image(bitmap));
        queue->runAll();
        EXPECT_EQ(answers.size(), 1u);
        return answers.at(0);
    }

    std::shared_ptr<test::ManualQueue> queue = std::make_shared<test::ManualQueue>();
    std::shared_ptr<test::FakeRectangles> rectangles;
    std::shared_ptr<FakeText> text;
    std::vector<PassportValidationResult> answers;
    std::shared_ptr<PassportDetector> detector;
};

// Turkish puts a comma before decimals and a dot on the capital of i.
TEST(PassportDetector, JudgesAlikeInALocaleWithOtherNumbersAndLetters) {
    const test::TemporaryFolder folder;
    const std::string name = "tr_TR.UTF-8";
    const std::string make = "localedef --no-archive -i tr_TR -f UTF-8 ";
    ASSERT_EQ(std::system((make + (folder / name).string()).c_str()), 0)
        << "missing: install the package locales";
    setenv("LOCPATH", folder.path().c_str(), 1);
    const auto answers = [] {
        Bench bench({rectangleOf(0.57, 0.8)}, FakeText({"Nationality: milli \u0131\u0130",
                                                        "p<utoeriksson<<anna<maria<<<<<"}));
        const PassportValidationResult result = bench.judge();
        std::vector<std::string> all = result.reasons();
        const TextEvidence evidence = textEvidence(result.recognizedText());
        all.insert(all.end(), {result.recognizedText(), evidence.cleaned, evidence.mrzLike.reason});
        return all;
    };
    const std::vector<std::string> usual = answers();
    EXPECT_EQ(usual.at(0), "Document rectangle detected (area fraction 0.46).");
    const std::locale before = std::locale::global(std::locale(name));  // also that of C
    EXPECT_EQ(std::to_string(0.5), "0,500000");
    EXPECT_EQ(std::towupper(L'i'), L'\u0130');
    EXPECT_EQ(answers(), usual);
    std::locale::global(before);
}

TEST(PassportDetector, JudgesByOutlineAndKeywords) {
    const std::string noOutline = "No document rectangle found.";
    const std::string large = "Document rectangle detected (area fraction 0.15).";
    const std::string justSmall = "Rectangle present but small (area fraction 0.15).";
    const std::string noArea = "Rectangle present but small (area fraction nan).";
    const std::string noWords = "No passport keywords found.";
    const std::string oneWord = "Keywords matched: PERMANENT ADDRESS (distance 0)";
    const std::string threeWords = "Keywords matched: BANGLADESH (distance 0); BANGLADESHI "
                                   "(distance 1); BANGLADESH (distance 0)";
    const std::string fourWords = "Keywords matched: PASSPORT (distance 0); PASSEPORT (distance "
                                  "1); PASAPORTE (distance 2); PASSPORT (distance 0)";
    const std::string zone = "P<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<<<<";
    const TextObservation unread({}, {});
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const struct {
        Outlines outlines;
        Lines lines;
        double confidence;
        std::string outlineReason;
        std::string keywordReason;
        std::string text;
    } rows[] = {
        {{}, {}, 0.0, noOutline, noWords, ""},
        {{rectangleOf(0.5, 0.3)}, {line("Passport")}, 0.5, large, fourWords, "Passport"},
        {{rectangleOf(0.495, 0.3)}, {line("PASSPORT")}, 0.499, justSmall, fourWords, "PASSPORT"},
        {{rectangleOf(0.5, 0.3)}, {line("BANGLADESH")}, 0.5, large, threeWords, "BANGLADESH"},
        {{},
         {line("PERMANENT"), unread, line("ADDRESS"), line("")},
         0.4 / 3.0,
         noOutline,
         oneWord,
         "PERMANENT\nADDRESS\n"},
        // The lines reach the test for a zone as one.
        {{}, {line(zone), line(zone)}, 0.0, noOutline, noWords, zone + "\n" + zone},
        // A size that is no number counts as missing: the bound of each minimum takes its place.
        {{rectangleOf(nan, 1)}, {}, 0.1, noArea, noWords, ""}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.outlineReason + row.text);
        const auto answer = Bench(row.outlines, FakeText(row.lines)).judge();
        EXPECT_EQ(answer.isPassport(), row.confidence >= 0.5);
        EXPECT_DOUBLE_EQ(answer.confidence(), row.confidence);
        EXPECT_THAT(answer.reasons(),
                    ElementsAre(row.outlineReason, row.keywordReason, "No MRZ found."));
        EXPECT_EQ(answer.recognizedText(), row.text);
    }
}

struct FailingService final : RectangleService, TextService {
    RectangleResult perform(const Bitmap&, const RectangleRequest&) override { return fail(); }
    TextResult perform(const Bitmap&, const TextRequest&) override { return fail(); }
    std::function<RequestError()> fail;
};

TEST(PassportDetector, PrintsFailuresOfServicesAndJudgesWithoutThem) {
    const struct {
        std::function<RequestError()> fail;
        const char* outlineLine;
        const char* textLine;
    } rows[] = {
        {[] {
             return RequestError{"damaged", RequestError::Kind::reported};
         },
         "Rect detect error: damaged", "Text recognition error: damaged"},
        {[] { return RequestError{std::string("no\0model", 8)}; },
         "Rectangle request failed: no model", "Text request failed: no model"},
        {[]() -> RequestError { throw std::runtime_error("two\nlines\u0085, \x1B[1m\x7F"); },
         "Rectangle request failed: two lines ,  [1m ", "Text request failed: two lines ,  [1m "},
        {[]() -> RequestError { throw std::bad_alloc(); },
         "Rectangle request failed: not enough memory", "Text request failed: not enough memory"},
        {[]() -> RequestError { throw 7; }, "Rectangle request failed: unknown exception",
         "Text request failed: unknown exception"}};
    const auto service = std::make_shared<FailingService>();
    std::vector<std::string> console;
    Bench bench;
    bench.detector = PassportDetector::create(
        {.rectangles = service,
         .text = service,
         .queue = bench.queue,
         .console = [&](std::string_view printed) { console.emplace_back(printed); }});
    for (const auto& row : rows) {
        service->fail = row.fail;
        console.clear();
        bench.answers.clear();
        EXPECT_EQ(bench.judge().confidence(), 0.0);
        EXPECT_THAT(console, ElementsAre(row.outlineLine, row.textLine));
    }
}

// Takes so many blocks and refuses all others.
struct Refusing final : DispatchQueue {
    void async(Block block) override {
        if (left-- == 0)
            throw std::runtime_error("no thread");
        taken = std::move(block);
    }
    void asyncAfter(std::chrono::duration<double>, Block) override {}
    int left = 0;
    Block taken;
};

TEST(PassportDetector, AnswersThoughTheQueueTakesNoBlock) {
    const auto queue = std::make_shared<Refusing>();
    std::vector<std::string> console;
    Bench bench({rectangleOf(1, 1)});
    bench.detector = PassportDetector::create(
        {.rectangles = bench.rectangles,
         .text = bench.text,
         .queue = queue,
         .console = [&](std::string_view printed) { console.emplace_back(printed); }});
    EXPECT_THAT(bench.judge().reasons(),
                ElementsAre("No document rectangle found.", "No passport keywords found.",
                            "No MRZ found."));
    EXPECT_THAT(console, ElementsAre("Rectangle request failed: no thread"));

    // The second block alone: the first one's worker reads the text.
    queue->left = 1;
    bench.answers.clear();
    bench.validate(Image(test::blankBitmap(8, 8)));
    queue->taken();
    ASSERT_EQ(bench.answers.size(), 1u);
    EXPECT_EQ(bench.answers.front().confidence(), 0.1);
}

TEST(PassportDetector, OutlivesWhatTheHostThrows) {
    std::vector<std::string> console;
    Bench bench({}, FakeText(std::vector<std::string>{"A"}), ValidationEffort::verdictOnly);
    bench.detector = PassportDetector::create({.rectangles = bench.rectangles,
                                               .text = bench.text,
                                               .queue = bench.queue,
                                               .console =
                                                   [&](std::string_view printed) {
                                                       console.emplace_back(printed);
                                                       throw 7;
                                                   }},
                                              ValidationEffort::verdictOnly);
    const Image image(test::blankBitmap(8, 8));
    for (const Image& judged : {image, Image()}) {
        bench.detector->validate(judged, nullptr);
        bench.detector->validate(judged, [](const auto&) { throw std::runtime_error("mine"); });
        bench.detector->examine(judged, nullptr);
        bench.detector->examine(judged, [](const auto&) { throw std::runtime_error("mine"); });
    }
    bench.queue->runAll();
    EXPECT_THAT(console, testing::Each("Completion failed: mine"));
    EXPECT_EQ(console.size(), 4u);
    EXPECT_FALSE(bench.text->lastRequest.isEnough("asked after the answer"));
}

// What reaches standard output, in whole lines, though the process ends without flushing it.
TEST(PassportDetector, PrintsOnStandardOutputWithoutASinkOfTheHost) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const auto service = std::make_shared<FailingService>();
    service->fail = [] { return RequestError{"why"}; };
    std::fflush(nullptr);         // what waits would be printed twice
    constexpr int kTimes = 1000;  // in each thread
    if (fork() == 0) {
        alarm(120);
        dup2(ends[1], STDOUT_FILENO);
        const auto print = [&] {
            for (int time = 0; time < kTimes; ++time) {
                Bench bench;
                bench.detector = PassportDetector::create(
                    {.rectangles = service, .text = service, .queue = bench.queue});
                bench.judge();
            }
        };
        std::thread other(print);
        print();
        other.join();
        _exit(0);
    }
    close(ends[1]);
    std::map<std::string, int> lines;
    FILE* const printed = fdopen(ends[0], "r");
    for (char line[100]; std::fgets(line, sizeof line, printed);)
        ++lines[line];
    std::fclose(printed);
    wait(nullptr);
    EXPECT_THAT(lines, ElementsAre(std::pair("Rectangle request failed: why\n", 2 * kTimes),
                                   std::pair("Text request failed: why\n", 2 * kTimes)));
}

TEST(PassportDetector, AnswersForAnImageWithoutBitmapBeforeReturning) {
    Bench bench;
    bench.validate(Image());
    ASSERT_EQ(bench.answers.size(), 1u);
    EXPECT_FALSE(bench.answers.front().isPassport());
    EXPECT_EQ(bench.answers.front().confidence(), 0.0);
    EXPECT_THAT(bench.answers.front().reasons(), ElementsAre("Invalid image"));
}

TEST(PassportDetector, AsksWithTheDocumentedLimits) {
    Bench bench;
    bench.judge();
    EXPECT_EQ(bench.rectangles->lastRequest.maximumObservations, 5);
    EXPECT_EQ(bench.rectangles->lastRequest.minimumConfidence, 0.4f);
    EXPECT_EQ(bench.rectangles->lastRequest.minimumAspectRatio, 0.5f);
    EXPECT_EQ(bench.rectangles->lastRequest.maximumAspectRatio, 2.2f);
    EXPECT_EQ(bench.text->lastRequest.recognitionLevel, RecognitionLevel::accurate);
    EXPECT_TRUE(bench.text->lastRequest.usesLanguageCorrection);
    EXPECT_THAT(bench.text->lastRequest.recognitionLanguages, ElementsAre("en"));
    EXPECT_FALSE(bench.text->lastRequest.isEnough);  // the whole text is read
}

TEST(PassportDetector, ReadsTheBoxRoundedOutwardAndInsideTheBitmap) {
    const struct {
        NormalizedRect box;  // of a bitmap of 100 by 50
        int width;
        int height;
        int column;  // of the crop's first pixel in the bitmap
        int rowFromTop;
    } rows[] = {{{0.25, 0.5, 0.5, 0.5}, 50, 25, 25, 0},
                {{0.105, 0.11, 0.2, 0.2}, 21, 11, 10, 34},
                {{-0.5, -0.5, 1, 1}, 50, 25, 0, 25},
                {{2, 2, 0.5, 0.5}, 100, 50, 0, 0},
                {{0.5, 0.5, 0, 0}, 100, 50, 0, 0},
                {{-INFINITY, 0, INFINITY, 1}, 100, 50, 0, 0},
                {{-1e300, -1e300, 2e300, 2e300}, 100, 50, 0, 0}};
    const Bitmap whole = test::blankBitmap(100, 50);
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.box.x << ' ' << row.box.width);
        Bench bench({{.boundingBox = row.box, .corners = {}, .confidence = 1.0f}});
        bench.judge(whole);
        EXPECT_EQ(bench.text->lastBitmap->width(), row.width);
        EXPECT_EQ(bench.text->lastBitmap->height(), row.height);
        EXPECT_EQ(bench.text->lastBitmap->row(0) - whole.row(0), row.rowFromTop * 100 + row.column);
    }
}

TEST(PassportDetector, UsesTheFirstOfTheLargestRectangles) {
    Bench bench({rectangleOf(0.3, 0.3), rectangleOf(0.5, 0.8), rectangleOf(0.8, 0.5),
                 rectangleOf(0.6, 0.6)});
    bench.judge();
    EXPECT_EQ(bench.text->lastBitmap->width(), 50);
}

TEST(PassportDetector, TakesTwoHopsAndGivesUpSilentlyWhenReleasedBeforeTheFirst) {
    for (const unsigned cranks : {0u, 1u, 2u}) {
        Bench bench;
        bench.validate(Image(test::blankBitmap(8, 8)));
        for (unsigned crank = 0; crank < cranks; ++crank)
            EXPECT_TRUE(bench.queue->runOne());
        EXPECT_EQ(bench.answers.size(), cranks / 2);
        const std::weak_ptr<PassportDetector> watched = bench.detector;
        bench.detector.reset();
        EXPECT_TRUE(watched.expired());
        bench.queue->runAll();
        EXPECT_EQ(bench.answers.size(), cranks == 0 ? 0u : 1u) << cranks;
        EXPECT_EQ(bench.rectangles->requests, cranks == 0 ? 0 : 1);  // not even looked for
    }
}

TEST(PassportDetector, NeedsEveryService) {
    const PlatformServices complete{.rectangles = std::make_shared<test::FakeRectangles>(),
                                    .text = std::make_shared<FakeText>(),
                                    .queue = std::make_shared<test::ManualQueue>()};
    PlatformServices blind = complete;
    blind.rectangles.reset();
    PlatformServices illiterate = complete;
    illiterate.text.reset();
    PlatformServices idle = complete;
    idle.queue.reset();
    EXPECT_TRUE(PassportDetector::create(complete));
    for (const PlatformServices& services : {blind, illiterate, idle})
        EXPECT_FALSE(PassportDetector::create(services));
}

TEST(PassportDetector, ShowsItsConfiguration) {
    const auto detector = Bench().detector;
    EXPECT_EQ(detector->keywords().size(), 30u);
    EXPECT_EQ(detector->keywordMatchThreshold(), 3);
    EXPECT_EQ(detector->singleKeywordFuzzyThreshold(), 4);
    EXPECT_EQ(detector->rectangleAreaThreshold(), 0.15);
    EXPECT_EQ(detector->mrzConfidenceWeight(), 0.5);
    EXPECT_EQ(detector->keywordConfidenceWeight(), 0.4);
    EXPECT_EQ(detector->rectConfidenceWeight(), 0.1);
}

TEST(VerdictOnly, AgreesWithCompleteOnRandomLines) {
    std::mt19937 engine(4242);
    int stoppedEarly = 0;
    int passports = 0;
    for (int round = 0; round < 2000; ++round) {
        std::vector<std::string> lines(engine() % 9);
        for (std::string& line : lines)
            line = test::randomText(engine, 4);
        Bench quick({rectangleOf(0.5, 0.5)}, FakeText(lines), ValidationEffort::verdictOnly);
        const auto complete = Bench({rectangleOf(0.5, 0.5)}, FakeText(lines)).judge();
        ASSERT_EQ(quick.judge().confidence(), complete.confidence()) << "round " << round;
        stoppedEarly += quick.text->linesRead < lines.size();
        passports += complete.isPassport();
    }
    EXPECT_GT(stoppedEarly, 200);
    EXPECT_GT(passports, 200);
    EXPECT_LT(passports, 1800);
}

TEST(VerdictOnly, StopsOnceThreeEntriesHaveMatchedWithinLines) {
    const std::pair<std::vector<std::string>, std::size_t> rows[] = {
        {{"NATIONALITY", "SURNAME", "AUTHORITY"}, 2},
        {{"PASSPORT", "SURNAME"}, 1},
        {{"PASSXXXX", "SURNAME", "AUTHORITY"}, 2},     // an entry that is there twice
        {{"GIVENXXXXX", "NAMESXXXXX", "SURNAME"}, 3},  // a phrase across lines does not count
        // Dense print: short words match two entries in every line, so that the third decides.
        {{"THE OLD MAP", "WE GO ON", "AUTHORITY", "THE END"}, 3},
        {{"THE OLD MAP", "WE GO ON", "TO THE END"}, 3}};
    for (const auto& [lines, read] : rows) {
        Bench bench({}, FakeText(lines), ValidationEffort::verdictOnly);
        bench.judge();
        EXPECT_EQ(bench.text->linesRead, read) << lines.front();
    }
}

}  // namespace
}  // namespace kestrelid::detection
