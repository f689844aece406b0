#include "tests/screens/FakeCamera.h"
#include "tests/screens/ScanRig.h"
#include "tests/screens/ShownScreen.h"

#include <kestrelid/screens/ImagePreviewViewController.h>

#include <gtest/gtest.h>
#include <QAccessible>
#include <QMetaEnum>
#include <QTest>

namespace kestrelid::test {
namespace {

constexpr QSize kPhone{360, 640};

// What assistive technology is told below an element, in its order: a line each.
void listen(QAccessibleInterface* at, QString& heard) {
    for (int index = 0; index < at->childCount(); ++index) {
        QAccessibleInterface* child = at->child(index);
        if (child->state().invisible)
            continue;
        heard += QMetaEnum::fromType<QAccessible::Role>().valueToKey(child->role());
        heard += (child->state().focusable ? " (focus): " : ": ");
        heard += child->text(QAccessible::Name) + '\n';
        listen(child, heard);
    }
}

std::string heard(ShownScreen& screen) {
    QString lines;
    listen(QAccessible::queryAccessibleInterface(&screen.window()), lines);
    return lines.toStdString();
}

// As a screen reader presses a button.
void press(QQuickItem* item) {
    QAccessible::queryAccessibleInterface(item)->actionInterface()->doAction(
        QAccessibleActionInterface::pressAction());
    settle();
}

class Accessibility : public testing::Test {
protected:
    void SetUp() override { QAccessible::setActive(true); }
    void TearDown() override { QAccessible::setActive(false); }
};

TEST_F(Accessibility, ScannerInEachState) {
    FakeCamera camera;
    camera.authorization = std::make_shared<FakeAuthorization>(AuthorizationStatus::notDetermined);
    int photos = 0;
    camera.machine().takePhoto = [&](const auto&) { ++photos; };  // lets go of who asks
    int closings = 0;
    ShownScreen screen(
        QStringLiteral("DocumentScannerView"),
        {{"completion", completing([](const auto&) {})}, {"dismiss", acting([&] { ++closings; })}},
        kPhone, camera.scannerCamera());
    const auto expectTold = [&](const std::string& status, bool hasPicture = true) {
        EXPECT_EQ(heard(screen),
                  "Pane: Scan your passport\nButton (focus): Close\n"
                  "Heading: Scan your passport\n" +
                      std::string(hasPicture ? "Graphic: Live camera picture\n" : "") +
                      "Button (focus): Take photo\nAlertMessage: " + status + "\n");
        EXPECT_NE(screen.item("accessRequired")->isVisible(), hasPicture);
    };
    // On the upper arm at the left, in the next frame, with no event before it.
    const auto bracket = [&] { return screen.window().grabWindow().pixelColor(50, 97).rgb(); };
    expectTold("Camera access is required", false);
    camera.authorization->answer(true);
    camera.mainQueue->runAll();
    expectTold("Camera is not ready");
    camera.makeReady();
    expectTold("Ready to take a photo");
    camera.judge(true);
    EXPECT_EQ(bracket(), qRgb(34, 197, 94));
    expectTold("Passport in view");

    press(screen.item("captureArea"));
    camera.pass();
    EXPECT_EQ(photos, 1);
    press(screen.item("closeArea"));
    EXPECT_EQ(closings, 1);
    camera.judge(false);
    camera.judge(false);
    EXPECT_EQ(bracket(), qRgb(255, 255, 255));
}

TEST_F(Accessibility, Preview) {
    std::string calls;
    QImage photo(30, 20, QImage::Format_RGB32);
    photo.fill(Qt::red);
    ShownScreen screen(QStringLiteral("ImagePreviewView"),
                       {{"title", "Check the photo"},
                        {"image", photo},
                        {"didTapRetake", acting([&] { calls += "retake "; })},
                        {"didTapConfirm", acting([&] { calls += "confirm "; })}},
                       kPhone);
    EXPECT_EQ(heard(screen), "Pane: Check the photo\nButton (focus): Close\n"
                             "Heading: Check the photo\nGraphic: Photo\n"
                             "Button (focus): Retake\nButton (focus): Confirm\n");
    press(findItem(screen.item("retake"), "area"));
    press(findItem(screen.item("confirm"), "area"));
    EXPECT_EQ(calls, "retake confirm ");
}

TEST_F(Accessibility, ResultOfAScan) {
    ScanRig rig;
    auto damaged = kSpecimenZone;
    damaged[1].replace(0, 9, "L898902C4");
    rig.zones->seen = {clearReading(damaged)};
    ShownScreen screen("PassportScan", {{"completion", {}}}, {390, 760}, rig.scannerCamera());
    rig.scan(screen);
    const std::string all = heard(screen);
    EXPECT_EQ(
        all.substr(0, all.find("StaticText (focus): Nationality")),
        "Pane: This is a passport.\nGraphic (focus): Photo\n"
        "Heading: This is a passport.\n"
        "StaticText (focus): To have its machine-readable lines checked too:\n"
        "StaticText (focus): Take the photo again in even light: the lines at the foot of the page "
        "were not read beyond doubt.\n"
        "StaticText (focus): Surname: ERIKSSON\nStaticText (focus): Given names: ANNA MARIA\n"
        "StaticText (focus): Document number: L898902C4, please check\n");
    EXPECT_TRUE(all.ends_with("Button (focus): Show details\nButton (focus): Continue\n"
                              "Button (focus): Scan again\n"))
        << all;
}

TEST_F(Accessibility, PreviewWithoutAPhotoInAWidget) {
    ImagePreviewViewController controller("Check the photo", std::nullopt, {}, {});
    controller.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&controller, kPatience));
    QString lines;
    listen(QAccessible::queryAccessibleInterface(&controller), lines);
    EXPECT_EQ(lines.toStdString(), "Client (focus): \nPane: Check the photo\n"
                                   "Button (focus): Close\nHeading: Check the photo\n"
                                   "StaticText (focus): Image not provided\n"
                                   "Button (focus): Retake\nButton (focus): Confirm\n");
}

}  // namespace
}  // namespace kestrelid::test
