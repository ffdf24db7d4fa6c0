#include "mapping/MappedPots.h"

#include "mapping/ParameterOrder.h"

#include <algorithm>

namespace mapping {

namespace {

/// What two records of one parameter have in common: the element that both are written as.
std::string keyOf(const platform::Record& record)
{
    return elementFromEntry(record);
}

} // namespace

void MappedPots::setParameters(const std::vector<platform::Record>& parameters)
{
    std::erase_if(uses_, [](const auto& use) { return use.second.positions.empty(); });
    for (auto& [key, use] : uses_)
        use.offered = 0;
    mappedCount_ = 0;
    parameterCount_ = 0;
    for (const platform::Record& parameter : parameters) {
        if (isEmptyEntry(parameter))
            continue;
        Use& use = uses_[keyOf(parameter)];
        ++use.offered;
        ++parameterCount_;
        mappedCount_ += use.positions.empty() ? 0 : 1;
    }
}

void MappedPots::setEntries(const std::vector<platform::Record>& entries, std::int32_t totalPages)
{
    const std::size_t count = std::min(entries.size(), static_cast<std::size_t>(totalPages) * kPotsPerPage);
    for (std::size_t position = 0; position < std::max(count, placed_.size()); ++position) {
        const bool was = position < placed_.size();
        const bool is = position < count;
        if (was && is && placed_[position].isCopyOf(entries[position]))
            continue;
        if (was)
            remove(placed_[position], static_cast<std::int32_t>(position));
        if (is)
            place(entries[position], static_cast<std::int32_t>(position));
    }
    placed_.assign(entries.begin(), entries.begin() + static_cast<std::ptrdiff_t>(count));
}

void MappedPots::place(const platform::Record& entry, std::int32_t position)
{
    if (isEmptyEntry(entry))
        return;
    Use& use = uses_[keyOf(entry)];
    mappedCount_ += use.positions.empty() ? use.offered : 0;
    use.positions.insert(std::upper_bound(use.positions.begin(), use.positions.end(), position), position);
}

void MappedPots::remove(const platform::Record& entry, std::int32_t position)
{
    if (isEmptyEntry(entry))
        return;
    Use& use = uses_[keyOf(entry)];
    std::erase(use.positions, position);
    mappedCount_ -= use.positions.empty() ? use.offered : 0;
}

const std::vector<std::int32_t>& MappedPots::positionsOf(const platform::Record& parameter) const
{
    static const std::vector<std::int32_t> kNone;
    const auto use = isEmptyEntry(parameter) ? uses_.end() : uses_.find(keyOf(parameter));
    return use == uses_.end() ? kNone : use->second.positions;
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
