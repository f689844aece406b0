#pragma once

#include <atomic>
#include <cstdint>

// Shortages on demand. A program that links Faults.cpp asks it for memory, threads, files and
// descriptors, and so do all its libraries.
namespace kestrelid::test {

enum Resource : unsigned { memory, thread, file, descriptor };

// One refusal. Requests are told apart by the calls that lead to them, which a number stands for.
struct Fault {
    Resource resource = memory;
    std::uint64_t calls = 0;
    int turn = 0;            // the first of these requests is 1
    bool lasts = false;      // all later requests for the same are refused as well
    std::uint64_t from = 0;  // requests before this one are not looked at, which saves time
};

enum class Run : char { clean = 'c', counted = 'n', faulty = 'f' };

// Begins a run of a scenario. reports: a descriptor that gets the calls that lead to the refused
// request, innermost first: lines of "refused FILE OFFSET".
void beginRun(Run run, const Fault& fault, int reports);

// Lines of "request RESOURCE CALLS COUNT FIRST" for all that was asked for in counted runs. FIRST:
// how many requests for the resource came up to then.
void writeRequests(int reports);

// Lines of "WHAT FILE OFFSET" for the calls that lead here.
void writeCalls(const char* what, int reports);

// Allocations that nobody has given back yet.
extern std::atomic<long> heldAllocations;

// As long as one lives, requests of all threads are counted or refused.
extern std::atomic<int> attempts;
struct Attempt {
    Attempt() { ++attempts; }
    Attempt(const Attempt&) = delete;
    ~Attempt() { --attempts; }
};

// As long as one lives, requests of its thread are left alone: they are the test's own.
extern constinit thread_local int calms;
struct Calm {
    Calm() { ++calms; }
    Calm(const Calm&) = delete;
    ~Calm() { --calms; }
};

}  // namespace kestrelid::test
