#pragma once
// The editing state at one moment, and what an edit changed of it: what undo and redo go back and forth between. A
// change holds only the slots from the first to the last that differ, so that a long history of a large mapping stays
// small.

#include "platform/controls/Record.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace mapping {

/// The records that stood at a position (from 0) before, and those that stand there after.
struct Splice {
    std::size_t position = 0;
    std::vector<platform::Record> before;
    std::vector<platform::Record> after;

    bool isEmpty() const { return before.empty() && after.empty(); }
};

struct EditingNumbers {
    std::int32_t totalPages = 1;
    std::int32_t curPage = 1;
    std::int32_t mode = 0;
};

struct EditingSnapshot {
    std::vector<platform::Record> entries; ///< the whole mapping, with what lies behind the counted pages
    platform::SharedRecords parameters;    ///< the list offered for assignment; never null
    EditingNumbers numbers;
};

struct EditingChange {
    Splice entries;
    /// The whole lists; both null where the list stayed as it was.
    platform::SharedRecords parametersBefore;
    platform::SharedRecords parametersAfter;
    EditingNumbers before;
    EditingNumbers after;

    /// Nothing differs but, at most, the page shown.
    bool isEmpty() const;
};

/// What turns one list into another: all that stands between what they have in common at both ends.
Splice difference(const std::vector<platform::Record>& before, const std::vector<platform::Record>& after);
/// Puts the later records in place of the earlier ones, or the other way round.
void makeAgain(const Splice& splice, std::vector<platform::Record>& records);
void takeBack(const Splice& splice, std::vector<platform::Record>& records);

/// From a snapshot to what is there now.
EditingChange changeSince(const EditingSnapshot& before, const std::vector<platform::Record>& entries,
                          const platform::SharedRecords& parameters, const EditingNumbers& numbers);

/// Number of slots in which two mappings would be written differently; a slot that only one of them has counts.
std::size_t differingSlots(const std::vector<platform::Record>& one, const std::vector<platform::Record>& other);

} // namespace mapping
