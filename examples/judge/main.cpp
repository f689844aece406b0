#include <future>
#include <iostream>
#include <kestrelid/ImageFile.h>
#include <kestrelid/PassportDetector.h>

int main(int, char** arguments) {
    const auto picture = kestrelid::readImage(arguments[1]);
    if (const auto* error = std::get_if<kestrelid::ImageError>(&picture))
        return std::cerr << arguments[1] << ": " << error->cause << '\n', 1;
    std::promise<bool> verdict;
    const auto detector = kestrelid::PassportDetector::create();
    detector->validate(std::get<kestrelid::Image>(picture).upright(),
                       [&](const auto& result) { verdict.set_value(result.isPassport()); });
    std::cout << (verdict.get_future().get() ? "a passport\n" : "not a passport\n");
}
