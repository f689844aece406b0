#pragma once

#include <kestrelid/VisionServices.h>

#include <memory>
#include <mutex>
#include <tesseract/baseapi.h>
#include <vector>

// Reads English text with Tesseract 5, whichever of the four turns it stands in. Called on workers,
// several times at once: Tesseract serves one thread at a time, so each call at work has an engine
// to itself (20 MB), kept for the calls after it.
class TesseractTextService final : public kestrelid::TextService {
public:
    kestrelid::TextResult perform(const kestrelid::Bitmap& bitmap,
                                  const kestrelid::TextRequest& request) override;

private:
    std::unique_ptr<tesseract::TessBaseAPI> borrowEngine();

    std::mutex mutex_;
    std::vector<std::unique_ptr<tesseract::TessBaseAPI>> idle_;
};
