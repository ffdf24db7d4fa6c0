#pragma once
// What each system does with files in a way of its own: NativeLinux.cpp, NativeMac.cpp.

namespace platform::files {

/// Hands what was written to an open file on to the drive, so that it outlasts a power cut. True also where the file
/// system cannot do that at all.
bool flushToDrive(int descriptor);

/// Gives one open file the extended attributes and access-control list of another, as far as is permitted.
void copyAttributes(int from, int to);

} // namespace platform::files
