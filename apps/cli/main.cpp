#include "apps/cli/CommandLine.h"
#include "apps/cli/StandardStreams.h"

#include <csignal>
#include <exception>
#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace {

using namespace kestrelid::cli;

ExitStatus run(const ValidateOptions& options) {
    return validate(options);
}
ExitStatus run(const TextOptions& options) {
    return text(options);
}
ExitStatus run(const ZoneOptions& options) {
    return zone(options);
}
ExitStatus run(const DoctorOptions& options) {
    return doctor(options);
}
ExitStatus run(const WatchOptions& options) {
    return watch(options);
}

// glibc raises this limit whenever a large block is freed, up to 32 MiB, and then keeps pictures in
// pieces of its heaps: over pictures of many sizes the peak grows by a third. Fixed, each large
// block goes back to the system at once.
void givePicturesBack() {
#ifdef __GLIBC__
    mallopt(M_MMAP_THRESHOLD, 128 * 1024);  // bytes: what it starts with
#endif
}

}  // namespace

int main(int argc, char** argv) try {
    // A reader that has seen enough (`| head -1`) ends the program without a message, also under a
    // parent that ignores the signal.
    std::signal(SIGPIPE, SIG_DFL);
    givePicturesBack();

    const auto parsed = parseCommandLine(argc, argv);
    if (const auto* status = std::get_if<ExitStatus>(&parsed))
        return static_cast<int>(*status);
    const auto status =
        std::visit([](const auto& options) { return run(options); }, std::get<Command>(parsed));
    return static_cast<int>(status);
} catch (const std::exception& error) {
    writeError(error.what());
    return static_cast<int>(ExitStatus::inputFailed);
}
