#include "panel/Pages.h"

#include "mapping/ParameterOrder.h"

#include <algorithm>

namespace panel {

using mapping::kPotsPerPage;

std::int32_t firstSlotOf(std::int32_t page)
{
    return (page - 1) * kPotsPerPage;
}

std::int32_t slotFor(std::int32_t page, std::int32_t pot)
{
    return firstSlotOf(page) + pot;
}

std::string pageReadOut(std::int32_t page, std::int32_t totalPages)
{
    return "Page " + std::to_string(page) + " of " + std::to_string(totalPages);
}

std::string totalReadOut(std::int32_t totalPages)
{
    return std::to_string(totalPages) + (totalPages < 2 ? " Page" : " Pages");
}

void appendPage(Entries& entries, std::int32_t page)
{
    for (int pot = 0; pot < kPotsPerPage; ++pot)
        entries.push_back(mapping::emptyEntry(page, static_cast<std::int32_t>(entries.size())));
}

void removePage(Entries& entries, std::int32_t page)
{
    const auto first = entries.begin() + firstSlotOf(page);
    entries.erase(first, first + kPotsPerPage);
}

void clearFirstPage(Entries& entries)
{
    for (std::size_t position = 0; position < kPotsPerPage; ++position)
        setContent(entries.at(position), {mapping::kEmptyNumber, mapping::kEmptyName});
}

void keepOneEmptyPage(Entries& entries)
{
    clearFirstPage(entries);
    entries.erase(entries.begin() + kPotsPerPage, entries.end());
}

std::size_t parametersBehind(const Entries& entries, std::int32_t pages)
{
    const auto first = std::min(entries.size(), static_cast<std::size_t>(firstSlotOf(pages + 1)));
    const auto begin = entries.begin() + static_cast<std::ptrdiff_t>(first);
    return static_cast<std::size_t>(
        std::count_if(begin, entries.end(), [](const auto& entry) { return !mapping::isEmptyEntry(entry); }));
}

SlotContent contentOf(const platform::Record& entry)
{
    return {std::string(entry.text(mapping::kParamNum)), std::string(entry.text(mapping::kParameter))};
}

SlotContent contentAt(const Entries& entries, std::int32_t position)
{
    const auto index = static_cast<std::size_t>(position);
    return index < entries.size() ? contentOf(entries[index]) : SlotContent{mapping::kEmptyNumber, mapping::kEmptyName};
}

void setContent(platform::Record& entry, const SlotContent& content)
{
    entry.set(mapping::kParamNum, content.number);
    entry.set(mapping::kParameter, content.name);
}

void exchangeContents(Entries& entries, std::int32_t one, std::int32_t other)
{
    platform::Record& first = entries.at(static_cast<std::size_t>(one));
    platform::Record& second = entries.at(static_cast<std::size_t>(other));
    const SlotContent former = contentOf(second);
    setContent(second, contentOf(first));
    setContent(first, former);
}

} // namespace panel
