#include "mapping/MappedPots.h"

#include "mapping/ParameterOrder.h"

#include <algorithm>
#include <cstddef>

namespace mapping {

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
