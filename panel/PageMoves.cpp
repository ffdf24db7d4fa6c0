#include "panel/PageMoves.h"

#include "mapping/ParameterOrder.h"

#include <algorithm>

namespace panel {

namespace {

/// `end` where all slots from `first` on are full.
std::int32_t firstEmptyBetween(const Entries& entries, std::int32_t first, std::int32_t end)
{
    return static_cast<std::int32_t>(
        std::find_if(entries.begin() + first, entries.begin() + end, mapping::isEmptyEntry) - entries.begin());
}

} // namespace

std::optional<std::int32_t> firstEmptySlotOf(const Mapping& mapping, std::int32_t page)
{
    if (page < 1 || page > mapping.totalPages)
        return std::nullopt;
    const std::int32_t end = firstSlotOf(page + 1);
    const std::int32_t found = firstEmptyBetween(mapping.entries, firstSlotOf(page), end);
    return found < end ? std::optional(found) : std::nullopt;
}

std::int32_t firstEmptySlotFrom(const Mapping& mapping, std::int32_t page)
{
    return firstEmptyBetween(mapping.entries, firstSlotOf(page), mapping.slots());
}

void exchangeSlots(Mapping& edited, std::int32_t one, std::int32_t other)
{
    if (edited.isSlot(one) && edited.isSlot(other))
        exchangeContents(edited.entries, one, other);
}

void moveToPage(Mapping& edited, std::int32_t position, std::int32_t page)
{
    const auto target = firstEmptySlotOf(edited, page);
    if (target && edited.isSlot(position) &&
        !mapping::isEmptyEntry(edited.entries.at(static_cast<std::size_t>(position))))
        exchangeContents(edited.entries, position, *target);
}

void movePageBefore(Mapping& edited, std::int32_t page, std::int32_t before)
{
    if (page < 1 || page > edited.totalPages || before < 1 || before > edited.totalPages + 1)
        return;
    const auto slot = [&edited](std::int32_t number) { return edited.entries.begin() + firstSlotOf(number); };
    const std::int32_t now = before > page ? before - 1 : before;
    if (before > page)
        std::rotate(slot(page), slot(page + 1), slot(before));
    else
        std::rotate(slot(before), slot(page), slot(page + 1));
    std::int32_t& shown = edited.shownPage;
    if (shown == page)
        shown = now;
    else if (page < shown && shown <= now)
        --shown;
    else if (now <= shown && shown < page)
        ++shown;
}

} // namespace panel
