#pragma once

#include "screens/SafeAreaMargins.h"

#include <QPointer>
#include <QQuickItem>
#include <QtQml/qqmlregistration.h>
#include <QVariant>
#include <QWidget>

class QKeyEvent;

namespace kestrelid::screens {

// With Control, Alt or Meta, a key is a command of the host.
[[nodiscard]] bool isCommand(const QKeyEvent& event);

// The base of each screen: knows when it is shown, closes it, and handles keys. A focus scope; as
// it appears it takes the focus, unless the host has given that to something else in sight.
class ScreenItem : public QQuickItem {
    Q_OBJECT
    Q_PROPERTY(kestrelid::screens::SafeAreaMargins* safeAreaMargins READ safeAreaMargins CONSTANT)
    Q_PROPERTY(bool isKeyboardInUse READ isKeyboardInUse WRITE setKeyboardInUse NOTIFY
                   keyboardInUseChanged)
    // Whether small heights and large screens get a layout of their own.
    Q_PROPERTY(bool adaptsToSize READ adaptsToSize WRITE setAdaptsToSize NOTIFY sizeClassChanged)
    // Points to a point of the design; above 1 only where a large screen is adapted to.
    Q_PROPERTY(qreal unit READ unit NOTIFY sizeClassChanged)
    // There is too little height for one part above the other.
    Q_PROPERTY(bool isCompact READ isCompact NOTIFY sizeClassChanged)
    Q_PROPERTY(bool isShown READ isShown NOTIFY shownChanged)
    QML_ELEMENT

public:
    explicit ScreenItem(QQuickItem* parent = nullptr);

    [[nodiscard]] SafeAreaMargins* safeAreaMargins() { return &safeAreaMargins_; }

    // From a Tab to the next touch or press: only then is the focus shown.
    [[nodiscard]] bool isKeyboardInUse() const { return isKeyboardInUse_; }
    void setKeyboardInUse(bool inUse);

    [[nodiscard]] bool adaptsToSize() const { return adaptsToSize_; }
    void setAdaptsToSize(bool adapts);
    [[nodiscard]] qreal unit() const { return unit_; }
    [[nodiscard]] bool isCompact() const { return isCompact_; }
    // The screen and its window are visible.
    [[nodiscard]] bool isShown() const { return isShown_; }

    // Calls the host's function if there is one; otherwise pops the nearest stack that holds the
    // screen above something else, closes the nearest popup, or closes the window. May release the
    // screen.
    Q_INVOKABLE void dismissBy(const QVariant& hostFunction);

    // Calls a function of JavaScript or a ScreenAction; does nothing if it is neither. May release
    // the screen.
    Q_INVOKABLE bool perform(const QVariant& action);

    // Tells assistive technology to speak the item's accessible name; emits announced().
    Q_INVOKABLE void announce(QQuickItem* item);

signals:
    // Right before appeared(), for a host that hands over what it was told by then.
    void appearing();
    // The screen and its window have become visible.
    void appeared();
    void shownChanged();
    void announced(const QString& words);
    void keyboardInUseChanged();
    void sizeClassChanged();
    void escapePressed();
    // Space, Return or Enter while no control has the focus.
    void activated();

protected:
    void componentComplete() override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;
    void itemChange(ItemChange change, const ItemChangeData& data) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void watch(QQuickWindow* window);
    void setWindowShown(bool isShown);
    void updateShown();
    void updateSizeClass();
    void takeFocus();

    SafeAreaMargins safeAreaMargins_;
    QMetaObject::Connection windowVisibility_;
    QPointer<QWidget> widget_;  // shows the scene; null: the scene's own window does
    bool isWindowShown_ = false;
    bool isShown_ = false;
    bool isKeyboardInUse_ = false;
    bool adaptsToSize_ = false;
    bool isCompact_ = false;
    qreal unit_ = 1.0;
};

}  // namespace kestrelid::screens
