#include "screens/HostedScreen.h"

#include "screens/Presentation.h"
#include "screens/ScreenItem.h"

#include <kestrelid/screens/QmlModule.h>

#include <cstdio>
#include <cstdlib>
#include <QPointer>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWidget>
#include <QVBoxLayout>

namespace kestrelid::screens {

QQuickWidget* hostScreen(QWidget& parent, const QString& screen, QVariantMap properties,
                         const QMarginsF& safeAreaMargins, const ScannerCamera& camera) {
    auto* widget = new QQuickWidget(&parent);
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
    widget->setFocusPolicy(Qt::StrongFocus);
    widget->setAcceptDrops(false);  // it would swallow what the host accepts

    auto* layout = new QVBoxLayout(&parent);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(widget);
    parent.setFocusProxy(widget);
    return widget;
}

void refuseFormBuilder() {
    std::fputs("Fatal error: init(coder:) has not been implemented\n", stderr);
    std::abort();
}

}  // namespace kestrelid::screens
