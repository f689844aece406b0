#include "imagefile/ExifOrientation.h"

#include <libexif/exif-data.h>
#include <libexif/exif-mem.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <new>
#include <vector>

namespace kestrelid::imagefile {
namespace {

// What one JPEG segment holds. PNG and WebP allow more, but libexif copies every tag's bytes, and
// tags may overlap: a longer block could ask for a multiple of its size.
constexpr std::size_t kMaximumExifSize = 65'533;  // bytes

constexpr std::array kLead = {std::byte{'E'}, std::byte{'x'}, std::byte{'i'},
                              std::byte{'f'}, std::byte{0},   std::byte{0}};

bool hasLead(std::span<const std::byte> exif) {
    return exif.size() >= kLead.size() && std::equal(kLead.begin(), kLead.end(), exif.begin());
}

// Without memory libexif leaves tags out and does not say so.
thread_local bool isMemoryRefused = false;

void* told(void* memory) {
    isMemoryRefused = isMemoryRefused || !memory;
    return memory;
}

void* take(ExifLong size) {
    return told(std::calloc(size, 1));
}

void* retake(void* memory, ExifLong size) {
    return told(std::realloc(memory, size));
}

}  // namespace

Orientation orientationFromTag(int value) {
    return value >= 1 && value <= 8 ? static_cast<Orientation>(value) : Orientation::up;
}

Orientation exifOrientation(std::span<const std::byte> exif) {
    std::vector<std::byte> block;
    if (!hasLead(exif))
        block.assign(kLead.begin(), kLead.end());
    const auto taken = exif.first(std::min(exif.size(), kMaximumExifSize - block.size()));
    block.insert(block.end(), taken.begin(), taken.end());

    isMemoryRefused = false;
    const std::unique_ptr<ExifMem, decltype(&exif_mem_unref)> memory(
        exif_mem_new(take, retake, std::free), &exif_mem_unref);
    const std::unique_ptr<ExifData, decltype(&exif_data_unref)> parsed(
        memory ? exif_data_new_mem(memory.get()) : nullptr, &exif_data_unref);
    if (parsed)
        exif_data_load_data(parsed.get(), reinterpret_cast<const unsigned char*>(block.data()),
                            static_cast<unsigned int>(block.size()));
    if (!parsed || isMemoryRefused)
        throw std::bad_alloc();
    const ExifEntry* entry = exif_content_get_entry(parsed->ifd[EXIF_IFD_0], EXIF_TAG_ORIENTATION);
    if (!entry || entry->format != EXIF_FORMAT_SHORT || entry->components != 1 || !entry->data ||
        entry->size < 2)
        return Orientation::up;
    return orientationFromTag(exif_get_short(entry->data, exif_data_get_byte_order(parsed.get())));
}

}  // namespace kestrelid::imagefile
