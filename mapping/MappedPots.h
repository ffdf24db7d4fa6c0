#pragma once
// On which pots each parameter stands: kept current edit by edit, so that a press on a mapping of ten thousand slots
// costs what it changed.

#include "platform/controls/Record.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace mapping {

/// Positions of neighbouring pots, both ends included.
struct PotRange {
    std::int32_t first;
    std::int32_t last;

    bool operator==(const PotRange&) const = default;
};

/// The pots that a word means: the one of "1·3" or "1.3", all on the page of "p1".
std::optional<PotRange> potsMeant(std::string_view word);

class MappedPots {
public:
    MappedPots() = default;
    /// With the list offered for assignment. Its blank entry, and whatever else is empty, is no parameter.
    explicit MappedPots(const std::vector<platform::Record>& parameters);
    /// The mapping; only slots of counted pages are pots.
    void setEntries(const std::vector<platform::Record>& entries, std::int32_t totalPages);

    /// Positions (from 0, ascending) of a parameter, of any record that has its number and name. They are there until
    /// the mapping is set again.
    const std::vector<std::int32_t>& positionsOf(const platform::Record& parameter) const;
    bool isOnPot(const platform::Record& parameter) const { return !positionsOf(parameter).empty(); }
    /// What stands on some of the pots.
    std::vector<platform::Record> entriesOn(const PotRange& range) const;
    /// How many of the offered parameters stand on a pot, and how many are offered.
    std::int32_t mappedCount() const { return mappedCount_; }
    std::int32_t parameterCount() const { return parameterCount_; }

private:
    struct Use {
        std::int32_t offered = 0; ///< rows of the list with this number and name
        std::vector<std::int32_t> positions;
    };

    void place(const platform::Record& entry, std::int32_t position);
    void remove(const platform::Record& entry, std::int32_t position);

    std::unordered_map<std::string, Use> uses_; ///< by the parameter's element
    std::vector<platform::Record> placed_;      ///< a record a position, empty where there is no pot
    std::int32_t mappedCount_ = 0;
    std::int32_t parameterCount_ = 0;
};

/// "1·3, 4·8": page and pot of each position.
std::string potsText(const std::vector<std::int32_t>& positions);

} // namespace mapping
