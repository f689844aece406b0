#include "vision/text/NetworkTextService.h"

#include "tests/support/TemporaryFolder.h"
#include "tests/vision/text/DrawnText.h"

#include <gmock/gmock.h>

namespace kestrelid::test {
namespace {

using testing::HasSubstr;
namespace fs = std::filesystem;

constexpr const char* kRuntime = "libonnxruntime.so";
constexpr const char* kModels[] = {"text-detector.onnx", "text-direction.onnx",
                                   "text-recogniser.onnx"};

fs::path placeOf(const std::string& file) {
    return fs::path(file == kRuntime ? KESTRELID_RESOURCES_DIR : KESTRELID_SOURCE_DIR "/models") /
           file;
}

// A resource folder that lacks what a test takes out of it.
class NetworkTextResources : public testing::Test {
protected:
    void SetUp() override {
        if (!fs::exists(placeOf(kRuntime)))
            GTEST_SKIP() << placeOf(kRuntime) << " is missing: run tools/setup";
        fs::create_symlink(placeOf(kRuntime), folder_ / kRuntime);
        for (const char* model : kModels)
            fs::create_symlink(placeOf(model), folder_ / model);
    }

    TemporaryFolder folder_;
};

TEST_F(NetworkTextResources, NamesEachMissingFileAndReadsOnceItIsThere) {
    for (const std::string file : kModels) {
        SCOPED_TRACE(file);
        fs::remove(folder_ / file);
        vision::NetworkTextService service({folder_.path()}, 1);
        const TextResult refused = service.perform(evenBitmap(64, 64), {});
        const auto* error = std::get_if<RequestError>(&refused);
        ASSERT_TRUE(error);
        for (const auto& part : {file, folder_.path().string(),
                                 std::string("package kestrelid-models, or take models/")})
            EXPECT_THAT(error->description, HasSubstr(part));

        const auto parts = service.diagnose();
        ASSERT_EQ(parts.size(), 4u);
        EXPECT_THAT(parts[0].details, testing::ContainsRegex("1\\.[0-9]+.*libonnxruntime"));
        for (const auto& part : parts)
            EXPECT_EQ(part.available, part.details.find(file) == std::string::npos) << part.details;

        fs::create_symlink(placeOf(file), folder_ / file);
        EXPECT_THAT(textsOf(service.perform(evenBitmap(64, 64), {})), testing::IsEmpty())
            << "a load that failed is tried again";
    }
}

TEST(NetworkTextService, WithoutResourcesARequestSaysWhatToDo) {
    vision::NetworkTextService service({fs::path(testing::TempDir()) / "kestrelid-nothing-here"},
                                       2);
    const TextResult refused = service.perform(evenBitmap(64, 64), {});
    const auto* error = std::get_if<RequestError>(&refused);
    ASSERT_TRUE(error);
    EXPECT_THAT(error->description, HasSubstr("kestrelid-nothing-here"));
    EXPECT_THAT(error->description, HasSubstr("source tree"));
}

}  // namespace
}  // namespace kestrelid::test
