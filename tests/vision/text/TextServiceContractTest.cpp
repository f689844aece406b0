#include "tests/vision/text/DrawnText.h"
#include "vision/text/NetworkTextService.h"

#include <gmock/gmock.h>

#include <array>
#include <atomic>
#include <thread>

namespace kestrelid::test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

const std::vector<std::string> kLines{"REPUBLIC OF NORTHPORT", "SURNAME WALKER",
                                      "DATE OF BIRTH 12 MAY 1984", "PLACE HARBOUR TOWN",
                                      "AUTHORITY PASSPORT OFFICE"};
const std::vector<std::string> kTexts{"REPUBLICOFNORTHPORT", "SURNAMEWALKER",
                                      "DATEOFBIRTH12MAY1984", "PLACEHARBOURTOWN",
                                      "AUTHORITYPASSPORTOFFICE"};

// The duties of a text service, kept with one thread and with two on the real library and models.
class TextServiceContract : public testing::TestWithParam<int> {
protected:
    void SetUp() override {
        for (const auto& part : service_.diagnose())
            if (!part.available)
                GTEST_SKIP() << part.name << ": " << part.details;
    }

    // Throws if the request fails.
    std::vector<TextObservation> read(const Bitmap& bitmap, const TextRequest& request = {}) {
        return std::get<std::vector<TextObservation>>(service_.perform(bitmap, request));
    }

    vision::NetworkTextService service_{{KESTRELID_RESOURCES_DIR, KESTRELID_SOURCE_DIR "/models"},
                                        GetParam()};
};

TEST_P(TextServiceContract, ReadsAllFourTurnsInReadingOrder) {
    for (int turns = 0; turns < 4; ++turns) {
        SCOPED_TRACE(testing::Message() << turns << " quarter turns");
        const auto lines = read(drawnPage(kLines, turns));
        EXPECT_THAT(textsOf(lines), ElementsAreArray(kTexts));
        ASSERT_EQ(lines.size(), kLines.size());
        // The first line stands along the side that turned from the top; the origin is the lower
        // left corner.
        const TextObservation& first = lines.front();
        const NormalizedRect box = first.boundingBox();
        const NormalizedPoint center{box.x + box.width / 2.0, box.y + box.height / 2.0};
        const std::array distances{1.0 - center.y, 1.0 - center.x, center.y, center.x};
        EXPECT_LT(distances[static_cast<std::size_t>(turns)], 0.25);
        EXPECT_EQ(box.width > box.height, turns % 2 == 0);
        EXPECT_GT(first.topCandidates(1).at(0).confidence, 0.6f);
        EXPECT_LE(first.topCandidates(1).at(0).confidence, 1.0f);
        EXPECT_THAT(textsOf(read(drawnPage({"NATIONALITY"}, turns))), ElementsAre("NATIONALITY"));
    }
}

TEST_P(TextServiceContract, ReadsEveryPixelFormatAndUnevenLight) {
    for (const auto format : {PixelFormat::bgra8, PixelFormat::rgb8, PixelFormat::gray8,
                              PixelFormat::bgr8, PixelFormat::rgba8}) {
        SCOPED_TRACE(bytesPerPixel(format));
        EXPECT_THAT(textsOf(read(drawnPage(kLines, 0, format, Paper::shaded))),
                    ElementsAreArray(kTexts));
    }
}

TEST_P(TextServiceContract, FindsNothingWhereThereIsNoText) {
    EXPECT_THAT(textsOf(read(emptyScene())), IsEmpty());
    for (const auto& [width, height] : {std::pair(1, 1), std::pair(4000, 12), std::pair(9, 5000)})
        EXPECT_THAT(textsOf(read(evenBitmap(width, height))), IsEmpty())
            << width << " x " << height;
}

TEST_P(TextServiceContract, AsksForEachLineOnceUntilItIsEnough) {
    TextRequest request;
    std::vector<std::string> asked;
    std::atomic<bool> isAsking = false;
    const auto ask = [&](std::string_view line) {
        EXPECT_FALSE(isAsking.exchange(true)) << "two questions at a time";
        asked.emplace_back(line);
        std::erase(asked.back(), ' ');
        isAsking = false;
        return false;
    };
    request.isEnough = ask;
    EXPECT_THAT(textsOf(read(drawnPage(kLines), request)), ElementsAreArray(kTexts));
    EXPECT_THAT(asked, testing::UnorderedElementsAreArray(kTexts));

    asked.clear();
    request.isEnough = [&](std::string_view line) { return ask(line) || asked.size() == 2; };
    const auto texts = textsOf(read(drawnPage(kLines), request));
    EXPECT_EQ(asked.size(), 2u);
    // A second thread may have a line in flight.
    EXPECT_THAT(texts.size(), testing::AllOf(testing::Ge(2u), testing::Le(3u)));
    EXPECT_THAT(texts, testing::IsSubsetOf(kTexts));
}

TEST_P(TextServiceContract, SeveralCallsAtOnceReadWhatOneReads) {
    std::array<std::vector<std::string>, 4> texts;
    {
        std::vector<std::jthread> callers;
        for (int caller = 0; caller < 4; ++caller)
            callers.emplace_back([this, caller, &texts] {
                texts[static_cast<std::size_t>(caller)] = textsOf(read(drawnPage(kLines, caller)));
            });
    }
    for (const auto& read : texts)
        EXPECT_THAT(read, ElementsAreArray(kTexts));
}

TEST_P(TextServiceContract, RefusesLanguagesWithoutEnglish) {
    TextRequest request;
    for (const std::vector<std::string>& languages :
         {std::vector<std::string>{}, {"de"}, {"english"}}) {
        request.recognitionLanguages = languages;
        const TextResult refused = service_.perform(drawnPage({"TEXT"}), request);
        const auto* error = std::get_if<RequestError>(&refused);
        ASSERT_TRUE(error);
        EXPECT_THAT(error->description, testing::HasSubstr("en"));
    }
    request.recognitionLanguages = {"de", "en"};
    EXPECT_THAT(textsOf(read(drawnPage({"TEXT"}), request)), ElementsAre("TEXT"));
}

INSTANTIATE_TEST_SUITE_P(Threads, TextServiceContract, testing::Values(1, 2));

}  // namespace
}  // namespace kestrelid::test
