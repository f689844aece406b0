#pragma once

#include <kestrelid/kestrelid.h>

#include <cstddef>
#include <new>
#include <stdexcept>
#include <string>

namespace kestrelid::c {

// What a body throws for guarded() to report.
struct Failure {
    KestrelidStatus status;
    std::string text;
};

// Throws a Failure that says which argument is NULL.
void require(const void* argument, const char* name);

// For structs that grow at their end: throws a Failure unless the caller's struct has at least the
// fields of its first version and holds zeros behind those that are known here.
void checkStruct(const void* given, std::size_t givenSize, std::size_t firstSize,
                 std::size_t knownSize);

// status. error: NULL or gets an error; text: may be NULL.
KestrelidStatus report(KestrelidError** error, KestrelidStatus status, const char* text) noexcept;

// Runs the body and turns what it throws into a status and an error.
template <typename Body>
KestrelidStatus guarded(KestrelidError** error, const Body& body) noexcept {
    if (error)
        *error = nullptr;
    try {
        body();
        return KESTRELID_OK;
    } catch (const Failure& failure) {
        return report(error, failure.status, failure.text.c_str());
    } catch (const std::bad_alloc&) {
        return report(error, KESTRELID_OUT_OF_MEMORY, "not enough memory");
    } catch (const std::exception& exception) {
        return report(error, KESTRELID_FAILED, exception.what());
    } catch (...) {
        return report(error, KESTRELID_FAILED, "unknown exception");
    }
}

}  // namespace kestrelid::c
