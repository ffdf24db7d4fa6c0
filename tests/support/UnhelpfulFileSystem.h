#pragma once
// A file system that does not say what its entries are and loses some of them in between, as network ones do. It stands
// in for the real one in this program, as no test can count on having such a disk.

#include <string>

namespace test {

class UnhelpfulFileSystem {
public:
    /// While it lives, entries have no type and the one of this name is gone as soon as it was listed.
    explicit UnhelpfulFileSystem(std::string vanishing);
    UnhelpfulFileSystem(const UnhelpfulFileSystem&) = delete;
    UnhelpfulFileSystem& operator=(const UnhelpfulFileSystem&) = delete;
    ~UnhelpfulFileSystem();
};

} // namespace test
