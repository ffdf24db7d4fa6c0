#include "tools/community_server/Options.h"

#include <algorithm>
#include <charconv>
#include <cstddef>

extern char** environ;

namespace community_server {

namespace {

/// A whole number from 0 on, in decimal.
template <typename Number>
bool readNumber(const std::string& text, Number& number)
{
    const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), number);
    return problem == std::errc() && end == text.data() + text.size() && number >= 0;
}

template <typename Text>
bool readText(const std::string& text, Text& value)
{
    value = text;
    return !text.empty();
}

bool readParent(const std::string& text, std::string& parent)
{
    int number = 0;
    return readNumber(text, number) && readText(text, parent);
}

bool readYes(const std::string& text, bool& value)
{
    value = text == "yes";
    return value || text == "no";
}

/// Letters, digits and "-._~" between slashes: what stands in an address as it is.
bool readPrefix(const std::string& text, std::string& prefix)
{
    constexpr std::string_view kAllowed = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._~/";
    prefix = text;
    while (prefix.ends_with('/'))
        prefix.pop_back();
    return text.starts_with('/') && prefix.find("//") == std::string::npos && prefix.find("/.") == std::string::npos &&
           prefix.find_first_not_of(kAllowed) == std::string::npos;
}

struct Row {
    std::string_view name;
    std::string_view value;
    std::string_view help;
    std::string_view wanted; ///< what a value has to be
    bool (*read)(const std::string& text, Options& options);
};

constexpr Row kRows[] = {
    {"host", "ADDRESS", "the address to listen on (127.0.0.1)", "an address",
     [](const std::string& text, Options& options) { return readText(text, options.host); }},
    {"port", "NUMBER", "the port (8765); 0 takes a free one", "a number from 0 to 65535",
     [](const std::string& text, Options& options) { return readNumber(text, options.port) && options.port <= 65535; }},
    {"data", "FOLDER", "the folder of everything (community-data)", "a folder",
     [](const std::string& text, Options& options) { return readText(text, options.data); }},
    {"path-prefix", "PATH", "what addresses begin with, say /library", "a path that begins with a slash",
     [](const std::string& text, Options& options) { return readPrefix(text, options.pathPrefix); }},
    {"behind-proxy", "yes|no", "whether X-Forwarded-For is believed (no)", "yes or no",
     [](const std::string& text, Options& options) { return readYes(text, options.isBehindProxy); }},
    {"access-log", "FILE", "a line for each request; - is standard output", "a file or -",
     [](const std::string& text, Options& options) { return readText(text, options.accessLog); }},
    {"uploads-of-user", "NUMBER", "uploads of an account in a day (50)", "a number",
     [](const std::string& text, Options& options) { return readNumber(text, options.quotas.uploadsOfUser); }},
    {"uploads-of-address", "NUMBER", "uploads from an address in a day (200)", "a number",
     [](const std::string& text, Options& options) { return readNumber(text, options.quotas.uploadsOfAddress); }},
    {"accounts-of-address", "NUMBER", "accounts from an address in a day (20)", "a number",
     [](const std::string& text, Options& options) { return readNumber(text, options.quotas.accountsOfAddress); }},
    {"seed", "FOLDER", "shares its mappings.json if nothing is there", "a folder",
     [](const std::string& text, Options& options) { return readText(text, options.seed); }},
    {"with-parent", "PID", "ends with this process, which started it", "a process's number",
     [](const std::string& text, Options& options) { return readParent(text, options.parent); }},
};

constexpr std::string_view kVariables = "KV_COMMUNITY_";

std::string variableOf(const Row& row)
{
    std::string name(kVariables);
    for (const char letter : row.name)
        name += letter == '-' ? '_' : static_cast<char>(letter - 'a' + 'A');
    return name;
}

std::string help()
{
    constexpr std::size_t kColumn = 33;
    std::string text = "Usage: community_server [OPTION]...\n"
                       "Serves a community library of mappings; prints its address when it listens.\n\n";
    for (const Row& row : kRows) {
        std::string line = "  --";
        line.append(row.name).append(" ").append(row.value).resize(kColumn, ' ');
        text.append(line).append(row.help).append("\n");
    }
    text += "  --help                         says this\n"
            "  --version                      says the version\n\n"
            "What is not given is taken from the environment: " +
            variableOf(kRows[0]) + " for --host,\nand so on.\n";
    return text;
}

Ending refusal(const std::string& why)
{
    return {2, "community_server: " + why + "\nTry \"community_server --help\".\n"};
}

} // namespace

std::variant<Options, Ending> readOptions(const std::vector<std::string>& arguments,
                                          const std::vector<std::string>& environment)
{
    Options options;
    const auto refusedValue = [](const Row& row, const std::string& name, const std::string& value) {
        return refusal(name + " has to be " + std::string(row.wanted) + ", not \"" + value + "\".");
    };
    for (const std::string& variable : environment) {
        const std::size_t equals = std::min(variable.find('='), variable.size());
        const std::string name = variable.substr(0, equals);
        const std::string value = variable.substr(std::min(equals + 1, variable.size()));
        if (!name.starts_with(kVariables) || value.empty())
            continue;
        const auto* row = std::ranges::find(kRows, name, variableOf);
        if (row == std::end(kRows))
            return refusal("there is no option for the environment's " + name + ".");
        if (!row->read(value, options))
            return refusedValue(*row, name, value);
    }
    for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
        if (*argument == "--help")
            return Ending{0, help()};
        if (*argument == "--version")
            return Ending{0, "community_server " KV_VERSION "\n"};
        const std::size_t equals = std::min(argument->find('='), argument->size());
        const std::string name = argument->substr(0, equals);
        const auto* row =
            std::ranges::find_if(kRows, [&](const Row& each) { return name == "--" + std::string(each.name); });
        if (row == std::end(kRows))
            return refusal("there is no option \"" + name + "\".");
        if (equals == argument->size() && argument + 1 == arguments.end())
            return refusal(name + " needs a value.");
        const std::string value = equals < argument->size() ? argument->substr(equals + 1) : *++argument;
        if (!row->read(value, options))
            return refusedValue(*row, name, value);
    }
    return options;
}

std::vector<std::string> environmentOfProcess()
{
    std::vector<std::string> variables;
    for (char** variable = environ; *variable; ++variable)
        variables.emplace_back(*variable);
    return variables;
}

} // namespace community_server
