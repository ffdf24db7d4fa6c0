#pragma once
// Edits of the mapping as a whole, from the mapping there is to the one there will be. Only slots of the counted pages
// are touched; what lies behind them stays behind them, whatever is inserted or removed before it. Positions count from
// 0.

#include "panel/Pages.h"
#include "platform/controls/Record.h"

#include <cstdint>
#include <span>
#include <vector>

namespace panel {

/// At least `totalPages` × 8 entries.
struct Mapping {
    Entries entries;
    std::int32_t totalPages = 1;
    std::int32_t shownPage = 1; ///< from 1
};

/// Empties slots of counted pages; others do not matter.
void clearSlots(Mapping& edited, std::span<const std::int32_t> positions);

/// Inserts empty pages, the first of them as page `beforePage`: from 1 to one behind the last.
void insertEmptyPages(Mapping& edited, std::int32_t beforePage, std::int32_t count);

/// Puts contents into the slot at a position (0 or more) and those that follow, with as many pages appended as the last
/// parameter among them needs. Empty contents empty their slots.
void layOn(Mapping& edited, std::int32_t position, std::span<const SlotContent> contents);

} // namespace panel
