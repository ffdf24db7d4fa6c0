#pragma once
// What the server is told on its command line and in its environment.

#include "tools/community_server/Quotas.h"

#include <filesystem>
#include <string>
#include <variant>
#include <vector>

namespace community_server {

struct Options {
    std::string host = "127.0.0.1";
    int port = 8765; ///< 0 takes a free one
    std::filesystem::path data = "community-data";
    std::filesystem::path seed; ///< empty: the server shares nothing by itself
    std::string parent;         ///< process whose end ends the server
    std::string pathPrefix;     ///< empty, or a slash and what all addresses begin with, without a slash at its end
    bool isBehindProxy = false;
    std::filesystem::path accessLog; ///< empty: none; "-": standard output
    Quotas quotas;
};

/// What is said instead of serving: help or the version with status 0, why the options are refused with 2.
struct Ending {
    int status;
    std::string text;
};

/// Reads "--name value" and "--name=value". An option that is not given is taken from the environment ("NAME=value"
/// each), where --path-prefix is called KV_COMMUNITY_PATH_PREFIX; an empty variable counts as not given. Refuses a
/// variable of such a name that is no option, too, since it is a misspelt one.
std::variant<Options, Ending> readOptions(const std::vector<std::string>& arguments,
                                          const std::vector<std::string>& environment);

/// The process's own environment.
std::vector<std::string> environmentOfProcess();

} // namespace community_server
