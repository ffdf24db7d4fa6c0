#pragma once
// The HTML chart of a whole mapping: one table row a page, one cell a pot. Names go into the markup exactly as they
// are, unescaped; that is meant.

#include "platform/controls/Record.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace chart {

/// Everything up to and including the table's header row.
std::string header(std::string_view plugin, std::string_view fileLocation);

/// Title of the row of a page, counted from 1.
std::string pageTitle(std::int32_t page);

/// Appends a row with the names of the entries at positions first to last, counted from 1.
void appendRow(std::string& document, const std::vector<platform::Record>& entries, std::int32_t first,
               std::int32_t last, std::string_view title);

void appendEnd(std::string& document);

/// Whether a document can be a file: that holds ASCII, so one name or path with any other letter keeps it from it.
bool canBeWritten(std::string_view document);

} // namespace chart
