// Runs the exported network on raw floats: outline_maps MODEL INPUT OUTPUT. Exit status 77 where
// ONNX Runtime is missing.

#include "vision/onnx/OnnxRuntime.h"

#include <array>
#include <cstdio>
#include <fstream>
#include <vector>

int main(int argc, char** argv) {
    using namespace kestrelid;
    using namespace kestrelid::vision;
    if (argc != 4)
        return 2;
    const auto runtime = OnnxRuntime::load(ResourceFolders({KESTRELID_RESOURCES_DIR}));
    if (!runtime) {
        std::puts(runtime.error().description.c_str());
        return 77;
    }
    const auto session = (*runtime)->open(argv[1], 1);
    if (!session) {
        std::puts(session.error().description.c_str());
        return 1;
    }
    constexpr std::array<std::int64_t, 4> kShape{1, 3, 192, 192};
    std::vector<float> values(3 * 192 * 192);
    std::ifstream(argv[2], std::ios::binary)
        .read(reinterpret_cast<char*>(values.data()),
              static_cast<std::streamsize>(values.size() * sizeof(float)));
    const OnnxInput input{values, kShape};
    const auto outputs = session->run({&input, 1});
    if (!outputs) {
        std::puts(outputs.error().description.c_str());
        return 1;
    }
    const auto maps = outputs->front().values();
    std::ofstream file(argv[3], std::ios::binary);
    file.write(reinterpret_cast<const char*>(maps.data()),
               static_cast<std::streamsize>(maps.size_bytes()));
    return file ? 0 : 1;
}
