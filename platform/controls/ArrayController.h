#pragma once
// The content of one list with the rows shown of it ("arranged objects") and one selected row at most. Selection and
// select-next count in arranged rows, from 0.

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
    /// Appends rows; the selected one stays selected.
    void addObjects(std::vector<Record> records);

    /// How content becomes rows; without one every record is shown in content order.
    void setArrangement(Arrangement arrangement);
    /// Arranges anew. A selected row that is still shown stays selected, otherwise none is.
    void rearrange();

    std::int32_t arrangedCount() const { return static_cast<std::int32_t>(arranged_.size()); }
    /// The record of a row, or null when there is no such row.
    const Record* arrangedObject(std::int32_t row) const;

    std::int32_t selectionIndex() const { return selectionIndex_; }
    /// Selects a row; anything outside the rows selects none.
    void setSelectionIndex(std::int32_t row);
    /// Selects the row after the selected one; at the last row, or without a selection, nothing changes.
    void selectNext();
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
    void select(std::int32_t row);

    SharedRecords content_ = std::make_shared<const std::vector<Record>>();
    std::uint64_t contentRevision_ = 0;
    std::vector<std::size_t> arranged_;
    Arrangement arrangement_;
    std::int32_t selectionIndex_ = kNoSelection;
    Connection filterChanged_;
};

} // namespace platform
