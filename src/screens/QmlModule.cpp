#include "screens/EngineContext.h"

#include <kestrelid/screens/QmlModule.h>

#include <QQmlEngine>

// Made by the build, one for each QML module. Taking its address keeps a linker from leaving the
// module out.
extern void qml_register_types_Kestrelid();

namespace kestrelid {

namespace {

constexpr auto kModuleFolder = "qrc:/qt/qml";

}  // namespace

void installQmlModule(QQmlEngine& engine) {
    void (*volatile registration)() = &qml_register_types_Kestrelid;
    static_cast<void>(registration);
    const auto folder = QString::fromLatin1(kModuleFolder);
    if (!engine.importPathList().contains(folder))
        engine.addImportPath(folder);
}

void setScannerCamera(QQmlEngine& engine, ScannerCamera camera) {
    screens::EngineContext::of(engine).setCamera(std::move(camera));
}

}  // namespace kestrelid
