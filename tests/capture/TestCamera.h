#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace kestrelid::test {

// Cameras without hardware for the program that links this file; provider/README.md has the words
// of their description. The program's environment is set before main, so that GStreamer finds the
// plugin whenever it is initialised. Without a TestCamera there is no camera. One object at a time.
class TestCamera {
public:
    // description: the lines of the control file.
    explicit TestCamera(std::string description = "device Test Camera\n");

    // Takes the cameras away.
    ~TestCamera();
    TestCamera(const TestCamera&) = delete;
    TestCamera& operator=(const TestCamera&) = delete;

    // Adds a line about the camera that was described last: set("fail open").
    void set(const std::string& line);

    // Takes the lines that begin so away.
    void unset(const std::string& beginning);

    void unplug(bool postsError = false);
    void plug();

    // What the cameras did: `opened NAME`, `format CAPS NAME`, `frames COUNT NAME` for the first
    // and every thirtieth one, `closed COUNT NAME`.
    [[nodiscard]] std::vector<std::string> journal() const;

    // How many lines of the journal begin so.
    [[nodiscard]] int count(const std::string& beginning) const;

    [[nodiscard]] bool isOpen() const;

    // True once no camera is open.
    [[nodiscard]] bool waitUntilClosed(std::chrono::milliseconds limit) const;

private:
    void write() const;

    std::vector<std::string> lines_;
};

}  // namespace kestrelid::test
