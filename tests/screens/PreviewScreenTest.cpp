#include "tests/screens/ShownScreen.h"
#include "tests/screens/Warnings.h"

#include <gtest/gtest.h>
#include <QElapsedTimer>
#include <QImage>
#include <QTemporaryDir>
#include <QTest>
#include <vector>

namespace kestrelid::test {
namespace {

constexpr QSize kPhone{360, 640};

QVariant painted(int width, int height) {
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::red);
    return image;
}

// Rows as stored: the upper half red, the lower half blue.
QVariant halves(PixelFormat format, int width, int height, Orientation orientation) {
    const int bytes = bytesPerPixel(format);
    const auto size = static_cast<std::size_t>(width) * static_cast<std::size_t>(height * bytes);
    auto pixels = std::make_shared<std::byte[]>(size);
    for (std::size_t at = 0; at < size; at += static_cast<std::size_t>(bytes)) {
        const bool isUpper = at < size / 2;
        const int redAt = format == PixelFormat::bgra8 ? 2 : 0;
        pixels[at + static_cast<std::size_t>(isUpper ? redAt : 2 - redAt)] = std::byte{255};
    }
    auto bitmap = Bitmap::wrap(width, height, width * bytes, format, pixels, size);
    return QVariant::fromValue(Image(*bitmap, orientation));
}

QVariantMap properties(
    const QVariant& image, const QString& title = "Check the photo", ScreenAction retake = [] {},
    ScreenAction confirm = [] {}) {
    return {{"title", title},
            {"image", image},
            {"didTapRetake", QVariant::fromValue(std::move(retake))},
            {"didTapConfirm", QVariant::fromValue(std::move(confirm))}};
}

ShownScreen preview(const QVariantMap& given, QSize size = kPhone) {
    return {QStringLiteral("ImagePreviewView"), given, size};
}

bool isComplete(ShownScreen& screen) {
    return waitFor([&] { return screen.item("photo")->property("isComplete").toBool(); });
}

TEST(PreviewScreen, LayoutInPoints) {
    struct Row {
        QSize size;
        QMargins safe;
        QRectF area;
        double buttonWidth;
    };
    const std::vector<Row> rows = {
        {{320, 480}, {}, {20, 97, 280, 290}, 136},
        {{360, 640}, {}, {20, 97, 320, 450}, 156},
        {{800, 480}, {30, 0, 50, 10}, {50, 97, 680, 280}, 336},
        {{3840, 2160}, {}, {20, 97, 3800, 1970}, 1896},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.size.width() << "x" << row.size.height());
        ShownScreen screen = preview(properties({}), row.size);
        auto* safe = screen.root()->property("safeAreaMargins").value<QObject*>();
        safe->setProperty("left", row.safe.left());
        safe->setProperty("right", row.safe.right());
        safe->setProperty("bottom", row.safe.bottom());
        settle();
        const double bottom = row.size.height() - row.safe.bottom();
        const QRectF& area = row.area;
        EXPECT_EQ(screen.rect("background"), QRectF(QPointF(), row.size));
        EXPECT_EQ(screen.rect("close"), QRectF(area.left(), 6, 11, 23));
        EXPECT_EQ(screen.rect("balance"), QRectF(area.right() - 11, 6, 11, 23));
        EXPECT_EQ(screen.rect("title"), QRectF(area.left() + 19, 8, area.width() - 38, 19));
        EXPECT_EQ(screen.rect("pictureArea"), area);
        const QPointF off = screen.rect("placeholder").center() - area.center();
        EXPECT_LE(off.manhattanLength(), 1.0) << "texts stand on whole pixels";
        // 17: a line of the small font.
        EXPECT_EQ(screen.rect("retake"), QRectF(area.left(), bottom - 37, row.buttonWidth, 37));
        EXPECT_EQ(screen.rect("confirm"),
                  QRectF(area.right() - row.buttonWidth, bottom - 37, row.buttonWidth, 37));
    }
}

TEST(PreviewScreen, Colours) {
    ShownScreen screen = preview(properties({}));
    const QImage image = screen.grab();
    EXPECT_EQ(image.pixelColor(2, 2), QColor(Qt::white));
    EXPECT_EQ(image.pixelColor(40, 610), QColor(0xd4, 0xe8, 0xff));
    EXPECT_EQ(image.pixelColor(320, 610), QColor(0x18, 0x82, 0xff));
    EXPECT_EQ(image.pixelColor(20, 604), QColor(Qt::white)) << "outside the capsule";
    EXPECT_EQ(screen.item("title")->property("color").value<QColor>(), QColor(Qt::black));
    EXPECT_EQ(screen.item("placeholder")->property("text"), "Image not provided");
    EXPECT_TRUE(screen.item("placeholder")->isVisible());
    EXPECT_FALSE(screen.item("photo")->isVisible());
}

TEST(PreviewScreen, PictureIsShownWholeWithCornersAndOutline) {
    struct Row {
        const char* name;
        QVariant image;
        QRectF picture;
    };
    const std::vector<Row> rows = {
        {"wide", painted(1600, 400), {20, 282, 320, 80}},
        {"tall", painted(300, 1350), {130, 97, 100, 450}},
        {"small, drawn larger", painted(32, 32), {20, 162, 320, 320}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        ShownScreen screen = preview(properties(row.image));
        ASSERT_TRUE(isComplete(screen));
        const auto* photo = screen.item("photo");
        EXPECT_EQ(photo->mapRectToScene(photo->property("pictureRect").toRectF()), row.picture);
        EXPECT_FALSE(screen.item("placeholder")->isVisible());
        const QImage image = screen.grab();
        const QRect at = row.picture.toRect();
        EXPECT_EQ(image.pixelColor(at.center()), QColor(Qt::red));
        EXPECT_EQ(image.pixelColor(at.topLeft()), QColor(Qt::white)) << "cut off by the corner";
        // The outline: a point on each side of the edge.
        const int x = at.center().x();
        const int y = at.center().y();
        for (const QPoint edge : {QPoint(x, at.top()), QPoint(x, at.bottom()), QPoint(at.left(), y),
                                  QPoint(at.right(), y)})
            EXPECT_EQ(image.pixelColor(edge), QColor(Qt::black));
        EXPECT_EQ(image.pixelColor(x, at.top() - 1), QColor(Qt::black));
        EXPECT_EQ(image.pixelColor(x, at.top() - 2), QColor(Qt::white));
        EXPECT_EQ(image.pixelColor(x, at.top() + 1), QColor(Qt::red));
    }
}

TEST(PreviewScreen, PhotosStandUprightInEveryFormat) {
    struct Row {
        Orientation orientation;
        QPoint red;  // from the middle of the picture towards the half that is red
    };
    const std::vector<Row> rows = {
        {Orientation::up, {0, -30}},           {Orientation::upMirrored, {0, -30}},
        {Orientation::down, {0, 30}},          {Orientation::downMirrored, {0, 30}},
        {Orientation::leftMirrored, {-30, 0}}, {Orientation::right, {30, 0}},
        {Orientation::rightMirrored, {30, 0}}, {Orientation::left, {-30, 0}},
    };
    for (const PixelFormat format : {PixelFormat::bgra8, PixelFormat::rgb8}) {
        for (const auto& row : rows) {
            SCOPED_TRACE(static_cast<int>(row.orientation));
            ShownScreen screen = preview(properties(halves(format, 1200, 800, row.orientation)));
            ASSERT_TRUE(isComplete(screen));
            const auto* photo = screen.item("photo");
            const QRectF shown = photo->property("pictureRect").toRectF();
            EXPECT_EQ(shown.width() > shown.height(), row.red.x() == 0);
            const QPoint middle = photo->mapRectToScene(shown).center().toPoint();
            const QImage image = screen.grab();
            EXPECT_EQ(image.pixelColor(middle + row.red), QColor(Qt::red));
            EXPECT_EQ(image.pixelColor(middle - row.red), QColor(Qt::blue));
        }
    }
}

TEST(PreviewScreen, ImageOfAHost) {
    const QTemporaryDir folder;
    const QString file = folder.filePath("photo.png");
    ASSERT_TRUE(painted(640, 320).value<QImage>().save(file));
    struct Row {
        const char* name;
        QVariant image;
        bool isShown;
    };
    const std::vector<Row> rows = {
        {"a URL", QUrl::fromLocalFile(file), true},
        {"a URL as text", QUrl::fromLocalFile(file).toString(), true},
        {"a file that is not there", QUrl("file:///no/such.png"), false},
        {"an image without a bitmap", QVariant::fromValue(Image()), false},
        {"an empty QImage", QImage(), false},
        {"a number", 7, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        ShownScreen screen = preview(properties(row.image));
        ASSERT_TRUE(isComplete(screen));
        EXPECT_EQ(screen.item("photo")->isVisible(), row.isShown);
        EXPECT_EQ(screen.item("placeholder")->isVisible(), !row.isShown);
    }
}

TEST(PreviewScreen, TwelveMegapixelsNeverBlockTheScreen) {
    const QVariant photo = halves(PixelFormat::rgb8, 4000, 3000, Orientation::right);
    QElapsedTimer total;
    total.start();
    ShownScreen screen = preview(properties(photo));
    qint64 longest = 0;
    QElapsedTimer turn;
    while (!screen.item("photo")->property("isComplete").toBool() && total.elapsed() < 5000) {
        turn.start();
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 10);
        longest = std::max(longest, turn.elapsed());
    }
    EXPECT_EQ(screen.grab().pixelColor(300, 322), QColor(Qt::red));
    RecordProperty("first_paint_ms", static_cast<int>(total.elapsed()));
    RecordProperty("longest_turn_ms", static_cast<int>(longest));
    qInfo("12 megapixels: complete after %lld ms, longest turn of the event loop %lld ms",
          static_cast<long long>(total.elapsed()), static_cast<long long>(longest));
    EXPECT_LT(total.elapsed(), 5000);
}

TEST(PreviewScreen, FollowsItsSize) {
    ShownScreen screen = preview(properties(painted(1600, 400)));
    ASSERT_TRUE(isComplete(screen));
    screen.root()->setSize({260, 400});
    ASSERT_TRUE(isComplete(screen));
    EXPECT_EQ(screen.item("photo")->property("pictureRect").toRectF().size(), QSizeF(220, 55));
}

TEST(PreviewScreen, EachTapCallsItsOwnClosureOnce) {
    int retaken = 0;
    int confirmed = 0;
    int closed = 0;
    QVariantMap given = properties(
        painted(100, 100), "Check the photo", [&] { ++retaken; }, [&] { ++confirmed; });
    given["dismiss"] = QVariant::fromValue(ScreenAction([&] { ++closed; }));
    ShownScreen screen = preview(given);
    const auto key = [&](Qt::Key pressed) { QTest::keyClick(&screen.window(), pressed); };
    const auto button = [&](const char* name) { return findItem(screen.item(name), "area"); };
    struct Row {
        const char* name;
        std::function<void()> act;
        std::vector<int> calls;  // retake, confirm, close
    };
    for (const Row& row : std::vector<Row>{
             {"Retake", [&] { click(button("retake")); }, {1, 0, 0}},
             {"Retake touched", [&] { touch(button("retake")); }, {1, 0, 0}},
             {"Confirm", [&] { click(button("confirm")); }, {0, 1, 0}},
             {"Confirm twice",
              [&] {
                  touch(button("confirm"));
                  touch(button("confirm"));
              },
              {0, 2, 0}},
             {"close", [&] { click(screen.item("closeArea")); }, {0, 0, 1}},
             {"Escape", [&] { key(Qt::Key_Escape); }, {0, 0, 1}},
             {"balancing symbol", [&] { click(screen.item("balance")); }, {0, 0, 0}},
             {"picture", [&] { click(screen.item("photo")); }, {0, 0, 0}},
             {"Return without focus", [&] { key(Qt::Key_Return); }, {0, 0, 0}},
             {"Tab, Tab, Return",
              [&] {
                  key(Qt::Key_Tab);
                  key(Qt::Key_Tab);
                  key(Qt::Key_Return);
              },
              {1, 0, 0}},
             {"Tab, Space",
              [&] {
                  key(Qt::Key_Tab);
                  key(Qt::Key_Space);
              },
              {0, 1, 0}},
         }) {
        SCOPED_TRACE(row.name);
        retaken = confirmed = closed = 0;
        row.act();
        EXPECT_EQ((std::vector{retaken, confirmed, closed}), row.calls);
        EXPECT_TRUE(screen.window().isVisible());
    }
}

TEST(PreviewScreen, TitlesAreShownVerbatimAndNeverMoveTheMiddle) {
    for (const QString& title : {QString(), QString("<b>Bold?</b>"),
                                 QString("A title ").repeated(40), QString("two\nlines")}) {
        SCOPED_TRACE(title.toStdString());
        ShownScreen screen = preview(properties({}, title));
        EXPECT_EQ(screen.item("title")->property("text").toString(), title);
        EXPECT_EQ(screen.rect("title"), QRectF(39, 8, 282, 19));
        EXPECT_EQ(screen.rect("close"), QRectF(20, 6, 11, 23));
        EXPECT_LE(screen.item("title")->property("paintedWidth").toReal(), 282);
    }
}

}  // namespace
}  // namespace kestrelid::test
