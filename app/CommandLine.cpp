#include "app/CommandLine.h"

namespace {

constexpr std::string_view kVersion = "kvOrvantaLogic_Tool " KV_VERSION "\n";

constexpr std::string_view kHelp =
    "Usage: kvOrvantaLogic_Tool [--version | --help]\n"
    "\n"
    "Decides which plug-in parameter sits under which pot of the Orvanta control surface.\n"
    "Without one of these options it opens its window; Help > User Guide tells the rest.\n"
    "\n"
    "  --version  print the version\n"
    "  --help     print this\n"
    "\n"
    "KV_LOCAL_LIBRARY in the environment names a folder that stands in for /Library.\n";

} // namespace

std::optional<std::string_view> answerTo(std::span<char* const> arguments)
{
    for (const std::string_view argument : arguments.subspan(arguments.empty() ? 0 : 1)) {
        if (argument == "--version")
            return kVersion;
        if (argument == "--help")
            return kHelp;
    }
    return std::nullopt;
}
