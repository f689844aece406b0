#pragma once

#include "vision/tesseract/TesseractLibrary.h"

#include <opencv2/core.hpp>

#include <filesystem>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace kestrelid::vision {

struct TesseractLine {
    cv::Rect box;
    std::string text;
    float confidence = 0.0f;  // 0..1
};

// One recogniser with the English model. One thread at a time.
class TesseractEngine {
public:
    using Opened = std::variant<std::unique_ptr<TesseractEngine>, RequestError>;
    using Lines = std::variant<std::vector<TesseractLine>, RequestError>;

    // models: the folder that holds eng.traineddata; empty: where the library looks by itself.
    [[nodiscard]] static Opened open(std::shared_ptr<const TesseractLibrary> library,
                                     const std::filesystem::path& models);

    ~TesseractEngine();
    TesseractEngine(const TesseractEngine&) = delete;
    TesseractEngine& operator=(const TesseractEngine&) = delete;

    // Folder of the model.
    [[nodiscard]] std::string models() const;

    // Lines of a grey picture (CV_8UC1) with upright text, in no particular order.
    [[nodiscard]] Lines read(const cv::Mat& gray);

private:
    explicit TesseractEngine(std::shared_ptr<const TesseractLibrary> library);

    [[nodiscard]] std::vector<TesseractLine> results() const;

    std::shared_ptr<const TesseractLibrary> library_;
    TessBaseAPI* engine_;
};

}  // namespace kestrelid::vision
