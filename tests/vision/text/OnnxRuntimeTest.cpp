#include "vision/onnx/OnnxRuntime.h"

#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <array>
#include <fstream>
#include <stop_token>

namespace kestrelid::vision {
namespace {

using testing::HasSubstr;

TEST(OnnxApiLevel, IsTheMinorVersionUpToThatOfTheHeaders) {
    EXPECT_EQ(onnxApiLevel("1.16.3"), 16u);
    EXPECT_EQ(onnxApiLevel("1.17-dev"), 17u);
    const unsigned newest = onnxApiLevel("1.999.0");
    EXPECT_LT(newest, 999u);
    EXPECT_GE(newest, 16u);
    for (const char* odd : {"", "1.", "1.x", "2.1.0", "16"})
        EXPECT_EQ(onnxApiLevel(odd), 0u) << odd;
}

TEST(ResourceFolders, TakesAFileFromTheFirstFolderThatHasIt) {
    const test::TemporaryFolder root;
    // A folder of that name is no file.
    for (const char* folder : {"a/both.txt", "b", "c"})
        std::filesystem::create_directories(root / folder);
    for (const char* name : {"b/both.txt", "c/both.txt", "c/last.txt"})
        std::ofstream(root / name) << name;
    const ResourceFolders folders({root / "absent", root / "a", root / "b", root / "c"});
    EXPECT_EQ(folders.find("both.txt"), root / "b/both.txt");
    EXPECT_EQ(folders.find("last.txt"), root / "c/last.txt");
    EXPECT_EQ(folders.find("none.txt"), std::nullopt);
    const std::string words = folders.missing("none.txt");
    for (const auto& part :
         {std::string("none.txt"), (root / "absent").string(), (root / "c").string()})
        EXPECT_THAT(words, HasSubstr(part));
    EXPECT_THAT(words, HasSubstr("take models/ of the source tree"));
    EXPECT_THAT(ResourceFolders({}).missing("none.txt"), HasSubstr("no resource folder"));
}

// A field of a protocol buffer: text or a message.
std::string field(char number, const std::string& contents) {
    return std::string{static_cast<char>(number << 3 | 2), static_cast<char>(contents.size())} +
           contents;
}

// A tensor of floats, of any shape.
std::string tensor(char kind, const std::string& name) {
    return field(kind, field(1, name) + field(2, field(1, "\x08\x01")));
}

TEST(OnnxRuntime, GivesTheNumbersOfAModelAndTellsWhatIsWrong) {
    const auto loaded = OnnxRuntime::load(ResourceFolders({KESTRELID_RESOURCES_DIR}));
    if (!loaded)
        GTEST_SKIP() << loaded.error().description;
    const test::TemporaryFolder folder;
    const std::filesystem::path file = folder / "model.onnx";
    std::ofstream(file) << "not a model";
    const auto refused = (*loaded)->open(file, 1);
    ASSERT_FALSE(refused);
    EXPECT_THAT(refused.error().description, HasSubstr(file.string()));

    // d = a - b, and a transposed: onnx.proto, version 7 with operators of version 13.
    const std::string graph =
        field(1, field(1, "a") + field(1, "b") + field(2, "d") + field(4, "Sub")) +
        field(1, field(1, "a") + field(2, "t") + field(4, "Transpose")) + field(2, "g") +
        tensor(11, "a") + tensor(11, "b") + tensor(12, "d") + tensor(12, "t");
    std::ofstream(file) << "\x08\x07" << field(7, graph) << field(8, "\x10\x0D");
    const auto session = (*loaded)->open(file, 1);
    ASSERT_TRUE(session) << session.error().description;
    const std::vector<float> values{1, 2, 3, 4, 5, 6};
    const std::array<std::int64_t, 2> whole{2, 3};
    const std::array<std::int64_t, 2> row{1, 3};
    const std::array<OnnxInput, 2> inputs{{{values, whole}, {{values.data() + 3, 3}, row}}};
    const auto outputs = session->run(inputs);
    ASSERT_TRUE(outputs) << outputs.error().description;
    std::string told;
    for (const OnnxTensor& output : *outputs)
        told += testing::PrintToString(output.shape()) +
                testing::PrintToString(std::vector(output.values().begin(), output.values().end()));
    EXPECT_EQ(told, "{ 2, 3 }{ -3, -3, -3, 0, 0, 0 }{ 3, 2 }{ 1, 4, 2, 5, 3, 6 }");

    EXPECT_FALSE(session->run({}));
    std::stop_source stopped;
    stopped.request_stop();
    EXPECT_FALSE(session->run(inputs, stopped.get_token()));
    const std::array<OnnxInput, 2> beyond{{{values, whole}, {{values.data(), 2}, row}}};
    EXPECT_FALSE(session->run(beyond));
}

}  // namespace
}  // namespace kestrelid::vision
