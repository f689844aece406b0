#include "apps/cli/EndOfWatch.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <system_error>
#include <unistd.h>

namespace kestrelid::cli {
namespace {

sigset_t endSignals() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGTERM);
    return set;
}

void unblockSignals() {
    const sigset_t set = endSignals();
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
}

int checked(int descriptor) {
    if (descriptor < 0)
        throw std::system_error(errno, std::generic_category(), "cannot wait for signals");
    return descriptor;
}

}  // namespace

EndOfWatch::EndOfWatch() {
    const sigset_t set = endSignals();
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    signals_ = checked(signalfd(-1, &set, SFD_CLOEXEC));
    announced_ = checked(eventfd(0, EFD_CLOEXEC));
}

EndOfWatch::~EndOfWatch() {
    ::close(signals_);
    ::close(announced_);
    unblockSignals();
}

void EndOfWatch::announce(ExitStatus status) {
    status_ = status;
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(announced_, &one, sizeof one);
}

ExitStatus EndOfWatch::wait() {
    std::array<pollfd, 2> waited{{{.fd = announced_, .events = POLLIN, .revents = 0},
                                  {.fd = signals_, .events = POLLIN, .revents = 0}}};
    while (::poll(waited.data(), waited.size(), -1) < 0) {
    }
    if (waited[0].revents != 0)
        return status_;
    signalfd_siginfo signal;
    [[maybe_unused]] const ssize_t taken = ::read(signals_, &signal, sizeof signal);
    unblockSignals();
    return ExitStatus::done;
}

}  // namespace kestrelid::cli
