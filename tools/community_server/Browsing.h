#pragma once
// The pages for people, filled from the library. Queries are those of a browser's forms; any bytes may be handed in.

#include "tools/community_server/Database.h"

#include <optional>
#include <string>
#include <string_view>

namespace community_server {

/// The plug-ins that are shared for; those whose names have all words of "search=..." in them.
std::string pluginsPage(Database& database, std::string_view query);

/// What is shared for the plug-in of "name=..."; none when that is nothing.
std::optional<std::string> pluginPage(Database& database, std::string_view query);

/// The mapping of "id=..."; none when it is not listed.
std::optional<std::string> mappingPage(Database& database, std::string_view query);

} // namespace community_server
