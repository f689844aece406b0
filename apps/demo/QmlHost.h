#pragma once

#include "apps/demo/Host.h"

#include <kestrelid/PassportDetector.h>

#include <memory>

namespace kestrelid::demo {

// The screens in a QML window: qml/Main.qml. Null if it does not load.
[[nodiscard]] std::unique_ptr<Host> makeQmlHost(DemoSession& session,
                                                const PlatformServices& recognition);

}  // namespace kestrelid::demo
