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
    int page = 0;  // from 1, of a file of several pages; 0: the file has one
};

// How messages name it: with the page, where there are several.
[[nodiscard]] std::string shownName(const PictureInput& input);

struct PictureInputs {
    std::vector<PictureInput> pictures;
    std::size_t others = 0;  // files in folders that are neither pictures nor PDF
    std::size_t hidden = 0;  // files and folders in folders
    std::size_t linked = 0;  // folders in folders that are links
};

// The pictures that arguments stand for, in their order. A folder stands for the pictures in it and
// in its folders, sorted by name: files that end like pictures, and those that begin like one. A
// folder without any, or that cannot be listed, stays in the list as an unusable input. A TIFF or
// PDF stands for its pages.
[[nodiscard]] PictureInputs pictureInputs(const std::vector<std::string>& arguments);

// One line that says what was passed over in folders; empty if nothing was.
[[nodiscard]] std::string passedOver(const PictureInputs& inputs);

}  // namespace kestrelid::cli
