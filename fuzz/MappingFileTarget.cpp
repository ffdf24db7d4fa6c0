#include "fuzz/Targets.h"

#include "chart/Chart.h"
#include "fuzz/Require.h"
#include "mapping/MappingStore.h"
#include "mapping/ParameterOrder.h"
#include "platform/files/Files.h"
#include "platform/plist/PropertyList.h"

#include <cstdlib>
#include <string>

#include <unistd.h> // has mkdtemp on a Mac

namespace fuzz {

namespace files = platform::files;
namespace plist = platform::plist;

namespace {

/// A folder of the process's own, in memory where the system has such a folder.
class Folder {
public:
    Folder()
    {
        std::string name = files::exists("/dev/shm") ? "/dev/shm/kv-fuzz-XXXXXX" : "/tmp/kv-fuzz-XXXXXX";
        require(::mkdtemp(name.data()) != nullptr, "there is a temporary folder");
        path_ = name;
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    /// Path of the order file, alone in the folder with these bytes.
    files::Path with(std::string_view bytes) const
    {
        const files::Path file = path_ / "CSParameterOrder.plist";
        for (const char* suffix : {"original", "prev", "unreadable"})
            files::remove(mapping::backupPath(file, suffix));
        require(files::writeAtomically(file, bytes), "a file can be written");
        return file;
    }

private:
    files::Path path_;
};

void checkLoaded(const mapping::LoadedMapping& loaded)
{
    require(loaded.totalPages >= 1, "there is a page");
    require(loaded.entries.size() == static_cast<std::size_t>(loaded.totalPages) * 8, "every page is whole");
    require(loaded.mode == 0 || loaded.mode == 1, "the mode is known");
    require(!loaded.parameters.empty() && mapping::isEmptyEntry(loaded.parameters.front()), "a pot can be cleared");
    std::string document = chart::header("Plug-in", "/path");
    for (std::int32_t page = 1; page <= loaded.totalPages; ++page)
        chart::appendRow(document, loaded.entries, page * 8 - 7, page * 8, chart::pageTitle(page));
    chart::appendEnd(document);
    require(document.ends_with("</table></body></html>"), "the chart has an end");
}

/// What a file keeps of keys that are not the program's.
plist::Dictionary othersOf(const std::string& bytes)
{
    plist::Dictionary others;
    const auto document = plist::parse(bytes);
    require(document && document->root.asDictionary(), "a file that was written is a dictionary");
    for (const auto& entry : document->root.asDictionary()->entries) {
        if (entry.first != "ControlSurfaceParameterOrder" && entry.first != "KorvelCSUnique" &&
            entry.first != "KorvelCSMode")
            others.entries.push_back(entry);
    }
    return others;
}

void checkSave(const files::Path& file, const mapping::LoadedMapping& loaded)
{
    const std::string marked = files::read(file).value();
    require(mapping::saveMapping(file, loaded.entries, loaded.mode), "a loaded mapping can be saved");
    require(files::read(mapping::backupPath(file, "original")) == marked, "the first backup is what was there");
    require(files::read(mapping::backupPath(file, "prev")) == marked, "the latest backup is what was there");
    require(othersOf(files::read(file).value()) == othersOf(marked), "a save keeps what is not the program's");
    const auto saved = mapping::readMapping(file, std::nullopt);
    require(mapping::orderOf(saved.entries) == mapping::orderOf(loaded.entries), "what was saved is loaded again");
    require(saved.mode == loaded.mode && saved.totalPages == loaded.totalPages, "with its mode and its pages");
    require(saved.parameters == loaded.parameters, "with all of its parameters");
    require(mapping::recallBackup(file, "prev"), "a backup can be recalled");
    require(files::read(file) == marked, "to the byte");
}

} // namespace

void mappingFile(std::string_view bytes)
{
    static const Folder folder;
    const files::Path file = folder.with(bytes);
    const auto document = plist::parse(bytes);
    const auto before = mapping::readMapping(file, std::nullopt);
    checkLoaded(before);
    mapping::markFile(file);
    if (!document || !document->root.asDictionary()) {
        require(files::isMissing(file), "what is no dictionary is gone");
        require(files::read(mapping::backupPath(file, "unreadable")) == bytes, "but not lost");
        return;
    }
    require(files::exists(file), "what is a dictionary stays");
    const auto loaded = mapping::readMapping(file, std::nullopt);
    checkLoaded(loaded);
    require(loaded.entries == before.entries, "marking changes no mapping");
    checkSave(file, loaded);
}

} // namespace fuzz
