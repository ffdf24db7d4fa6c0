#pragma once
// The pages for people who look at the library with a browser, as texts of HTML. They need no script and have none.
// Whatever came from outside may be handed in: it is escaped, control characters are shown as symbols, and a name's
// direction of writing ends with it. Addresses are relative, so a path prefix changes nothing here.

#include "platform/Effects.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace community_server::pages {

/// How many rows a page of a list has.
inline constexpr std::int64_t kPluginsPerPage = 50;
inline constexpr std::int64_t kMappingsPerPage = 10;
/// How many pages of pots are shown of each mapping of a list, and of a mapping by itself.
inline constexpr std::int32_t kPagesInList = 4;
inline constexpr std::int32_t kPagesAlone = 250;
/// A larger file is not read for its chart in a list.
inline constexpr std::int64_t kLargestInList = 64 << 10;

/// The beginning of a mapping's chart, and how many pages it has in all.
struct Chart {
    platform::PrintedTable table;
    std::int32_t pages = 0;
};

/// What is shared for a plug-in.
struct Plugin {
    std::string name;
    std::int64_t mappings = 0;
    std::int64_t downloads = 0;
    std::string newest; ///< a date, 2026-11-22
};

struct Mapping {
    std::int64_t id = 0;
    std::string plugin;
    std::string uploader;
    std::string date; ///< as Plugin::newest
    std::int64_t downloads = 0;
    std::string comments;
    std::string location; ///< of the file, relative to the pages
    std::optional<Chart> chart;
};

/// Which page of a list is shown, counted from 1, and of how many.
struct Place {
    std::int64_t page = 1;
    std::int64_t pages = 1;
};

/// Where page number `page` (any text; the first where it names none) of so many rows lies.
Place placeOf(std::string_view page, std::int64_t rows, std::int64_t rowsPerPage);

// Parse

/// A value of a form's query, "a=1&b=x+y", decoded; empty where there is none or it is no UTF-8.
std::string formValue(std::string_view query, std::string_view name);

/// The chart of the first `most` pages of a file; none when the file is no mapping.
std::optional<Chart> chartOf(std::string_view file, std::int32_t most);

// Write

/// The plug-ins that are shared for, those that a search found unless `search` is empty.
std::string pluginList(const std::vector<Plugin>& plugins, std::int64_t count, std::string_view search, Place place);

/// The mappings of a plug-in.
std::string plugin(std::string_view name, const std::vector<Mapping>& mappings, std::int64_t count, Place place);

/// A mapping with its whole chart.
std::string mapping(const Mapping& mapping);

/// A page that only says something, for an address at which nothing is.
std::string message(std::string_view title, std::string_view text);

std::string_view styleSheet();
std::string_view icon(); ///< SVG

/// What every page is sent with, beside what every reply is: that it loads nothing of others, runs nothing, and is
/// shown in no other's frame.
inline constexpr std::pair<const char*, const char*> kHeaders[] = {
    {"Content-Security-Policy", "default-src 'none'; style-src 'self'; img-src 'self'; form-action 'self'; "
                                "base-uri 'none'; frame-ancestors 'none'"},
    {"Referrer-Policy", "no-referrer"},
    {"X-Frame-Options", "DENY"},
    {"Cross-Origin-Opener-Policy", "same-origin"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
};

} // namespace community_server::pages
