#pragma once
// The content of one list with the rows shown of it ("arranged objects") and what is selected of them: one row that
// operations act on, and others beside it where the list lets several be selected. Selection and select-next count in
// arranged rows, from 0.

#include "platform/controls/Property.h"
#include "platform/controls/Record.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

class ArrayController {
public:
    static constexpr std::int32_t kNoSelection = -1;

    /// Answers which content positions are shown, in which order, for the controller's content and filter text.
    using Arrangement = std::function<std::vector<std::size_t>(const ArrayController&)>;

    ArrayController();
    ArrayController(const ArrayController&) = delete;
    ArrayController& operator=(const ArrayController&) = delete;

    const std::vector<Record>& content() const { return *content_; }
    /// The content as it is now, for those who keep it.
    SharedRecords sharedContent() const { return content_; }
    /// Another number for every content there was, for those who keep what they derived from it.
    std::uint64_t contentRevision() const { return contentRevision_; }
    /// Replaces the content; nothing is selected afterwards.
    void setContent(std::vector<Record> content);
    /// Never null.
    void setSharedContent(SharedRecords content);
    /// Appends rows; those selected stay selected.
    void addObjects(std::vector<Record> records);

    /// How content becomes rows; without one every record is shown in content order.
    void setArrangement(Arrangement arrangement);
    /// Arranges anew. Selected rows that are still shown stay selected. Where the one of the selection index is not,
    /// the first of the others takes its place.
    void rearrange();

    std::int32_t arrangedCount() const { return static_cast<std::int32_t>(arranged_.size()); }
    /// The record of a row, or null when there is no such row.
    const Record* arrangedObject(std::int32_t row) const;

    std::int32_t selectionIndex() const { return selectionIndex_; }
    /// Selects a row alone; anything outside the rows selects none.
    void setSelectionIndex(std::int32_t row);
    /// Selects the row after the selected one, alone; at the last row, or without a selection, nothing changes.
    void selectNext();
    /// All selected rows, ascending. That of the selection index is one of them; none are without it.
    const std::vector<std::int32_t>& selectedRows() const { return selectedRows_; }
    /// Selects several rows of those there are, given ascending. `current` becomes the selection index; where it is
    /// none of them, the one before stays it, or else it is the next one below, or the last.
    void setSelectedRows(std::vector<std::int32_t> rows, std::int32_t current);
    /// The selected records, in the order of the rows. They are there until the content is another one.
    std::vector<const Record*> selectedObjects() const;
    /// The selected record, or null.
    const Record* selection() const { return arrangedObject(selectionIndex_); }
    /// A text of the selected record; empty without a selection.
    std::string selectionText(std::string_view key) const;

    /// What the user typed to narrow the rows.
    Property<std::string> filterText;
    /// The rows shown are others than before; the selection is already adjusted.
    Signal<> arrangedChanged;
    Signal<> selectionChanged;

private:
    void arrange();
    void select(std::vector<std::int32_t> rows, std::int32_t current);

    SharedRecords content_ = std::make_shared<const std::vector<Record>>();
    std::uint64_t contentRevision_ = 0;
    std::vector<std::size_t> arranged_;
    Arrangement arrangement_;
    std::int32_t selectionIndex_ = kNoSelection;
    std::vector<std::int32_t> selectedRows_;
    Connection filterChanged_;
};

} // namespace platform
