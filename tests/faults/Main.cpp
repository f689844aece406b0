#include "tests/faults/Faults.h"
#include "tests/faults/Scenarios.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <sys/mman.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

// usage: kestrelid_faults             lists the scenarios
//        kestrelid_faults SCENARIO    makes the runs that lines on standard input ask for
// A line: "RUNS RESOURCE CALLS TURN LASTS FROM", RESOURCE being a number. It gets a process of its
// own. RUNS: a letter each; c: clean, n: clean, with "request" lines about all that was asked for,
// f: with the fault. For tools/faults.
namespace {

using namespace kestrelid::test;

// Seconds for a run on a busy machine. Looking at every request takes ten times as long.
constexpr unsigned kDeadline = 120;
int reports = -1;

void onEnd(int signal) {
    static std::atomic_flag isEnding;
    while (isEnding.test_and_set())
        pause();  // another thread tells where
    writeCalls("ended", reports);
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

long entriesIn(const char* folder) {
    return std::distance(std::filesystem::directory_iterator(folder), {});
}

long threads() {
    return entriesIn("/proc/self/task");
}

// Whether a thread beside this one runs or wants to. Those that wait for work sleep.
bool isAnyAwake() {
    const std::string own = std::to_string(getpid());
    for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
        std::string line;
        std::getline(std::ifstream(thread.path() / "stat"), line);
        const std::size_t state = line.rfind(')') + 2;
        if (thread.path().filename() != own && state < line.size() && line[state] != 'S')
            return true;
    }
    return false;
}

// Nobody waits for the threads of a released queue: they end by themselves, soon. What they hold
// would count as a leak until then.
void waitForThreadsAbove(long before) {
    using namespace std::chrono_literals;
    const auto limit = std::chrono::steady_clock::now() + 10s;
    while (threads() > before && isAnyAwake() && std::chrono::steady_clock::now() < limit)
        std::this_thread::sleep_for(1ms);
}

// One line, whatever the library says.
std::string printable(const std::string& text) {
    std::string line;
    for (const char letter : text) {
        char escaped[8];
        std::snprintf(escaped, sizeof escaped, letter >= ' ' || letter < 0 ? "%c" : "\\x%02x",
                      letter);
        line += escaped;
    }
    return line;
}

void makeRuns(const Scenario& scenario, const Fault& fault, const std::string& runs) {
    for (const char kind : runs) {
        const long before = threads();
        alarm(static_cast<Run>(kind) == Run::counted ? 10 * kDeadline : kDeadline);
        beginRun(static_cast<Run>(kind), fault, reports);
        std::string answer;
        try {
            answer = scenario.run();
        } catch (const std::exception& error) {
            answer = std::string("throws ") + error.what();
        }
        dprintf(reports, "answer %c %s\n", kind, printable(answer).c_str());
        answer = {};
        waitForThreadsAbove(before);
        dprintf(reports, "held %ld %ld %ld\n", heldAllocations.load(), entriesIn("/proc/self/fd"),
                threads());
    }
    writeRequests(reports);
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<Scenario> all = scenarios();
    if (argc < 2) {
        for (const Scenario& scenario : all)
            std::cout << scenario.name << '\n';
        return 0;
    }
    const auto chosen = std::ranges::find(all, argv[1], &Scenario::name);
    if (chosen == all.end())
        return std::cerr << argv[1] << ": no such scenario\n", 2;
    reports = dup(STDOUT_FILENO);
    for (std::string line; std::getline(std::cin, line);) {
        std::string runs;
        Fault fault;
        unsigned resource = 0;
        std::istringstream(line) >> runs >> resource >> std::hex >> fault.calls >> std::dec >>
            fault.turn >> fault.lasts >> fault.from;
        fault.resource = static_cast<Resource>(resource);
        const int output = memfd_create("output", 0);
        const pid_t child = fork();
        if (child == 0) {
            dup2(output, STDOUT_FILENO);
            dup2(output, STDERR_FILENO);
            for (const int signal : {SIGALRM, SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP})
                std::signal(signal, onEnd);
            makeRuns(*chosen, fault, runs);
            std::exit(0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        std::string printed(static_cast<std::size_t>(lseek(output, 0, SEEK_END)), '\0');
        (void)!pread(output, printed.data(), printed.size(), 0);
        close(output);
        std::istringstream lines(printed);
        for (std::string one; std::getline(lines, one);)
            dprintf(reports, "output %s\n", printable(one).c_str());
        dprintf(reports, "end %d\n", status);
    }
}
