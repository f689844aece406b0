#include "vision/tesseract/TesseractEngine.h"

#include "vision/tesseract/SerialOpenMp.h"

#include <algorithm>
#include <cctype>
#include <string_view>
#include <utility>

namespace kestrelid::vision {
namespace {

constexpr float kLeastConfidence = 0.4f;  // below are borders and pictures taken for letters
constexpr int kResolution = 300;          // dots per inch; only saves Tesseract an estimate

std::string_view withoutSpaceAround(std::string_view text) {
    const auto isSpace = [](unsigned char character) { return std::isspace(character) != 0; };
    while (!text.empty() && isSpace(static_cast<unsigned char>(text.back())))
        text.remove_suffix(1);
    while (!text.empty() && isSpace(static_cast<unsigned char>(text.front())))
        text.remove_prefix(1);
    return text;
}

bool hasLetterOrDigit(std::string_view text) {
    return std::any_of(text.begin(), text.end(), [](unsigned char character) {
        return character > 127 || std::isalnum(character) != 0;
    });
}

}  // namespace

TesseractEngine::TesseractEngine(std::shared_ptr<const TesseractLibrary> library)
    : library_(std::move(library)), engine_(library_->create()) {}

TesseractEngine::~TesseractEngine() {
    library_->destroy(engine_);
}

TesseractEngine::Opened TesseractEngine::open(std::shared_ptr<const TesseractLibrary> library,
                                              const std::filesystem::path& models) {
    std::unique_ptr<TesseractEngine> engine(new TesseractEngine(std::move(library)));
    const TesseractLibrary& functions = *engine->library_;
    // Before anything else: a missing model is told on standard error, too.
    functions.setVariable(engine->engine_, "debug_file", "/dev/null");
    if (functions.initialize(engine->engine_, models.empty() ? nullptr : models.c_str(), "eng",
                             tesseract::OEM_LSTM_ONLY) != 0)
        return RequestError{"Tesseract found no eng.traineddata" +
                            (models.empty() ? std::string() : " in " + models.string()) + ": " +
                            std::string(kTesseractModelRemedy)};
    functions.setPageSegmentation(engine->engine_, tesseract::PSM_SPARSE_TEXT);
    return engine;
}

std::string TesseractEngine::models() const {
    const char* path = library_->dataPath(engine_);
    return path ? path : "";
}

TesseractEngine::Lines TesseractEngine::read(const cv::Mat& gray) {
    const SerialOpenMp serial;
    library_->forget(engine_);  // what earlier pages taught would make a result depend on them
    library_->setImage(engine_, gray.data, gray.cols, gray.rows, 1, static_cast<int>(gray.step));
    library_->setResolution(engine_, kResolution);
    if (library_->recognize(engine_, nullptr) != 0)
        return RequestError{"Tesseract could not read the picture"};
    auto lines = results();
    library_->clear(engine_);
    return lines;
}

std::vector<TesseractLine> TesseractEngine::results() const {
    std::vector<TesseractLine> lines;
    const std::unique_ptr<TessResultIterator, decltype(library_->deleteIterator)> iterator(
        library_->iterator(engine_), library_->deleteIterator);
    if (!iterator)
        return lines;
    do {
        const std::unique_ptr<char, decltype(library_->deleteText)> text(
            library_->text(iterator.get(), tesseract::RIL_TEXTLINE), library_->deleteText);
        const float confidence =
            library_->confidence(iterator.get(), tesseract::RIL_TEXTLINE) / 100.0f;
        int left = 0;
        int top = 0;
        int right = 0;
        int bottom = 0;
        if (!text || confidence < kLeastConfidence ||
            !library_->boundingBox(library_->layout(iterator.get()), tesseract::RIL_TEXTLINE, &left,
                                   &top, &right, &bottom))
            continue;
        const std::string_view trimmed = withoutSpaceAround(text.get());
        if (hasLetterOrDigit(trimmed))
            lines.push_back({cv::Rect(cv::Point(left, top), cv::Point(right, bottom)),
                             std::string(trimmed), std::min(confidence, 1.0f)});
    } while (library_->next(iterator.get(), tesseract::RIL_TEXTLINE));
    return lines;
}

}  // namespace kestrelid::vision
