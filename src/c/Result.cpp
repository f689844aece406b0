#include "c/Handles.h"

#include <algorithm>
#include <string>

namespace {

const char* shown(const std::string* text, size_t* size) {
    if (size)
        *size = text ? text->size() : 0;
    return text ? text->c_str() : nullptr;
}

}  // namespace

KestrelidResult* kestrelid_result_copy(const KestrelidResult* result) {
    if (!result)
        return nullptr;
    try {
        return new KestrelidResult{
            .own = result->value(), .outline = result->outline, .matches = result->matches};
    } catch (...) {
        return nullptr;
    }
}

void kestrelid_result_release(KestrelidResult* result) {
    delete result;
}

int kestrelid_result_is_passport(const KestrelidResult* result) {
    return result && result->value().isPassport() ? 1 : 0;
}

double kestrelid_result_confidence(const KestrelidResult* result) {
    return result ? result->value().confidence() : 0.0;
}

size_t kestrelid_result_reason_count(const KestrelidResult* result) {
    return result ? result->value().reasons().size() : 0;
}

const char* kestrelid_result_reason(const KestrelidResult* result, size_t index, size_t* size) {
    const bool exists = index < kestrelid_result_reason_count(result);
    return shown(exists ? &result->value().reasons()[index] : nullptr, size);
}

const char* kestrelid_result_recognized_text(const KestrelidResult* result, size_t* size) {
    return shown(result ? &result->value().recognizedText() : nullptr, size);
}

int kestrelid_result_outline(const KestrelidResult* result, KestrelidPoint* corners) {
    if (!result || !result->outline || !corners)
        return 0;
    std::ranges::copy(*result->outline, corners);
    return 1;
}

size_t kestrelid_result_match_count(const KestrelidResult* result) {
    return result ? result->matches.size() : 0;
}

const char* kestrelid_result_match(const KestrelidResult* result, size_t index, int32_t* distance,
                                   size_t* size) {
    const bool exists = index < kestrelid_result_match_count(result);
    if (distance)
        *distance = exists ? result->matches[index].distance : 0;
    return shown(exists ? &result->matches[index].keyword : nullptr, size);
}
