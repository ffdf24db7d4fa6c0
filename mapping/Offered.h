#pragma once
// Which parameters of another plug-in's mapping, or of one that somebody else made, a plug-in offers for assignment.

#include "platform/controls/Record.h"

#include <cstddef>
#include <string>
#include <unordered_set>
#include <vector>

namespace mapping {

/// The list offered for assignment, for looking up many parameters in it.
class Offered {
public:
    explicit Offered(const std::vector<platform::Record>& parameters);

    /// By name, whatever the case of its ASCII letters: one with the same number, too, has the name as well. An empty
    /// entry is no parameter.
    bool isOffered(const platform::Record& parameter) const;

private:
    std::unordered_set<std::string> names_;
};

struct OfferedCount {
    std::size_t offered = 0;
    std::size_t all = 0;

    bool operator==(const OfferedCount&) const = default;
};

/// How many different parameters a mapping has on its pots, and how many of them are offered.
OfferedCount countOffered(const std::vector<platform::Record>& entries, const Offered& here);

} // namespace mapping
