#pragma once
// The mapping as pages of eight slots: where a page begins, what the read-outs say, and the edits of whole pages.

#include "platform/controls/Record.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace panel {

using Entries = std::vector<platform::Record>;

/// Position (from 0) of a page's (from 1) first slot.
std::int32_t firstSlotOf(std::int32_t page);

/// Position of a pot (0 to 7) on a page (from 1).
std::int32_t slotFor(std::int32_t page, std::int32_t pot);

/// "Page 2 of 3"
std::string pageReadOut(std::int32_t page, std::int32_t totalPages);

/// "1 Page", "3 Pages"
std::string totalReadOut(std::int32_t totalPages);

/// Appends eight empty entries that carry the page number given.
void appendPage(Entries& entries, std::int32_t page);

/// Removes a page's eight entries; later entries move forward as they are, not renumbered.
void removePage(Entries& entries, std::int32_t page);

/// Empties the first page's slots. The entries behind it stay, on purpose: a save still writes them, and a page added
/// later lies behind them.
void clearFirstPage(Entries& entries);

/// Leaves the first page's slots, empty, and nothing behind them.
void keepOneEmptyPage(Entries& entries);

/// How many parameters stand behind so many pages.
std::size_t parametersBehind(const Entries& entries, std::int32_t pages);

/// What a slot holds of a parameter.
struct SlotContent {
    std::string number;
    std::string name;

    bool operator==(const SlotContent&) const = default;
};

SlotContent contentOf(const platform::Record& entry);

/// That of the slot at a position (from 0); an empty slot's where the mapping ends before it.
SlotContent contentAt(const Entries& entries, std::int32_t position);

/// Puts a parameter into a slot; the slot keeps its own page and position.
void setContent(platform::Record& entry, const SlotContent& content);

/// Exchanges the parameters of two slots (positions from 0).
void exchangeContents(Entries& entries, std::int32_t one, std::int32_t other);

} // namespace panel
