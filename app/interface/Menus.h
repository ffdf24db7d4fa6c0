#pragma once
// The menu bar: every operation with its shortcut. An item that sends an action carries the action's name.

class QMainWindow;

namespace interface {

/// Fills the window's menu bar. Makes items only; wiring is done elsewhere.
void makeMenus(QMainWindow& window);

} // namespace interface
