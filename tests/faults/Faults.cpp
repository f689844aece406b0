#include "tests/faults/Faults.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <link.h>
#include <map>
#include <mutex>
#include <string_view>
#include <unistd.h>
#include <unwind.h>
#include <utility>

namespace kestrelid::test {

std::atomic<long> heldAllocations = 0;
std::atomic<int> attempts = 0;
constinit thread_local int calms = 0;

namespace {

// Libraries that end the process when they are refused this: see README.md.
constexpr std::array kExemptions = {
    std::pair(memory, "libglib-2.0.so"), std::pair(memory, "ld-linux"),
    std::pair(memory, "libonnxruntime"), std::pair(memory, "libtbb.so"),
    std::pair(thread, "libde265.so")};

Fault wanted;
int reportsOfRun = -1;
std::atomic<Run> present = Run::clean;
std::atomic<bool> isShort = false;
std::atomic<int> turns = 0;
std::array<std::atomic<std::uint64_t>, 4> asked;

struct Requests {
    int count = 0;
    std::uint64_t first = 0;
};
std::mutex counting;
std::map<std::pair<Resource, std::uint64_t>, Requests> requests;

struct Place {
    std::string_view library;
    const char* file;
    std::uintptr_t offset;
};

Place placeOf(std::uintptr_t address) {
    dl_find_object found{};
    if (_dl_find_object(reinterpret_cast<void*>(address), &found) != 0)
        return {"", "?", address};
    const std::string_view file = found.dlfo_link_map->l_name;
    return {file.substr(file.rfind('/') + 1), file.empty() ? "/proc/self/exe" : file.data(),
            address - found.dlfo_link_map->l_addr};
}

// The addresses to which the calls under way return, innermost first.
class Calls {
public:
    // From caller on, or from here if it is null.
    explicit Calls(const void* caller = nullptr) {
        _Unwind_Backtrace(&Calls::add, this);
        if (caller)
            first_ = static_cast<int>(
                std::find(begin(), end(), reinterpret_cast<std::uintptr_t>(caller)) - begin());
    }

    [[nodiscard]] const std::uintptr_t* begin() const { return all_.data() + first_; }
    [[nodiscard]] const std::uintptr_t* end() const { return all_.data() + count_; }

    // Whether the innermost call outside of the C and C++ libraries stands in one of that name.
    [[nodiscard]] bool comeFrom(std::string_view library) const {
        const auto* const first = std::find_if(begin(), end(), [](std::uintptr_t address) {
            const std::string_view name = placeOf(address).library;
            return !name.starts_with("libc.so") && !name.starts_with("libstdc++");
        });
        return first != end() && placeOf(*first).library.starts_with(library);
    }

    // The same in every process. Of other libraries only their names count, so that the requests
    // which one call into them makes are told apart by their turn.
    [[nodiscard]] std::uint64_t number() const {
        std::uint64_t number = 1;
        const auto add = [&](std::uint64_t part) {
            number = (number ^ part) * 0x9e3779b97f4a7c15u;  // mixes all bits of a word
            number ^= number >> 32;
        };
        std::string_view last;
        for (const std::uintptr_t address : *this) {
            const Place place = placeOf(address);
            if (place.library.empty() || place.library.starts_with("libkestrelid"))
                add(place.offset);
            else if (place.library != last)
                add(std::hash<std::string_view>()(place.library));
            last = place.library;
        }
        return number;
    }

    void write(const char* what, int reports) const {
        for (const std::uintptr_t address : *this) {
            const Place place = placeOf(address);
            std::array<char, 512> line{};  // written at once: other threads write too
            const int length = std::snprintf(line.data(), line.size(), "%s %s %zx\n", what,
                                             place.file, place.offset);
            (void)!::write(reports, line.data(), static_cast<std::size_t>(length));
        }
    }

private:
    static _Unwind_Reason_Code add(_Unwind_Context* context, void* self) {
        auto& calls = *static_cast<Calls*>(self);
        const std::uintptr_t address = _Unwind_GetIP(context);
        if (address != 0)
            calls.all_[static_cast<std::size_t>(calls.count_++)] = address;
        return calls.count_ == static_cast<int>(calls.all_.size()) ? _URC_END_OF_STACK
                                                                   : _URC_NO_REASON;
    }

    std::array<std::uintptr_t, 48> all_;
    int count_ = 0;
    int first_ = 0;
};

bool isRefused(Resource resource, const void* caller) {
    if (attempts == 0 || calms > 0 || present == Run::clean ||
        (present == Run::faulty && resource != wanted.resource))
        return false;
    const std::uint64_t place = ++asked[resource];
    if (present == Run::faulty && place < wanted.from)
        return false;
    const Calm calm;
    const Calls calls(caller);
    if (std::ranges::any_of(kExemptions, [&](const auto& exemption) {
            return exemption.first == resource && calls.comeFrom(exemption.second);
        }))
        return false;
    if (isShort)
        return true;
    const std::uint64_t number = calls.number();
    if (present == Run::counted) {
        const std::lock_guard lock(counting);
        Requests& same = requests[{resource, number}];
        if (++same.count == 1)
            same.first = place;
        return false;
    }
    if (number != wanted.calls || ++turns != wanted.turn)
        return false;
    isShort = wanted.lasts;
    present = wanted.lasts ? Run::faulty : Run::clean;
    calls.write("refused", reportsOfRun);
    return true;
}

}  // namespace

void beginRun(Run run, const Fault& fault, int reports) {
    wanted = fault;
    reportsOfRun = reports;
    turns = 0;
    std::ranges::fill(asked, 0);
    isShort = false;
    present = run;
}

void writeRequests(int reports) {
    for (const auto& [request, same] : requests)
        dprintf(reports, "request %u %zx %d %zu\n", request.first, request.second, same.count,
                same.first);
}

void writeCalls(const char* what, int reports) {
    Calls().write(what, reports);
}

}  // namespace kestrelid::test

// ---- What stands in front of the C library's functions

using namespace kestrelid::test;

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* memory);
}

// Defines a function under the C library's name, whatever its headers declare.
#define IN_FRONT_OF(name, result, parameters)                                                      \
    extern "C" __attribute__((visibility("default")))                                              \
    result kestrelid_##name parameters __asm__(#name);                                             \
    result kestrelid_##name parameters

#define ALLOCATION(name, parameters, allocated)                                                    \
    IN_FRONT_OF(name, void*, parameters) {                                                         \
        void* const memory =                                                                       \
            isRefused(Resource::memory, __builtin_return_address(0)) ? nullptr : allocated;        \
        if (!memory)                                                                               \
            errno = ENOMEM;                                                                        \
        heldAllocations += memory != nullptr;                                                      \
        return memory;                                                                             \
    }

ALLOCATION(malloc, (std::size_t size), __libc_malloc(size))
ALLOCATION(calloc, (std::size_t number, std::size_t size), __libc_calloc(number, size))
ALLOCATION(aligned_alloc, (std::size_t bound, std::size_t size), __libc_memalign(bound, size))

IN_FRONT_OF(posix_memalign, int, (void** to, std::size_t bound, std::size_t size)) {
    if (isRefused(memory, __builtin_return_address(0)))
        return ENOMEM;
    *to = __libc_memalign(bound, size);
    heldAllocations += *to != nullptr;
    return *to ? 0 : ENOMEM;
}

IN_FRONT_OF(realloc, void*, (void* old, std::size_t size)) {
    if (isRefused(memory, __builtin_return_address(0))) {
        errno = ENOMEM;
        return nullptr;
    }
    void* const moved = __libc_realloc(old, size);
    heldAllocations += (!old && moved) - (old && size == 0);
    return moved;
}

IN_FRONT_OF(free, void, (void* old)) {
    heldAllocations -= old != nullptr;
    __libc_free(old);
}

// A function that the next library has under the same name; failure: its value when refused.
#define REFUSABLE(name, resource, code, failure, result, parameters, arguments)                    \
    IN_FRONT_OF(name, result, parameters) {                                                        \
        static const auto next = [] {                                                              \
            const Calm calm;                                                                       \
            return reinterpret_cast<result(*) parameters>(dlsym(RTLD_NEXT, #name));                \
        }();                                                                                       \
        if (!isRefused(resource, __builtin_return_address(0)))                                     \
            return next arguments;                                                                 \
        errno = code;                                                                              \
        return failure;                                                                            \
    }

// A call without a mode passes what stood in its register, which nobody looks at.
#define OPENING(name, result, failure, parameters, arguments)                                      \
    REFUSABLE(name, file, EMFILE, failure, result, parameters, arguments)
#define DESCRIPTOR(name, parameters, arguments)                                                    \
    REFUSABLE(name, descriptor, EMFILE, -1, int, parameters, arguments)

OPENING(open, int, -1, (const char* path, int flags, mode_t mode), (path, flags, mode))
OPENING(open64, int, -1, (const char* path, int flags, mode_t mode), (path, flags, mode))
OPENING(fopen, void*, nullptr, (const char* path, const char* mode), (path, mode))
OPENING(fopen64, void*, nullptr, (const char* path, const char* mode), (path, mode))
OPENING(opendir, void*, nullptr, (const char* path), (path))
// Fails by a name that is not there, so that dlerror() has something to say.
OPENING(dlopen, void*, next("refused", flags), (const char* path, int flags), (path, flags))
DESCRIPTOR(eventfd, (unsigned start, int flags), (start, flags))
DESCRIPTOR(epoll_create1, (int flags), (flags))
DESCRIPTOR(timerfd_create, (int clock, int flags), (clock, flags))
DESCRIPTOR(memfd_create, (const char* name, unsigned flags), (name, flags))
DESCRIPTOR(pipe2, (int* ends, int flags), (ends, flags))
DESCRIPTOR(socket, (int domain, int type, int protocol), (domain, type, protocol))
DESCRIPTOR(dup, (int number), (number))
REFUSABLE(pthread_create, thread, EAGAIN, EAGAIN, int,
          (void* made, const void* attributes, void* (*start)(void*), void* argument),
          (made, attributes, start, argument))
