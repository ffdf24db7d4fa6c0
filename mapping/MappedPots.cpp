#include "mapping/MappedPots.h"

#include "mapping/ParameterOrder.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <limits>
#include <system_error>

namespace mapping {

namespace {

/// Takes a number of digits alone off the beginning of a text; 0 where there is none that counts anything.
std::int32_t takeNumber(std::string_view& text)
{
    std::int32_t number = 0;
    if (text.empty() || text.front() < '0' || text.front() > '9')
        return 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return error == std::errc() ? number : 0;
}

bool take(std::string_view& text, std::string_view beginning)
{
    if (!text.starts_with(beginning))
        return false;
    text.remove_prefix(beginning.size());
    return true;
}

} // namespace

std::optional<PotRange> potsMeant(std::string_view word)
{
    constexpr std::int32_t kMostPages = std::numeric_limits<std::int32_t>::max() / kPotsPerPage;
    const bool isPage = take(word, "p");
    const std::int32_t page = takeNumber(word);
    if (page < 1 || page > kMostPages)
        return std::nullopt;
    const std::int32_t first = (page - 1) * kPotsPerPage;
    if (isPage)
        return word.empty() ? std::optional(PotRange{first, first + kPotsPerPage - 1}) : std::nullopt;
    if (!take(word, "·") && !take(word, "."))
        return std::nullopt;
    const std::int32_t pot = takeNumber(word);
    if (!word.empty() || pot < 1 || pot > kPotsPerPage)
        return std::nullopt;
    return PotRange{first + pot - 1, first + pot - 1};
}

MappedPots::MappedPots(const std::vector<platform::Record>& parameters)
{
    uses_.reserve(parameters.size());
    for (const platform::Record& parameter : parameters) {
        if (isEmptyEntry(parameter))
            continue;
        ++uses_[elementFromEntry(parameter)].offered;
        ++parameterCount_;
    }
}

void MappedPots::setEntries(const std::vector<platform::Record>& entries, std::int32_t totalPages)
{
    const std::size_t count = std::min(entries.size(), static_cast<std::size_t>(totalPages) * kPotsPerPage);
    static const platform::Record kNothing = emptyEntry(0, 0);
    placed_.resize(std::max(count, placed_.size()), kNothing);
    for (std::size_t i = 0; i < placed_.size(); ++i) {
        const platform::Record& entry = i < count ? entries[i] : kNothing;
        if (placed_[i] == entry)
            continue;
        remove(placed_[i], static_cast<std::int32_t>(i));
        place(entry, static_cast<std::int32_t>(i));
        placed_[i] = entry;
    }
}

void MappedPots::place(const platform::Record& entry, std::int32_t position)
{
    if (isEmptyEntry(entry))
        return;
    Use& use = uses_[elementFromEntry(entry)];
    mappedCount_ += use.positions.empty() ? use.offered : 0;
    use.positions.insert(std::ranges::lower_bound(use.positions, position), position);
}

void MappedPots::remove(const platform::Record& entry, std::int32_t position)
{
    if (isEmptyEntry(entry))
        return;
    Use& use = uses_[elementFromEntry(entry)];
    use.positions.erase(std::ranges::lower_bound(use.positions, position));
    mappedCount_ -= use.positions.empty() ? use.offered : 0;
}

const std::vector<std::int32_t>& MappedPots::positionsOf(const platform::Record& parameter) const
{
    static const std::vector<std::int32_t> kNone;
    const auto use = uses_.find(elementFromEntry(parameter));
    return use == uses_.end() ? kNone : use->second.positions;
}

std::vector<platform::Record> MappedPots::entriesOn(const PotRange& range) const
{
    std::vector<platform::Record> entries;
    const auto behind = std::min(static_cast<std::size_t>(range.last) + 1, placed_.size());
    for (auto i = static_cast<std::size_t>(range.first); i < behind; ++i) {
        if (!isEmptyEntry(placed_[i]))
            entries.push_back(placed_[i]);
    }
    return entries;
}

std::string potsText(const std::vector<std::int32_t>& positions)
{
    std::string text;
    for (const std::int32_t position : positions) {
        text += text.empty() ? "" : ", ";
        text += std::to_string(position / kPotsPerPage + 1) + "\u00b7" + std::to_string(position % kPotsPerPage + 1);
    }
    return text;
}

} // namespace mapping
