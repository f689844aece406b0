#include "c/Border.h"

#include "base/Failures.h"

#include <algorithm>

struct KestrelidError {
    KestrelidStatus status;
    std::string text;
};

namespace kestrelid::c {

void require(const void* argument, const char* name) {
    if (!argument)
        throw Failure{KESTRELID_INVALID_ARGUMENT, std::string(name) + " is NULL"};
}

void checkStruct(const void* given, std::size_t givenSize, std::size_t firstSize,
                 std::size_t knownSize) {
    if (givenSize < firstSize)
        throw Failure{KESTRELID_INVALID_ARGUMENT, "struct_size is not set"};
    const auto* bytes = static_cast<const unsigned char*>(given);
    if (givenSize > knownSize && !std::all_of(bytes + knownSize, bytes + givenSize,
                                              [](unsigned char byte) { return byte == 0; }))
        throw Failure{KESTRELID_INVALID_ARGUMENT,
                      "a field is set that this version of the library does not know"};
}

KestrelidStatus report(KestrelidError** error, KestrelidStatus status, const char* text) noexcept {
    if (error) {
        try {
            *error = new KestrelidError{status, base::oneLine(text ? text : "")};
        } catch (...) {
            *error = nullptr;
        }
    }
    return status;
}

}  // namespace kestrelid::c

const char* kestrelid_library_version() {
    return KESTRELID_VERSION;
}

KestrelidStatus kestrelid_error_status(const KestrelidError* error) {
    return error ? error->status : KESTRELID_OK;
}

const char* kestrelid_error_text(const KestrelidError* error) {
    return error ? error->text.c_str() : "";
}

void kestrelid_error_free(KestrelidError* error) {
    delete error;
}
