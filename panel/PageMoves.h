#pragma once
// Edits that take parameters from page to page, and pages past each other. Only counted pages and their slots take
// part; what lies behind them stays. Positions count from 0, pages from 1.

#include "panel/Edits.h"

#include <cstdint>
#include <optional>

namespace panel {

/// None when the page is full, or no counted one.
std::optional<std::int32_t> firstEmptySlotOf(const Mapping& mapping, std::int32_t page);

/// The first empty slot of a page or of those that follow it; where there is none, the first of a page that is to come.
std::int32_t firstEmptySlotFrom(const Mapping& mapping, std::int32_t page);

/// Exchanges the parameters of two slots, of whichever pages.
void exchangeSlots(Mapping& edited, std::int32_t one, std::int32_t other);

/// Moves a slot's parameter to the first empty slot of a page. Nothing moves from an empty slot or to a full page.
void moveToPage(Mapping& edited, std::int32_t position, std::int32_t page);

/// Moves a page between two others: before page `before`, or behind the last where that is one more. The others keep
/// their order, and the page that was shown still is, by its new number.
void movePageBefore(Mapping& edited, std::int32_t page, std::int32_t before);

} // namespace panel
