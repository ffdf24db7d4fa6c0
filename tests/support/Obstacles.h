#pragma once
// What a file system may put in a program's way, as long as the object lives.

#include "tests/support/TemporaryFolder.h"

#include <csignal>

#include <sys/resource.h>

namespace test {

/// A path with other permission bits, met by a user who has to obey them: root becomes nobody.
class Forbidden {
public:
    Forbidden(Path path, std::filesystem::perms mode);
    Forbidden(const Forbidden&) = delete;
    Forbidden& operator=(const Forbidden&) = delete;
    ~Forbidden();

private:
    Path path_;
    std::filesystem::perms mode_;
    bool isRoot_;
};

/// A disk with so many bytes left for any one file.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes);
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;
    ~FullDisk();

private:
    rlimit before_ = {};
    void (*handler_)(int);
};

} // namespace test
