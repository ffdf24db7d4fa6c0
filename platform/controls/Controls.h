#pragma once
// On-screen objects as the controller sees them: observable values without a toolkit. platform/qt binds each to a
// widget; unbound, the same controller runs without a screen.

#include "platform/controls/Property.h"

#include <cstdint>
#include <string>

namespace platform {

/// Who sent an action. Only compared or printed, never looked into; null when code calls the action itself.
using Sender = const void*;

/// A label or an editable field.
struct TextField {
    Property<std::string> stringValue;
    Property<std::string> toolTip;
};

struct Button {
    Property<bool> enabled{true};
    Signal<> pressed;
};

/// Two radio cells in one row. A cell is named by its tag.
struct RadioMatrix {
    /// Tags of row 0, by column.
    static constexpr std::int32_t kTags[2] = {1, 0};

    Property<std::int32_t> selectedTag{0};
    /// Sent when the user, not the program, chose another cell.
    Signal<> cellChosen;

    /// `column` 0 or 1 of the one row.
    void selectCell(std::int32_t column) { selectedTag.set(kTags[column == 0 ? 0 : 1]); }
};

/// A top-level window; closing hides it and it can be shown again.
struct Window {
    Property<bool> visible{false};
    Signal<> broughtToFront;
    Signal<> centred;

    void makeKeyAndOrderFront()
    {
        visible.set(true);
        broughtToFront.emit();
    }
    void center() { centred.emit(); }
    void close() { visible.set(false); }
};

/// A list on screen; its rows are those of the array controller it is bound to.
struct TableView {
    /// Sent when the user chose a row, also the row that is chosen already.
    Signal<> rowChosen;
};

} // namespace platform
