#include "tools/community_server/Options.h"

#include <charconv>
#include <string_view>

namespace community_server {

namespace {

template <typename Number>
bool read(std::string_view text, Number& number)
{
    const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), number);
    return problem == std::errc() && end == text.data() + text.size() && number >= 0;
}

bool read(std::string_view name, std::string_view value, Options& options)
{
    if (name == "--host")
        options.host = value;
    else if (name == "--port")
        return read(value, options.port) && options.port <= 65535;
    else if (name == "--data")
        options.data = value;
    else if (name == "--seed")
        options.seed = value;
    else if (name == "--with-parent")
        options.parent = value;
    else if (name == "--behind-proxy" && (value == "yes" || value == "no"))
        options.isBehindProxy = value == "yes";
    else if (name == "--uploads-of-user")
        return read(value, options.quotas.uploadsOfUser);
    else if (name == "--uploads-of-address")
        return read(value, options.quotas.uploadsOfAddress);
    else if (name == "--accounts-of-address")
        return read(value, options.quotas.accountsOfAddress);
    else
        return false;
    return true;
}

} // namespace

std::optional<Options> optionsIn(int argc, char** argv)
{
    Options options;
    for (int i = 1; i + 1 < argc; i += 2)
        if (!read(argv[i], argv[i + 1], options))
            return std::nullopt;
    return argc % 2 == 1 ? std::optional(options) : std::nullopt;
}

} // namespace community_server
