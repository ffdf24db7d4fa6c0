#include "mapping/MappingStore.h"

#include "mapping/EditingSnapshot.h"
#include "platform/files/Files.h"

#include <utility>

namespace mapping {

namespace files = platform::files;
namespace plist = platform::plist;

namespace {

/// No parameter-order file comes near this; what does is not ours to load into memory.
constexpr std::size_t kLargestFile = std::size_t{64} << 20;

plist::Dictionary& dictionaryOf(KnownContent& content)
{
    return *content.document.root.asDictionary();
}

/// The dictionary that the bytes hold, if they do.
std::optional<KnownContent> parsed(std::string bytes)
{
    auto document = bytes.size() <= kLargestFile ? plist::parse(bytes) : std::nullopt;
    if (!document || !document->root.asDictionary())
        return std::nullopt;
    return KnownContent{std::move(bytes), std::move(*document)};
}

/// Takes a file that is no property-list dictionary out of the way; somebody may still make something of it.
void setAside(const Path& file)
{
    files::rename(file, Path(file) += ".unreadable");
}

/// Replaces the file by the dictionary; answers what was written. A link to the file stays one. Bytes that would not be
/// read back, which takes a file of half a million elements, must not take the place of one that was: then the file
/// stays.
std::optional<KnownContent> replaceFile(const Path& file, const KnownContent& content)
{
    auto written = parsed(plist::write(content.document));
    const auto target = files::followed(file);
    return written && target && files::writeAtomically(*target, written->bytes) ? std::move(written) : std::nullopt;
}

} // namespace

Path backupPath(const Path& file, std::string_view suffix)
{
    return Path(file) += "." + std::string(suffix);
}

LoadedMapping readMapping(const Path& file, std::optional<std::int32_t> keptMode,
                          const std::optional<KnownContent>& known)
{
    auto bytes = files::read(file, kLargestFile);
    const bool isKnown = bytes && known && *bytes == known->bytes;
    const auto read = bytes && !isKnown ? parsed(std::move(*bytes)) : std::nullopt;
    bytes.reset(); // a large file's mapping is made without a second copy of it in memory
    const auto& content = isKnown ? known : read;
    return content ? loadMapping(*content->document.root.asDictionary(), keptMode) : loadMapping({}, keptMode);
}

std::optional<LoadedMapping> mappingIn(std::string bytes)
{
    auto content = parsed(std::move(bytes));
    return content ? std::optional(loadMapping(dictionaryOf(*content), std::nullopt)) : std::nullopt;
}

std::optional<LoadedMapping> mappingOfFile(const Path& file)
{
    auto bytes = files::read(file, kLargestFile);
    return bytes ? mappingIn(std::move(*bytes)) : std::nullopt;
}

std::optional<KnownContent> markFile(const Path& file)
{
    auto bytes = files::read(file, kLargestFile);
    if (!bytes)
        return std::nullopt;
    auto content = parsed(std::move(*bytes));
    if (!content) {
        setAside(file);
        return std::nullopt;
    }
    if (hasCatalogue(dictionaryOf(*content)))
        return content;
    addCatalogue(dictionaryOf(*content));
    return replaceFile(file, *content);
}

bool saveMapping(const Path& file, const std::vector<platform::Record>& entries, std::int32_t mode)
{
    auto bytes = files::read(file, kLargestFile);
    const bool isRead = bytes.has_value();
    auto content = isRead ? parsed(std::move(*bytes)) : std::nullopt;
    if (content)
        storeMapping(dictionaryOf(*content), entries, mode);

    const Path original = backupPath(file, "original");
    if (files::isMissing(original))
        files::copy(file, original);
    files::copy(file, backupPath(file, "prev"));

    if (content)
        return replaceFile(file, *content).has_value();
    if (isRead)
        setAside(file);
    return false;
}

bool recallBackup(const Path& file, std::string_view suffix)
{
    const Path backup = backupPath(file, suffix);
    if (!files::exists(backup))
        return false;
    if (const auto target = files::followed(file))
        files::copy(backup, *target);
    return true;
}

std::optional<BackupComparison> compareBackup(const Path& file, std::string_view suffix,
                                              const std::vector<platform::Record>& entries)
{
    const Path backup = backupPath(file, suffix);
    const auto madeAt = files::modificationTime(backup);
    if (!madeAt)
        return std::nullopt;
    return BackupComparison{*madeAt, differingSlots(readMapping(backup, std::nullopt).entries, entries)};
}

} // namespace mapping
