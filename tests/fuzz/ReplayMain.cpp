// Runs a fuzz target over the files of a folder, or over one: for compilers without libFuzzer.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

bool replay(const std::filesystem::path& file) {
    std::cout << file.string() << std::endl;  // first: after a crash it names the input
    std::ifstream stream(file, std::ios::binary);
    const std::vector<char> bytes(std::istreambuf_iterator<char>(stream), {});
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    return stream.good() || stream.eof();
}

}  // namespace

// usage: PROGRAM FILE-OR-FOLDER; exit status 1 where there is nothing to read.
int main(int argumentCount, char** arguments) {
    namespace fs = std::filesystem;
    if (argumentCount != 2)
        return 1;
    if (!fs::is_directory(arguments[1]))
        return replay(arguments[1]) ? 0 : 1;
    bool isGood = !fs::is_empty(arguments[1]);
    for (const fs::directory_entry& entry : fs::directory_iterator(arguments[1]))
        isGood = replay(entry.path()) && isGood;
    return isGood ? 0 : 1;
}
