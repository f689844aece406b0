#include "imagefile/HevcHeader.h"

#include "imagefile/DecodingLimits.h"
#include "imagefile/HeifBoxes.h"

#include <algorithm>
#include <array>
#include <vector>

namespace kestrelid::imagefile {
namespace {

using Bytes = std::span<const std::byte>;

// Bits of a NAL unit's payload (ITU-T H.265, 7.2 and 9.2),
// without the bytes that keep start codes out of it.
class BitReader {
public:
    explicit BitReader(Bytes unit) {
        int zeros = 0;
        for (const std::byte byte : unit) {
            if (zeros >= 2 && byte == std::byte{3}) {
                zeros = 0;
                continue;
            }
            zeros = byte == std::byte{0} ? zeros + 1 : 0;
            payload_.push_back(byte);
        }
    }

    // Whether a read went beyond the end, or met no number; it returned 0 then.
    [[nodiscard]] bool failed() const { return failed_; }

    void skip(int count) { at_ += static_cast<std::size_t>(count); }

    std::uint32_t bits(int count) {
        std::uint32_t value = 0;
        for (; count > 0; --count, ++at_) {
            if (at_ / 8 >= payload_.size()) {
                failed_ = true;
                return 0;
            }
            value = value << 1 |
                    (std::to_integer<std::uint32_t>(payload_[at_ / 8]) >> (7 - at_ % 8) & 1);
        }
        return value;
    }

    // ue(v): as many zeros as there are bits after the first 1.
    std::uint32_t number() {
        int zeros = 0;
        while (!failed_ && bits(1) == 0)
            ++zeros;
        failed_ |= zeros > 30;
        return failed_ ? 0 : (std::uint32_t{1} << zeros) - 1 + bits(zeros);
    }

    void skipNumbers(int count) {
        for (; count > 0; --count)
            static_cast<void>(number());
    }

private:
    std::vector<std::byte> payload_;
    std::size_t at_ = 0;
    bool failed_ = false;
};

// profile_tier_level(), 7.3.3
void skipProfile(BitReader& reader, int furtherLayers) {
    constexpr int kProfileBits = 88;
    constexpr int kLevelBits = 8;
    reader.skip(kProfileBits + kLevelBits);
    std::array<std::uint32_t, 8> present = {};
    for (int layer = 0; layer < furtherLayers; ++layer)
        present[static_cast<std::size_t>(layer)] = reader.bits(2);
    if (furtherLayers > 0)
        reader.skip(2 * (8 - furtherLayers));
    for (const std::uint32_t flags : present)
        reader.skip((flags & 2 ? kProfileBits : 0) + (flags & 1 ? kLevelBits : 0));
}

// seq_parameter_set_rbsp() up to what matters, 7.3.2.2.1; unit is the whole NAL unit.
std::optional<ImageError> checkSequence(Bytes unit) {
    BitReader reader(unit);
    reader.skip(16 + 4);  // NAL unit header, video parameter set
    const int furtherLayers = static_cast<int>(reader.bits(3));
    reader.skip(1);
    skipProfile(reader, furtherLayers);
    reader.skipNumbers(1);  // its own number
    const bool separatePlanes = reader.number() == 3 && reader.bits(1) != 0;
    const std::int64_t width = reader.number();
    const std::int64_t height = reader.number();
    if (reader.bits(1))
        reader.skipNumbers(4);  // cropping
    const std::uint32_t lumaBits = 8 + reader.number();
    const std::uint32_t chromaBits = 8 + reader.number();
    reader.skipNumbers(1);  // picture order
    reader.skipNumbers(3 * (reader.bits(1) ? furtherLayers + 1 : 1));
    // As powers of two; the sums stay small because the terms are compared before they are added.
    constexpr std::uint32_t kLargestBlock = 6;
    const std::uint32_t minimumBlock = reader.number() + 3;
    const std::uint32_t blockRange = reader.number();
    const std::uint32_t minimumTransform = reader.number() + 2;
    const std::uint32_t transformRange = reader.number();
    const std::uint32_t depth = std::max(reader.number(), reader.number());

    if (auto tooLarge = checkSize(width, height))
        return tooLarge;
    const bool inRange = minimumBlock <= kLargestBlock &&
                         blockRange <= kLargestBlock - minimumBlock &&
                         minimumTransform <= kLargestBlock && transformRange <= kLargestBlock;
    if (reader.failed() || !inRange || separatePlanes || lumaBits > 16 || chromaBits > 16)
        return decodingError(Fault::damaged, "HEIC", "its sequence parameters make no sense");
    const std::uint32_t largestBlock = minimumBlock + blockRange;
    const std::int64_t step = std::int64_t{1} << minimumBlock;
    if (width % step != 0 || height % step != 0 || minimumTransform >= minimumBlock ||
        minimumTransform + transformRange > std::min(largestBlock, 5u) ||
        depth > largestBlock - minimumTransform)
        return decodingError(Fault::damaged, "HEIC",
                             "its sequence parameters contradict each other");
    return std::nullopt;
}

// HEVCDecoderConfigurationRecord: lists of NAL units, each list of one type.
std::optional<ImageError> checkConfiguration(Bytes record) {
    constexpr std::size_t kListCount = 22;  // where it stands
    constexpr std::uint32_t kSequence = 33;
    const ImageError cut =
        decodingError(Fault::damaged, "HEIC", "its decoder configuration is cut short");
    if (record.size() <= kListCount)
        return cut;
    std::uint32_t lists = numberAt(record, kListCount, 1);
    for (record = record.subspan(kListCount + 1); lists > 0; --lists) {
        if (record.size() < 3)
            return cut;
        const std::uint32_t type = numberAt(record, 0, 1) & 0x3F;
        std::uint32_t units = numberAt(record, 1, 2);
        for (record = record.subspan(3); units > 0; --units) {
            const std::size_t length = record.size() < 2 ? 0 : numberAt(record, 0, 2);
            if (record.size() < 2 + length)
                return cut;
            if (type == kSequence) {
                if (auto error = checkSequence(record.subspan(2, length)))
                    return error;
            }
            record = record.subspan(2 + length);
        }
    }
    return std::nullopt;
}

}  // namespace

std::optional<ImageError> checkHevcHeaders(Bytes file) {
    for (const Bytes record : boxesAt({"meta", "iprp", "ipco", "hvcC"}, file)) {
        if (auto error = checkConfiguration(record))
            return error;
    }
    return std::nullopt;
}

}  // namespace kestrelid::imagefile
