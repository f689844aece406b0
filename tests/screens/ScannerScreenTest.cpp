#include "tests/screens/FakeCamera.h"
#include "tests/screens/ShownScreen.h"
#include "tests/screens/Warnings.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <QGuiApplication>
#include <QQmlComponent>
#include <QTest>
#include <QTranslator>
#include <thread>

namespace kestrelid::test {
namespace {

constexpr QSize kPhone{360, 640};
constexpr QRgb kGreen = qRgb(34, 197, 94);

QVariantMap completing(PhotoCompletion completion) {
    return {{QStringLiteral("completion"), QVariant::fromValue(std::move(completion))}};
}

ShownScreen scanner(const FakeCamera& camera, QVariantMap properties = completing([](auto&) {}),
                    QSize size = kPhone) {
    return {QStringLiteral("DocumentScannerView"), properties, size, camera.scannerCamera()};
}

// One colour a quarter: top left red, top right green, bottom left blue, bottom right white.
Bitmap quarters(int width, int height) {
    const auto size = static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4;
    auto pixels = std::make_shared<std::byte[]>(size);
    auto* row = reinterpret_cast<QRgb*>(pixels.get());
    for (int y = 0; y < height; ++y, row += width) {
        const bool isTop = y < height / 2;
        std::fill(row, row + width / 2, isTop ? qRgb(255, 0, 0) : qRgb(0, 0, 255));
        std::fill(row + width / 2, row + width, isTop ? qRgb(0, 255, 0) : qRgb(255, 255, 255));
    }
    return *Bitmap::wrap(width, height, width * 4, PixelFormat::bgra8, pixels, size);
}

std::shared_ptr<PreviewSurface> surfaceOf(const FakeCamera& camera) {
    for (const auto& surface : camera.platform->session.lock()->surfaces) {
        if (const auto alive = surface.lock())
            return alive;
    }
    return nullptr;
}

TEST(ScannerScreen, LayoutInPoints) {
    struct Row {
        QSize size;
        QMargins safe;
        double barHeight;
        QRectF frame;
    };
    const std::vector<Row> rows = {
        {{320, 480}, {}, 41, {20, 97, 280, 223}},
        {{360, 640}, {}, 41, {20, 97, 320, 383}},
        {{800, 480}, {30, 0, 50, 10}, 41, {50, 97, 680, 213}},
        {{390, 844}, {0, 47, 0, 34}, 41, {20, 144, 350, 506}},
        {{3840, 2160}, {}, 41, {20, 97, 3800, 1903}},
    };
    const FakeCamera camera;
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.size.width() << "x" << row.size.height());
        ShownScreen screen = scanner(camera, completing([](auto&) {}), row.size);
        auto* safe = screen.root()->property("safeAreaMargins").value<QObject*>();
        safe->setProperty("left", row.safe.left());
        safe->setProperty("top", row.safe.top());
        safe->setProperty("right", row.safe.right());
        safe->setProperty("bottom", row.safe.bottom());
        settle();

        const double left = 20.0 + row.safe.left();
        const double right = row.size.width() - 20.0 - row.safe.right();
        const double top = row.safe.top();
        EXPECT_EQ(screen.rect("background"), QRectF(QPointF(), row.size));
        EXPECT_EQ(screen.rect("titleBar"), QRectF(left, top, right - left, row.barHeight));
        EXPECT_EQ(screen.rect("close"), QRectF(left, top + 6, 11, 23));
        EXPECT_EQ(screen.rect("balance"), QRectF(right - 11, top + 6, 11, 23));
        EXPECT_EQ(screen.rect("title"), QRectF(left + 19, top + 8, right - left - 38, 19));
        EXPECT_EQ(screen.rect("frame"), row.frame);
        EXPECT_EQ(screen.rect("preview"), row.frame.adjusted(2, 2, -2, -2));
        const QRectF& frame = row.frame;
        EXPECT_EQ(screen.rect("bracket0"), QRectF(frame.left() - 2, frame.top() - 2, 74, 74));
        EXPECT_EQ(screen.rect("bracket1"), QRectF(frame.right() - 72, frame.top() - 2, 74, 74));
        EXPECT_EQ(screen.rect("bracket2"), QRectF(frame.right() - 72, frame.bottom() - 72, 74, 74));
        EXPECT_EQ(screen.rect("bracket3"), QRectF(frame.left() - 2, frame.bottom() - 72, 74, 74));
        const QPointF middle((left + right) / 2, row.size.height() - row.safe.bottom() - 16 - 32);
        QRectF ring(0, 0, 67, 67);  // 64 and half of the line on either side
        ring.moveCenter(middle);
        EXPECT_EQ(screen.rect("ring"), ring);
        QRectF disc(0, 0, 48, 48);
        disc.moveCenter(middle);
        EXPECT_EQ(screen.rect("disc"), disc);
        EXPECT_EQ(frame.bottom() + 80, middle.y() - 32);
    }
}

TEST(ScannerScreen, EachStateIsShown) {
    FakeCamera camera;
    camera.authorization = std::make_shared<FakeAuthorization>(AuthorizationStatus::notDetermined);
    ShownScreen screen = scanner(camera);
    const auto disc = [&] { return screen.item("disc")->property("color").value<QColor>(); };
    const auto bracket = [&] {
        const QImage image = screen.grab();
        return image.pixelColor(50, 97).rgb();  // on the upper arm at the left
    };

    EXPECT_TRUE(screen.item("accessRequired")->isVisible());
    EXPECT_EQ(screen.item("preview"), nullptr);
    EXPECT_EQ(disc(), QColor(0x8e, 0x8e, 0x93));
    EXPECT_EQ(bracket(), qRgb(255, 255, 255));
    EXPECT_EQ(screen.item("status")->property("text"), "Camera access is required");

    camera.authorization->answer(true);
    camera.mainQueue->runAll();
    EXPECT_FALSE(screen.item("accessRequired")->isVisible());
    ASSERT_NE(screen.item("preview"), nullptr);
    EXPECT_EQ(disc(), QColor(0x8e, 0x8e, 0x93));
    EXPECT_EQ(screen.item("status")->property("text"), "Camera is not ready");

    camera.makeReady();
    EXPECT_EQ(disc(), QColor(Qt::white));
    EXPECT_EQ(screen.item("status")->property("text"), "Ready to take a photo");
    camera.judge(true);
    // The next frame, with no event before it.
    EXPECT_EQ(screen.window().grabWindow().pixelColor(50, 97).rgb(), kGreen);
    EXPECT_EQ(disc(), QColor(Qt::white));
    EXPECT_EQ(screen.item("status")->property("text"), "Passport in view");
    camera.judge(false);
    camera.judge(false);
    EXPECT_EQ(bracket(), qRgb(255, 255, 255));
}

TEST(ScannerScreen, BracketsReachTwoPointsBeyondTheFrameAndCoverItsMargin) {
    const FakeCamera camera;
    ShownScreen screen = scanner(camera);
    const QImage image = screen.grab();
    struct Row {
        int x;
        int y;
        bool isDrawn;
    };
    // The frame's edges: 20, 97, 340, 480.
    for (const auto& [x, y, isDrawn] : std::vector<Row>{{60, 95, true},
                                                        {60, 98, true},
                                                        {60, 94, false},
                                                        {60, 99, false},
                                                        {18, 140, true},
                                                        {21, 140, true},
                                                        {89, 97, true},
                                                        {90, 97, false},
                                                        {341, 440, true},
                                                        {342, 440, false},
                                                        {300, 481, true},
                                                        {300, 482, false}})
        EXPECT_EQ(image.pixelColor(x, y), QColor(isDrawn ? Qt::white : Qt::black)) << x << "," << y;
}

TEST(ScannerScreen, LivePictureFillsTheFrameTurnedThenMirrored) {
    struct Row {
        const char* name;
        Orientation orientation;
        bool isMirrored;
        std::array<Qt::GlobalColor, 4> quarters;  // top left, top right, bottom left, bottom right
    };
    using enum Orientation;
    const std::vector<Row> rows = {
        {"up", up, false, {Qt::red, Qt::green, Qt::blue, Qt::white}},
        {"mirrored", up, true, {Qt::green, Qt::red, Qt::white, Qt::blue}},
        {"half a turn", down, false, {Qt::white, Qt::blue, Qt::green, Qt::red}},
        {"a quarter turn", right, false, {Qt::blue, Qt::red, Qt::white, Qt::green}},
        {"the other way", left, false, {Qt::green, Qt::white, Qt::red, Qt::blue}},
        {"turned, then mirrored", right, true, {Qt::red, Qt::blue, Qt::green, Qt::white}},
    };
    const FakeCamera camera;
    ShownScreen screen = scanner(camera);
    const auto surface = surfaceOf(camera);
    ASSERT_TRUE(surface);
    const QRect picture = screen.rect("preview").toRect();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        surface->show(quarters(1280, 720), row.orientation, row.isMirrored);
        const QImage image = screen.grab();
        const int dx = picture.width() / 4;
        const int dy = picture.height() / 4;
        const QPoint middle = picture.center();
        EXPECT_EQ(image.pixelColor(middle + QPoint(-dx, -dy)), QColor(row.quarters[0]));
        EXPECT_EQ(image.pixelColor(middle + QPoint(dx, -dy)), QColor(row.quarters[1]));
        EXPECT_EQ(image.pixelColor(middle + QPoint(-dx, dy)), QColor(row.quarters[2]));
        EXPECT_EQ(image.pixelColor(middle + QPoint(dx, dy)), QColor(row.quarters[3]));
        // To all edges, but not into the rounded corners.
        EXPECT_NE(image.pixelColor(picture.left(), middle.y() - dy), QColor(Qt::black));
        EXPECT_NE(image.pixelColor(picture.right(), middle.y() - dy), QColor(Qt::black));
        EXPECT_EQ(image.pixelColor(23, 100), QColor(Qt::black));
        EXPECT_EQ(image.pixelColor(336, 476), QColor(Qt::black));
    }
}

TEST(ScannerScreen, NewestFrameIsShownAndOlderOnesAreLetGo) {
    const FakeCamera camera;
    ShownScreen screen = scanner(camera);
    const auto surface = surfaceOf(camera);
    std::weak_ptr<const std::byte[]> first;
    {
        auto pixels =
            std::shared_ptr<const std::byte[]>(std::make_shared<std::byte[]>(64 * 64 * 4));
        first = pixels;
        surface->show(*Bitmap::wrap(64, 64, 256, PixelFormat::bgra8, pixels, 64 * 64 * 4),
                      Orientation::up, false);
    }
    std::thread([&] { surface->show(quarters(64, 64), Orientation::up, false); }).join();
    EXPECT_TRUE(first.expired());
    EXPECT_EQ(screen.grab().pixelColor(100, 150), QColor(Qt::red));
    screen.release();
    surface->show(quarters(64, 64), Orientation::up, false);  // nobody is left to show it
}

TEST(ScannerScreen, PermissionIsCheckedAtEachAppearanceByOneManager) {
    const FakeCamera camera;
    ShownScreen screen = scanner(camera);
    camera.otherQueues->runAll();
    const auto starts = [&] {
        return std::ranges::count(camera.machine().log, "startRunning") +
               std::ranges::count(camera.machine().log, "beginConfiguration") * 100;
    };
    EXPECT_EQ(starts(), 101);
    screen.window().hide();
    settle();
    camera.otherQueues->runAll();
    EXPECT_EQ(starts(), 101);
    screen.window().show();
    settle();
    camera.otherQueues->runAll();
    EXPECT_EQ(starts(), 201) << "the running session refuses a second input";
    screen.root()->setVisible(false);
    screen.root()->setVisible(true);
    camera.otherQueues->runAll();
    EXPECT_EQ(starts(), 301);
    EXPECT_EQ(*camera.managersMade, 1);

    camera.mainQueue->advance(2.0);
    screen.release();
    EXPECT_EQ(camera.machine().log.back(), "session released");
}

TEST(ScannerScreen, NothingIsTouchedBeforeItIsShown) {
    const FakeCamera camera;
    ShownScreen screen = scanner(camera, completing([](auto&) {}), {});
    settle();
    EXPECT_EQ(*camera.managersMade, 0);
}

TEST(ScannerScreen, EachTapWhileReadyAsksForAPhotoATenthOfASecondLater) {
    const FakeCamera camera;
    int delivered = 0;
    ShownScreen screen = scanner(camera, completing([&](auto& photo) {
                                     EXPECT_FALSE(photo);
                                     ++delivered;
                                 }));
    QQuickItem* button = screen.item("captureArea");
    const auto photos = [&] { return std::ranges::count(camera.machine().log, "capturePhoto"); };
    const auto pass = [&](double seconds) {
        camera.mainQueue->advance(seconds);
        camera.otherQueues->runAll();
        camera.mainQueue->runAll();
    };

    click(button);
    touch(button);
    QTest::keyClick(&screen.window(), Qt::Key_Space);
    pass(0.2);
    EXPECT_EQ(photos(), 0) << "not ready yet";

    camera.makeReady();
    click(button);
    pass(0.09);
    EXPECT_EQ(photos(), 0);
    pass(0.02);
    EXPECT_EQ(photos(), 1);

    struct Row {
        const char* name;
        std::function<void()> act;
        int more;
    };
    for (const Row& row : std::vector<Row>{
             {"touch", [&] { touch(button); }, 1},
             {"two clicks",
              [&] {
                  click(button);
                  click(button);
              },
              2},
             {"Space", [&] { QTest::keyClick(&screen.window(), Qt::Key_Space); }, 1},
             {"Return", [&] { QTest::keyClick(&screen.window(), Qt::Key_Return); }, 1},
             {"beside the ring",
              [&] {
                  clickAt(screen.window(), {100, 592});
              },
              0},
             {"in the picture",
              [&] {
                  clickAt(screen.window(), {180, 300});
              },
              0},
         }) {
        SCOPED_TRACE(row.name);
        const auto before = photos();
        row.act();
        pass(0.11);
        EXPECT_EQ(photos() - before, row.more);
    }
    const auto output = camera.platform->photoOutput.lock();
    while (!output->requests.empty())
        output->finish({}, CaptureError{"lost"});
    camera.mainQueue->runAll();
    EXPECT_EQ(delivered, 6);
}

TEST(ScannerScreen, CompletionOfJavaScriptGetsThePhotoOrNull) {
    const FakeCamera camera;
    ShownScreen host = scanner(camera);
    QQmlComponent component(&host.engine());
    component.setData("import Kestrelid\n"
                      "DocumentScannerView {\n"
                      "    property var got: []\n"
                      "    completion: photo => got.push(photo === null ? 'null' : typeof photo)\n"
                      "}\n",
                      {});
    const std::unique_ptr<QQuickItem> screen(qobject_cast<QQuickItem*>(component.create()));
    ASSERT_TRUE(screen) << component.errorString().toStdString();
    screen->setSize(kPhone);
    screen->setParentItem(host.window().contentItem());
    settle();
    camera.makeReady();
    click(findItem(screen.get(), "captureArea"));
    camera.mainQueue->advance(0.1);
    camera.otherQueues->runAll();
    camera.platform->photoOutput.lock()->finish({}, CaptureError{"lost"});
    camera.mainQueue->runAll();
    EXPECT_EQ(screen->property("got").value<QJSValue>().toVariant().toStringList(),
              QStringList{"null"});
}

TEST(ScannerScreen, CloseCallsTheHostsFunctionAndNothingElse) {
    const FakeCamera camera;
    int closed = 0;
    int delivered = 0;
    QVariantMap properties = completing([&](auto&) { ++delivered; });
    properties["dismiss"] = QVariant::fromValue(ScreenAction([&] { ++closed; }));
    ShownScreen screen = scanner(camera, properties);
    camera.makeReady();
    click(screen.item("closeArea"));
    EXPECT_EQ(closed, 1);
    touch(screen.item("closeArea"));
    EXPECT_EQ(closed, 2);
    QTest::keyClick(&screen.window(), Qt::Key_Escape);
    EXPECT_EQ(closed, 3);
    clickAt(screen.window(), {5, 35});  // 44 points around the symbol
    EXPECT_EQ(closed, 4);
    click(screen.item("balance"));
    clickAt(screen.window(), {60, 17});
    EXPECT_EQ(closed, 4);
    EXPECT_TRUE(screen.window().isVisible());
    EXPECT_TRUE(camera.platform->session.lock()->isRunning());
    EXPECT_EQ(delivered, 0);
}

TEST(ScannerScreen, TabGoesRoundAndShowsTheFocusUntilAPress) {
    const FakeCamera camera;
    ShownScreen screen = scanner(camera);
    const auto tab = [&] { QTest::keyClick(&screen.window(), Qt::Key_Tab); };
    const auto focus = [&] { return screen.window().activeFocusItem()->objectName(); };
    EXPECT_FALSE(screen.root()->property("isKeyboardInUse").toBool());
    tab();
    EXPECT_EQ(focus(), "closeArea");
    EXPECT_TRUE(screen.root()->property("isKeyboardInUse").toBool());
    tab();
    EXPECT_EQ(focus(), "captureArea");
    tab();
    EXPECT_EQ(focus(), "closeArea");
    clickAt(screen.window(), {180, 300});
    EXPECT_FALSE(screen.root()->property("isKeyboardInUse").toBool());
}

TEST(ScannerScreen, RightToLeftPutsTheCloseSymbolOnTheRight) {
    const FakeCamera camera;
    QGuiApplication::setLayoutDirection(Qt::RightToLeft);
    ShownScreen screen = scanner(camera);
    EXPECT_EQ(screen.rect("close"), QRectF(329, 6, 11, 23));
    EXPECT_EQ(screen.rect("title"), QRectF(39, 8, 282, 19));
    EXPECT_EQ(screen.rect("preview"), QRectF(22, 99, 316, 379));
    QGuiApplication::setLayoutDirection(Qt::LeftToRight);
}

TEST(ScannerScreen, LargeTextMakesTheBarHigherAndKeepsTheRest) {
    FakeCamera camera;
    camera.authorization = std::make_shared<FakeAuthorization>(AuthorizationStatus::denied);
    QVariantMap properties = completing([](auto&) {});
    properties["textScale"] = 3.0;
    ShownScreen screen = scanner(camera, properties, {320, 480});
    const QRectF bar = screen.rect("titleBar");
    EXPECT_EQ(bar.height(), 6 + screen.rect("title").height() + 12);
    EXPECT_GT(bar.height(), 60);
    EXPECT_EQ(screen.rect("close").center().y(), screen.rect("title").center().y());
    EXPECT_EQ(screen.rect("title").center().x(), 160);
    EXPECT_EQ(screen.rect("frame").top(), bar.bottom() + 56);
    EXPECT_EQ(screen.rect("ring").center().y(), 480 - 16 - 32);
    EXPECT_LE(screen.rect("accessRequired").width(), screen.rect("frame").width());
}

TEST(ScannerScreen, CameraOfTheHostIsUsed) {
    const FakeCamera camera;
    QVariantMap properties = completing([](auto&) {});
    properties["camera"] = "Second camera";
    ShownScreen screen = scanner(camera, properties);
    EXPECT_EQ(camera.optionsGiven->camera, "Second camera");
}

TEST(ScannerScreen, BengaliWhereTheHostInstallsIt) {
    FakeCamera camera;
    camera.authorization = std::make_shared<FakeAuthorization>(AuthorizationStatus::denied);
    QTranslator bengali;
    ASSERT_TRUE(bengali.load("kestrelid_bn", KESTRELID_TRANSLATIONS_DIR));
    QCoreApplication::installTranslator(&bengali);
    ShownScreen screen = scanner(camera);
    EXPECT_EQ(screen.item("title")->property("text"), "আপনার পাসপোর্ট স্ক্যান করুন");
    EXPECT_EQ(screen.item("accessRequired")->property("text"), "ক্যামেরা ব্যবহারের অনুমতি প্রয়োজন");
    QCoreApplication::removeTranslator(&bengali);
}

}  // namespace
}  // namespace kestrelid::test
