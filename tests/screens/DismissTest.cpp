#include "tests/screens/ShownScreen.h"

#include <kestrelid/screens/QmlModule.h>

#include <gtest/gtest.h>
#include <memory>
#include <QQmlComponent>
#include <QQuickWidget>
#include <QTest>

namespace kestrelid::test {
namespace {

// A window of QML, shown.
struct Host {
    explicit Host(const char* qml) {
        installQmlModule(engine);
        QQmlComponent component(&engine);
        component.setData(QByteArray("import QtQuick\nimport QtQuick.Controls.Basic\n"
                                     "import Kestrelid\n") +
                              qml,
                          {});
        window.reset(qobject_cast<QQuickWindow*>(component.create()));
        if (!window)
            qFatal("%s", qPrintable(component.errorString()));
        EXPECT_TRUE(QTest::qWaitForWindowExposed(window.get()));
        settle();
    }

    void close() { click(findItem(screen(), "closeArea")); }

    QQuickItem* screen() { return window->property("screen").value<QQuickItem*>(); }

    QQmlEngine engine;
    std::unique_ptr<QQuickWindow> window;
};

constexpr auto kStack = R"(
    ApplicationWindow {
        id: window
        property Item screen
        readonly property int depth: stack.depth
        width: 360; height: 640; visible: true
        StackView {
            id: stack
            anchors.fill: parent
            initialItem: Item {}
            popExit: null; popEnter: null; pushEnter: null; pushExit: null
            Component.onCompleted: {
                push(inner)
                window.screen = stack.push(preview)
            }
        }
        Component { id: inner; Item {} }
        Component {
            id: preview
            ImagePreviewView { title: ""; didTapRetake: null; didTapConfirm: null }
        }
    })";

TEST(Dismiss, PopsTheStackThatHoldsTheScreen) {
    Host host(kStack);
    ASSERT_EQ(host.window->property("depth"), 3);
    host.close();
    EXPECT_EQ(host.window->property("depth"), 2);
    EXPECT_TRUE(host.window->isVisible());
}

TEST(Dismiss, ClosesThePopup) {
    Host host(R"(
        ApplicationWindow {
            property alias screen: preview
            readonly property bool isOpen: popup.visible
            width: 360; height: 640; visible: true
            Popup {
                id: popup
                width: 320; height: 600; visible: true
                enter: null; exit: null
                ImagePreviewView {
                    id: preview
                    anchors.fill: parent
                    title: ""; didTapRetake: null; didTapConfirm: null
                }
            }
        })");
    ASSERT_TRUE(host.window->property("isOpen").toBool());
    host.close();
    EXPECT_FALSE(host.window->property("isOpen").toBool());
    EXPECT_TRUE(host.window->isVisible());
}

TEST(Dismiss, ClosesTheWindowBelowTheLastOfAStack) {
    Host host(R"(
        ApplicationWindow {
            property alias screen: stack.currentItem
            width: 360; height: 640; visible: true
            StackView {
                id: stack
                anchors.fill: parent
                initialItem: ImagePreviewView { title: ""; didTapRetake: null; didTapConfirm: null }
            }
        })");
    host.close();
    EXPECT_FALSE(host.window->isVisible());
}

TEST(Dismiss, HostsFunctionComesFirst) {
    Host host(R"(
        Window {
            id: window
            property int closed: 0
            property alias screen: preview
            width: 360; height: 640; visible: true
            ImagePreviewView {
                id: preview
                anchors.fill: parent
                title: ""; didTapRetake: null; didTapConfirm: null
                dismiss: () => ++window.closed
            }
        })");
    host.close();
    QTest::keyClick(host.window.get(), Qt::Key_Escape);
    EXPECT_EQ(host.window->property("closed"), 2);
    EXPECT_TRUE(host.window->isVisible());
}

TEST(Dismiss, ClosesTheWindowOfAHostsOwnQuickWidget) {
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
    const QPoint at = sceneRect(*findItem(widget->rootObject(), "closeArea")).center().toPoint();
    QTest::mouseClick(widget, Qt::LeftButton, Qt::NoModifier, at);
    settle();
    EXPECT_FALSE(window.isVisible());
}

}  // namespace
}  // namespace kestrelid::test
