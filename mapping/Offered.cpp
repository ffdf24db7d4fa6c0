#include "mapping/Offered.h"

#include "mapping/ParameterOrder.h"

#include <algorithm>
#include <string_view>

namespace mapping {

namespace {

std::string folded(std::string_view name)
{
    std::string lower(name);
    std::ranges::transform(lower, lower.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return lower;
}

} // namespace

Offered::Offered(const std::vector<platform::Record>& parameters)
{
    for (const platform::Record& parameter : parameters) {
        if (!isEmptyEntry(parameter))
            names_.insert(folded(parameter.text(kParameter)));
    }
}

bool Offered::isOffered(const platform::Record& parameter) const
{
    return !isEmptyEntry(parameter) && names_.contains(folded(parameter.text(kParameter)));
}

OfferedCount countOffered(const std::vector<platform::Record>& entries, const Offered& here)
{
    std::unordered_set<std::string> seen;
    OfferedCount count;
    for (const platform::Record& entry : entries) {
        if (isEmptyEntry(entry) || !seen.insert(elementFromEntry(entry)).second)
            continue;
        ++count.all;
        count.offered += here.isOffered(entry) ? 1 : 0;
    }
    return count;
}

} // namespace mapping
