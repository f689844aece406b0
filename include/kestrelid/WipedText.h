#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

namespace kestrelid {

/// Overwrites memory before it gives it back, so that what a document says does not stay behind.
template <typename T>
struct WipingAllocator {
    using value_type = T;  ///< as allocators have it

    WipingAllocator() = default;
    /// For another type, as containers ask for it.
    template <typename Other>
    WipingAllocator(const WipingAllocator<Other>& /*other*/) noexcept {}

    /// Memory for so many values; throws std::bad_alloc.
    [[nodiscard]] T* allocate(std::size_t count) { return std::allocator<T>().allocate(count); }
    /// Overwrites the memory, then gives it back.
    void deallocate(T* memory, std::size_t count) noexcept {
        ::explicit_bzero(static_cast<void*>(memory), count * sizeof(T));
        std::allocator<T>().deallocate(memory, count);
    }

    friend bool operator==(const WipingAllocator&, const WipingAllocator&) { return true; }
};

/// Personal data as values: wiped when they are released.
template <typename T>
using Wiped = std::vector<T, WipingAllocator<T>>;

/// Personal data as text. (A std::string keeps short texts in itself, where nothing wipes them.)
class WipedText {
public:
    WipedText() = default;
    /// A copy.
    explicit WipedText(std::string_view text) : characters_(text.begin(), text.end()) {}

    /// Valid as long as this text is neither changed nor released.
    [[nodiscard]] std::string_view view() const noexcept {
        return {characters_.data(), characters_.size()};
    }
    /// Whether there is no character.
    [[nodiscard]] bool empty() const noexcept { return characters_.empty(); }
    /// At the end. text: none of this text itself.
    void append(std::string_view text) {
        characters_.insert(characters_.end(), text.begin(), text.end());
    }

    friend bool operator==(const WipedText&, const WipedText&) = default;
    friend bool operator==(const WipedText& a, std::string_view b) { return a.view() == b; }

private:
    Wiped<char> characters_;
};

}  // namespace kestrelid
