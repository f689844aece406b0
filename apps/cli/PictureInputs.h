#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace kestrelid::cli {

// How the command line names standard input.
inline constexpr std::string_view kStandardInputName = "-";

struct StandardInput {};

// Something named on the command line that gives no picture: one line, without the name.
struct UnusableInput {
    std::string cause;
};

// One picture to judge.
struct PictureInput {
    std::string name;  // as the user gave it, or the folder and the file in it
    std::variant<std::filesystem::path, StandardInput, UnusableInput> source;
};

// The pictures that arguments stand for, in their order. A folder stands for the pictures directly
// in it that are not hidden, sorted by name; a folder without any, or that cannot be listed, stays
// in the list as an unusable input.
[[nodiscard]] std::vector<PictureInput> pictureInputs(const std::vector<std::string>& arguments);

}  // namespace kestrelid::cli
