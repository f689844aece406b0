#pragma once

#include "apps/demo/Host.h"

#include <memory>

namespace kestrelid::demo {

// The screens in a QML window: qml/Main.qml. Null if it does not load.
[[nodiscard]] std::unique_ptr<Host> makeQmlHost(CameraChoice& cameras, PhotoJudge& judge,
                                                const PlatformServices& recognition);

}  // namespace kestrelid::demo
