#include "apps/cli/ChildProcess.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kestrelid::cli {
namespace {

using Clock = std::chrono::steady_clock;

class Pipe {
public:
    Pipe() {
        if (::pipe2(ends_.data(), O_CLOEXEC) != 0)
            ends_ = {-1, -1};
    }
    ~Pipe() {
        closeEnd(0);
        closeEnd(1);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    [[nodiscard]] int reading() const { return ends_[0]; }
    [[nodiscard]] int writing() const { return ends_[1]; }

    void closeEnd(std::size_t end) {
        if (ends_[end] >= 0)
            ::close(ends_[end]);
        ends_[end] = -1;
    }

private:
    std::array<int, 2> ends_{-1, -1};
};

// 0, or the errno. process: set on success.
int start(const std::vector<std::string>& command, const Pipe& output, const Pipe& errors,
          pid_t& process) {
    std::vector<char*> arguments;
    for (const std::string& argument : command)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    if (output.writing() < 0 || errors.writing() < 0)
        return EMFILE;
    posix_spawn_file_actions_t actions;
    if (const int error = ::posix_spawn_file_actions_init(&actions); error != 0)
        return error;
    int error =
        ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    if (error == 0)
        error = ::posix_spawn_file_actions_adddup2(&actions, output.writing(), STDOUT_FILENO);
    if (error == 0)
        error = ::posix_spawn_file_actions_adddup2(&actions, errors.writing(), STDERR_FILENO);
    if (error == 0)
        error = ::posix_spawnp(&process, arguments.front(), &actions, nullptr, arguments.data(),
                               environ);
    ::posix_spawn_file_actions_destroy(&actions);
    return error;
}

// Reads what there is; closes the end where there will be no more.
void take(Pipe& pipe, std::string& text) {
    std::array<char, 65536> bytes;
    const ssize_t count = ::read(pipe.reading(), bytes.data(), bytes.size());
    if (count > 0)
        text.append(bytes.data(), static_cast<std::size_t>(count));
    else if (count == 0 || errno != EINTR)
        pipe.closeEnd(0);
}

int statusOf(pid_t process) {
    int status = 0;
    while (::waitpid(process, &status, 0) < 0) {
        if (errno != EINTR)
            return -1;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace

ProcessResult runProcess(const std::vector<std::string>& command, std::size_t maximum,
                         std::chrono::milliseconds patience) {
    const Clock::time_point deadline = Clock::now() + patience;
    ProcessResult result;
    Pipe output;
    Pipe errors;
    pid_t process = 0;
    result.status = start(command, output, errors, process);
    if (result.status != 0)
        return result;
    output.closeEnd(1);
    errors.closeEnd(1);
    result.end = ProcessResult::End::exited;
    while (output.reading() >= 0 || errors.reading() >= 0) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0)
            result.end = ProcessResult::End::tooLate;
        else if (std::max(result.output.size(), result.errors.size()) > maximum)
            result.end = ProcessResult::End::tooLarge;
        if (result.end != ProcessResult::End::exited)
            break;
        std::array<pollfd, 2> waiting{
            {{output.reading(), POLLIN, 0}, {errors.reading(), POLLIN, 0}}};
        if (::poll(waiting.data(), waiting.size(), static_cast<int>(left)) <= 0)
            continue;
        if (waiting[0].revents != 0)
            take(output, result.output);
        if (waiting[1].revents != 0)
            take(errors, result.errors);
    }
    if (result.end != ProcessResult::End::exited)
        ::kill(process, SIGKILL);
    result.status = statusOf(process);
    return result;
}

}  // namespace kestrelid::cli
