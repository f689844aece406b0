#include "vision/onnx/OnnxRuntime.h"

#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <array>
#include <fstream>

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
    const test::TemporaryFolder place;
    const std::filesystem::path root = place.path();
    // A folder of that name is no file.
    for (const char* folder : {"a/both.txt", "b", "c"})
        std::filesystem::create_directories(root / folder);
    for (const char* name : {"b/both.txt", "c/both.txt", "c/last.txt"})
        std::ofstream(root / name) << name;
    const ResourceFolders folders({root / "absent", root / "a", root / "b", root / "c"});
    EXPECT_EQ(folders.find("both.txt"), root / "b" / "both.txt");
    EXPECT_EQ(folders.find("last.txt"), root / "c" / "last.txt");
    EXPECT_EQ(folders.find("none.txt"), std::nullopt);
    const std::string words = folders.missing("none.txt");
    for (const auto& part :
         {std::string("none.txt"), (root / "absent").string(), (root / "c").string()})
        EXPECT_THAT(words, HasSubstr(part));
    EXPECT_THAT(words, HasSubstr("run tools/setup"));
    EXPECT_THAT(ResourceFolders({}).missing("none.txt"), HasSubstr("no resource folder"));
}

TEST(OnnxRuntime, TellsWhatIsWrongWithFilesAndInputs) {
    const ResourceFolders resources({KESTRELID_RESOURCES_DIR});
    const auto loaded = OnnxRuntime::load(resources);
    if (!loaded)
        GTEST_SKIP() << loaded.error().description;
    const auto& runtime = *loaded;
    const test::TemporaryFolder folder;
    const std::filesystem::path noModel = folder / "no-model.onnx";
    std::ofstream(noModel) << "not a model";
    const auto refused = runtime->open(noModel, 1);
    ASSERT_FALSE(refused);
    EXPECT_THAT(refused.error().description, HasSubstr(noModel.string()));

    const auto direction = resources.find("ch_ppocr_mobile_v2.0_cls_infer.onnx");
    if (!direction)
        GTEST_SKIP() << resources.missing("ch_ppocr_mobile_v2.0_cls_infer.onnx");
    const auto session = runtime->open(*direction, 1);
    ASSERT_TRUE(session);
    EXPECT_FALSE(session->run({}));
    const std::vector<float> values(3 * 48 * 192, 0.0f);
    const std::array<std::int64_t, 4> tooLarge{2, 3, 48, 192};
    const OnnxInput beyond{values, tooLarge};
    EXPECT_FALSE(session->run({&beyond, 1}));
}

}  // namespace
}  // namespace kestrelid::vision
