#include <iostream>
#include <kestrelid/ImageFile.h>
#include <kestrelid/PassportDetector.h>

int main(int count, char** arguments) {
    if (count != 2)
        return std::cerr << "usage: judge PICTURE\n", 2;
    const auto picture = kestrelid::readImage(arguments[1]);
    if (const auto* error = std::get_if<kestrelid::ImageError>(&picture))
        return std::cerr << arguments[1] << ": " << error->cause << '\n', 1;
    const auto detector = kestrelid::PassportDetector::create();
    const auto verdict = detector->judge(std::get<kestrelid::Image>(picture).upright());
    const auto* result = std::get_if<kestrelid::PassportValidationResult>(&verdict);
    std::cout << (result && result->isPassport() ? "a passport\n" : "not a passport\n");
}
