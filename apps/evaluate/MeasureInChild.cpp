#include "apps/evaluate/Measurement.h"

#include "apps/cli/ChoiceOption.h"

#include <nlohmann/json.hpp>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kestrelid::evaluation {
namespace {

std::vector<std::string> childArguments(const Combination& combination,
                                        const MeasureOptions& options) {
    std::vector<std::string> arguments{"kestrelid-evaluate",
                                       kMeasureCommand,
                                       "--recognizer",
                                       cli::wordFor(kRecognizers, combination.recognizer),
                                       "--effort",
                                       cli::wordFor(cli::kEfforts, combination.effort),
                                       "--limit",
                                       std::to_string(options.limit),
                                       "--jobs",
                                       std::to_string(options.jobs)};
    if (!options.resources.empty())
        arguments.insert(arguments.end(), {"--resources", options.resources.native()});
    arguments.insert(arguments.end(), {"--", options.manifest.native()});
    return arguments;
}

struct Child {
    pid_t id = 0;
    std::FILE* output = nullptr;
};

std::variant<Child, MeasureError> start(const std::vector<std::string>& arguments) {
    int ends[2];
    if (::pipe(ends) != 0)
        return MeasureError{std::strerror(errno)};
    std::vector<char*> words;
    for (const std::string& argument : arguments)
        words.push_back(const_cast<char*>(argument.c_str()));  // posix_spawn only reads them
    words.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_addclose(&actions, ends[0]);
    posix_spawn_file_actions_addclose(&actions, ends[1]);
    Child child;
    const int error =
        ::posix_spawn(&child.id, "/proc/self/exe", &actions, nullptr, words.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    ::close(ends[1]);
    if (error != 0) {
        ::close(ends[0]);
        return MeasureError{std::strerror(error)};
    }
    child.output = ::fdopen(ends[0], "r");
    return child;
}

PictureRow parseRow(const char* line) {
    const auto json = nlohmann::json::parse(line);
    PictureRow row;
    if (json.contains("error")) {
        row.error = json["error"];
        return row;
    }
    row.isPassport = json["isPassport"];
    row.confidence = json["confidence"];
    row.milliseconds = json["milliseconds"];
    row.matched = json["matched"];
    if (json.contains("box")) {
        const auto& box = json["box"];
        row.box = NormalizedRect{box[0], box[1], box[2], box[3]};
    }
    return row;
}

std::optional<MeasureError> endOf(int status) {
    if (WIFSIGNALED(status))
        return MeasureError{std::string("the measuring process died: ") +
                            ::strsignal(WTERMSIG(status))};
    if (WEXITSTATUS(status) != 0)
        return MeasureError{"the measuring process ended with status " +
                            std::to_string(WEXITSTATUS(status))};
    return std::nullopt;
}

}  // namespace

std::variant<Measurement, MeasureError>
measureInChild(const Combination& combination, const MeasureOptions& options,
               const std::function<void(std::size_t)>& progress) {
    auto started = start(childArguments(combination, options));
    if (auto* error = std::get_if<MeasureError>(&started))
        return std::move(*error);
    const Child child = std::get<Child>(started);

    Measurement measurement{combination, {}, 0.0};
    char* line = nullptr;
    std::size_t capacity = 0;
    while (::getline(&line, &capacity, child.output) > 0) {
        measurement.rows.push_back(parseRow(line));
        progress(measurement.rows.size());
    }
    std::free(line);
    std::fclose(child.output);

    int status = 0;
    rusage usage{};
    while (::wait4(child.id, &status, 0, &usage) < 0) {
        if (errno != EINTR)
            return MeasureError{std::strerror(errno)};
    }
    if (auto error = endOf(status))
        return std::move(*error);
    measurement.peakMemory = static_cast<double>(usage.ru_maxrss) / 1024.0;  // Linux: KiB
    return measurement;
}

}  // namespace kestrelid::evaluation
