#include "panel/Edits.h"

#include "mapping/ParameterOrder.h"

#include <algorithm>

namespace panel {

using mapping::kPotsPerPage;

namespace {

platform::Record& entryAt(Mapping& edited, std::int32_t position)
{
    return edited.entries.at(static_cast<std::size_t>(position));
}

std::int32_t slotsOf(const Mapping& edited)
{
    return edited.totalPages * kPotsPerPage;
}

} // namespace

void clearSlots(Mapping& edited, std::span<const std::int32_t> positions)
{
    for (const std::int32_t position : positions) {
        if (position >= 0 && position < slotsOf(edited))
            setContent(entryAt(edited, position), {mapping::kEmptyNumber, mapping::kEmptyName});
    }
}

void insertEmptyPages(Mapping& edited, std::int32_t beforePage, std::int32_t count)
{
    Entries pages;
    for (std::int32_t slot = 0; slot < count * kPotsPerPage; ++slot)
        pages.push_back(mapping::emptyEntry(beforePage + slot / kPotsPerPage, firstSlotOf(beforePage) + slot));
    edited.entries.insert(edited.entries.begin() + firstSlotOf(beforePage), pages.begin(), pages.end());
    edited.totalPages += count;
}

void layOn(Mapping& edited, std::int32_t position, std::span<const SlotContent> contents)
{
    const auto lastFull = std::find_if(contents.rbegin(), contents.rend(),
                                       [](const SlotContent& content) { return content.name != mapping::kEmptyName; });
    const auto needed = position + static_cast<std::int32_t>(contents.rend() - lastFull);
    const std::int32_t pages = (needed + kPotsPerPage - 1) / kPotsPerPage;
    if (lastFull != contents.rend() && pages > edited.totalPages)
        insertEmptyPages(edited, edited.totalPages + 1, pages - edited.totalPages);
    for (const SlotContent& content : contents) {
        if (position < slotsOf(edited))
            setContent(entryAt(edited, position), content);
        ++position;
    }
}

} // namespace panel
