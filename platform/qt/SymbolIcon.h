#pragma once
// The program's own symbols, drawings in one colour that are compiled in. An icon made of one takes its colour from the
// application's palette whenever it is painted, so it follows a change between light and dark by itself.

#include <QIcon>
#include <QStringList>

namespace platform::qt {

/// The names of all symbols, sorted.
QStringList symbolNames();

/// The symbol in the palette's colour for texts on buttons, at any size and scale, sharp up to 64 pixels; a null icon
/// when no symbol is called so. Needs an application to be painted, not to be made.
QIcon symbolIcon(const QString& name);

/// The program's own icon, in its own colours, for title bars and switchers. What shows it larger has the picture that
/// was installed for the desktop.
QIcon applicationIcon();

} // namespace platform::qt
