#pragma once

#include <kestrelid/DefaultCamera.h>

#include <string>
#include <vector>

namespace kestrelid::cli {

// A line for each camera, then an indented one for each of its formats; one line if there is none.
[[nodiscard]] std::string camerasAsText(const std::vector<CameraDescription>& cameras);

// One JSON object on a line: cameras, a list of objects with name and formats.
[[nodiscard]] std::string camerasAsJson(const std::vector<CameraDescription>& cameras);

// Why there is nothing to watch, and what to do: one line. wanted: the name or file that was asked
// for; empty: any camera. cameras: those of the machine.
[[nodiscard]] std::string whyNoCamera(const std::string& wanted,
                                      const std::vector<CameraDescription>& cameras);

}  // namespace kestrelid::cli
