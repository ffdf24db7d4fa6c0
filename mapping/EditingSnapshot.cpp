#include "mapping/EditingSnapshot.h"

#include "mapping/ParameterOrder.h"

#include <algorithm>
#include <iterator>

namespace mapping {

namespace {

using Records = std::vector<platform::Record>;

Records slice(const Records& records, std::size_t first, std::size_t end)
{
    return {records.begin() + static_cast<std::ptrdiff_t>(first), records.begin() + static_cast<std::ptrdiff_t>(end)};
}

std::vector<Splice> differingRuns(const Records& before, const Records& after)
{
    std::vector<Splice> splices;
    for (std::size_t position = 0; position < before.size(); ++position) {
        if (before[position] == after[position])
            continue;
        if (splices.empty() || splices.back().position + splices.back().before.size() != position)
            splices.push_back({position, {}, {}});
        splices.back().before.push_back(before[position]);
        splices.back().after.push_back(after[position]);
    }
    return splices;
}

void replace(Records& records, std::size_t position, std::size_t count, const Records& by)
{
    const auto at = records.begin() + static_cast<std::ptrdiff_t>(position);
    const auto overwritten = static_cast<std::ptrdiff_t>(std::min(count, by.size()));
    std::copy(by.begin(), by.begin() + overwritten, at);
    if (by.size() > count)
        records.insert(at + overwritten, by.begin() + overwritten, by.end());
    else
        records.erase(at + overwritten, at + static_cast<std::ptrdiff_t>(count));
}

bool areWrittenAlike(const platform::Record& one, const platform::Record& other)
{
    if (one.isCopyOf(other))
        return true;
    if (isEmptyEntry(one) || isEmptyEntry(other))
        return isEmptyEntry(one) && isEmptyEntry(other);
    return one.text(kParamNum) == other.text(kParamNum) && one.text(kParameter) == other.text(kParameter);
}

} // namespace

bool EditingChange::isEmpty() const
{
    return entries.empty() && !parametersBefore && before.totalPages == after.totalPages && before.mode == after.mode;
}

std::vector<Splice> differences(const Records& before, const Records& after)
{
    if (before.size() == after.size())
        return differingRuns(before, after);
    const std::size_t shorter = std::min(before.size(), after.size());
    std::size_t front = 0;
    while (front < shorter && before[front] == after[front])
        ++front;
    std::size_t back = 0;
    while (back < shorter - front && before[before.size() - 1 - back] == after[after.size() - 1 - back])
        ++back;
    return {{front, slice(before, front, before.size() - back), slice(after, front, after.size() - back)}};
}

void makeAgain(const std::vector<Splice>& splices, Records& records)
{
    for (const Splice& splice : splices)
        replace(records, splice.position, splice.before.size(), splice.after);
}

void takeBack(const std::vector<Splice>& splices, Records& records)
{
    for (const Splice& splice : splices)
        replace(records, splice.position, splice.after.size(), splice.before);
}

EditingChange changeSince(const EditingSnapshot& before, const Records& entries,
                          const platform::SharedRecords& parameters, const EditingNumbers& numbers)
{
    EditingChange change{differences(before.entries, entries), {}, {}, before.numbers, numbers};
    if (before.parameters != parameters && *before.parameters != *parameters) {
        change.parametersBefore = before.parameters;
        change.parametersAfter = parameters;
    }
    return change;
}

std::size_t differingSlots(const Records& one, const Records& other)
{
    const std::size_t shorter = std::min(one.size(), other.size());
    std::size_t count = std::max(one.size(), other.size()) - shorter;
    for (std::size_t position = 0; position < shorter; ++position)
        count += areWrittenAlike(one[position], other[position]) ? 0 : 1;
    return count;
}

} // namespace mapping
