#include "apps/demo/QmlHost.h"

#include <kestrelid/screens/QmlModule.h>

#include <QQmlApplicationEngine>
#include <QQuickWindow>

namespace kestrelid::demo {

namespace {

class QmlHost final : public Host {
public:
    QmlHost(DemoSession& session, const PlatformServices& recognition) {
        installQmlModule(engine_);
        ScannerCamera camera;
        camera.recognition = recognition;
        setScannerCamera(engine_, camera);
        engine_.setInitialProperties({{"session", QVariant::fromValue(&session)}});
        engine_.load(QUrl("qrc:/qt/qml/KestrelidDemo/Main.qml"));
    }

    [[nodiscard]] QQuickWindow* window() const {
        return qobject_cast<QQuickWindow*>(engine_.rootObjects().value(0));
    }

    QImage grab() override { return window()->grabWindow(); }

private:
    QQmlApplicationEngine engine_;
};

}  // namespace

std::unique_ptr<Host> makeQmlHost(DemoSession& session, const PlatformServices& recognition) {
    auto host = std::make_unique<QmlHost>(session, recognition);
    return host->window() ? std::move(host) : nullptr;
}

}  // namespace kestrelid::demo
