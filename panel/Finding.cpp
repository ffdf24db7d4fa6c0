#include "panel/Finding.h"

#include "mapping/ParameterOrder.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <system_error>

namespace panel {

namespace {

std::int32_t pageOf(std::int32_t position)
{
    return position / mapping::kPotsPerPage + 1;
}

bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

/// Where it stands in a name, a word begins: behind a blank or a sign. Bytes beyond ASCII belong to words.
bool partsWords(char c)
{
    const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    const bool isDigit = c >= '0' && c <= '9';
    return static_cast<unsigned char>(c) < 0x80 && !isLetter && !isDigit;
}

bool holdsWordThatBegins(std::string_view name, std::string_view text)
{
    for (auto at = name.find(text, 1); at != std::string_view::npos; at = name.find(text, at + 1)) {
        if (partsWords(name[at - 1]))
            return true;
    }
    return false;
}

} // namespace

std::optional<std::int32_t> nextPageOf(const std::vector<std::int32_t>& positions, std::int32_t shownPage)
{
    if (positions.empty())
        return std::nullopt;
    const auto onShown = std::ranges::lower_bound(positions, firstSlotOf(shownPage));
    if (onShown == positions.end() || pageOf(*onShown) != shownPage)
        return pageOf(positions.front());
    const auto behind = std::ranges::lower_bound(positions, firstSlotOf(shownPage + 1));
    return pageOf(behind == positions.end() ? positions.front() : *behind);
}

std::optional<std::int32_t> pageMeant(std::string_view typed, const Entries& entries, std::int32_t totalPages,
                                      const std::function<std::string(std::string_view)>& folded)
{
    const std::string_view text = trimmed(typed);
    std::int32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error == std::errc() && end == text.data() + text.size() && number >= 1 && number <= totalPages)
        return number;
    const std::string sought = folded(text);
    if (sought.empty())
        return std::nullopt;
    const auto count = std::min(entries.size(), static_cast<std::size_t>(totalPages) * mapping::kPotsPerPage);
    std::optional<std::int32_t> withWord;
    for (std::size_t i = 0; i < count; ++i) {
        if (mapping::isEmptyEntry(entries[i]))
            continue;
        const std::string name = folded(entries[i].text(mapping::kParameter));
        if (name.starts_with(sought))
            return pageOf(static_cast<std::int32_t>(i));
        if (!withWord && holdsWordThatBegins(name, sought))
            withWord = pageOf(static_cast<std::int32_t>(i));
    }
    return withWord;
}

} // namespace panel
