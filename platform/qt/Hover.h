#pragma once
// The mouse over what was dragged.

class QWidget;

namespace platform::qt {

/// Tells a widget that something was dragged from that the mouse has left it, which the drag swallows. It is told so
/// later, since the move that began the drag is followed by one of hovering when the drag has ended. A mouse that is
/// still there tells so with its next move.
void endHover(QWidget& dragged);

} // namespace platform::qt
