#pragma once
// What can be dragged within the main window, by MIME type. Both stay within the program.

namespace interface {

/// A row of the parameter list; the data is its number. The dragged row is also the selected one.
inline constexpr char kParameterDrag[] = "application/x-kv-parameter";
/// A pot of the shown page; the data is its number, 1 to 8.
inline constexpr char kPotDrag[] = "application/x-kv-pot";

} // namespace interface
