#pragma once
// The program's own symbols, drawings in one colour that are compiled in. An icon made of one takes its colour from the
// application's palette whenever it is painted, so it follows a change between light and dark by itself.

#include <QIcon>

namespace platform::qt {

/// The symbol in the palette's colour for texts on buttons, sharp at any size and scale; a null icon when no symbol is
/// called so. Needs an application to be painted, not to be made.
QIcon symbolIcon(const QString& name);

} // namespace platform::qt
