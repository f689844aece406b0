#include <kestrelid/Bitmap.h>
#include <kestrelid/ImageFile.h>
#include <kestrelid/kestrelid.h>
#include <kestrelid/PassportDetector.h>

#include <cstring>
#include <fstream>
#include <future>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace {

using ImageHandle = std::unique_ptr<KestrelidImage, void (*)(KestrelidImage*)>;
using ResultHandle = std::unique_ptr<KestrelidResult, void (*)(KestrelidResult*)>;

struct Row {
    const char* name;
    const char* sample;
    ImageHandle (*image)(const std::string& path);
    bool isPassport;
};

void PrintTo(const Row& row, std::ostream* out) {
    *out << row.name;
}

ImageHandle fromPath(const std::string& path) {
    KestrelidImage* image = nullptr;
    EXPECT_EQ(kestrelid_image_read(path.c_str(), &image, nullptr), KESTRELID_OK);
    return {image, kestrelid_image_release};
}

ImageHandle fromBytes(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(file), {});
    KestrelidImage* image = nullptr;
    EXPECT_EQ(kestrelid_image_decode(bytes.data(), bytes.size(), &image, nullptr), KESTRELID_OK);
    return {image, kestrelid_image_release};
}

// The pixels as a camera gives them: blue first, rows that start at multiples of 256 bytes.
ImageHandle fromBgra(const std::string& path) {
    const auto read = kestrelid::readImage(path);
    const kestrelid::Bitmap bitmap = *std::get<kestrelid::Image>(read).upright().bitmap();
    EXPECT_EQ(bitmap.format(), kestrelid::PixelFormat::rgb8);
    const std::size_t stride = (static_cast<std::size_t>(bitmap.width()) * 4 + 255) / 256 * 256;
    std::vector<std::byte> bytes(stride * static_cast<std::size_t>(bitmap.height()), std::byte{77});
    for (int y = 0; y < bitmap.height(); ++y)
        for (int x = 0; x < bitmap.width(); ++x) {
            const std::byte* from = bitmap.row(y) + x * 3;
            std::byte* to = bytes.data() + static_cast<std::size_t>(y) * stride + x * 4;
            to[0] = from[2];
            to[1] = from[1];
            to[2] = from[0];
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
    return {image, kestrelid_image_release};
}

// Both detectors load their models once.
class SameVerdict : public testing::TestWithParam<Row> {
protected:
    static void SetUpTestSuite() {
        ASSERT_EQ(kestrelid_detector_create(nullptr, &detector, nullptr), KESTRELID_OK);
        detectorForCpp = kestrelid::PassportDetector::create();
    }
    static void TearDownTestSuite() {
        kestrelid_detector_release(detector);
        detectorForCpp.reset();
    }

    static kestrelid::PassportValidationResult expected(const std::string& path) {
        std::promise<kestrelid::PassportValidationResult> answer;
        detectorForCpp->validate(std::get<kestrelid::Image>(kestrelid::readImage(path)).upright(),
                                 [&](const auto& result) { answer.set_value(result); });
        return answer.get_future().get();
    }

    static inline KestrelidDetector* detector = nullptr;
    static inline std::shared_ptr<kestrelid::PassportDetector> detectorForCpp;
};

TEST_P(SameVerdict, asTheInterfaceForCpp) {
    const std::string path = std::string(KESTRELID_SOURCE_DIR "/samples/") + GetParam().sample;
    const ImageHandle image = GetParam().image(path);
    KestrelidResult* given = nullptr;
    ASSERT_EQ(kestrelid_detector_validate_wait(detector, image.get(), &given, nullptr),
              KESTRELID_OK);
    const ResultHandle result(given, kestrelid_result_release);

    const kestrelid::PassportValidationResult other = expected(path);
    EXPECT_EQ(kestrelid_result_is_passport(given) != 0, GetParam().isPassport);
    EXPECT_EQ(other.isPassport(), GetParam().isPassport);
    EXPECT_DOUBLE_EQ(kestrelid_result_confidence(given), other.confidence());
    std::vector<std::string> reasons;
    for (std::size_t index = 0; index < kestrelid_result_reason_count(given); ++index)
        reasons.emplace_back(kestrelid_result_reason(given, index, nullptr));
    EXPECT_EQ(reasons, other.reasons());
    std::size_t size = 0;
    const char* text = kestrelid_result_recognized_text(given, &size);
    EXPECT_EQ(std::string(text, size), other.recognizedText());
    EXPECT_EQ(std::strlen(text), size);
}

INSTANTIATE_TEST_SUITE_P(Samples, SameVerdict,
                         testing::Values(Row{"path", "bangladesh-on-wood.jpg", fromPath, true},
                                         Row{"bytes", "bangladesh-on-wood.jpg", fromBytes, true},
                                         Row{"bgra", "bangladesh-on-wood.jpg", fromBgra, true},
                                         Row{"other", "receipt.jpg", fromPath, false}),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
