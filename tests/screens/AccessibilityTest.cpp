#include "tests/screens/FakeCamera.h"
#include "tests/screens/ShownScreen.h"

#include <gtest/gtest.h>
#include <QAccessible>
#include <vector>

namespace kestrelid::test {
namespace {

constexpr QSize kPhone{360, 640};

struct Element {
    QAccessible::Role role;
    std::string name;
    bool isFocusable;

    bool operator==(const Element&) const = default;
};

void PrintTo(const Element& element, std::ostream* out) {
    *out << element.role << " \"" << element.name << '"'
         << (element.isFocusable ? ", focusable" : "");
}

// What assistive technology is told below an element, in its order.
void listen(QAccessibleInterface* at, std::vector<Element>& heard) {
    for (int index = 0; index < at->childCount(); ++index) {
        QAccessibleInterface* child = at->child(index);
        if (child->state().invisible)
            continue;
        heard.push_back({child->role(), child->text(QAccessible::Name).toStdString(),
                         child->state().focusable != 0});
        listen(child, heard);
    }
}

std::vector<Element> heard(ShownScreen& screen) {
    std::vector<Element> elements;
    listen(QAccessible::queryAccessibleInterface(&screen.window()), elements);
    return elements;
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

// What the scanning screen tells, with or without a live picture, and its status.
std::vector<Element> scannerTells(bool hasPicture, const std::string& status) {
    std::vector<Element> elements{{QAccessible::Pane, "Scan your passport", false},
                                  {QAccessible::Button, "Close", true},
                                  {QAccessible::Heading, "Scan your passport", false},
                                  {QAccessible::Button, "Take photo", true},
                                  {QAccessible::AlertMessage, status, false}};
    if (hasPicture)
        elements.insert(elements.begin() + 3, {QAccessible::Graphic, "Live camera picture", false});
    return elements;
}

TEST_F(Accessibility, ScannerInEachState) {
    FakeCamera camera;
    camera.authorization = std::make_shared<FakeAuthorization>(AuthorizationStatus::notDetermined);
    int photos = 0;
    camera.machine().takePhoto = [&](const auto&) { ++photos; };
    int closings = 0;
    ShownScreen screen(QStringLiteral("DocumentScannerView"),
                       {{"completion", QVariant::fromValue(PhotoCompletion([](const auto&) {}))},
                        {"dismiss", QVariant::fromValue(ScreenAction([&] { ++closings; }))}},
                       kPhone, camera.scannerCamera());
    EXPECT_EQ(heard(screen), scannerTells(false, "Camera access is required"));
    camera.authorization->answer(true);
    camera.mainQueue->runAll();
    EXPECT_EQ(heard(screen), scannerTells(true, "Camera is not ready"));
    camera.makeReady();
    EXPECT_EQ(heard(screen), scannerTells(true, "Ready to take a photo"));
    camera.judge(true);
    EXPECT_EQ(heard(screen), scannerTells(true, "Passport in view"));

    press(screen.item("captureArea"));
    camera.mainQueue->advance(0.2);
    camera.otherQueues->runAll();
    EXPECT_EQ(photos, 1);
    press(screen.item("closeArea"));
    EXPECT_EQ(closings, 1);
}

TEST_F(Accessibility, Preview) {
    int retakes = 0;
    int confirms = 0;
    QImage photo(30, 20, QImage::Format_RGB32);
    photo.fill(Qt::red);
    ShownScreen screen(QStringLiteral("ImagePreviewView"),
                       {{"title", "Check the photo"},
                        {"image", photo},
                        {"didTapRetake", QVariant::fromValue(ScreenAction([&] { ++retakes; }))},
                        {"didTapConfirm", QVariant::fromValue(ScreenAction([&] { ++confirms; }))}},
                       kPhone);
    EXPECT_EQ(heard(screen), (std::vector<Element>{{QAccessible::Pane, "Check the photo", false},
                                                   {QAccessible::Button, "Close", true},
                                                   {QAccessible::Heading, "Check the photo", false},
                                                   {QAccessible::Graphic, "Photo", false},
                                                   {QAccessible::Button, "Retake", true},
                                                   {QAccessible::Button, "Confirm", true}}));
    press(findItem(screen.item("retake"), "area"));
    EXPECT_EQ(std::pair(retakes, confirms), std::pair(1, 0));
    press(findItem(screen.item("confirm"), "area"));
    EXPECT_EQ(std::pair(retakes, confirms), std::pair(1, 1));
}

}  // namespace
}  // namespace kestrelid::test
