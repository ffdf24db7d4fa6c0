#pragma once
// On which pots each parameter stands: kept current edit by edit, so that a press on a mapping of ten thousand slots
// costs what it changed.

#include "platform/controls/Record.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace mapping {

class MappedPots {
public:
    /// The list offered for assignment. Its blank entry, and whatever else is empty, is no parameter.
    void setParameters(const std::vector<platform::Record>& parameters);
    /// The mapping; only slots of counted pages are pots.
    void setEntries(const std::vector<platform::Record>& entries, std::int32_t totalPages);

    /// Positions (from 0, ascending) of a parameter, of any record that has its number and name; the first `most`.
    std::vector<std::int32_t> positionsOf(const platform::Record& parameter,
                                          std::size_t most = static_cast<std::size_t>(-1)) const;
    bool isOnPot(const platform::Record& parameter) const { return firstPositionOf(parameter) != kNone; }
    /// How many of the offered parameters stand on a pot, and how many are offered.
    std::int32_t mappedCount() const { return mappedCount_; }
    std::int32_t parameterCount() const { return parameterCount_; }

private:
    static constexpr std::int32_t kNone = -1;

    /// Records are one parameter when they have its number and name. A record keeps both.
    struct Parameter {
        explicit Parameter(const platform::Record& record);
        bool isEmpty() const;
        bool operator==(const Parameter&) const = default;

        std::string_view number;
        std::string_view name;
    };
    /// Where a parameter stands; next_ leads from its first position to its last.
    struct Use {
        Parameter parameter;
        platform::Record keeper;  ///< of the parameter's number and name
        std::int32_t offered = 0; ///< rows of the list with this number and name
        std::int32_t first = kNone;
        std::int32_t last = kNone;
    };

    Use& useOf(const Parameter& parameter, const platform::Record& record);
    /// The place of a parameter in table_, or the free one where it belongs.
    std::size_t placeOf(const Parameter& parameter) const;
    /// Makes room for so many uses.
    void makeTable(std::size_t uses);
    std::int32_t firstPositionOf(const platform::Record& record) const;
    std::int32_t& nextOf(std::int32_t position) { return next_[static_cast<std::size_t>(position)]; }
    void place(const platform::Record& entry, std::int32_t position);
    void remove(const platform::Record& entry, std::int32_t position);

    std::vector<Use> uses_;
    std::vector<std::uint32_t> table_; ///< hashed: 1 + where in uses_, 0 for a free place; at most half full
    std::vector<platform::Record> placed_;
    std::vector<std::int32_t> next_;
    std::int32_t mappedCount_ = 0;
    std::int32_t parameterCount_ = 0;
};

/// "1·3, 4·8": page and pot of each position.
std::string potsText(const std::vector<std::int32_t>& positions);

} // namespace mapping
