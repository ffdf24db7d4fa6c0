#pragma once
// What of the panel is meant by operations that need a pot or a page: whatever has the keyboard focus there.

#include "panel/Pages.h"

#include <cstdint>
#include <vector>

namespace panel {

struct PotChoice {
    static constexpr std::int32_t kNone = -1;

    std::int32_t focusedPot = kNone;     ///< 0 to 7, of the shown page
    std::vector<std::int32_t> pots = {}; ///< the chosen ones, ascending; the focused one alone where no others are
    bool isPage = false;                 ///< the whole shown page: its tile has the focus
    bool isText = false;                 ///< nothing: a text field has the focus, and with it the clipboard's keys

    bool operator==(const PotChoice&) const = default;
};

/// Positions (from 0, ascending) of what is meant while a page (from 1) is shown; none without a choice.
std::vector<std::int32_t> positionsOf(const PotChoice& choice, std::int32_t page);

} // namespace panel
