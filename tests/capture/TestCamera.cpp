#include "tests/capture/TestCamera.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>
#include <unistd.h>

namespace kestrelid::test {
namespace {

// The program's folder, and the variables that lead GStreamer to it. The registry is kept from
// program to program, as a full scan takes seconds. No forked scanner: it could not load a plugin
// that was built with a sanitizer.
class Environment {
public:
    Environment() {
        auto pattern =
            (std::filesystem::temp_directory_path() / "kestrelid-test-camera-XXXXXX").string();
        if (!mkdtemp(pattern.data()))
            return;
        owner_ = getpid();
        folder_ = pattern;
        setenv("KESTRELID_TEST_CAMERA", control().c_str(), 1);
        setenv("GST_PLUGIN_PATH", KESTRELID_TEST_PLUGIN_DIR, 1);
        setenv("GST_REGISTRY", KESTRELID_TEST_PLUGIN_DIR "/registry.bin", 1);
        setenv("GST_REGISTRY_FORK", "no", 1);
    }
    ~Environment() {
        std::error_code ignored;
        if (owner_ == getpid())
            std::filesystem::remove_all(folder_, ignored);
    }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

    [[nodiscard]] std::filesystem::path control() const { return folder_ / "control"; }
    [[nodiscard]] std::filesystem::path journal() const { return folder_ / "control.journal"; }

private:
    pid_t owner_ = 0;
    std::filesystem::path folder_;
};

const Environment environment;

}  // namespace

TestCamera::TestCamera(std::string description) {
    std::istringstream text(std::move(description));
    for (std::string line; std::getline(text, line);)
        lines_.push_back(line);
    std::filesystem::remove(environment.journal());
    write();
}

TestCamera::~TestCamera() {
    std::error_code ignored;
    std::filesystem::remove(environment.control(), ignored);
}

void TestCamera::set(const std::string& line) {
    lines_.push_back(line);
    write();
}

void TestCamera::unset(const std::string& beginning) {
    std::erase_if(lines_, [&](const std::string& line) { return line.starts_with(beginning); });
    write();
}

void TestCamera::unplug(bool postsError) {
    set(postsError ? "unplugged error" : "unplugged");
}

void TestCamera::plug() {
    unset("unplugged");
}

std::vector<std::string> TestCamera::journal() const {
    std::vector<std::string> lines;
    std::ifstream file(environment.journal());
    for (std::string line; std::getline(file, line);)
        lines.push_back(line);
    return lines;
}

int TestCamera::count(const std::string& beginning) const {
    int found = 0;
    for (const auto& line : journal())
        found += line.starts_with(beginning) ? 1 : 0;
    return found;
}

bool TestCamera::isOpen() const {
    return count("opened ") > count("closed ");
}

bool TestCamera::waitUntilClosed(std::chrono::milliseconds limit) const {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (isOpen()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

// Whole or not at all, since the plugin reads it at any time.
void TestCamera::write() const {
    const auto draft = environment.control().string() + ".new";
    {
        std::ofstream file(draft);
        for (const auto& line : lines_)
            file << line << '\n';
    }
    std::filesystem::rename(draft, environment.control());
}

}  // namespace kestrelid::test
