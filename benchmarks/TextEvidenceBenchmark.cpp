#include "detection/PassportKeywords.h"
#include "tests/reference/PlainTextRules.h"

#include <kestrelid/TextEvidence.h>

#include <benchmark/benchmark.h>
#include <random>
#include <string>

// The text evidence of one page, against the plain rules as the yardstick.
namespace kestrelid {
namespace {

// Words as on a page: labels among other words of 2 to 9 letters.
std::string page(std::int64_t words) {
    std::mt19937 engine(11);
    std::string text;
    for (std::int64_t word = 0; word < words; ++word) {
        if (engine() % 8 == 0) {
            text += detection::passportKeywords()[engine() % detection::passportKeywords().size()];
        } else {
            for (auto letters = 2 + engine() % 8; letters > 0; --letters)
                text += static_cast<char>('A' + engine() % 26);
        }
        text += engine() % 5 == 0 ? '\n' : ' ';
    }
    return text;
}

void evidence(benchmark::State& state) {
    const std::string text = page(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(textEvidence(text));
}
BENCHMARK(evidence)->Arg(60)->Arg(2000)->Unit(benchmark::kMillisecond);

void plainRules(benchmark::State& state) {
    const std::string text = page(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(
            reference::matchKeywords(detection::passportKeywords(), reference::normalize(text)));
}
BENCHMARK(plainRules)->Arg(60)->Arg(2000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace kestrelid
