#pragma once

#include <kestrelid/VisionServices.h>

#include <tesseract/capi.h>

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <variant>

namespace kestrelid::vision {

inline constexpr std::string_view kTesseractLibraryName = "libtesseract.so.5";
inline constexpr std::string_view kTesseractLibraryRemedy = "install Debian's libtesseract5";
inline constexpr std::string_view kTesseractModelRemedy = "install Debian's tesseract-ocr-eng";

// The functions of libtesseract that are called here. Never unloaded: its OpenMP threads outlive
// every use.
struct TesseractLibrary {
    using Loaded = std::variant<std::shared_ptr<const TesseractLibrary>, RequestError>;

    [[nodiscard]] static Loaded load();

    std::filesystem::path place;
    std::string releaseNumber;

    decltype(&TessVersion) version = nullptr;
    decltype(&TessBaseAPICreate) create = nullptr;
    decltype(&TessBaseAPIDelete) destroy = nullptr;
    decltype(&TessBaseAPISetVariable) setVariable = nullptr;
    decltype(&TessBaseAPIInit2) initialize = nullptr;
    decltype(&TessBaseAPIGetDatapath) dataPath = nullptr;
    decltype(&TessBaseAPISetPageSegMode) setPageSegmentation = nullptr;
    decltype(&TessBaseAPISetImage) setImage = nullptr;
    decltype(&TessBaseAPISetSourceResolution) setResolution = nullptr;
    decltype(&TessBaseAPIRecognize) recognize = nullptr;
    decltype(&TessBaseAPIGetIterator) iterator = nullptr;
    decltype(&TessBaseAPIClear) clear = nullptr;
    decltype(&TessBaseAPIClearAdaptiveClassifier) forget = nullptr;
    decltype(&TessResultIteratorDelete) deleteIterator = nullptr;
    decltype(&TessResultIteratorNext) next = nullptr;
    decltype(&TessResultIteratorGetUTF8Text) text = nullptr;
    decltype(&TessResultIteratorConfidence) confidence = nullptr;
    decltype(&TessResultIteratorGetPageIteratorConst) layout = nullptr;
    decltype(&TessPageIteratorBoundingBox) boundingBox = nullptr;
    decltype(&TessDeleteText) deleteText = nullptr;
};

}  // namespace kestrelid::vision
