#include "tests/screens/ShownScreen.h"

#include <kestrelid/screens/QmlModule.h>

#include <QCoreApplication>
#include <QQmlComponent>
#include <QTest>

namespace kestrelid::test {

bool waitFor(const std::function<bool()>& condition) {
    return QTest::qWaitFor(condition, 5000);
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

void touch(QQuickItem* item) {
    static QPointingDevice* screen = QTest::createTouchDevice();
    QQuickWindow* window = item->window();
    const QPoint at = sceneRect(*item).center().toPoint();
    QTest::touchEvent(window, screen).press(0, at, window);
    settle();
    QTest::touchEvent(window, screen).release(0, at, window);
    settle();
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
    if (!QTest::qWaitForWindowActive(window_.get()))
        qWarning("the window did not become active");
    settle();
}

QImage ShownScreen::grab() {
    settle();
    return window_->grabWindow();
}

}  // namespace kestrelid::test
