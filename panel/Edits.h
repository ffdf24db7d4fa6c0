#pragma once
// Edits of the mapping as a whole, from the mapping there is to the one there will be. Only slots of the counted pages
// are touched; what lies behind them stays behind them, whatever is inserted or removed before it. Positions count from
// 0.

#include "mapping/ParameterOrder.h"
#include "panel/Pages.h"
#include "platform/controls/Record.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace panel {

/// At least `totalPages` × 8 entries.
struct Mapping {
    Entries entries;
    std::int32_t totalPages = 1;
    std::int32_t shownPage = 1; ///< from 1

    /// Slots of the counted pages.
    std::int32_t slots() const { return totalPages * mapping::kPotsPerPage; }
    bool isSlot(std::int32_t position) const { return position >= 0 && position < slots(); }
};

/// Empties slots of counted pages; others do not matter.
void clearSlots(Mapping& edited, std::span<const std::int32_t> positions);

/// Inserts empty pages, the first of them as page `beforePage`: from 1 to one behind the last.
void insertEmptyPages(Mapping& edited, std::int32_t beforePage, std::int32_t count);

/// Puts contents into the slot at a position (0 or more) and those that follow, with as many pages appended as the last
/// parameter among them needs. Empty contents empty their slots.
void layOn(Mapping& edited, std::int32_t position, std::span<const SlotContent> contents);

/// Moves a slot and those that follow one on, up to the first empty one, which is used up, or onto a new last page.
void insertSlot(Mapping& edited, std::int32_t position);

/// Takes a slot out: those behind it, up to the first empty one that follows a parameter, move one back.
void removeSlot(Mapping& edited, std::int32_t position);

/// Inserts a copy of the shown page behind it and shows the copy.
void duplicatePage(Mapping& edited);

/// Takes the shown page out, the first one too, and shows the one that comes to its place. The only page is emptied.
void cutPage(Mapping& edited);

/// Lays contents on a slot and those that follow; one that is none leaves its slot as it is.
void pasteSlots(Mapping& edited, std::int32_t position, std::span<const std::optional<SlotContent>> contents);

/// Inserts pages with these contents behind the shown one and shows the first of them.
void pastePages(Mapping& edited, std::span<const std::optional<SlotContent>> contents);

/// Lays every parameter of the list that is on no pot behind the last one that is, and shows where they begin.
void mapUnmapped(Mapping& edited, std::span<const platform::Record> parameters);

/// Closes up all parameters and leaves as many pages as they need. What stood first on the shown page stays in sight.
void tidyUp(Mapping& edited);

} // namespace panel
