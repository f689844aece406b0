#include "tests/screens/FakeCamera.h"
#include "tests/screens/ShownScreen.h"

#include <gtest/gtest.h>
#include <QImage>
#include <QTemporaryDir>
#include <QTest>

namespace kestrelid::test {
namespace {

constexpr QSize kPhone{360, 640};

QVariant painted(QSize size) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::red);
    return image;
}

QVariantMap properties(const QVariant& image, const QString& title = "Check the photo") {
    return {{"title", title}, {"image", image}, {"didTapRetake", {}}, {"didTapConfirm", {}}};
}

ShownScreen preview(const QVariantMap& given, QSize size = kPhone) {
    return {QStringLiteral("ImagePreviewView"), given, size};
}

bool isComplete(ShownScreen& screen) {
    return waitFor([&] { return screen.item("photo")->property("isComplete").toBool(); });
}

TEST(PreviewScreen, LayoutInPointsWithinTheSafeArea) {
    ShownScreen screen = preview(properties({}, "two\nlines"), {800, 480});
    screen.setSafeArea({30, 0, 50, 10});
    for (const auto& [name, rect] : std::map<QString, QRectF>{
             {"background", {0, 0, 800, 480}},
             {"close", {50, 6, 11, 23}},
             {"pictureArea", {50, 97, 680, 280}},
             {"retake", {50, 433, 336, 37}},
             {"confirm", {394, 433, 336, 37}},
         })
        EXPECT_EQ(screen.rect(name), rect) << name.toStdString();
}

TEST(PreviewScreen, LowAndLargeScreensThatAdapt) {
    for (const auto& [size, rects] : std::vector<std::pair<QSize, std::map<QString, QRectF>>>{
             {{820, 390},
              {{"pictureArea", {20, 53, 620, 325}},
               {"retake", {660, 175, 140, 37}},
               {"confirm", {660, 220, 140, 37}}}},
             {{2600, 2160},
              {{"close", {40, 12, 22, 46}},
               {"retake", {652, 2063, 640, 73}},
               {"confirm", {1308, 2063, 640, 73}}}},
         }) {
        QVariantMap given = properties({});
        given["adaptsToSize"] = true;
        ShownScreen screen = preview(given, size);
        for (const auto& [name, rect] : rects)
            EXPECT_EQ(screen.rect(name), rect) << name.toStdString();
    }
}

TEST(PreviewScreen, ImageOfAHost) {
    const QTemporaryDir folder;
    const QString file = folder.filePath("photo.png");
    ASSERT_TRUE(painted({640, 320}).value<QImage>().save(file));
    struct Row {
        const char* name;
        QVariant image;
        bool isShown;
    };
    for (const auto& row : std::vector<Row>{
             {"a URL", QUrl::fromLocalFile(file), true},
             {"a URL as text", QUrl::fromLocalFile(file).toString(), true},
             {"a file that is not there", QUrl("file:///no/such.png"), false},
             {"an image without a bitmap", QVariant::fromValue(Image()), false},
             {"a number", 7, false},
         }) {
        ShownScreen screen = preview(properties(row.image));
        ASSERT_TRUE(isComplete(screen));
        EXPECT_EQ(screen.item("photo")->isVisible(), row.isShown) << row.name;
        EXPECT_EQ(screen.item("placeholder")->isVisible(), !row.isShown) << row.name;
    }
}

// The pixel tests show pictures that are larger than their place.
TEST(PreviewScreen, SmallPictureStandsUprightAndFillsItsPlaceAtEachSize) {
    constexpr std::size_t kSize = std::size_t{3} * 40 * 32;
    auto pixels = std::make_shared<std::byte[]>(kSize);
    for (std::size_t at = 0; at < kSize / 2; at += 3)
        pixels[at] = std::byte{255};  // the upper half as stored is red
    const auto bitmap = Bitmap::wrap(40, 32, 120, PixelFormat::rgb8, std::move(pixels), kSize);
    ShownScreen screen =
        preview(properties(QVariant::fromValue(Image(*bitmap, Orientation::right))));
    const auto rect = [&] { return screen.item("photo")->property("pictureRect").toRectF(); };
    ASSERT_TRUE(isComplete(screen));
    EXPECT_EQ(rect(), QRectF(0, 25, 320, 400));
    EXPECT_EQ(screen.grab().pixelColor(300, 322), QColor(Qt::red));
    EXPECT_EQ(screen.grab().pixelColor(60, 322), QColor(Qt::black));
    screen.root()->setSize({260, 400});
    ASSERT_TRUE(isComplete(screen));
    EXPECT_EQ(rect().size(), QSizeF(168, 210));
}

TEST(PreviewScreen, EachTapCallsItsOwnClosureOnce) {
    std::string calls;
    QVariantMap given = properties(painted({100, 100}));
    given["didTapRetake"] = acting([&] { calls += "retake "; });
    given["didTapConfirm"] = acting([&] { calls += "confirm "; });
    given["dismiss"] = acting([&] { calls += "close "; });
    ShownScreen screen = preview(given);
    const auto button = [&](const char* name) { return findItem(screen.item(name), "area"); };
    click(button("retake"));
    touch(button("confirm"));
    touch(button("confirm"));
    click(screen.item("closeArea"));
    EXPECT_EQ(std::exchange(calls, ""), "retake confirm confirm close ");
    for (const char* name : {"balance", "photo"})
        click(screen.item(name));
    QTest::keyClick(&screen.window(), Qt::Key_Return);  // nothing has the focus
    EXPECT_EQ(calls, "");
    for (const auto key :
         {Qt::Key_Escape, Qt::Key_Tab, Qt::Key_Tab, Qt::Key_Return, Qt::Key_Tab, Qt::Key_Space})
        QTest::keyClick(&screen.window(), key);
    EXPECT_EQ(calls, "close retake confirm ");
    EXPECT_TRUE(screen.window().isVisible());
}

}  // namespace
}  // namespace kestrelid::test
