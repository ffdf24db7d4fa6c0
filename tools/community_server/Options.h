#pragma once
// What the server is told on its command line and in its environment.

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include <sys/types.h>

namespace community_server {

struct Options {
    std::string host = "127.0.0.1";
    std::uint16_t port = 8765; ///< 0 takes a free one
    std::filesystem::path data = "community-data";
    std::filesystem::path seed;        ///< empty: nothing is shared by the server itself
    std::optional<pid_t> parent;       ///< the process with which the server ends
    std::string pathPrefix;            ///< empty, or "/" and what all addresses begin with, without a slash at its end
    std::string trustedProxy;          ///< empty, or the address whose X-Forwarded-For is believed
    std::filesystem::path accessLog;   ///< empty: none; "-": standard output
    std::uint32_t uploadsPerUser = 50; ///< within 24 hours, as the next ones
    std::uint32_t uploadsPerAddress = 100;
    std::uint32_t accountsPerAddress = 10;
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
