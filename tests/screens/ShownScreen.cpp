#include "tests/screens/ShownScreen.h"

#include <kestrelid/screens/QmlModule.h>

#include <QCoreApplication>
#include <QQmlComponent>
#include <QTest>

namespace kestrelid::test {

bool waitFor(const std::function<bool()>& condition) {
    return QTest::qWaitFor(condition, kPatience);
}

void settle() {
    for (int turn = 0; turn < 3; ++turn) {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }
}

QQuickItem* findItem(QQuickItem* root, const QString& objectName) {
    if (root->objectName() == objectName)
        return root;
    for (QQuickItem* child : root->childItems()) {
        if (QQuickItem* found = findItem(child, objectName))
            return found;
    }
    return nullptr;
}

QRectF sceneRect(const QQuickItem& item) {
    return item.mapRectToScene(QRectF(QPointF(), item.size()));
}

void clickAt(QWindow& window, const QPointF& at) {
    // Apart in time, so that two are no double click.
    QTest::mouseClick(&window, Qt::LeftButton, Qt::NoModifier, at.toPoint(), 1);
    settle();
}

void click(QQuickItem* item) {
    clickAt(*item->window(), sceneRect(*item).center());
}

template <typename Target>
static void touchAt(Target* target, const QQuickItem& item) {
    static QPointingDevice* screen = QTest::createTouchDevice();
    const QPoint at = sceneRect(item).center().toPoint();
    QTest::touchEvent(target, screen).press(0, at, target);
    settle();
    QTest::touchEvent(target, screen).release(0, at, target);
    settle();
}

void touch(QQuickItem* item) {
    touchAt<QWindow>(item->window(), *item);
}

void touchIn(QWidget& widget, const QQuickItem* item) {
    touchAt(&widget, *item);
}

void clickIn(QWidget& widget, const QQuickItem* item) {
    QTest::mouseClick(&widget, Qt::LeftButton, {}, sceneRect(*item).center().toPoint(), 1);
    settle();
}

std::unique_ptr<QQuickWindow> showHost(QQmlEngine& engine, const QByteArray& content) {
    installQmlModule(engine);
    QQmlComponent component(&engine);
    component.setData("import QtQuick\nimport QtQuick.Controls.Basic\nimport Kestrelid\n"
                      "ApplicationWindow {\n"
                      "    id: window\n"
                      "    property int left\n"
                      "    width: 360; height: 640; visible: true\n" +
                          content + "}",
                      {});
    std::unique_ptr<QQuickWindow> window(qobject_cast<QQuickWindow*>(component.create()));
    if (!window)
        qFatal("%s", qPrintable(component.errorString()));
    window->requestActivate();
    if (!QTest::qWaitForWindowActive(window.get(), kPatience))
        qWarning("the window did not become active");
    settle();
    return window;
}

ShownScreen::ShownScreen(const QString& type, const QVariantMap& properties, const QSize& size,
                         const ScannerCamera& camera) {
    installQmlModule(engine_);
    setScannerCamera(engine_, camera);
    QQmlComponent component(&engine_);
    component.loadUrl(QUrl(QStringLiteral("qrc:/qt/qml/Kestrelid/%1.qml").arg(type)));
    if (!component.isReady())
        qFatal("%s", qPrintable(component.errorString()));
    root_.reset(qobject_cast<QQuickItem*>(component.createWithInitialProperties(properties)));
    if (!root_)
        qFatal("%s", qPrintable(component.errorString()));
    window_ = std::make_unique<QQuickWindow>();
    window_->resize(size);
    root_->setSize(size);
    root_->setParentItem(window_->contentItem());
    if (size.isEmpty())
        return;
    window_->show();
    window_->requestActivate();
    if (!QTest::qWaitForWindowActive(window_.get(), kPatience))
        qWarning("the window did not become active");
    settle();
}

void ShownScreen::setSafeArea(const QMargins& margins) {
    auto* safe = root_->property("safeAreaMargins").value<QObject*>();
    safe->setProperty("left", margins.left());
    safe->setProperty("top", margins.top());
    safe->setProperty("right", margins.right());
    safe->setProperty("bottom", margins.bottom());
    settle();
}

QImage ShownScreen::grab() {
    settle();
    return window_->grabWindow();
}

}  // namespace kestrelid::test
