#pragma once

#include "apps/cli/PictureInputs.h"

#include <kestrelid/Image.h>
#include <kestrelid/PassportDetector.h>

#include <memory>
#include <mutex>
#include <string>
#include <variant>
#include <vector>

namespace kestrelid::cli {

struct JudgedPicture {
    Image image;  // as it was judged: upright
    Examination examination;
    double milliseconds = 0.0;  // from the start of decoding to the verdict
};

// The picture could not be decoded, or recognition (other than that of zones) failed, so that a
// verdict would say nothing about the picture. One line, without the picture's name.
struct JudgeError {
    std::string cause;
};

using JudgeResult = std::variant<JudgedPicture, JudgeError>;

// Judges one picture after the other and waits for each verdict. Several judges on several threads
// may share services, so that the models are loaded once.
class PictureJudge {
public:
    PictureJudge(const PlatformServices& services, ValidationEffort effort);

    [[nodiscard]] JudgeResult judge(const PictureInput& input);

private:
    struct Failures {
        std::mutex mutex;
        std::vector<std::string> lines;  // what the detector said on its console about this picture
    };
    const std::shared_ptr<Failures> failures_;
    const std::shared_ptr<PassportDetector> detector_;
};

}  // namespace kestrelid::cli
