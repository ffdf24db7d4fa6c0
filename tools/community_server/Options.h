#pragma once
// How the server was asked to run.

#include "tools/community_server/Quotas.h"

#include <filesystem>
#include <optional>
#include <string>

namespace community_server {

struct Options {
    std::string host = "127.0.0.1";
    int port = 8765; ///< 0 takes a free one
    std::filesystem::path data = "community-data";
    std::filesystem::path seed;
    std::string parent; ///< process whose end ends the server
    bool isBehindProxy = false;
    Quotas quotas;
};

inline constexpr char kUsage[] =
    "Usage: community_server [--host ADDRESS] [--port NUMBER] [--data FOLDER] [--seed FOLDER]\n"
    "                        [--with-parent PID] [--behind-proxy yes|no]\n"
    "                        [--uploads-of-user N] [--uploads-of-address N] [--accounts-of-address N]\n"
    "Port 0 takes a free one; the address is printed when the server listens. The last three are for a day.\n";

/// None when they are no options as kUsage tells them.
std::optional<Options> optionsIn(int argc, char** argv);

} // namespace community_server
