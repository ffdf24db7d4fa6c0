#pragma once
// The menu bar: every operation with its shortcut.

#include <QOperatingSystemVersion>

class QMainWindow;

namespace interface {

/// Makes a `QAction` of each action and fills the window's menu bar with those that have a menu. Makes items only;
/// wiring is done elsewhere.
void makeMenus(QMainWindow& window,
               bool hasWindowMenu = QOperatingSystemVersion::currentType() == QOperatingSystemVersion::MacOS);

} // namespace interface
