#include <kestrelid/ImageFile.h>
#include <kestrelid/kestrelid.h>
#include <kestrelid/PassportDetector.h>

#include <algorithm>
#include <future>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using kestrelid::Image;
using kestrelid::PassportValidationResult;

KestrelidImage* fromPath(const std::string& path) {
    KestrelidImage* image = nullptr;
    EXPECT_EQ(kestrelid_image_read(path.c_str(), &image, nullptr), KESTRELID_OK);
    return image;
}

// The pixels as a camera gives them: blue first, rows that start at multiples of 256 bytes.
KestrelidImage* fromBgra(const kestrelid::Bitmap& bitmap) {
    EXPECT_EQ(bitmap.format(), kestrelid::PixelFormat::rgb8);
    const std::size_t stride = (static_cast<std::size_t>(bitmap.width()) * 4 + 255) / 256 * 256;
    std::vector<std::byte> bytes(stride * static_cast<std::size_t>(bitmap.height()), std::byte{77});
    for (int y = 0; y < bitmap.height(); ++y) {
        for (int x = 0; x < bitmap.width(); ++x)
            std::reverse_copy(bitmap.row(y) + x * 3, bitmap.row(y) + x * 3 + 3,
                              bytes.data() + static_cast<std::size_t>(y) * stride + x * 4);
    }
    const KestrelidPixels pixels{.struct_size = sizeof(KestrelidPixels),
                                 .bytes = bytes.data(),
                                 .size = bytes.size(),
                                 .stride = stride,
                                 .width = bitmap.width(),
                                 .height = bitmap.height(),
                                 .format = KESTRELID_BGRA8};
    KestrelidImage* image = nullptr;
    EXPECT_EQ(kestrelid_image_from_pixels(&pixels, &image, nullptr), KESTRELID_OK);
    return image;
}

TEST(SameVerdict, OfAFileAndOfItsPixelsAsTheInterfaceForCpp) {
    const std::string path = KESTRELID_SOURCE_DIR "/samples/bangladesh-on-wood.jpg";
    const Image picture = std::get<Image>(kestrelid::readImage(path)).upright();
    std::promise<PassportValidationResult> answer;
    const auto detectorForCpp = kestrelid::PassportDetector::create();
    detectorForCpp->validate(picture, [&](const auto& given) { answer.set_value(given); });
    const PassportValidationResult expected = answer.get_future().get();
    EXPECT_TRUE(expected.isPassport());

    KestrelidDetector* detector = nullptr;
    ASSERT_EQ(kestrelid_detector_create(nullptr, &detector, nullptr), KESTRELID_OK);
    for (KestrelidImage* image : {fromPath(path), fromBgra(*picture.bitmap())}) {
        KestrelidResult* given = nullptr;
        ASSERT_EQ(kestrelid_detector_validate_wait(detector, image, &given, nullptr), KESTRELID_OK);
        EXPECT_EQ(kestrelid_result_is_passport(given), 1);
        EXPECT_DOUBLE_EQ(kestrelid_result_confidence(given), expected.confidence());
        std::vector<std::string> reasons;
        for (std::size_t index = 0; index < kestrelid_result_reason_count(given); ++index)
            reasons.emplace_back(kestrelid_result_reason(given, index, nullptr));
        EXPECT_EQ(reasons, expected.reasons());
        std::size_t size = 0;
        const char* text = kestrelid_result_recognized_text(given, &size);
        EXPECT_EQ(std::string(text, size), expected.recognizedText());
        EXPECT_EQ(text[size], '\0');
        kestrelid_result_release(given);
        kestrelid_image_release(image);
    }
    kestrelid_detector_release(detector);
}

}  // namespace
