#pragma once
// The tables of the library, and the way there from a library of an earlier form.

#include "tools/community_server/Database.h"

#include <filesystem>
#include <string>
#include <vector>

namespace community_server {

/// Makes the tables where there are none, and takes over an earlier library's, whose shared files lie in "files": all
/// of it or nothing. What then lies in "files" and is kept in the database, or was never shared, is removed. Returns
/// what a host should know: mappings whose file is not there, which stay unlisted.
std::vector<std::string> bringUpToDate(Database& database, const std::filesystem::path& folder);

/// Whether the tables are those of this program.
bool isUpToDate(Database& database);

} // namespace community_server
