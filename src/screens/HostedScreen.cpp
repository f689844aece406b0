#include "screens/HostedScreen.h"

#include "screens/Presentation.h"
#include "screens/ScreenItem.h"

#include <kestrelid/screens/QmlModule.h>
#include <kestrelid/screens/ScannerAssistance.h>

#include <cstdio>
#include <cstdlib>
#include <QFocusEvent>
#include <QPointer>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWidget>
#include <QQuickWindow>
#include <QVBoxLayout>

namespace kestrelid::screens {

namespace {

Qt::FocusReason tabReason(bool forward) {
    return forward ? Qt::TabFocusReason : Qt::BacktabFocusReason;
}

// A QQuickWidget alone keeps Tab to itself: its scene goes round for ever, and a Tab that leads to
// it focuses the scene, but none of its controls.
class HostedScreen final : public QQuickWidget {
public:
    using QQuickWidget::QQuickWidget;

protected:
    bool focusNextPrevChild(bool next) override {
        if (!rootObject())
            return QWidget::focusNextPrevChild(next);
        if (isTurn(next) && QWidget::focusNextPrevChild(next) && window()->focusWidget() != this)
            return true;
        // A window with nothing but the screen: round again.
        focused()->nextItemInFocusChain(next)->forceActiveFocus(tabReason(next));
        return true;
    }

    void focusInEvent(QFocusEvent* event) override {
        QQuickWidget::focusInEvent(event);
        const bool forward = event->reason() == Qt::TabFocusReason;
        if (!forward && event->reason() != Qt::BacktabFocusReason)
            return;
        // A dialog that is shown says Tab to what will have the focus; nobody has pressed it.
        if (!hasFocus())
            return;
        if (QQuickItem* control = firstControl(forward))
            control->forceActiveFocus(event->reason());
    }

    void showEvent(QShowEvent* event) override {
        QQuickWidget::showEvent(event);
        // Without the property it would swallow what the host accepts.
        setAcceptDrops(rootObject() && rootObject()->property("importsPhotos").toBool());
        const QWidget* focused = window()->focusWidget();
        if (!focused || focused == parentWidget() || !focused->isVisibleTo(window()))
            setFocus(Qt::OtherFocusReason);
    }

private:
    [[nodiscard]] QQuickItem* focused() const {
        QQuickItem* item = quickWindow()->activeFocusItem();
        return item ? item : rootObject();
    }

    // In the direction of the Tab; null if there is none.
    [[nodiscard]] QQuickItem* firstControl(bool forward) const {
        QQuickItem* screen = rootObject();
        QQuickItem* control = screen ? screen->nextItemInFocusChain(forward) : nullptr;
        return control && screen->isAncestorOf(control) ? control : nullptr;
    }

    // Whether the next Tab would begin at the other end of the screen.
    [[nodiscard]] bool isTurn(bool forward) const {
        QQuickItem* from = focused();
        const QQuickItem* first = firstControl(forward);
        return !first || (from->nextItemInFocusChain(forward) == first &&
                          !(forward && from->isAncestorOf(first)));
    }
};

}  // namespace

QQuickWidget* hostScreen(QWidget& parent, const QString& screen, QVariantMap properties,
                         const QMarginsF& safeAreaMargins, const ScannerCamera& camera) {
    auto* widget = new HostedScreen(&parent);
    installQmlModule(*widget->engine());
    setScannerCamera(*widget->engine(), camera);
    const QPointer<QWidget> presented = &parent;
    properties[QStringLiteral("dismiss")] = QVariant::fromValue(ScreenAction([presented] {
        if (presented)
            dismissPresentationOf(*presented);
    }));

    const QUrl url(QStringLiteral("qrc:/qt/qml/Kestrelid/%1.qml").arg(screen));
    auto* component = new QQmlComponent(widget->engine(), url, widget);
    QObject* item = component->createWithInitialProperties(properties);
    if (auto* shown = qobject_cast<ScreenItem*>(item))
        shown->safeAreaMargins()->set(safeAreaMargins);
    widget->setContent(url, component, item);
    widget->setResizeMode(QQuickWidget::SizeRootObjectToView);
    widget->setGeometry(parent.rect());

    auto* layout = new QVBoxLayout(&parent);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(widget);

    // A child that is made late stands last in the window's order otherwise.
    widget->setFocusPolicy(Qt::StrongFocus);
    parent.setFocusPolicy(Qt::StrongFocus);
    QWidget::setTabOrder(&parent, widget);
    parent.setFocusProxy(widget);
    if (parent.isVisible())
        widget->show();  // a layout would do so later, and keys would be lost until then
    return widget;
}

QVariantMap propertiesOf(const ScannerAssistance& assistance) {
    const GuidanceLimits& limits = assistance.limits;
    return {
        {QStringLiteral("guides"), assistance.guides},
        {QStringLiteral("outlinesPage"), assistance.outlinesPage},
        {QStringLiteral("offersControls"), assistance.offersControls},
        {QStringLiteral("importsPhotos"), assistance.importsPhotos},
        {QStringLiteral("capturesByItself"), assistance.capturesByItself},
        {QStringLiteral("guidanceLimits"),
         QVariantMap{{QStringLiteral("leastBrightness"), limits.leastBrightness},
                     {QStringLiteral("leastArea"), limits.leastArea},
                     {QStringLiteral("greatestArea"), limits.greatestArea},
                     {QStringLiteral("leastMargin"), limits.leastMargin},
                     {QStringLiteral("mostGlare"), limits.mostGlare},
                     {QStringLiteral("leastSharpness"), limits.leastSharpness},
                     {QStringLiteral("mostMotion"), limits.mostMotion},
                     {QStringLiteral("hold"), limits.hold.count()}}},
    };
}

QVariantMap propertiesOf(const ScannerLayout& layout) {
    return {{QStringLiteral("showsWholeFrame"), layout.showsWholeFrame},
            {QStringLiteral("adaptsToSize"), layout.adaptsToSize}};
}

void refuseFormBuilder(const char* controller, int line) {
    std::fprintf(stderr, "Kestrelid/%s:%d: Fatal error: init(coder:) has not been implemented\n",
                 controller, line);
    std::abort();
}

}  // namespace kestrelid::screens
