#include "imagefile/HeifReferences.h"

#include "tests/imagefile/BlockPicture.h"
#include "tests/imagefile/FileBytes.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string_view>
#include <vector>

namespace kestrelid::imagefile {
namespace {

struct Reference {
    std::string_view type;
    std::uint32_t from;
    std::vector<std::uint32_t> to;
};

void appendNumber(Bytes& to, std::uint32_t value, int bytes) {
    to.resize(to.size() + static_cast<std::size_t>(bytes));
    writeNumber(to, to.size() - static_cast<std::size_t>(bytes), value, bytes, true);
}

void appendBox(Bytes& bytes, std::string_view type, const Bytes& contents) {
    appendNumber(bytes, static_cast<std::uint32_t>(8 + contents.size()), 4);
    for (const Bytes& part : {bytesOf(type), contents})
        bytes.insert(bytes.end(), part.begin(), part.end());
}

// A file of that box alone, with item numbers of itemBytes.
Bytes referenceBox(const std::vector<Reference>& references, int itemBytes = 2) {
    Bytes contents;
    appendNumber(contents, itemBytes == 2 ? 0 : 0x01000000, 4);
    for (const Reference& reference : references) {
        Bytes items;
        appendNumber(items, reference.from, itemBytes);
        appendNumber(items, static_cast<std::uint32_t>(reference.to.size()), 2);
        for (const std::uint32_t to : reference.to)
            appendNumber(items, to, itemBytes);
        appendBox(contents, reference.type, items);
    }
    Bytes meta(4);
    appendBox(meta, "iref", contents);
    Bytes file;
    appendBox(file, "meta", meta);
    return file;
}

// Pictures 1 to length, each made of the next one.
std::vector<Reference> chain(std::uint32_t length) {
    std::vector<Reference> references;
    for (std::uint32_t item = 1; item < length; ++item)
        references.push_back({"dimg", item, {item + 1}});
    return references;
}

TEST(HeifReferences, OfRealFilesPass) {
    const std::vector<std::uint32_t> tiles(400, 3);
    const std::vector<std::uint32_t> alphaTiles(400, 5);
    const std::vector<Reference> cases[] = {
        // A turned grid with an alpha plane that is a grid, both with previews.
        {{"dimg", 1, {2}},
         {"dimg", 2, tiles},
         {"auxl", 4, {2}},
         {"prem", 2, {4}},
         {"dimg", 4, alphaTiles},
         {"thmb", 6, {1}},
         {"cdsc", 7, {1}}},
        chain(7),
    };
    for (const auto& references : cases)
        EXPECT_EQ(checkHeifReferences(referenceBox(references)), std::nullopt) << references.size();
    EXPECT_EQ(checkHeifReferences(pictureFile("blocks.heic")), std::nullopt);
}

TEST(HeifReferences, WithoutEndAreRefused) {
    std::vector<Reference> doubling;
    for (std::uint32_t item = 1; item <= 3; ++item)
        doubling.push_back({"dimg", item, std::vector<std::uint32_t>(16, item + 1)});
    const std::vector<Reference> cases[] = {
        {{"dimg", 2, {2}}},
        {{"dimg", 1, {3}}, {"dimg", 2, {5}}, {"dimg", 5, {4, 2}}},
        {{"auxl", 2, {1}}, {"dimg", 2, {1}}},
        {{"auxl", 2, {1}}, {"auxl", 1, {2}}},
        chain(60'000),
        doubling,
        {{"dimg", 1, std::vector<std::uint32_t>(65'535, 2)}},
    };
    for (const auto& references : cases) {
        for (const int itemBytes : {2, 4}) {
            const auto error = checkHeifReferences(referenceBox(references, itemBytes));
            ASSERT_TRUE(error) << references.size();
            EXPECT_EQ(error->cause,
                      "damaged HEIC: its pictures refer to each other too often or without end");
        }
    }
}

TEST(HeifReferences, OfNoSenseAreRefused) {
    const Bytes whole = referenceBox({{"dimg", 2, {1}}});
    std::vector<Bytes> cases = {referenceBox({{"uuid", 2, {1}}}), whole, whole};
    cases[1][35] = std::byte{2};   // the count of the parts
    cases[2][27] = std::byte{17};  // the size of the reference
    for (const Bytes& file : cases) {
        const auto error = checkHeifReferences(file);
        ASSERT_TRUE(error);
        EXPECT_EQ(error->cause, "damaged HEIC: its item references make no sense");
    }
}

// libheif would follow this circle with threads until none are left.
TEST(HeifReferences, InACircleAreNotDecoded) {
    Bytes file = pictureFile("blocks.heic");
    writeNumber(file, placeOf(file, "dimg") + 4, 2, 2, true);
    EXPECT_EQ(causeOf(decodeImage(file)),
              "damaged HEIC: its pictures refer to each other too often or without end");
}

}  // namespace
}  // namespace kestrelid::imagefile
