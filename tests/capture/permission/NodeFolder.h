#pragma once

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <string>
#include <sys/fsuid.h>
#include <unistd.h>

namespace kestrelid::test {

// Stands for /dev.
class NodeFolder {
public:
    NodeFolder() {
        auto pattern = (std::filesystem::temp_directory_path() / "kestrelid-nodes-XXXXXX").string();
        path_ = mkdtemp(pattern.data());
        // Seen by every user.
        std::filesystem::permissions(path_, std::filesystem::perms(0755));
    }
    ~NodeFolder() { std::filesystem::remove_all(path_); }
    NodeFolder(const NodeFolder&) = delete;
    NodeFolder& operator=(const NodeFolder&) = delete;

    void add(const std::string& name, unsigned mode) const {
        std::ofstream(path_ / name).put('\n');
        std::filesystem::permissions(path_ / name, std::filesystem::perms(mode));
    }

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
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
