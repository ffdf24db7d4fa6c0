#include "chart/PrintedChart.h"

#include "mapping/ParameterOrder.h"
#include "platform/Utf8.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace chart {

namespace {

/// A name of so many characters still fits on a sheet, however narrow its column.
constexpr std::size_t kLongestName = 200;
/// A file's name has up to 255 bytes, and something may be put behind it.
constexpr std::size_t kLongestFileName = 200;

bool breaksLine(char32_t point)
{
    return point < 0x20 || (point >= 0x7F && point < 0xA0) || point == 0x2028 || point == 0x2029;
}

/// On one line, and no longer than a cell can show.
std::string shown(std::string_view name)
{
    std::string text;
    std::size_t characters = 0;
    for (std::size_t at = 0; at < name.size();) {
        if (characters++ == kLongestName)
            return text + "…";
        const auto point = platform::codePointAt(name, at);
        if (breaksLine(point.value))
            text += ' ';
        else
            text += name.substr(at, point.length);
        at += point.length;
    }
    return text;
}

} // namespace

platform::PrintedTable printedChart(std::string_view plugin, std::string_view path, std::int32_t mode,
                                    const std::vector<platform::Record>& entries, std::int32_t pages)
{
    platform::PrintedTable table;
    table.title = shown(plugin);
    table.lines = {mode == mapping::kModeInsertEffect ? "Insert/Effect mode" : "Instrument mode", std::string(path)};
    table.header = {"Page"};
    for (int pot = 1; pot <= mapping::kPotsPerPage; ++pot)
        table.header.push_back("Pot " + std::to_string(pot));
    table.rows.reserve(static_cast<std::size_t>(pages));
    for (std::int32_t page = 0; page < pages; ++page) {
        auto& row = table.rows.emplace_back();
        row.reserve(table.header.size());
        row.push_back(std::to_string(page + 1));
        for (std::int32_t pot = 0; pot < mapping::kPotsPerPage; ++pot)
            row.push_back(shown(mapping::nameAt(entries, page * mapping::kPotsPerPage + pot)));
    }
    return table;
}

std::string pdfName(std::string_view plugin)
{
    std::string name;
    for (std::size_t at = 0; at < plugin.size();) {
        const auto point = platform::codePointAt(plugin, at);
        if (name.size() + point.length > kLongestFileName)
            break;
        const bool isTaken = breaksLine(point.value) || point.value == '/' || point.value == ':' || !point.wellFormed ||
                             (point.value == '.' && name.empty());
        if (isTaken)
            name += '-';
        else
            name += plugin.substr(at, point.length);
        at += point.length;
    }
    return name.empty() ? "Chart.pdf" : name + " chart.pdf";
}

} // namespace chart
