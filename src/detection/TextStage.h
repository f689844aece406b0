#pragma once

#include "detection/Request.h"

#include <kestrelid/detection/PassportDetector.h>

#include <functional>
#include <string>

namespace kestrelid::detection {

// Reads the text of bitmap on the calling thread and calls continuation once with its lines, joined
// with line feeds; empty where there is none. Failures go to the console and count as no text.
void readText(TextService& service, const ConsoleSink& console, const Bitmap& bitmap,
              ValidationEffort effort, const std::function<void(std::string text)>& continuation);

}  // namespace kestrelid::detection
