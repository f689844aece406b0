#pragma once

#include <cstddef>
#include <cstdint>

// Shortages on demand. A program that links Faults.cpp asks it for memory, threads, files and
// descriptors, and so do all its libraries.
namespace kestrelid::test {

enum Resource : unsigned { memory, thread, file, descriptor };
inline constexpr std::size_t kResources = 4;

// One refusal. Requests are told apart by the calls that lead to them, which a number stands for.
struct Fault {
    Resource resource = memory;
    std::uint64_t calls = 0;
    int turn = 0;        // the first of these requests is 1
    bool lasts = false;  // all later requests for the same are refused as well
};

enum class Run { faulty, clean, counted };

// Begins a run of a scenario. reports: a descriptor that gets the calls that lead to the refused
// request, innermost first: lines of "refused FILE OFFSET".
void beginRun(Run run, const Fault& fault, int reports);

// Lines of "request RESOURCE CALLS COUNT" for all that was asked for in counted runs.
void writeRequests(int reports);

// Lines of "WHAT FILE OFFSET" for the calls that lead here.
void writeCalls(const char* what, int reports);

// Allocations that nobody has given back yet.
[[nodiscard]] long heldAllocations();

// As long as it lives, requests of all threads are counted or refused.
struct Attempt {
    Attempt();
    Attempt(const Attempt&) = delete;
    ~Attempt();
};

// As long as it lives, requests of this thread are left alone: they are the test's own.
struct Calm {
    Calm();
    Calm(const Calm&) = delete;
    ~Calm();
};

}  // namespace kestrelid::test
