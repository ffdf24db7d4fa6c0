#pragma once
// The listing of what others shared: the keys that the program reads, and the columns in which an entry is shown.

#include "platform/controls/Record.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace community {

inline constexpr char kPatchId[] = "patchID";           ///< the server's identifier, sent back on a download
inline constexpr char kFileLocation[] = "fileLocation"; ///< path of the shared file, relative to the base URL
inline constexpr char kUserComments[] = "userComments"; ///< what the uploader had to say

/// A text of an entry; none when the server sent no such key or there is no entry.
std::optional<std::string> textOf(const platform::Record* entry, std::string_view key);

struct Column {
    std::string key;
    std::string title;

    bool operator==(const Column&) const = default;
};

/// The comments, then whatever else the server sent, entry by entry as the keys of each come. Not what only the
/// server understands: identifier and location. At most 24 columns.
std::vector<Column> columnsOf(const std::vector<platform::Record>& entries);

/// A key as a heading: "uploadDate" and "upload_date" read "Upload Date".
std::string readableTitle(std::string_view key);

} // namespace community
