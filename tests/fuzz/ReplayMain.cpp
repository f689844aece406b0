// Runs a fuzz target over files: the same check as libFuzzer's programs make, for compilers without
// libFuzzer.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> filesOf(const fs::path& place) {
    if (!fs::is_directory(place))
        return {place};
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(place))
        if (entry.is_regular_file())
            files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

}  // namespace

// usage: PROGRAM FILE-OR-FOLDER...; exit status 1 where a place holds no readable file.
int main(int argumentCount, char** arguments) {
    std::size_t replayed = 0;
    for (int index = 1; index < argumentCount; ++index) {
        const std::vector<fs::path> files = filesOf(arguments[index]);
        if (files.empty()) {
            std::cerr << arguments[index] << ": no files to replay\n";
            return 1;
        }
        for (const fs::path& file : files) {
            // Said first: after a crash the last line names the input.
            std::cout << file.string() << std::endl;
            std::ifstream stream(file, std::ios::binary);
            if (!stream) {
                std::cerr << file.string() << ": cannot be read\n";
                return 1;
            }
            const std::vector<char> bytes(std::istreambuf_iterator<char>(stream), {});
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()),
                                   bytes.size());
            ++replayed;
        }
    }
    std::cout << replayed << " inputs replayed\n";
    return replayed > 0 ? 0 : 1;
}
