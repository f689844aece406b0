#include "tests/capture/TestCamera.h"

#include "tests/support/TemporaryFolder.h"

#include <fstream>
#include <memory>
#include <thread>

namespace kestrelid::test {
namespace {

// The variables that lead GStreamer to the plugin. The registry is kept from program to program, as
// a full scan takes seconds. No forked scanner: it could not load a plugin that was built with a
// sanitizer.
struct Environment {
    Environment() {
        setenv("KESTRELID_TEST_CAMERA", control.c_str(), 1);
        setenv("GST_PLUGIN_PATH", KESTRELID_TEST_PLUGIN_DIR, 1);
        setenv("GST_REGISTRY", KESTRELID_TEST_PLUGIN_DIR "/registry.bin", 1);
        setenv("GST_REGISTRY_FORK", "no", 1);
    }

    // A death test runs in a process of its own, which clears nothing away: it takes the folder of
    // the process that started it.
    const char* const former = std::getenv("KESTRELID_TEST_CAMERA");
    const std::unique_ptr<const TemporaryFolder> folder{former ? nullptr : new TemporaryFolder};
    const std::filesystem::path control = former ? former : *folder / "control";
    const std::filesystem::path journal = control.string() + ".journal";
    const std::filesystem::path followed = control.string() + ".followed";
};

const Environment environment;

// A former session that is still ending follows the cameras of before for some milliseconds.
// generation: empty once the control file is gone.
void waitUntilFollowed(const std::string& generation) {
    for (int attempt = 0; attempt < 12000; ++attempt) {
        std::ifstream file(environment.followed);
        std::string followed;
        if (!file || !std::getline(file, followed) || followed == "follows " + generation)
            return;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

}  // namespace

TestCamera::TestCamera(const std::string& description) : lines_{description} {
    std::filesystem::remove(environment.journal);
    static int generations = 0;
    const std::string generation = "generation " + std::to_string(++generations);
    lines_.insert(lines_.begin(), generation);
    write();
    waitUntilFollowed(generation);
}

TestCamera::~TestCamera() {
    std::error_code ignored;
    std::filesystem::remove(environment.control, ignored);
    waitUntilFollowed({});
}

void TestCamera::set(const std::string& line) {
    lines_.push_back(line);
    write();
}

void TestCamera::unset(const std::string& line) {
    std::erase(lines_, line);
    write();
}

int TestCamera::count(const std::string& beginning) const {
    int found = 0;
    std::ifstream file(environment.journal);
    for (std::string line; std::getline(file, line);)
        found += line.starts_with(beginning) ? 1 : 0;
    return found;
}

bool TestCamera::isOpen() const {
    return count("opened ") > count("closed ");
}

bool TestCamera::waitUntilClosed() const {
    for (int attempt = 0; attempt < 12000 && isOpen(); ++attempt)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    return !isOpen();
}

// Whole or not at all, since the plugin reads it at any time.
void TestCamera::write() const {
    const auto draft = environment.control.string() + ".new";
    {
        std::ofstream file(draft);
        for (const auto& line : lines_)
            file << line << '\n';
    }
    std::filesystem::rename(draft, environment.control);
}

}  // namespace kestrelid::test
