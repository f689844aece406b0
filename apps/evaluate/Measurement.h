#pragma once

#include "apps/cli/ChoiceOption.h"
#include "apps/evaluate/EvaluationManifest.h"

#include <kestrelid/DefaultServices.h>
#include <kestrelid/PassportDetector.h>
#include <kestrelid/VisionServices.h>

#include <array>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace kestrelid::evaluation {

enum class Recognizer { ppocr };

inline constexpr std::array<cli::Choice<Recognizer>, 1> kRecognizers{
    {{"ppocr", Recognizer::ppocr}}};

// What is measured in one process of its own.
struct Combination {
    Recognizer recognizer = Recognizer::ppocr;
    ValidationEffort effort = ValidationEffort::complete;
};

struct MeasureOptions {
    std::filesystem::path manifest;
    std::filesystem::path resources;  // empty: where the library finds them
    std::size_t limit = 0;            // the first pictures only; 0: all
    std::size_t jobs = 1;             // pictures judged at once; more than one disturbs the delays
};

// What came of one picture.
struct PictureRow {
    bool isPassport = false;
    double confidence = 0.0;
    double milliseconds = 0.0;
    std::size_t matched = 0;            // keywords in the text that was read
    std::optional<NormalizedRect> box;  // of the outline that the text was read from
    std::string error;                  // not empty: there was no verdict
};

struct Measurement {
    Combination combination;
    std::vector<PictureRow> rows;  // in the manifest's order
    double peakMemory = 0.0;       // MiB
};

struct MeasureError {
    std::string cause;
};

// Judges the pictures here, after loading the models, and writes a line for each to standard
// output.
void measureHere(const std::vector<LabelledPicture>& pictures, const Combination& combination,
                 const MeasureOptions& options);

// Runs this program again for one combination, so that its peak memory is its own, and collects
// what measureHere() wrote there. progress is told the number of pictures done.
[[nodiscard]] std::variant<Measurement, MeasureError>
measureInChild(const Combination& combination, const MeasureOptions& options,
               const std::function<void(std::size_t)>& progress);

// The internal command word that makes the program measure instead of reporting.
inline constexpr const char* kMeasureCommand = "measure-one-combination";

}  // namespace kestrelid::evaluation
