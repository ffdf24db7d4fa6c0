#pragma once
// The chart of a whole mapping for paper: one row a page, one cell a pot, names of any script.

#include "platform/Effects.h"
#include "platform/controls/Record.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace chart {

/// The chart of the first `pages` pages. A name has one line and, if it is longer than 200 characters, ends in an
/// ellipsis there.
platform::PrintedTable printedChart(std::string_view plugin, std::string_view path, std::int32_t mode,
                                    const std::vector<platform::Record>& entries, std::int32_t pages);

/// What a file with it is called unless the user says otherwise: a name that every file system takes.
std::string pdfName(std::string_view plugin);

} // namespace chart
