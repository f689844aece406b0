// Judges the picture that its argument names, and says where the recognisers were found.
#include <kestrelid/DefaultServices.h>
#include <kestrelid/ImageFile.h>
#include <kestrelid/PassportDetector.h>

#include <future>
#include <iostream>

int main(int, char** arguments) {
    const kestrelid::ImageResult picture = kestrelid::readImage(arguments[1]);
    std::promise<bool> verdict;
    const auto detector = kestrelid::PassportDetector::create();
    detector->validate(std::get<kestrelid::Image>(picture),
                       [&](const auto& result) { verdict.set_value(result.isPassport()); });
    std::cout << (verdict.get_future().get() ? "passport" : "no passport") << '\n';
    for (const kestrelid::ServiceStatus& service : kestrelid::diagnose())
        std::cout << service.name << ": " << service.details << '\n';
}
