#include "app/ViewControllerOperation.h"
#include "mapping/EditingState.h"
#include "mapping/MappingStore.h"

#include <optional>
#include <utility>

bool ViewController::isMappingLoaded() const
{
    return !mapping::plistBuild.empty() && !labPluginPlistLocation()->stringValue.get().empty();
}

bool ViewController::isPluginBeingEdited() const
{
    return isMappingLoaded() && myArrayController()->selection() != nullptr;
}

void ViewController::korvelizePlistFile(const std::string& path)
{
    markedFile_ = mapping::markFile(path);
}

void ViewController::readPlistFileCheckMode(const std::string& path, std::int32_t checkMode)
{
    const Operation edit(*this, "Load Mapping");
    const bool modeFromFile = checkMode == 1;
    auto loaded = mapping::readMapping(path, modeFromFile ? std::nullopt : std::optional(mapping::plugin_Mode),
                                       std::exchange(markedFile_, std::nullopt));
    arrayControllerPlistSelected()->setContent({});
    arrayControllerPlistSelected()->filterText.set({});
    arrayControllerPlistSelected()->setContent(std::move(loaded.parameters));
    arrayControllerPlistSelected()->setSelectionIndex(0);
    mapping::plugin_Mode = loaded.mode;
    mapping::plistBuild = std::move(loaded.entries);
    mapping::totalPages = loaded.totalPages;
    if (modeFromFile)
        changePlugInModeAndReadPlist(loaded.mode, 0);
}

void ViewController::kvExportToPlist(Sender)
{
    exportToPlist();
}

void ViewController::exportToPlist()
{
    if (!isMappingLoaded())
        return;
    const std::string path = labPluginPlistLocation()->stringValue.get();
    keepDraft(); // a slow disk may take its time
    if (mapping::saveMapping(path, mapping::plistBuild, mapping::plugin_Mode)) {
        const Operation operation(*this);
        noteSaved();
        drafts_.drop();
        for (const mapping::KeptDraft& left : drafts_.leftOf(path))
            drafts_.discard(left.file);
        lookForDraft();
    }
    followComparedFile();
    alertUserAndSub("New Mapping has been saved",
                    "Please remember to close and re-open plugin within Logic so that changes are updated\n\n\n"
                    "Backup of previous plist file has been saved here:\n\n" +
                        mapping::backupPath(path, "prev").native());
}

void ViewController::kvRecallOriginalMapping(Sender)
{
    recallOriginalMapping("original");
}

void ViewController::kvRecallPreviousMapping(Sender)
{
    recallOriginalMapping("prev");
}

void ViewController::recallOriginalMapping(const std::string& suffix)
{
    if (!isPluginBeingEdited())
        return;
    const std::string path = labPluginPlistLocation()->stringValue.get();
    keepDraft();
    if (!mapping::recallBackup(path, suffix)) {
        alertUserAndSub("Recall file does not exist",
                        "Please Note: Original, and Previous backup files will only exist once a mapping has been "
                        "saved, simply reselect plugin on left menu to reload the default file again.");
        return;
    }
    {
        const Operation edit(*this, suffix == "original" ? "Recall Original" : "Recall Previous");
        plugInSelected();
    }
    alertUserAndSub("Recalled mapping has been applied", "Now saved as this plugins default");
}

void ViewController::revealFile(Sender)
{
    if (isMappingLoaded())
        platform_.workspace.revealFile(labPluginPlistLocation()->stringValue.get());
}
