#pragma once
// Row orders and row filters that need to know how people write: case, digits, accents.

#include "platform/controls/ArrayController.h"

#include <QString>
#include <QStringList>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace platform::qt {

/// Rows sorted by the texts under `keys`, the first key first and in `order`, the others as tie-breakers upwards; equal
/// rows in content order. Case is ignored and digits count as numbers ("EQ 9" before "eq 10").
ArrayController::Arrangement sortedBy(std::vector<std::string> keys, Qt::SortOrder order);

/// Which rows a filter text finds.
struct Search {
    /// A word is found in the text under any of these, case and accents ignored.
    std::vector<std::string> keys;
    /// The order of the rows; null: that of the content.
    ArrayController::Arrangement order = {};
    /// Answers what else a word (folded) finds; null, both: nothing.
    std::function<std::function<bool(const Record& record)>(const QString& word)> findsToo = {};
    /// Rows, by their place in the content, that are shown whatever is searched; null: none.
    std::function<bool(const ArrayController& list, std::size_t row)> stays = {};
};

/// The rows in which every word of the filter text is found, in any order; all rows without a word.
ArrayController::Arrangement searching(Search search);

/// The words of a filter text, folded.
QStringList searchWords(const std::string& filterText);

/// Whether every word is found in the record's texts under `keys`.
bool holdsWords(const Record& record, const std::vector<std::string>& keys, const QStringList& words);

/// A text without what a search ignores: case folded, accents dropped.
QString foldedForSearch(const QString& text);

} // namespace platform::qt
