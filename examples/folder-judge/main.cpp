#include "PictureJudge.h"

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cstring>
#include <iostream>
#include <kestrelid/TextEvidence.h>
#include <nlohmann/json.hpp>
#include <thread>
#include <vector>

using Json = nlohmann::ordered_json;

constexpr const char* kUsage =
    "usage: folder-judge [-0] [--jobs NUMBER] < NAMES\n"
    "Judges the pictures whose names come on standard input, one a line (-0: each ended by a zero\n"
    "byte), NUMBER at once (1 to 64, default: as many as processors). Prints one JSON object a "
    "line,\n"
    "in the order in which verdicts are reached. Exit status: 0 done, 1 some picture could not be\n"
    "judged, 2 wrong usage.\n";

struct Options {
    char end = '\n';  // of a name
    int jobs = std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 1, 64);
};

std::optional<Options> parse(int count, char** arguments) {
    Options options;
    for (int index = 1; index < count; ++index) {
        const std::string_view argument = arguments[index];
        if (argument == "-0") {
            options.end = '\0';
        } else if (argument == "--jobs" && index + 1 < count) {
            const char* const text = arguments[++index];
            const char* const end = text + std::strlen(text);
            const auto [rest, error] = std::from_chars(text, end, options.jobs);
            if (error != std::errc{} || rest != end || options.jobs < 1 || options.jobs > 64)
                return std::nullopt;
        } else {
            return std::nullopt;
        }
    }
    return options;
}

// As `kestrelid validate --json --no-text` has it. JSON holds UTF-8 only, file names hold any
// bytes: what is not UTF-8 shows as U+FFFD, and the name stands in hexadecimal digits beside it.
std::string lineOf(const std::string& name, Json findings) {
    Json object{{"schema", 1}, {"file", name}};
    const auto lenient = Json::error_handler_t::replace;
    if (kestrelid::invalidUtf8Offset(name)) {
        constexpr char kDigits[] = "0123456789abcdef";
        std::string bytes;
        for (const char byte : name)
            bytes.append({kDigits[(byte >> 4) & 15], kDigits[byte & 15]});
        object["fileBytes"] = bytes;
    }
    object.update(findings);
    return object.dump(-1, ' ', false, lenient) + '\n';
}

int main(int count, char** arguments) {
    const auto options = parse(count, arguments);
    if (!options)
        return std::cerr << kUsage, 2;
    std::ios::sync_with_stdio(false);
    const auto processors = static_cast<int>(std::thread::hardware_concurrency());
    // Several pictures at once beat several threads on one.
    const auto services =
        kestrelid::defaultServices({.textThreads = std::clamp(processors / options->jobs, 1, 4)});

    std::mutex input;
    std::mutex output;
    std::atomic<int> status = 0;
    const auto work = [&] {
        PictureJudge judge(services);
        for (std::string name; std::cout.good();) {
            {
                const std::lock_guard lock(input);
                if (!std::getline(std::cin, name, options->end))
                    return;
            }
            if (name.empty())
                continue;
            Json findings;
            const auto judged = judge.judge(name);
            if (const auto* error = std::get_if<std::string>(&judged)) {
                findings["error"] = *error;
                status = 1;
            } else {
                const auto& result = std::get<kestrelid::PassportValidationResult>(judged);
                findings["isPassport"] = result.isPassport();
                findings["confidence"] = result.confidence();
                findings["reasons"] = result.reasons();
            }
            const std::string line = lineOf(name, std::move(findings));
            const std::lock_guard lock(output);
            std::cout << line << std::flush;
        }
    };
    std::vector<std::jthread> workers;
    for (int job = 0; job < options->jobs; ++job)
        workers.emplace_back(work);
    workers.clear();
    return std::cin.bad() || !std::cout ? 1 : status.load();
}
