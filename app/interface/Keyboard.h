#pragma once
// Keys of the main window that are no menu item's: 1 to 8 press the pots while the parameter list or the panel has the
// focus.

class ViewController;

namespace interface {

class Interface;

/// The shortcuts belong to the widgets they work in.
void connectPotKeys(const Interface& loaded);

} // namespace interface
