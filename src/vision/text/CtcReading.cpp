#include "vision/text/CtcReading.h"

#include <algorithm>

namespace kestrelid::vision {
namespace {

constexpr std::size_t kBlank = 0;
constexpr std::size_t kSpace = kTextClasses - 1;

char characterOf(std::size_t textClass) {
    return textClass == kSpace ? ' ' : static_cast<char>('!' + textClass - 1);
}

}  // namespace

CtcReading bestPath(std::span<const float> probabilities) {
    CtcReading reading;
    std::size_t previous = kBlank;
    for (; probabilities.size() >= kTextClasses;
         probabilities = probabilities.subspan(kTextClasses)) {
        const auto step = probabilities.first(kTextClasses);
        const auto highest = std::ranges::max_element(step);
        const auto best = static_cast<std::size_t>(highest - step.begin());
        if (best != kBlank && best != previous) {
            reading.text += characterOf(best);
            reading.confidence += *highest;
        }
        previous = best;
    }
    if (!reading.text.empty())
        reading.confidence /= static_cast<float>(reading.text.size());
    const auto isSpace = [](char character) { return character == ' '; };
    const auto first = std::find_if_not(reading.text.begin(), reading.text.end(), isSpace);
    reading.text.erase(reading.text.begin(), first);
    const auto last = std::find_if_not(reading.text.rbegin(), reading.text.rend(), isSpace);
    reading.text.erase(last.base(), reading.text.end());
    return reading;
}

}  // namespace kestrelid::vision
