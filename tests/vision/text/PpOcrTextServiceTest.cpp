#include "vision/text/PpOcrTextService.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/vision/text/DrawnText.h"

#include <gmock/gmock.h>

#include <span>

namespace kestrelid::test {
namespace {

using testing::HasSubstr;
namespace fs = std::filesystem;

constexpr const char* kFiles[] = {"libonnxruntime.so", "ch_PP-OCRv4_det_infer.onnx",
                                  "ch_ppocr_mobile_v2.0_cls_infer.onnx",
                                  "ch_PP-OCRv4_rec_infer.onnx", "ppocr_keys_v1.txt"};

// A resource folder that lacks what a test takes out of it.
class PpOcrResources : public testing::Test {
protected:
    void SetUp() override {
        for (const char* file : kFiles)
            if (!fs::exists(fs::path(KESTRELID_RESOURCES_DIR) / file))
                GTEST_SKIP() << file << " is not in " << KESTRELID_RESOURCES_DIR
                             << ": run tools/setup";
        for (const char* file : kFiles)
            fs::create_symlink(fs::path(KESTRELID_RESOURCES_DIR) / file, folder_ / file);
    }

    TemporaryFolder folder_;
};

TEST_F(PpOcrResources, NamesEachMissingFileAndReadsOnceItIsThere) {
    for (const std::string file : std::span(kFiles).subspan(1)) {
        SCOPED_TRACE(file);
        fs::remove(folder_ / file);
        vision::PpOcrTextService service({.resources = {folder_.path()}, .threads = 1});
        const TextResult refused = service.perform(evenBitmap(64, 64), {});
        const auto* error = std::get_if<RequestError>(&refused);
        ASSERT_TRUE(error);
        for (const auto& part : {file, folder_.path().string(),
                                 std::string("package kestrelid-models, or run tools/setup")})
            EXPECT_THAT(error->description, HasSubstr(part));

        const auto parts = service.diagnose();
        ASSERT_EQ(parts.size(), 5u);
        EXPECT_THAT(parts[0].details, testing::ContainsRegex("1\\.[0-9]+.*libonnxruntime"));
        for (const auto& part : parts)
            EXPECT_EQ(part.available, part.details.find(file) == std::string::npos) << part.details;

        fs::create_symlink(fs::path(KESTRELID_RESOURCES_DIR) / file, folder_ / file);
        EXPECT_THAT(textsOf(service.perform(evenBitmap(64, 64), {})), testing::IsEmpty())
            << "a load that failed is tried again";
    }
}

TEST(PpOcrTextService, WithoutResourcesARequestSaysWhatToDo) {
    vision::PpOcrTextService service(
        {.resources = {fs::path(testing::TempDir()) / "kestrelid-nothing-here"}, .threads = 2});
    const TextResult refused = service.perform(evenBitmap(64, 64), {});
    const auto* error = std::get_if<RequestError>(&refused);
    ASSERT_TRUE(error);
    EXPECT_THAT(error->description, HasSubstr("kestrelid-nothing-here"));
    EXPECT_THAT(error->description, HasSubstr("run tools/setup"));
}

}  // namespace
}  // namespace kestrelid::test
