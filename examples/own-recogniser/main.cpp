#include "TesseractTextService.h"

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <iostream>
#include <kestrelid/DefaultServices.h>
#include <kestrelid/ImageFile.h>
#include <leptonica/allheaders.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

using namespace kestrelid;
using Json = nlohmann::ordered_json;
using Clock = std::chrono::steady_clock;

constexpr const char* kUsage =
    "usage: own-recogniser [--json] PICTURE...\n"
    "Exit status: 0 done, 1 some picture could not be judged, 2 wrong usage.\n";

// Tesseract's OpenMP loops share out work of microseconds and wait for each other actively, which
// on a busy machine takes many times as long as the work itself. OpenMP has read the environment
// before main() begins, hence the second start.
void keepOpenMpOnOneThread(char** arguments) {
    if (std::getenv("OMP_THREAD_LIMIT"))
        return;
    setenv("OMP_THREAD_LIMIT", "1", 1);
    execv("/proc/self/exe", arguments);  // where that fails, this start goes on and is slower
}

int main(int count, char** arguments) {
    keepOpenMpOnOneThread(arguments);
    std::vector<std::string> files(arguments + 1, arguments + count);
    const bool json = std::erase(files, "--json") > 0;
    if (files.empty() || files.front().starts_with('-'))
        return std::cerr << kUsage, 2;
    setMsgSeverity(L_SEVERITY_NONE);  // Tesseract's picture library tells of every odd box

    std::string failure;                            // written on a worker, before the verdict
    PlatformServices services = defaultServices();  // outlines and queue
    services.text = std::make_shared<TesseractTextService>();
    services.console = [&](std::string_view line) { failure = line; };
    const auto detector = PassportDetector::create(services);

    int status = 0;
    for (const std::string& file : files) {
        const auto start = Clock::now();
        Json object{{"schema", 1}, {"file", file}};
        failure.clear();
        // Larger pictures take longer and say no more.
        const auto picture = readImage(file, {.sufficientSide = 1920});
        if (const auto* error = std::get_if<ImageError>(&picture)) {
            failure = error->cause;
        } else {
            const Judgement judgement = detector->judge(std::get<Image>(picture).upright());
            const std::chrono::duration<double, std::milli> taken = Clock::now() - start;
            if (const auto* none = std::get_if<NoVerdict>(&judgement)) {
                failure = none->cause;
            } else {
                const auto& result = std::get<PassportValidationResult>(judgement);
                object["isPassport"] = result.isPassport();
                object["confidence"] = result.confidence();
                object["reasons"] = result.reasons();
                object["recognizedText"] = result.recognizedText();
                object["milliseconds"] = std::round(taken.count() * 10.0) / 10.0;
            }
        }
        if (!failure.empty()) {
            object = {{"schema", 1}, {"file", file}, {"error", failure}};
            std::cerr << file << ": " << failure << '\n';
            status = 1;
        }
        const auto lenient = Json::error_handler_t::replace;  // file names hold any bytes
        if (json)
            std::cout << object.dump(-1, ' ', false, lenient) << std::endl;
        else if (failure.empty())
            std::cout << file << (object["isPassport"] ? ": passport" : ": not a passport")
                      << ", confidence " << object["confidence"] << ", " << object["milliseconds"]
                      << " ms" << std::endl;
    }
    return std::cout ? status : 1;
}
