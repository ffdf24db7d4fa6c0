#include "mapping/ParameterOrder.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace mapping {

using platform::Record;

namespace {

Record entry(std::string_view number, std::string_view name, std::int32_t page, std::int32_t controlNo)
{
    static const Record kAlike = {
        {kParamNum, ""}, {kParameter, ""}, {kKorvelPage, std::int32_t{0}}, {kKorvelControlNo, std::int32_t{0}}};
    return {kAlike, {std::string(number), std::string(name), page, controlNo}};
}

} // namespace

Record entryFromElement(std::string_view element, std::int32_t page, std::int32_t controlNo)
{
    const auto blank = element.find(' ');
    if (blank == std::string_view::npos)
        return emptyEntry(page, controlNo);
    return entry(element.substr(0, blank), element.substr(blank + 1), page, controlNo);
}

Record emptyEntry(std::int32_t page, std::int32_t controlNo)
{
    return entry(kEmptyNumber, kEmptyName, page, controlNo);
}

bool isEmptyEntry(const Record& entry)
{
    return entry.text(kParameter) == kEmptyName;
}

bool isSameParameter(const platform::Record& one, const platform::Record& other)
{
    return one.text(kParamNum) == other.text(kParamNum) && one.text(kParameter) == other.text(kParameter);
}

std::string_view nameAt(const std::vector<Record>& entries, std::int32_t position)
{
    const auto index = static_cast<std::size_t>(position);
    return index < entries.size() ? entries[index].text(kParameter) : kEmptyName;
}

std::int32_t pageOfElement(std::int32_t n)
{
    return 1 + (n - 1) / kPotsPerPage;
}

std::int32_t pagesFilledBy(std::size_t elements)
{
    return static_cast<std::int32_t>((elements + kPotsPerPage - 1) / kPotsPerPage);
}

std::optional<std::int32_t> modeFromText(std::string_view text)
{
    if (text == "1")
        return kModeInstrument;
    if (text == "0")
        return kModeInsertEffect;
    return std::nullopt;
}

std::int32_t guessedMode(const Elements& catalogue)
{
    // Without its first letter, so that Volume and volume both count.
    const auto speaksOfVolume = [](std::string_view element) { return element.find("olume") != std::string::npos; };
    return std::any_of(catalogue.begin(), catalogue.end(), speaksOfVolume) ? kModeInstrument : kModeInsertEffect;
}

std::vector<std::string> catalogueOf(const Elements& order)
{
    std::vector<std::string> catalogue = {kEmptyElement};
    std::unordered_set<std::string_view> seen = {kEmptyElement};
    for (const std::string_view element : order) {
        if (seen.insert(element).second)
            catalogue.emplace_back(element);
    }
    return catalogue;
}

std::vector<Record> parameterList(const Elements& catalogue)
{
    std::vector<Record> list;
    list.reserve(catalogue.size() + 1);
    list.push_back(emptyEntry(0, 0));
    for (const std::string_view element : catalogue) {
        Record parameter = entryFromElement(element, 0, 0);
        if (!(isEmptyEntry(parameter) && parameter.text(kParamNum) == kEmptyNumber))
            list.push_back(std::move(parameter));
    }
    return list;
}

std::vector<Record> mappingOf(const Elements& order)
{
    std::vector<Record> entries;
    entries.reserve(order.size() + kPotsPerPage);
    std::int32_t page = 1;
    for (const std::string_view element : order) {
        const auto position = static_cast<std::int32_t>(entries.size());
        page = pageOfElement(position + 1);
        entries.push_back(entryFromElement(element, page, position));
    }
    while (entries.empty() || entries.size() % kPotsPerPage != 0)
        entries.push_back(emptyEntry(page, static_cast<std::int32_t>(entries.size())));
    return entries;
}

std::string elementFromEntry(const Record& entry)
{
    if (isEmptyEntry(entry))
        return kEmptyElement;
    std::string element(entry.text(kParamNum));
    element += ' ';
    element += entry.text(kParameter);
    return element;
}

std::vector<std::string> orderOf(const std::vector<Record>& entries)
{
    std::vector<std::string> order;
    order.reserve(entries.size());
    std::transform(entries.begin(), entries.end(), std::back_inserter(order), elementFromEntry);
    return order;
}

} // namespace mapping
