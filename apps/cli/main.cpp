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

// By itself glibc keeps pictures' memory, in a heap for each thread: over pictures of many sizes
// the peak grows by a third. To give each block back at once costs a tenth of a verdict's time,
// since new pages come one by one. Between the two lies one heap that holds what is small or soon
// needed.
void keepLittleMemory() {
#ifdef __GLIBC__
    mallopt(M_ARENA_MAX, 1);
    mallopt(M_MMAP_THRESHOLD, 1 << 20);  // bytes: larger blocks go back to the system at once
    mallopt(M_TRIM_THRESHOLD, 4 << 20);  // bytes that may lie free
#endif
}

}  // namespace

int main(int argc, char** argv) try {
    // A reader that has seen enough (`| head -1`) ends the program without a message, also under a
    // parent that ignores the signal.
    std::signal(SIGPIPE, SIG_DFL);
    keepLittleMemory();

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
