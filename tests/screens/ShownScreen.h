#pragma once

#include <kestrelid/screens/ScannerCamera.h>

#include <functional>
#include <memory>
#include <QByteArray>
#include <QImage>
#include <QMargins>
#include <QPointF>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QRectF>
#include <QString>
#include <QVariantMap>
#include <QWidget>

namespace kestrelid::test {

constexpr int kPatience = 60'000;  // ms; machines that build meanwhile are slow

// Runs the event loop until the condition holds; false where it does not in that time.
bool waitFor(const std::function<bool()>& condition);

// Events that wait, and those that they bring.
void settle();

// The item of that objectName below an item, or null.
QQuickItem* findItem(QQuickItem* root, const QString& objectName);

// Where an item is in its window. Points.
QRectF sceneRect(const QQuickItem& item);

// As a person does, in the middle of the item or at a point of its window.
void click(QQuickItem* item);
void clickAt(QWindow& window, const QPointF& at);
void touch(QQuickItem* item);
void clickIn(QWidget& widget, const QQuickItem* item);
void touchIn(QWidget& widget, const QQuickItem* item);

// A host's own window, shown: content is what stands in an ApplicationWindow that is called
// `window`.
std::unique_ptr<QQuickWindow> showHost(QQmlEngine& engine, const QByteArray& content);

// One screen of the module that fills a window.
class ShownScreen {
public:
    // type: name of the QML type. Shown unless size is empty.
    ShownScreen(const QString& type, const QVariantMap& properties, const QSize& size,
                const ScannerCamera& camera = {});

    QQmlEngine& engine() { return engine_; }
    QQuickWindow& window() { return *window_; }
    QQuickItem* root() { return root_.get(); }
    QQuickItem* item(const QString& objectName) { return findItem(root_.get(), objectName); }
    QRectF rect(const QString& objectName) { return sceneRect(*item(objectName)); }

    void setSafeArea(const QMargins& margins);
    void release() { root_.reset(); }

    // What is on the screen, one pixel a point.
    QImage grab();

private:
    QQmlEngine engine_;
    std::unique_ptr<QQuickWindow> window_;
    std::unique_ptr<QQuickItem> root_;
};

}  // namespace kestrelid::test
