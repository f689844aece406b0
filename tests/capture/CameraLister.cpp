#include <kestrelid/DefaultCamera.h>

#include <iostream>
#include <string>

// Answers each line on standard input with a line of the cameras' names. For pipewire_test.py.
int main() {
    for (std::string line; std::getline(std::cin, line); std::cout << std::endl)
        for (const kestrelid::CameraDescription& camera : kestrelid::cameras())
            std::cout << camera.name << ' ';
}
