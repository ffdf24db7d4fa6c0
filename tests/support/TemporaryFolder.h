#pragma once
// A folder of its own for a test, removed with everything in it afterwards.

#include <filesystem>
#include <string>
#include <string_view>

namespace test {

using Path = std::filesystem::path;

class TemporaryFolder {
public:
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    const Path& path() const { return path_; }
    Path operator/(const Path& below) const { return path_ / below; }

private:
    Path path_;
};

/// Writes a file, making the folders above it.
void write(const Path& file, std::string_view bytes);
/// The bytes of a file; fails the test when there is none.
std::string read(const Path& file);

} // namespace test
