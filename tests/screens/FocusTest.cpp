#include "tests/screens/ShownScreen.h"

#include <gtest/gtest.h>
#include <QTest>

namespace kestrelid::test {
namespace {

constexpr auto kScreen = "ImagePreviewView { objectName: 'screen'; width: 360; height: 600; "
                         "title: ''; didTapRetake: null; didTapConfirm: null }";

std::unique_ptr<QQuickWindow> host(QQmlEngine& engine, QByteArray content) {
    return showHost(engine, content.replace("SCREEN", kScreen));
}

std::string focusedIn(const QQuickWindow& window) {
    const QQuickItem* item = window.activeFocusItem();
    if (item && item->objectName() == "area")
        item = item->parentItem();
    return item ? item->objectName().toStdString() : "nothing";
}

TEST(Focus, GoesToAScreenThatAppearsUnlessTheHostUsesItInSight) {
    struct Row {
        const char* content;
        const char* focused;
    };
    for (const auto& [content, focused] : {
             Row{"FocusScope { SCREEN }", "screen"},
             Row{"TextInput { objectName: 'field'; focus: true } FocusScope { SCREEN }", "field"},
             Row{"TextInput { visible: false; focus: true } FocusScope { SCREEN }", "screen"},
             Row{"TextInput { objectName: 'field'; focus: true } SCREEN", "field"},
         }) {
        QQmlEngine engine;
        EXPECT_EQ(focusedIn(*host(engine, content)), focused) << content;
    }
}

TEST(Focus, TabGoesOnToTheHostsItems) {
    QQmlEngine engine;
    const auto window = host(engine, "Item { objectName: 'before'; activeFocusOnTab: true }\n"
                                     "SCREEN\n"
                                     "Item { objectName: 'after'; activeFocusOnTab: true }");
    const auto press = [&](Qt::Key key, Qt::KeyboardModifiers modifiers, int times) {
        std::string focused;
        for (int time = 0; time < times; ++time) {
            QTest::keyClick(window.get(), key, modifiers);
            focused += focusedIn(*window) + ' ';
        }
        return focused;
    };
    EXPECT_EQ(press(Qt::Key_Backtab, Qt::ShiftModifier, 1), "before ");
    EXPECT_EQ(press(Qt::Key_Tab, {}, 6), "closeArea retake confirm after before closeArea ");
    EXPECT_EQ(press(Qt::Key_Backtab, Qt::ShiftModifier, 3), "before after confirm ");
}

TEST(Focus, NoKeyTapsWhatIsOutOfSightOrIsACommandOfTheHost) {
    QQmlEngine engine;
    const auto window = showHost(engine, R"(
        ScreenItem {
            objectName: "screen"
            anchors.fill: parent
            onActivated: window.left += 10
            Tappable { objectName: "torch"; onTapped: ++window.left }
        })");
    const auto press = [&](Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(window.get(), key, modifiers);
        return window->property("left").toInt();
    };
    EXPECT_EQ(press(Qt::Key_Space), 10);
    EXPECT_EQ(press(Qt::Key_Return, Qt::ControlModifier), 10);
    press(Qt::Key_Tab);
    EXPECT_EQ(press(Qt::Key_Space), 11);
    EXPECT_EQ(press(Qt::Key_Return, Qt::AltModifier), 11);
    findItem(window->contentItem(), "torch")->setVisible(false);
    EXPECT_EQ(focusedIn(*window), "screen");
    EXPECT_EQ(press(Qt::Key_Space), 21);
}

}  // namespace
}  // namespace kestrelid::test
