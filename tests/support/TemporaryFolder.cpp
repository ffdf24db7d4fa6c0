#include "tests/support/TemporaryFolder.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

#include <stdlib.h>
#include <unistd.h> // where a Mac has mkdtemp()

namespace test {

TemporaryFolder::TemporaryFolder()
{
    std::string name = (std::filesystem::temp_directory_path() / "kv-test-XXXXXX").native();
    if (!::mkdtemp(name.data()))
        throw std::runtime_error("cannot make a temporary folder");
    path_ = name;
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

void write(const Path& file, std::string_view bytes)
{
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::string read(const Path& file)
{
    std::ifstream stream(file, std::ios::binary);
    if (!stream)
        throw std::runtime_error("cannot read " + file.native());
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

} // namespace test
