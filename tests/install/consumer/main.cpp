// Judges the picture that its argument names, and says where the recognisers were found.
#include <kestrelid/DefaultServices.h>
#include <kestrelid/ImageFile.h>
#include <kestrelid/PassportDetector.h>

#include <iostream>

int main(int, char** arguments) {
    const kestrelid::ImageResult picture = kestrelid::readImage(arguments[1]);
    const auto detector = kestrelid::PassportDetector::create();
    const auto verdict = detector->judge(std::get<kestrelid::Image>(picture));
    const auto* result = std::get_if<kestrelid::PassportValidationResult>(&verdict);
    std::cout << (result && result->isPassport() ? "passport" : "no passport") << '\n';
    for (const kestrelid::ServiceStatus& service : kestrelid::diagnose())
        std::cout << service.name << ": " << service.details << '\n';
}
