#include "tests/screens/ShownScreen.h"

#include <kestrelid/screens/QmlModule.h>

#include <gtest/gtest.h>
#include <QQmlComponent>
#include <QQuickWidget>
#include <QTest>

namespace kestrelid::test {
namespace {

struct Row {
    const char* content;  // of the host's window; SCREEN stands for a preview
    bool isWindowOpen;    // after the close symbol
    int left;             // what the host then has: depth of a stack, an open popup, calls
};

constexpr auto kStack = R"(
    StackView {
        anchors.fill: parent
        initialItem: Item {}
        popExit: null; popEnter: null; pushEnter: null; pushExit: null
        onDepthChanged: window.left = depth
        Component.onCompleted: { push(inner); push(preview) }
    }
    Component { id: inner; Item {} }
    Component { id: preview; SCREEN } })";
constexpr auto kPopup = R"(
    Popup {
        width: 320; height: 600; visible: true
        enter: null; exit: null
        onVisibleChanged: window.left = visible
        SCREEN; anchors.fill: parent }
    })";
constexpr auto kLastOfAStack = R"(
    Component { id: preview; SCREEN } }
    StackView { anchors.fill: parent; initialItem: preview })";
constexpr auto kHostsFunction = "SCREEN; anchors.fill: parent; dismiss: () => ++window.left }";

TEST(Dismiss, ClosesWhatPresentsTheScreen) {
    for (const auto& [content, isWindowOpen, left] :
         {Row{kStack, true, 2}, Row{kPopup, true, 0}, Row{kLastOfAStack, false, 0},
          Row{kHostsFunction, true, 1}}) {
        SCOPED_TRACE(content);
        QQmlEngine engine;
        QByteArray qml(content);
        qml.replace("SCREEN", "ImagePreviewView { objectName: 'screen'; "
                              "title: ''; didTapRetake: null; didTapConfirm: null");
        const auto window = showHost(engine, qml);
        click(findItem(findItem(window->contentItem(), "screen"), "closeArea"));
        EXPECT_EQ(window->isVisible(), isWindowOpen);
        EXPECT_EQ(window->property("left"), left);
    }
}

TEST(DismissWidgets, ClosesTheWindowOfAHostsOwnQuickWidget) {
    QWidget window;
    auto* widget = new QQuickWidget(&window);
    installQmlModule(*widget->engine());
    auto* component = new QQmlComponent(widget->engine(), widget);
    component->loadUrl(QUrl("qrc:/qt/qml/Kestrelid/ImagePreviewView.qml"));
    widget->setContent(component->url(), component,
                       component->createWithInitialProperties(
                           {{"title", ""}, {"didTapRetake", {}}, {"didTapConfirm", {}}}));
    widget->resize(360, 640);
    window.resize(360, 640);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window, kPatience));
    clickIn(*widget, findItem(widget->rootObject(), "closeArea"));
    EXPECT_FALSE(window.isVisible());
}

}  // namespace
}  // namespace kestrelid::test
