#pragma once

#include "apps/demo/Host.h"

#include <kestrelid/PassportDetector.h>

#include <memory>

namespace kestrelid::demo {

// The screens in a window of widgets.
[[nodiscard]] std::unique_ptr<Host> makeWidgetsHost(DemoSession& session,
                                                    const PlatformServices& recognition);

}  // namespace kestrelid::demo
