#pragma once
// What lies in a folder.

#include "tests/support/TemporaryFolder.h"

#include <filesystem>
#include <system_error>
#include <vector>

namespace test {

/// The paths of what lies in a folder itself, in any order; none where there is no folder.
inline std::vector<Path> filesIn(const Path& folder)
{
    std::error_code missing;
    const std::filesystem::directory_iterator entries(folder, missing);
    return {begin(entries), end(entries)};
}

} // namespace test
