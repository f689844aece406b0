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

TEST(PreviewScreen, LayoutInPointsWhateverTheTitle) {
    struct Row {
        QSize size;
        QMargins safe;
        QString title;
        QRectF area;
        double buttonWidth;
    };
    for (const auto& [size, safe, title, area, buttonWidth] : std::vector<Row>{
             {{320, 480}, {}, "", {20, 97, 280, 290}, 136},
             {{800, 480}, {30, 0, 50, 10}, "two\nlines", {50, 97, 680, 280}, 336},
             {{3840, 2160}, {}, "Front page", {20, 97, 3800, 1970}, 1896},
         }) {
        ShownScreen screen = preview(properties({}, title), size);
        screen.setSafeArea(safe);
        const double top = size.height() - safe.bottom() - 37;  // 17: a line of the small font
        for (const auto& [name, rect] : std::map<QString, QRectF>{
                 {"background", {QPointF(), size}},
                 {"close", {area.left(), 6, 11, 23}},
                 {"balance", {area.right() - 11, 6, 11, 23}},
                 {"title", {area.left() + 19, 8, area.width() - 38, 19}},
                 {"pictureArea", area},
                 {"retake", {area.left(), top, buttonWidth, 37}},
                 {"confirm", {area.right() - buttonWidth, top, buttonWidth, 37}},
             })
            EXPECT_EQ(screen.rect(name), rect) << size.width() << " " << name.toStdString();
    }
}

TEST(PreviewScreen, PictureIsShownWholeAtEachSize) {
    struct Row {
        QSize stored;
        QRectF shown;
        QSizeF shownSmaller;
    };
    for (const auto& [stored, shown, shownSmaller] : std::vector<Row>{
             {{1600, 400}, {0, 185, 320, 80}, {220, 55}},
             {{300, 1350}, {110, 0, 100, 450}, {140. / 3, 210}},
             {{32, 32}, {0, 65, 320, 320}, {210, 210}},
         }) {
        ShownScreen screen = preview(properties(painted(stored)));
        const auto rect = [&] { return screen.item("photo")->property("pictureRect").toRectF(); };
        ASSERT_TRUE(isComplete(screen));
        EXPECT_EQ(rect(), shown);
        screen.root()->setSize({260, 400});
        ASSERT_TRUE(isComplete(screen));
        EXPECT_EQ(rect().size(), shownSmaller);
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
             {"an empty QImage", QImage(), false},
             {"a number", 7, false},
         }) {
        ShownScreen screen = preview(properties(row.image));
        ASSERT_TRUE(isComplete(screen));
        EXPECT_EQ(screen.item("photo")->isVisible(), row.isShown) << row.name;
        EXPECT_EQ(screen.item("placeholder")->isVisible(), !row.isShown) << row.name;
    }
}

TEST(PreviewScreen, TwelveMegapixelsOfEachFormatStandUpright) {
    for (const PixelFormat format : {PixelFormat::rgb8, PixelFormat::bgra8}) {
        // Rows as stored: the upper half red.
        const int bytes = bytesPerPixel(format);
        const auto size = static_cast<std::size_t>(bytes) * 4000 * 3000;
        auto pixels = std::make_shared<std::byte[]>(size);
        for (auto at = format == PixelFormat::bgra8 ? 2u : 0u; at < size / 2;
             at += static_cast<unsigned>(bytes))
            pixels[at] = std::byte{255};
        const auto bitmap = Bitmap::wrap(4000, 3000, 4000 * bytes, format, std::move(pixels), size);
        ShownScreen screen =
            preview(properties(QVariant::fromValue(Image(*bitmap, Orientation::right))));
        ASSERT_TRUE(isComplete(screen));
        EXPECT_EQ(screen.grab().pixelColor(300, 322), QColor(Qt::red));
        EXPECT_EQ(screen.grab().pixelColor(60, 322), QColor(Qt::black));
    }
}

TEST(PreviewScreen, EachTapCallsItsOwnClosureOnce) {
    std::string calls;
    QVariantMap given = properties(painted({100, 100}));
    given["didTapRetake"] = acting([&] { calls += "retake "; });
    given["didTapConfirm"] = acting([&] { calls += "confirm "; });
    given["dismiss"] = acting([&] { calls += "close "; });
    ShownScreen screen = preview(given);
    const auto press = [&](std::initializer_list<Qt::Key> keys) {
        for (const Qt::Key key : keys)
            QTest::keyClick(&screen.window(), key);
    };
    const auto button = [&](const char* name) { return findItem(screen.item(name), "area"); };
    const auto touchTwice = [&] { touch(button("confirm")), touch(button("confirm")); };
    struct Row {
        const char* name;
        std::function<void()> act;
        const char* calls;
    };
    for (const Row& row : std::vector<Row>{
             {"Retake", [&] { click(button("retake")); }, "retake "},
             {"Retake touched", [&] { touch(button("retake")); }, "retake "},
             {"Confirm", [&] { click(button("confirm")); }, "confirm "},
             {"Confirm twice", touchTwice, "confirm confirm "},
             {"close", [&] { click(screen.item("closeArea")); }, "close "},
             {"Escape", [&] { press({Qt::Key_Escape}); }, "close "},
             {"balancing symbol", [&] { click(screen.item("balance")); }, ""},
             {"picture", [&] { click(screen.item("photo")); }, ""},
             {"Return without focus", [&] { press({Qt::Key_Return}); }, ""},
             {"Tab, Tab",
              [&] {
                  press({Qt::Key_Tab, Qt::Key_Tab, Qt::Key_Return});
              },
              "retake "},
             {"Tab",
              [&] {
                  press({Qt::Key_Tab, Qt::Key_Space});
              },
              "confirm "},
         }) {
        calls.clear();
        row.act();
        EXPECT_EQ(calls, row.calls) << row.name;
        EXPECT_TRUE(screen.window().isVisible());
    }
}

}  // namespace
}  // namespace kestrelid::test
