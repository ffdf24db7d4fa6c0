#pragma once
// A parameter-order file on disk with its two backups: path + ".original", as it stood before the first save, and
// path + ".prev", as it stood before the latest one. Each of the three is replaced in one step and keeps what it held
// where that fails. What could not be read just now is left alone; what was read and is no property-list dictionary is
// moved to path + ".unreadable".

#include "mapping/MappingFile.h"
#include "platform/plist/PropertyList.h"

#include <cstdint>
#include <ctime>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mapping {

using Path = std::filesystem::path;

/// Path of the backup with the suffix "original" or "prev".
Path backupPath(const Path& file, std::string_view suffix);

/// What certain bytes hold, so that a file that still has them need not be parsed again.
struct KnownContent {
    std::string bytes;
    platform::plist::Document document;
};

/// The file's root dictionary as a mapping; a file that cannot be read as a dictionary reads as an empty one.
LoadedMapping readMapping(const Path& file, std::optional<std::int32_t> keptMode,
                          const std::optional<KnownContent>& known = {});

/// The mapping that the bytes of a file hold; none when they are no property-list dictionary.
std::optional<LoadedMapping> mappingIn(std::string bytes);

/// That of a file; none also when it cannot be read.
std::optional<LoadedMapping> mappingOfFile(const Path& file);

/// Writes the plug-in's catalogue into the file unless it carries one. One that is no dictionary is moved out of the
/// way and nothing takes its place; that is meant. Answers what the file should hold now.
std::optional<KnownContent> markFile(const Path& file);

/// Makes the backups and writes the mapping into the file; answers whether the file now holds it. One that is no
/// dictionary is moved out of the way after the backups were made and nothing takes its place; that is meant.
bool saveMapping(const Path& file, const std::vector<platform::Record>& entries, std::int32_t mode);

/// Puts a backup in place of the file; the backup stays. False, and nothing changed, when there is no such backup.
bool recallBackup(const Path& file, std::string_view suffix);

/// A backup beside the mapping being edited.
struct BackupComparison {
    std::time_t madeAt = 0;
    std::size_t differingPots = 0;
};

/// None when there is no such backup.
std::optional<BackupComparison> compareBackup(const Path& file, std::string_view suffix,
                                              const std::vector<platform::Record>& entries);

} // namespace mapping
