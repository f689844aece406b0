#pragma once

#include <string>
#include <vector>

namespace kestrelid::test {

// Cameras without hardware for the program that links this file; provider/README.md has the words
// of their description. The program's environment is set before main, so that GStreamer finds the
// plugin whenever it is initialised. Without a TestCamera there is no camera. One object at a time.
class TestCamera {
public:
    // description: the lines of the control file.
    explicit TestCamera(const std::string& description = "device Test Camera\n");

    // Takes the cameras away.
    ~TestCamera();
    TestCamera(const TestCamera&) = delete;
    TestCamera& operator=(const TestCamera&) = delete;

    // Adds a line about the camera that was described last: set("fail open").
    void set(const std::string& line);

    // Takes that line away.
    void unset(const std::string& line);

    // How many lines of the journal begin so: `opened NAME`, `format CAPS NAME`, `frames COUNT
    // NAME` for the first and every thirtieth one, `closed COUNT NAME`.
    [[nodiscard]] int count(const std::string& beginning) const;

    [[nodiscard]] bool isOpen() const;

    // False where a camera stays open.
    [[nodiscard]] bool waitUntilClosed() const;

private:
    void write() const;

    std::vector<std::string> lines_;
};

}  // namespace kestrelid::test
