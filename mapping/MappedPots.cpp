#include "mapping/MappedPots.h"

#include "mapping/ParameterOrder.h"

#include <algorithm>
#include <bit>
#include <functional>
#include <utility>

namespace mapping {

MappedPots::Parameter::Parameter(const platform::Record& record)
    : number(record.text(kParamNum)), name(record.text(kParameter))
{}

bool MappedPots::Parameter::isEmpty() const
{
    return name == kEmptyName;
}

std::size_t MappedPots::placeOf(const Parameter& parameter) const
{
    const std::hash<std::string_view> hash;
    const std::size_t last = table_.size() - 1; // a power of two less one
    std::size_t place = (hash(parameter.number) * 31 + hash(parameter.name)) & last;
    while (table_[place] != 0 && uses_[table_[place] - 1].parameter != parameter)
        place = (place + 1) & last;
    return place;
}

void MappedPots::makeTable(std::size_t uses)
{
    table_.assign(std::bit_ceil(2 * uses + 1), 0);
    for (std::size_t i = 0; i < uses_.size(); ++i)
        table_[placeOf(uses_[i].parameter)] = static_cast<std::uint32_t>(i + 1);
}

MappedPots::Use& MappedPots::useOf(const Parameter& parameter, const platform::Record& record)
{
    if (2 * (uses_.size() + 1) > table_.size())
        makeTable(2 * (uses_.size() + 1));
    std::uint32_t& place = table_[placeOf(parameter)];
    if (place == 0) {
        uses_.push_back({parameter, record});
        place = static_cast<std::uint32_t>(uses_.size());
    }
    return uses_[place - 1];
}

void MappedPots::setParameters(const std::vector<platform::Record>& parameters)
{
    std::erase_if(uses_, [](const Use& use) { return use.first == kNone; });
    for (Use& use : uses_)
        use.offered = 0;
    uses_.reserve(uses_.size() + parameters.size());
    makeTable(uses_.size() + parameters.size());
    mappedCount_ = 0;
    parameterCount_ = 0;
    for (const platform::Record& record : parameters) {
        const Parameter parameter(record);
        if (parameter.isEmpty())
            continue;
        Use& use = useOf(parameter, record);
        ++use.offered;
        ++parameterCount_;
        mappedCount_ += use.first == kNone ? 0 : 1;
    }
}

void MappedPots::setEntries(const std::vector<platform::Record>& entries, std::int32_t totalPages)
{
    const std::size_t count = std::min(entries.size(), static_cast<std::size_t>(totalPages) * kPotsPerPage);
    next_.resize(std::max(count, placed_.size()), kNone);
    for (std::size_t position = 0; position < std::max(count, placed_.size()); ++position) {
        const bool was = position < placed_.size();
        const bool is = position < count;
        if (was && is && placed_[position].isCopyOf(entries[position]))
            continue;
        if (was)
            remove(placed_[position], static_cast<std::int32_t>(position));
        if (is)
            place(entries[position], static_cast<std::int32_t>(position));
        if (was && is)
            placed_[position] = entries[position];
    }
    const std::size_t kept = std::min(count, placed_.size());
    placed_.resize(kept);
    placed_.insert(placed_.end(), entries.begin() + static_cast<std::ptrdiff_t>(kept),
                   entries.begin() + static_cast<std::ptrdiff_t>(count));
}

void MappedPots::place(const platform::Record& entry, std::int32_t position)
{
    const Parameter parameter(entry);
    if (parameter.isEmpty())
        return;
    Use& use = useOf(parameter, entry);
    mappedCount_ += use.first == kNone ? use.offered : 0;
    // A load places from front to back, so that even one parameter on every pot finds its place at once.
    std::int32_t before = use.last < position ? use.last : kNone;
    if (before == kNone && use.first < position) {
        for (std::int32_t next = use.first; next != kNone && next < position; next = nextOf(next))
            before = next;
    }
    std::int32_t& link = before == kNone ? use.first : nextOf(before);
    nextOf(position) = std::exchange(link, position);
    use.last = std::max(use.last, position);
}

void MappedPots::remove(const platform::Record& entry, std::int32_t position)
{
    const Parameter parameter(entry);
    if (parameter.isEmpty())
        return;
    Use& use = useOf(parameter, entry);
    std::int32_t before = kNone;
    for (std::int32_t next = use.first; next != position; next = nextOf(next))
        before = next;
    (before == kNone ? use.first : nextOf(before)) = nextOf(position);
    use.last = use.last == position ? before : use.last;
    mappedCount_ -= use.first == kNone ? use.offered : 0;
}

std::int32_t MappedPots::firstPositionOf(const platform::Record& record) const
{
    const Parameter parameter(record);
    if (parameter.isEmpty() || table_.empty())
        return kNone;
    const std::uint32_t use = table_[placeOf(parameter)];
    return use == 0 ? kNone : uses_[use - 1].first;
}

std::vector<std::int32_t> MappedPots::positionsOf(const platform::Record& parameter, std::size_t most) const
{
    std::vector<std::int32_t> positions;
    std::int32_t next = firstPositionOf(parameter);
    for (; next != kNone && positions.size() < most; next = next_[static_cast<std::size_t>(next)])
        positions.push_back(next);
    return positions;
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
