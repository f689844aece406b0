#pragma once

#include "apps/demo/DemoSession.h"

#include <QImage>

namespace kestrelid::demo {

// A window that shows the screens. Closes, and frees the camera, when it is released.
class Host {
public:
    virtual ~Host() = default;

    // What the window shows.
    [[nodiscard]] virtual QImage grab() = 0;
};

}  // namespace kestrelid::demo
