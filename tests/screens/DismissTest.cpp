#include "tests/screens/ShownScreen.h"

#include <kestrelid/screens/QmlModule.h>

#include <gtest/gtest.h>
#include <QQmlComponent>
#include <QQuickWidget>
#include <QTest>

namespace kestrelid::test {
namespace {

struct Row {
    const char* name;
    const char* content;  // of the host's window; SCREEN stands for a preview
    bool isWindowOpen;    // after the close symbol
    int left;             // what the host then has: depth of a stack, an open popup, calls

    friend void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }
};

class Dismiss : public testing::TestWithParam<Row> {};

TEST_P(Dismiss, ClosesWhatPresentsTheScreen) {
    QQmlEngine engine;
    installQmlModule(engine);
    QQmlComponent component(&engine);
    QByteArray qml("import QtQuick\nimport QtQuick.Controls.Basic\nimport Kestrelid\n"
                   "ApplicationWindow {\n"
                   "    id: window\n"
                   "    property int left\n"
                   "    width: 360; height: 640; visible: true\n");
    qml += GetParam().content;
    qml.replace("SCREEN", "ImagePreviewView { objectName: 'screen'; "
                          "title: ''; didTapRetake: null; didTapConfirm: null");
    component.setData(qml + "}", {});
    const std::unique_ptr<QQuickWindow> window(qobject_cast<QQuickWindow*>(component.create()));
    ASSERT_TRUE(window) << component.errorString().toStdString();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
    settle();
    click(findItem(findItem(window->contentItem(), "screen"), "closeArea"));
    EXPECT_EQ(window->isVisible(), GetParam().isWindowOpen);
    EXPECT_EQ(window->property("left"), GetParam().left);
}

INSTANTIATE_TEST_SUITE_P(
    Hosts, Dismiss,
    testing::Values(Row{"Stack", R"(
        StackView {
            anchors.fill: parent
            initialItem: Item {}
            popExit: null; popEnter: null; pushEnter: null; pushExit: null
            onDepthChanged: window.left = depth
            Component.onCompleted: { push(inner); push(preview) }
        }
        Component { id: inner; Item {} }
        Component { id: preview; SCREEN } })",
                        true, 2},
                    Row{"Popup", R"(
        Popup {
            width: 320; height: 600; visible: true
            enter: null; exit: null
            onVisibleChanged: window.left = visible
            SCREEN; anchors.fill: parent }
        })",
                        true, 0},
                    Row{"LastOfAStack", R"(
        Component { id: preview; SCREEN } }
        StackView { anchors.fill: parent; initialItem: preview })",
                        false, 0},
                    Row{"HostsFunctionFirst",
                        "SCREEN; anchors.fill: parent; dismiss: () => ++window.left }", true, 1}),
    [](const auto& row) { return std::string(row.param.name); });

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
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    clickIn(*widget, findItem(widget->rootObject(), "closeArea"));
    EXPECT_FALSE(window.isVisible());
}

}  // namespace
}  // namespace kestrelid::test
