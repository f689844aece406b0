#pragma once

#include <kestrelid/Image.h>
#include <kestrelid/ImageFile.h>
#include <kestrelid/PassportDetector.h>
#include <kestrelid/PassportValidationResult.h>
#include <kestrelid/VisionServices.h>

#include <cstddef>
#include <filesystem>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace kestrelid::cli {

class OutlineRecorder;

// Pixels that the longer side of a picture keeps at least when it is decoded. Enough for
// recognition, which scales text to lines of 48 pixels anyway, and a still of 12 megapixels takes
// little longer than a small one.
inline constexpr int kSufficientSide = 1920;

struct JudgedPicture {
    Image image;  // as it was judged: upright
    PassportValidationResult result;
    std::vector<RectangleObservation> outlines;  // as the finder gave them
    double milliseconds = 0.0;                   // from the start of decoding to the verdict
};

// The picture could not be decoded, or recognition failed, so that a verdict would say nothing
// about the picture. One line, without the picture's name.
struct JudgeError {
    std::string cause;
};

using JudgeResult = std::variant<JudgedPicture, JudgeError>;

// Judges one picture after the other and waits for each verdict. Several judges on several threads
// may share services, so that the models are loaded once.
class PictureJudge {
public:
    PictureJudge(const PlatformServices& services, ValidationEffort effort);
    ~PictureJudge();

    [[nodiscard]] JudgeResult judge(const std::filesystem::path& path);
    [[nodiscard]] JudgeResult judge(std::span<const std::byte> file);

private:
    [[nodiscard]] JudgeResult decodeAndJudge(const std::function<ImageResult()>& decode);

    struct Failures {
        std::mutex mutex;
        std::vector<std::string> lines;  // what the detector said on its console about this picture
    };
    const std::shared_ptr<Failures> failures_;
    const std::shared_ptr<OutlineRecorder> recorder_;
    const std::shared_ptr<PassportDetector> detector_;
};

}  // namespace kestrelid::cli
