#pragma once

#include "tests/support/TemporaryFolder.h"

#include <fstream>
#include <sys/fsuid.h>
#include <unistd.h>

namespace kestrelid::test {

// Stands for /dev.
class NodeFolder : public TemporaryFolder {
public:
    NodeFolder() {
        // Seen by every user.
        std::filesystem::permissions(path(), std::filesystem::perms(0755));
    }

    void add(const std::string& name, unsigned mode) const {
        std::ofstream(*this / name).put('\n');
        std::filesystem::permissions(*this / name, std::filesystem::perms(mode));
    }
};

// Gives the calling thread the file rights of a user whom mode bits bind.
class Unprivileged {
public:
    Unprivileged() : former_(geteuid() == 0 ? setfsuid(65534) : -1) {}
    ~Unprivileged() {
        if (former_ >= 0)
            setfsuid(uid_t(former_));
    }
    Unprivileged(const Unprivileged&) = delete;
    Unprivileged& operator=(const Unprivileged&) = delete;

    // False where this machine does not let root drop its rights.
    [[nodiscard]] bool isBound() const {
        return geteuid() != 0 || setfsuid(65534) == 65534;  // answers with the former one
    }

private:
    int former_;
};

}  // namespace kestrelid::test
