#pragma once

#include <kestrelid/Export.h>
#include <kestrelid/Image.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <variant>

namespace kestrelid {

/// Checked in the file's header before any pixel is decoded.
inline constexpr std::int64_t kMaximumPixels = 100'000'000;
inline constexpr int kMaximumSide = 20'000;                         ///< pixels
inline constexpr std::size_t kMaximumFileSize = 64u * 1024 * 1024;  ///< bytes

/// How much of a picture is wanted.
struct DecodeOptions {
    /// Pixels. A decoder that can give a smaller picture for less work (JPEG: by halves) may do so
    /// as long as the longer side stays at least this long; 0: full size.
    int sufficientSide = 0;
    /// Which page of a TIFF, from 0. Other pictures have only page 0.
    int page = 0;
};

/// Why a picture could not be read or written.
struct ImageError {
    std::string cause;           ///< one line, without the file's name
    bool isOutOfMemory = false;  ///< memory was refused: the file may be whole
};

using ImageResult = std::variant<Image, ImageError>;

/// Decodes JPEG, PNG, WebP, TIFF or HEIC (told apart by their first bytes) into RGB8 or Gray8;
/// transparent parts are laid on white. Never throws; a truncated or damaged file is an error.
/// Takes little more than the decoded picture, up to three times as much for progressive JPEG,
/// lossless WebP and HEIC; a file that would need more than 600 MB is refused. Thread: any.
[[nodiscard]] KESTRELID_EXPORT ImageResult decodeImage(std::span<const std::byte> file,
                                                       const DecodeOptions& options = {});

/// Whether a file that begins like this is of a format that decodeImage() reads: 16 bytes are
/// enough. Thread: any.
[[nodiscard]] KESTRELID_EXPORT bool isImageFormat(std::span<const std::byte> start) noexcept;

/// How many pages a TIFF has, reduced copies of others left out; 1 for any other file, whether it
/// can be decoded or not. A page that is damaged counts: decodeImage() says what is wrong with it.
/// Takes time for each page, not for its pixels. Thread: any.
[[nodiscard]] KESTRELID_EXPORT int countPages(std::span<const std::byte> file) noexcept;

/// Reads and decodes a file; errors as for decodeImage(), and those of the file system. Thread:
/// any.
[[nodiscard]] KESTRELID_EXPORT ImageResult readImage(const std::filesystem::path& path,
                                                     const DecodeOptions& options = {});

/// Writes a JPEG (.jpg, .jpeg; quality 90) or a PNG (.png), by the file's extension; rows as they
/// are shown. Returns nothing if it was written. Replaces an existing file only once the new one is
/// whole. Thread: any.
[[nodiscard]] KESTRELID_EXPORT std::optional<ImageError>
writeImage(const std::filesystem::path& path, const Image& image);

}  // namespace kestrelid
