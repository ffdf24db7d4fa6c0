#include "mapping/EditingSnapshot.h"

#include "mapping/ParameterOrder.h"

#include <algorithm>
#include <cstddef>

namespace mapping {

namespace {

using Records = std::vector<platform::Record>;

void replace(Records& records, std::size_t position, const Records& former, const Records& by)
{
    const auto first = records.begin() + static_cast<std::ptrdiff_t>(position);
    records.insert(records.erase(first, first + static_cast<std::ptrdiff_t>(former.size())), by.begin(), by.end());
}

bool areWrittenAlike(const platform::Record& one, const platform::Record& other)
{
    return one == other || elementFromEntry(one) == elementFromEntry(other);
}

} // namespace

bool EditingChange::isEmpty() const
{
    return entries.isEmpty() && !parametersBefore && before.totalPages == after.totalPages && before.mode == after.mode;
}

Splice difference(const Records& before, const Records& after)
{
    const auto [from, to] = std::mismatch(before.begin(), before.end(), after.begin(), after.end());
    auto fromEnd = before.end();
    auto toEnd = after.end();
    while (fromEnd != from && toEnd != to && fromEnd[-1] == toEnd[-1]) {
        --fromEnd;
        --toEnd;
    }
    return {static_cast<std::size_t>(from - before.begin()), Records(from, fromEnd), Records(to, toEnd)};
}

void makeAgain(const Splice& splice, Records& records)
{
    replace(records, splice.position, splice.before, splice.after);
}

void takeBack(const Splice& splice, Records& records)
{
    replace(records, splice.position, splice.after, splice.before);
}

EditingChange changeSince(const EditingSnapshot& before, const Records& entries,
                          const platform::SharedRecords& parameters, const EditingNumbers& numbers)
{
    EditingChange change{difference(before.entries, entries), {}, {}, before.numbers, numbers};
    if (*before.parameters != *parameters) {
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
