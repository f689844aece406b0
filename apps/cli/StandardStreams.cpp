#include "apps/cli/StandardStreams.h"

#include "apps/cli/TerminalText.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

namespace kestrelid::cli {
namespace {

int outputError = 0;  // the first errno met
std::string_view programName = "kestrelid";

}  // namespace

void writeOutput(std::string_view text) {
    const bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
    if ((!written || std::fflush(stdout) != 0) && outputError == 0)
        outputError = errno;
}

bool outputFailed() {
    return outputError != 0;
}

void setProgramName(std::string_view literal) {
    programName = literal;
}

ExitStatus outputStatus() {
    if (outputError == 0)
        return ExitStatus::done;
    writeError("standard output", std::strerror(outputError));
    return ExitStatus::inputFailed;
}

void writeError(std::string_view cause) {
    const std::string line = std::string(programName) + ": " + terminalText(cause) + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr);
}

void writeError(std::string_view name, std::string_view cause) {
    const std::string shown = name.empty() ? "''" : std::string(name);
    writeError(shown + ": " + std::string(cause));
}

}  // namespace kestrelid::cli
