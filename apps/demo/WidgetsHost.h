#pragma once

#include "apps/demo/Host.h"

#include <memory>

namespace kestrelid::demo {

// The screens in a window of widgets.
[[nodiscard]] std::unique_ptr<Host> makeWidgetsHost(CameraChoice& cameras, PhotoJudge& judge,
                                                    const PlatformServices& recognition);

}  // namespace kestrelid::demo
