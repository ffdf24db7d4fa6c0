#include "mapping/MappingStore.h"

#include "mapping/EditingSnapshot.h"
#include "platform/Files.h"
#include "platform/PropertyList.h"

#include <optional>

namespace mapping {

namespace files = platform::files;
namespace plist = platform::plist;

namespace {

/// No parameter-order file comes near this; what does is not ours to load into memory.
constexpr std::size_t kLargestFile = std::size_t{64} << 20;

struct DictionaryFile {
    plist::Document document;

    plist::Dictionary& dictionary() { return *document.root.asDictionary(); }
};

std::optional<DictionaryFile> readDictionary(const Path& file)
{
    const auto bytes = files::read(file, kLargestFile);
    auto document = bytes ? plist::parse(*bytes) : std::nullopt;
    if (!document || !document->root.asDictionary())
        return std::nullopt;
    return DictionaryFile{std::move(*document)};
}

/// Deletes the file, then writes the dictionary where there is one; answers whether it was written. Bytes that would
/// not be read back, which takes a file of half a million elements, must not take the place of one that was: then the
/// file stays.
bool replaceFile(const Path& file, const std::optional<DictionaryFile>& content)
{
    const auto mode = files::permissions(file);
    const std::string bytes = content ? plist::write(content->document) : std::string();
    if (content && (bytes.size() > kLargestFile || !plist::parse(bytes)))
        return false;
    if (files::exists(file))
        files::remove(file);
    return content && files::writeAtomically(file, bytes, mode);
}

} // namespace

Path backupPath(const Path& file, std::string_view suffix)
{
    return Path(file) += "." + std::string(suffix);
}

LoadedMapping readMapping(const Path& file, std::optional<std::int32_t> keptMode)
{
    auto content = readDictionary(file);
    return loadMapping(content ? content->dictionary() : plist::Dictionary(), keptMode);
}

void markFile(const Path& file)
{
    auto content = readDictionary(file);
    if (content && hasCatalogue(content->dictionary()))
        return;
    if (content)
        addCatalogue(content->dictionary());
    replaceFile(file, content);
}

bool saveMapping(const Path& file, const std::vector<platform::Record>& entries, std::int32_t mode)
{
    auto content = readDictionary(file);
    if (content)
        storeMapping(content->dictionary(), entries, mode);

    const Path original = backupPath(file, "original");
    if (files::isMissing(original))
        files::copy(file, original);
    const Path previous = backupPath(file, "prev");
    if (files::exists(previous))
        files::remove(previous);
    files::copy(file, previous);

    return replaceFile(file, content);
}

bool recallBackup(const Path& file, std::string_view suffix)
{
    const Path backup = backupPath(file, suffix);
    if (!files::exists(backup))
        return false;
    if (files::exists(file))
        files::remove(file);
    files::copy(backup, file);
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
