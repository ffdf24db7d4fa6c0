#pragma once
// Temporary folders made while the object lives lie in memory, where the system has a folder for that: hundreds of
// thousands of files, or thousands of flushes, on a slow disk say nothing about the program.

#include <string>

#include <stdlib.h>
#include <unistd.h>

namespace test {

class InMemory {
public:
    InMemory()
    {
        if (const char* former = ::getenv("TMPDIR"))
            former_ = former;
        if (::access("/dev/shm", W_OK) == 0)
            ::setenv("TMPDIR", "/dev/shm", 1);
    }
    InMemory(const InMemory&) = delete;
    InMemory& operator=(const InMemory&) = delete;
    ~InMemory()
    {
        if (former_.empty())
            ::unsetenv("TMPDIR");
        else
            ::setenv("TMPDIR", former_.c_str(), 1);
    }

private:
    std::string former_;
};

} // namespace test
