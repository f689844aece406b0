#include "benchmarks/chaos/Round.h"
#include "benchmarks/chaos/Run.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <malloc.h>
#include <string>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>

namespace kestrelid::chaos {
namespace {

constexpr const char* kHelp =
    R"(usage: kestrelid_chaos [--seconds N] [--seed N] [--from ROUND] [--patience N] [--without FAULT]...

Uses a camera as a scanning screen does, while that camera fails in every way that can be
drawn by chance: unplugged, silent, busy, slow, with damaged frames or other formats; and
while the program itself is stopped. Photos are taken, the screen is hidden and shown, and
closed and opened again, at any moment.

Prints a line for each minute and one at the end. What should not happen is printed with the
seed and the last 20 events, and makes the exit status 1:
  - no frames 2 seconds after the last fault (5.25 more where nobody shows the screen again),
    or a status that is not live then;
  - a photo that is not answered exactly once and within 3 seconds;
  - a call that holds the main queue for more than 1.5 seconds;
  - a manager that lives on 10 seconds after its release;
  - 24 MiB, a thread or a descriptor more at the end than after the first tenth.

  --seconds N      how long; default 60
  --seed N         the same number draws the same faults; default 1
  --from ROUND     leaves out the rounds before that one
  --patience N     multiplies every limit, for sanitizers and busy machines; a screen is then
                   shown again so many times
  --without FAULT  one that is not drawn; may be given again
  --faults         prints their names
)";

// A child that stops this process and wakes it again. Made before the first thread.
class Stopper {
public:
    Stopper() {
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC) != 0)
            std::abort();
        orders_ = ends[1];
        const pid_t parent = ::getpid();
        if (::fork() == 0) {
            ::close(ends[1]);
            int milliseconds = 0;
            while (::read(ends[0], &milliseconds, sizeof milliseconds) == sizeof milliseconds) {
                ::kill(parent, SIGSTOP);
                ::usleep(static_cast<useconds_t>(milliseconds) * 1000);
                ::kill(parent, SIGCONT);
            }
            ::_exit(0);
        }
        ::close(ends[0]);
    }
    Stopper(const Stopper&) = delete;
    Stopper& operator=(const Stopper&) = delete;
    ~Stopper() {
        ::close(orders_);
        ::wait(nullptr);
    }

    void stopFor(int milliseconds) const {
        if (::write(orders_, &milliseconds, sizeof milliseconds) != sizeof milliseconds)
            std::abort();
    }

private:
    int orders_;
};

// Prints what is wrong and ends the program.
[[noreturn]] void refuse(const std::string& what) {
    std::fprintf(stderr, "kestrelid_chaos: %s; --help tells more\n", what.c_str());
    std::exit(2);
}

double number(const std::string& option, const char* text) {
    char* end = nullptr;
    const double value = text ? std::strtod(text, &end) : 0.0;
    if (!text || *end != '\0' || value < 1.0 || value > 1e7)
        refuse(option + " needs a number from 1 on");
    return value;
}

RunOptions parse(char** argument) {
    RunOptions options;
    while (*++argument) {
        const std::string option = *argument;
        if (option == "--help" || option == "-h") {
            std::fputs(kHelp, stdout);
            std::exit(0);
        }
        if (option == "--faults") {
            for (const std::string_view name : faultNames())
                std::printf("%.*s\n", static_cast<int>(name.size()), name.data());
            std::exit(0);
        }
        const char* value = argument[1];
        if (option == "--seconds")
            options.seconds = number(option, value);
        else if (option == "--seed")
            options.seed = static_cast<unsigned>(number(option, value));
        else if (option == "--from")
            options.from = static_cast<int>(number(option, value));
        else if (option == "--patience")
            options.patience = static_cast<int>(number(option, value));
        else if (option == "--without" && value &&
                 std::ranges::count(faultNames(), std::string_view(value)))
            options.without.insert(value);
        else
            refuse(option == "--without" ? "--without needs a name that --faults prints"
                                         : "there is no option " + option);
        ++argument;
    }
    return options;
}

}  // namespace
}  // namespace kestrelid::chaos

int main(int, char** arguments) {
    using namespace kestrelid::chaos;
    const RunOptions options = parse(arguments);
    ::mallopt(M_ARENA_MAX, 2);  // or each thread's own would count as growth
    const Stopper stopper;
    return run(options, [&](int milliseconds) { stopper.stopFor(milliseconds); }) > 0 ? 1 : 0;
}
