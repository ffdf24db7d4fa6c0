#pragma once
// Finds the plug-ins whose parameter order can be edited: one row for every file "CSParameterOrder.plist".

#include "platform/Effects.h"
#include "platform/controls/Record.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace plugins {

/// Keys of a plug-in row; all values are text.
inline constexpr char kPlugin[] = "Plugin";             ///< name of the folder that holds the file
inline constexpr char kType[] = "Type";                 ///< name of the folder above it, or "Logic Built-In"
inline constexpr char kState[] = "State";               ///< always "Editable"
inline constexpr char kFileLocation[] = "fileLocation"; ///< full path of the file

/// The row of a file; none when the file is no parameter-order file.
std::optional<platform::Record> rowForFile(std::string_view path);

/// Rows of every parameter-order file below `root`, in the order the file system yields them. Every item's path goes to
/// the log, as does what cannot be read; the scan never stops early. What a killed run has left of a file that it was
/// writing is cleared.
std::vector<platform::Record> scanFolder(const std::string& root, platform::Log& log);

} // namespace plugins
