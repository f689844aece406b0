#include "vision/tesseract/TesseractTextService.h"
#include "vision/tesseract/SerialOpenMp.h"
#include "vision/tesseract/TesseractEngine.h"

#include <gmock/gmock.h>

#include <dlfcn.h>
#include <thread>

namespace kestrelid::vision {
namespace {

using testing::HasSubstr;

TEST(TesseractTextService, NamesTheModelItLacksAndStaysSilent) {
    const auto loaded = TesseractLibrary::load();
    if (const auto* error = std::get_if<RequestError>(&loaded))
        GTEST_SKIP() << error->description;
    const std::filesystem::path empty = testing::TempDir() + "kestrelid-no-tessdata";
    std::filesystem::create_directories(empty);
    TesseractTextService service({.models = empty});
    const std::size_t size = 64 * 64;
    const std::shared_ptr<std::byte[]> pixels(new std::byte[size]());
    const auto bitmap = Bitmap::wrap(64, 64, 64, PixelFormat::gray8, pixels, size);
    ASSERT_TRUE(bitmap);

    testing::internal::CaptureStderr();
    const TextResult refused = service.perform(*bitmap, {});
    const auto* error = std::get_if<RequestError>(&refused);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    ASSERT_TRUE(error);
    for (const auto& part :
         {std::string("eng.traineddata"), empty.string(), std::string("tesseract-ocr-eng")})
        EXPECT_THAT(error->description, HasSubstr(part));
    const auto parts = service.diagnose();
    ASSERT_EQ(parts.size(), 2u);
    EXPECT_TRUE(parts[0].available);
    EXPECT_THAT(parts[0].details, HasSubstr("libtesseract.so.5"));
    EXPECT_FALSE(parts[1].available);
    EXPECT_THAT(parts[1].details, HasSubstr("tesseract-ocr-eng"));
    std::filesystem::remove_all(empty);
}

TEST(SerialOpenMp, HoldsForTheCallingThreadAndWhileItLives) {
    if (std::holds_alternative<RequestError>(TesseractLibrary::load()))
        GTEST_SKIP() << "no libtesseract5 and so no OpenMP in this process: install libtesseract5";
    void* openMp = dlopen("libgomp.so.1", RTLD_NOW | RTLD_NOLOAD);
    if (!openMp)
        GTEST_SKIP() << "this libtesseract5 was built without OpenMP: Debian's has it";
    const auto activeLevels =
        reinterpret_cast<int (*)()>(dlsym(openMp, "omp_get_max_active_levels"));
    ASSERT_TRUE(activeLevels);
    const int before = activeLevels();
    {
        const SerialOpenMp serial;
        EXPECT_EQ(activeLevels(), 0);
        int elsewhere = -1;
        std::thread([&] { elsewhere = activeLevels(); }).join();
        EXPECT_EQ(elsewhere, before);
    }
    EXPECT_EQ(activeLevels(), before);
    dlclose(openMp);
}

}  // namespace
}  // namespace kestrelid::vision
