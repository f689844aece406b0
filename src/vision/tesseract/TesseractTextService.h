#pragma once

#include <kestrelid/ServiceStatus.h>
#include <kestrelid/VisionServices.h>

#include <filesystem>
#include <memory>
#include <mutex>
#include <variant>
#include <vector>

namespace kestrelid::vision {

struct TesseractLibrary;
class TesseractEngine;

struct TesseractOptions {
    std::filesystem::path
        models;  // folder that holds eng.traineddata; empty: where Tesseract looks by itself
};

// Reads English text with Tesseract 5. Library and model are loaded by the first request; a load
// that failed is that request's error and tried again by the next one. Each request at work has a
// recogniser to itself (20 MB), kept for the requests after it. TextRequest: usesLanguageCorrection
// has no effect; recognitionLanguages must hold "en"; isEnough is asked after the page has been
// read, so that it bounds the results but not the time.
class TesseractTextService final : public TextService {
public:
    explicit TesseractTextService(TesseractOptions options = {});
    ~TesseractTextService() override;

    [[nodiscard]] TextResult perform(const Bitmap& bitmap, const TextRequest& request) override;

    // Library and model, loaded once for the occasion. Thread: any.
    [[nodiscard]] std::vector<ServiceStatus> diagnose() const;

private:
    using Borrowed = std::variant<std::unique_ptr<TesseractEngine>, RequestError>;

    [[nodiscard]] Borrowed borrow();
    void giveBack(std::unique_ptr<TesseractEngine> engine);

    TesseractOptions options_;
    std::mutex mutex_;
    std::shared_ptr<const TesseractLibrary> library_;
    std::vector<std::unique_ptr<TesseractEngine>> idle_;
};

}  // namespace kestrelid::vision
