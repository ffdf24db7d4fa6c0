#include "panel/Edits.h"

#include "mapping/ParameterOrder.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <unordered_set>

namespace panel {

using mapping::kPotsPerPage;

namespace {

platform::Record& entryAt(Mapping& edited, std::int32_t position)
{
    return edited.entries.at(static_cast<std::size_t>(position));
}

std::int32_t pagesFor(std::int32_t slots)
{
    return mapping::pagesFilledBy(static_cast<std::size_t>(slots));
}

bool isEmptyAt(const Mapping& edited, std::int32_t position)
{
    return mapping::isEmptyEntry(edited.entries.at(static_cast<std::size_t>(position)));
}

SlotContent contentAt(const Mapping& edited, std::int32_t position)
{
    return contentOf(edited.entries.at(static_cast<std::size_t>(position)));
}

SlotContent emptyContent()
{
    return {mapping::kEmptyNumber, mapping::kEmptyName};
}

} // namespace

void clearSlots(Mapping& edited, std::span<const std::int32_t> positions)
{
    for (const std::int32_t position : positions) {
        if (edited.isSlot(position))
            setContent(entryAt(edited, position), emptyContent());
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
    const std::int32_t pages = pagesFor(position + static_cast<std::int32_t>(contents.rend() - lastFull));
    if (lastFull != contents.rend() && pages > edited.totalPages)
        insertEmptyPages(edited, edited.totalPages + 1, pages - edited.totalPages);
    for (const SlotContent& content : contents) {
        if (edited.isSlot(position))
            setContent(entryAt(edited, position), content);
        ++position;
    }
}

void insertSlot(Mapping& edited, std::int32_t position)
{
    if (!edited.isSlot(position))
        return;
    std::int32_t gap = position;
    while (edited.isSlot(gap) && !isEmptyAt(edited, gap))
        ++gap;
    if (!edited.isSlot(gap))
        insertEmptyPages(edited, edited.totalPages + 1, 1);
    for (std::int32_t to = gap; to > position; --to)
        setContent(entryAt(edited, to), contentAt(edited, to - 1));
    if (gap > position)
        setContent(entryAt(edited, position), emptyContent());
}

void removeSlot(Mapping& edited, std::int32_t position)
{
    if (!edited.isSlot(position))
        return;
    std::int32_t end = position + 1;
    while (edited.isSlot(end) && isEmptyAt(edited, end))
        ++end;
    while (edited.isSlot(end) && !isEmptyAt(edited, end))
        ++end;
    for (std::int32_t to = position; to < end - 1; ++to)
        setContent(entryAt(edited, to), contentAt(edited, to + 1));
    setContent(entryAt(edited, end - 1), emptyContent());
}

void duplicatePage(Mapping& edited)
{
    std::array<SlotContent, kPotsPerPage> contents;
    for (std::int32_t pot = 0; pot < kPotsPerPage; ++pot)
        contents.at(static_cast<std::size_t>(pot)) = contentAt(edited, slotFor(edited.shownPage, pot));
    insertEmptyPages(edited, ++edited.shownPage, 1);
    layOn(edited, firstSlotOf(edited.shownPage), contents);
}

void cutPage(Mapping& edited)
{
    if (edited.totalPages == 1) {
        clearFirstPage(edited.entries);
        return;
    }
    removePage(edited.entries, edited.shownPage);
    --edited.totalPages;
    edited.shownPage = std::min(edited.shownPage, edited.totalPages);
}

void pasteSlots(Mapping& edited, std::int32_t position, std::span<const std::optional<SlotContent>> contents)
{
    std::vector<SlotContent> laid;
    for (std::int32_t at = position; const auto& content : contents) {
        laid.push_back(content ? *content : (edited.isSlot(at) ? contentAt(edited, at) : emptyContent()));
        ++at;
    }
    layOn(edited, position, laid);
}

void pastePages(Mapping& edited, std::span<const std::optional<SlotContent>> contents)
{
    insertEmptyPages(edited, ++edited.shownPage, pagesFor(static_cast<std::int32_t>(contents.size())));
    pasteSlots(edited, firstSlotOf(edited.shownPage), contents);
}

void mapUnmapped(Mapping& edited, std::span<const platform::Record> parameters)
{
    std::unordered_set<std::string> mapped;
    std::int32_t end = 0;
    for (std::int32_t position = 0; position < edited.slots(); ++position) {
        if (isEmptyAt(edited, position))
            continue;
        mapped.insert(mapping::elementFromEntry(entryAt(edited, position)));
        end = position + 1;
    }
    std::vector<SlotContent> laid;
    for (const platform::Record& parameter : parameters) {
        if (!mapping::isEmptyEntry(parameter) && mapped.insert(mapping::elementFromEntry(parameter)).second)
            laid.push_back(contentOf(parameter));
    }
    if (laid.empty())
        return;
    layOn(edited, end, laid);
    edited.shownPage = end / kPotsPerPage + 1;
}

void tidyUp(Mapping& edited)
{
    const std::int32_t firstShown = firstSlotOf(edited.shownPage);
    std::int32_t end = 0;
    std::optional<std::int32_t> shown;
    for (std::int32_t position = 0; position < edited.slots(); ++position) {
        if (isEmptyAt(edited, position))
            continue;
        if (!shown && position >= firstShown && position < firstShown + kPotsPerPage)
            shown = end;
        if (position != end) {
            setContent(entryAt(edited, end), contentAt(edited, position));
            setContent(entryAt(edited, position), emptyContent());
        }
        ++end;
    }
    const std::int32_t pages = std::max(1, pagesFor(end));
    edited.entries.erase(edited.entries.begin() + firstSlotOf(pages + 1),
                         edited.entries.begin() + firstSlotOf(edited.totalPages + 1));
    edited.totalPages = pages;
    edited.shownPage = shown ? *shown / kPotsPerPage + 1 : std::min(edited.shownPage, pages);
}

} // namespace panel
