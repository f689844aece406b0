#include "LinesBeside.h"

#include <fstream>
#include <future>
#include <iostream>
#include <kestrelid/DefaultServices.h>
#include <kestrelid/ImageFile.h>

// own-recogniser PICTURE LINES: judges a picture by the lines of a text file and its own outline.
int main(int count, char** arguments) {
    if (count != 3)
        return std::cerr << "usage: own-recogniser PICTURE LINES\n", 2;
    const auto picture = kestrelid::readImage(arguments[1]);
    if (const auto* error = std::get_if<kestrelid::ImageError>(&picture))
        return std::cerr << arguments[1] << ": " << error->cause << '\n', 1;
    std::ifstream file(arguments[2]);
    if (!file)
        return std::cerr << arguments[2] << ": cannot be opened\n", 1;
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);)
        lines.push_back(line);

    std::promise<kestrelid::PassportValidationResult> verdict;
    bool isComplete = true;
    kestrelid::PlatformServices services = kestrelid::defaultServices();  // outlines and queue
    services.text = std::make_shared<LinesBeside>(std::move(lines));
    services.console = [&](std::string_view failure) {  // a worker, before the verdict
        std::cerr << failure << '\n';
        isComplete = false;
    };
    const auto detector = kestrelid::PassportDetector::create(services);
    detector->validate(std::get<kestrelid::Image>(picture).upright(),
                       [&](const auto& result) { verdict.set_value(result); });

    const auto result = verdict.get_future().get();
    std::cout << (result.isPassport() ? "a passport" : "not a passport") << ", confidence "
              << result.confidence() << '\n';
    for (const std::string& reason : result.reasons())
        std::cout << "  " << reason << '\n';
    return isComplete ? 0 : 1;
}
