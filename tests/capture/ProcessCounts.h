#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <unistd.h>

// Of this process.
namespace kestrelid::test {

inline int entriesIn(const char* folder) {
    std::error_code error;
    return static_cast<int>(std::distance(std::filesystem::directory_iterator(folder, error),
                                          std::filesystem::directory_iterator()));
}

inline int threadCount() {
    return entriesIn("/proc/self/task");
}

inline int descriptorCount() {
    return entriesIn("/proc/self/fd");
}

inline long residentKilobytes() {
    long total = 0;
    long resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

}  // namespace kestrelid::test
