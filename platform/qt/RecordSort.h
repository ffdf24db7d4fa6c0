#pragma once
// Row orders and row filters that need to know how people write: case, digits, accents.

#include "platform/controls/ArrayController.h"

#include <QString>

#include <string>
#include <vector>

namespace platform::qt {

/// Rows sorted by the texts under `keys`, the first key first and in `order`, the others as tie-breakers upwards; equal
/// rows in content order. Case is ignored and digits count as numbers ("EQ 9" before "eq 10").
ArrayController::Arrangement sortedBy(std::vector<std::string> keys, Qt::SortOrder order);

/// Rows in content order whose text under any of `keys` holds the filter text, case and accents ignored. The first row
/// is always shown.
ArrayController::Arrangement matchingAny(std::vector<std::string> keys);

/// A text without what a search ignores: case folded, accents dropped.
QString foldedForSearch(const QString& text);

} // namespace platform::qt
