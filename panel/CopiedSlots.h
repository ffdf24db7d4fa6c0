#pragma once
// Slots on their way through the clipboard: in a form of our own, a property list, and as text for other programs.

#include "panel/Pages.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace panel {

struct CopiedSlots {
    static constexpr std::size_t kMost = 8000;

    std::string source;                ///< file of the plug-in they are from
    bool arePages = false;             ///< whole pages, eight contents each
    std::vector<SlotContent> contents; ///< at least one

    bool operator==(const CopiedSlots&) const = default;
};

/// The slots at these positions (from 0), which have to be there.
CopiedSlots copySlots(const Entries& entries, std::span<const std::int32_t> positions);

// Write

/// Our own form.
std::string bytesOf(const CopiedSlots& copied);
/// A line a slot, without a line feed behind the last: "Page 2, Pot 3: 12 Cutoff", of an empty one "Page 2, Pot 3: -".
/// Control characters in names become blanks.
std::string textOf(const Entries& entries, std::span<const std::int32_t> positions);

// Parse

/// None where the bytes, which may be anybody's, are not our own form, or hold no slot, more than kMost, or half a
/// page.
std::optional<CopiedSlots> copiedSlotsIn(std::string_view bytes);

} // namespace panel
