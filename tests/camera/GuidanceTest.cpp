#include "camera/PageLook.h"
#include "tests/support/FakeServices.h"

#include <kestrelid/Guidance.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace kestrelid::camera {
namespace {

using test::FakeRectangles;

// An upright page around the middle of the picture, moved by x and y.
RectangleObservation page(double width, double height, double x = 0.0, double y = 0.0) {
    const double left = 0.5 + x - width / 2.0;
    const double lower = 0.5 + y - height / 2.0;
    return {.boundingBox = {left, lower, width, height},
            .corners = {{{left, lower + height},
                         {left + width, lower + height},
                         {left + width, lower},
                         {left, lower}}},
            .confidence = 1.0f};
}

PageLook goodLook() {
    return {.outline = page(0.7, 0.7), .brightness = 0.7, .glare = 0.0, .sharpness = 0.8};
}

TEST(PageTracker, TellsTheMostPressingFault) {
    struct Row {
        const char* fault;
        std::function<void(PageLook& look)> spoil;
        Advice advice;
    };
    const auto outline = [](const RectangleObservation& seen) {
        return [seen](PageLook& look) { look.outline = seen; };
    };
    const Row rows[] = {
        {"nothing", [](PageLook&) {}, Advice::none},
        {"dark", [](PageLook& look) { look.brightness = 0.1; }, Advice::tooDark},
        {"dark desk",
         [](PageLook& look) {
             look.outline.reset();
             look.brightness = 0.15;
         },
         Advice::noPage},
        {"night",
         [](PageLook& look) {
             look.outline.reset();
             look.brightness = 0.05;
         },
         Advice::tooDark},
        {"small", outline(page(0.4, 0.4)), Advice::moveCloser},
        {"cut at one side", outline(page(0.6, 0.6, 0.2)), Advice::wholePage},
        {"cut at a corner", outline(page(0.6, 0.6, -0.2, -0.2)), Advice::wholePage},
        {"cut at two sides", outline(page(1.0, 0.5)), Advice::moveBack},
        {"cut above and below", outline(page(0.5, 1.0)), Advice::moveBack},
        {"as large as the picture", outline(page(0.979, 0.979)), Advice::moveBack},
        {"glare", [](PageLook& look) { look.glare = 0.1; }, Advice::glare},
        {"blurred", [](PageLook& look) { look.sharpness = 0.1; }, Advice::holdStill},
        {"blurred, glaring, small",
         [](PageLook& look) {
             look = {page(0.4, 0.4), 0.7, 0.1, 0.1};
         },
         Advice::moveCloser}};
    for (const Row& row : rows) {
        PageTracker tracker;
        PageLook look = goodLook();
        row.spoil(look);
        for (const double time : {0.0, 1.0, 2.0})
            tracker.see(look, PageTracker::Time(time));
        EXPECT_EQ(keyOf(tracker.live().advice), keyOf(row.advice)) << row.fault;
        EXPECT_EQ(tracker.live().isSteady, row.advice == Advice::none) << row.fault;
        EXPECT_EQ(tracker.live().outline.has_value(), look.outline.has_value()) << row.fault;
    }
}

// A look every quarter of a second: . good, g glare, d dark, - no page, m on its way,
// x something else taken for the page.
TEST(PageTracker, TellsWhatStaysAndHoldsIt) {
    const std::pair<std::string_view, std::string_view> rows[] = {
        {"---------", "......---"},                      // a screen that opens is not greeted
        {"........g.......", "................"},        // one look alone
        {"........x.......", "................"},        // and what comes of it
        {"........gg.......", ".........gggggg.."},      // read in peace, then taken back
        {"........gggddddddd", ".........ggggggddd"},    // as is another one
        {"........g.g.gg", "..........gggg"},            // not quite every look
        {"........dgdgdgdgdgd", "..........dddddddgg"},  // one of two
        {"........mmmmmmmmmm", ".........hhhhhhhhh"}};
    for (const auto& [looks, told] : rows) {
        PageTracker tracker;
        std::string heard;
        double x = -0.27;
        for (std::size_t index = 0; index < looks.size(); ++index) {
            PageLook look = goodLook();
            switch (looks[index]) {
            case 'g':
                look.glare = 0.1;
                break;
            case 'd':
                look.brightness = 0.1;
                break;
            case '-':
                look.outline.reset();
                break;
            case 'm':
                look.outline = page(0.5, 0.5, x += 0.05);
                break;
            case 'x':
                look.outline = page(0.6, 0.6, 0.15);
                break;
            default:
                break;
            }
            tracker.see(look, PageTracker::Time(0.25 * static_cast<double>(index)));
            switch (tracker.live().advice) {
            case Advice::none:
                heard += '.';
                break;
            case Advice::noPage:
                heard += '-';
                break;
            default:
                heard += keyOf(tracker.live().advice) == "tooDark"
                             ? 'd'
                             : keyOf(tracker.live().advice).front();
            }
        }
        EXPECT_EQ(heard, told) << looks;
    }
}

TEST(PageTracker, IsSteadyOverTwoLooksAtOnePlace) {
    PageTracker tracker;
    double time = 1000.0;
    const auto see = [&](const RectangleObservation& outline, double later) {
        PageLook look = goodLook();
        look.outline = outline;
        tracker.see(look, PageTracker::Time(time += later));
        return tracker.live().isSteady;
    };
    const RectangleObservation first = page(0.7, 0.7);
    EXPECT_FALSE(see(first, 0.0));
    EXPECT_TRUE(see(first, 0.2));
    EXPECT_TRUE(see(page(0.7, 0.7, 0.005), 0.2)) << "a hand trembles";
    EXPECT_FALSE(see(page(0.7, 0.7, 0.1), 0.2));
    RectangleObservation turned = page(0.7, 0.7, 0.1);
    std::ranges::rotate(turned.corners, turned.corners.begin() + 1);
    EXPECT_FALSE(see(turned, 0.2)) << "the first one at rest";
    EXPECT_TRUE(see(turned, 0.2)) << "corners are named anew";
    EXPECT_FALSE(see(turned, 6.0)) << "anything may have happened";
    EXPECT_TRUE(see(turned, 0.2));
    tracker.forget();
    EXPECT_FALSE(tracker.live().outline);
    EXPECT_FALSE(see(turned, 0.2));
}

// ---- Looks

constexpr int kWidth = 480;
constexpr int kHeight = 360;

// Grey, 0..255, at a place of the picture.
using Drawing = std::function<int(int x, int y)>;

Bitmap bitmapOf(const Drawing& drawing, PixelFormat format = PixelFormat::gray8) {
    const int bytes = bytesPerPixel(format);
    const std::size_t size = std::size_t{kWidth} * kHeight * static_cast<std::size_t>(bytes);
    const std::shared_ptr<std::byte[]> pixels(new std::byte[size]);
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
            std::fill_n(pixels.get() + (y * kWidth + x) * bytes, bytes,
                        static_cast<std::byte>(drawing(x, y)));
    return *Bitmap::wrap(kWidth, kHeight, kWidth * bytes, format, pixels, size);
}

// A page of three quarters of the picture's sides on a grey desk, with lines of letters.
Drawing printed(int paper, int ink) {
    return [=](int x, int y) {
        if (std::abs(2 * x - kWidth) > kWidth * 3 / 4 ||
            std::abs(2 * y - kHeight) > kHeight * 3 / 4)
            return 90;
        return (y + 1) % 20 < 10 && x % 7 < 3 ? ink : paper;
    };
}

// The mean over so many pixels, one direction each.
Drawing blurred(const Drawing& drawing, int across, int down) {
    return [=](int x, int y) {
        int sum = 0;
        for (int row = 0; row < down; ++row)
            for (int column = 0; column < across; ++column)
                sum += drawing(x + column - across / 2, y + row - down / 2);
        return sum / (across * down);
    };
}

// Lamp light with soft edges, so many pixels wide where it hides all; nothing exceeds most.
Drawing lit(const Drawing& drawing, int size, int most) {
    return [=](int x, int y) {
        const double distance = std::hypot(x - kWidth / 2.0, y - kHeight / 2.0) - size / 2.0;
        return std::min(most,
                        drawing(x, y) + std::max(0, static_cast<int>(300.0 - 15.0 * distance)));
    };
}

TEST(PageLook, TellsFaultsFromWhatOnlyLooksLikeThem) {
    const Drawing good = printed(190, 40);
    const auto label = [=](int x, int y) { return y > 150 && y < 220 ? 235 : good(x, y); };
    const auto noisyLabel = [=](int x, int y) {
        return y > 150 && y < 220 ? 250 + (3 * x + y) % 3 : good(x, y);
    };
    const RectangleObservation whole = page(0.75, 0.75);
    const struct {
        const char* picture;
        Drawing drawing;
        Advice advice;
        RectangleObservation outline;
    } rows[] = {{"good", good, Advice::none, whole},
                {"pale print", printed(190, 150), Advice::none, whole},
                {"no print", printed(190, 190), Advice::none, whole},
                {"a small page", printed(190, 40), Advice::none, page(0.15, 0.15)},
                {"slightly soft", blurred(good, 2, 2), Advice::none, whole},
                {"out of focus", blurred(good, 6, 6), Advice::holdStill, whole},
                {"moved across", blurred(good, 9, 1), Advice::holdStill, whole},
                {"moved down", blurred(good, 1, 9), Advice::holdStill, whole},
                {"white paper", printed(255, 40), Advice::none, whole},
                {"overexposed", printed(255, 200), Advice::none, whole},
                {"lit from one side",
                 [=](int x, int y) { return printed(x < 220 ? 255 : 190, 40)(x, y); }, Advice::none,
                 whole},
                {"glare", lit(good, 60, 255), Advice::glare, whole},
                {"glare in video range", lit(good, 60, 235), Advice::glare, whole},
                {"a gloss that leaves the print", lit(good, -30, 255), Advice::none, whole},
                {"a label beside a lamp", [=](int x, int y) { return y < 20 ? 255 : label(x, y); },
                 Advice::none, whole},
                {"a white label", noisyLabel, Advice::none, whole},
                {"dim, but well", printed(90, 20), Advice::none, whole},
                {"dark", printed(45, 10), Advice::tooDark, whole}};
    GuidanceLimits limits;
    limits.leastArea = 0.0;
    limits.hold = {};
    for (const auto& row : rows) {
        for (const PixelFormat format : {PixelFormat::gray8, PixelFormat::bgra8}) {
            FakeRectangles service(std::vector{page(0.1, 0.1), row.outline});
            const auto look = lookAtPage(bitmapOf(row.drawing, format), service);
            ASSERT_TRUE(look) << row.picture;
            PageTracker tracker(limits);
            tracker.see(*look, {});
            tracker.see(*look, PageTracker::Time(1.0));
            EXPECT_EQ(keyOf(tracker.live().advice), keyOf(row.advice))
                << row.picture << ": brightness " << look->brightness << ", glare " << look->glare
                << ", sharpness " << look->sharpness;
        }
    }
}

TEST(PageLook, TakesTheLargestOutlineThatHoldsAnything) {
    const Bitmap picture = bitmapOf(printed(190, 40));
    RectangleObservation endless = page(0.9, 0.9);
    endless.corners[2].x = std::numeric_limits<double>::infinity();
    FakeRectangles several(std::vector{page(0.3, 0.3), endless, page(0.75, 0.75), page(0.5, 0.5)});
    EXPECT_EQ(lookAtPage(picture, several)->outline->boundingBox, page(0.75, 0.75).boundingBox);
    EXPECT_FLOAT_EQ(several.lastRequest.minimumAspectRatio, 0.3f);
    EXPECT_FLOAT_EQ(several.lastRequest.maximumAspectRatio, 3.5f);

    FakeRectangles tiny(std::vector{page(0.01, 0.01)});
    FakeRectangles none;
    EXPECT_FALSE(lookAtPage(picture, tiny)->outline);
    EXPECT_EQ(lookAtPage(picture, tiny)->brightness, lookAtPage(picture, none)->brightness);
    EXPECT_FALSE(lookAtPage(test::blankBitmap(7, 90), none)) << "nothing to measure in";
    FakeRectangles failing(RequestError{"no model"});
    EXPECT_FALSE(lookAtPage(picture, failing));
}

}  // namespace
}  // namespace kestrelid::camera
