#include "app/ViewControllerOperation.h"
#include "mapping/EditingState.h"
#include "mapping/ParameterOrder.h"
#include "plugins/PluginScan.h"

#include <utility>

void ViewController::btnRunCheck(Sender)
{
    const Operation operation(*this);
    keepDraft();
    placed.set({});
    myArrayController()->setContent({});
    arrayControllerPlistSelected()->setContent({});
    arrayControllerPlistSelected()->filterText.set({});
    const auto& folders = platform_.folders;
    checkFilesAndType((folders.localApplicationSupport() / "Logic/Plug-In Settings").native(), "Logic");
    checkFilesAndType((folders.home() / "Library/Audio/Presets").native(), "3rd Party");
    labKOScreen_Title()->stringValue.set("Please Select a plugin");
    drafts_.look();
    draftsChanged.emit();
}

void ViewController::checkFilesAndType(const std::string& root, const std::string&)
{
    myArrayController()->addObjects(plugins::scanFolder(root, platform_.log));
    labelHelperDisplay()->stringValue.set("Please Select a Plugin");
}

void ViewController::tablePluginSelected(Sender)
{
    closeAllAuxillaryWindows();
    plugInSelected();
}

void ViewController::tablePlistView(Sender) {}

void ViewController::plugInSelected()
{
    const Operation edit(*this, "Reload Mapping");
    leaveEdits();
    mapping::curPage = 1;
    arrayControllerPlistSelected()->setSelectionIndex(0);
    const std::string plugin = myArrayController()->selectionText(plugins::kPlugin);
    const std::string type = myArrayController()->selectionText(plugins::kType);
    const std::string path = myArrayController()->selectionText(plugins::kFileLocation);
    labKOScreen_Title()->stringValue.set(plugin + " (" + type + ")");
    labPluginPlistLocation()->stringValue.set(path);
    korvelizePlistFile(path);
    readPlistFileCheckMode(path, 1);
    noteSaved();
    followComparedFile();
    populateKnobLabels(1);
    arrayControllerPlistSelected()->setSelectionIndex(0);
    lookForDraft();
}

void ViewController::changePlugInModeAndReadPlist(std::int32_t mode, std::int32_t readPlist)
{
    const Operation edit(*this, "Change Mode");
    mapping::plugin_Mode = mode;
    kvPluginMode()->selectCell(mode != mapping::kModeInsertEffect ? 0 : 1);
    if (readPlist == 1) {
        readPlistFileCheckMode(myArrayController()->selectionText(plugins::kFileLocation), 0);
        savedEntries_ = mapping::plistBuild; // the mode is not: the file is only read
        followComparedFile();
    }
    populateKnobLabels(1);
    arrayControllerPlistSelected()->setSelectionIndex(0);
    showMode(myArrayController()->selectionText(plugins::kPlugin));
}

std::string ViewController::loadedPlugin() const
{
    const auto row = plugins::rowForFile(labPluginPlistLocation()->stringValue.get());
    return row ? std::string(row->text(plugins::kPlugin)) : std::string();
}

void ViewController::showMode(const std::string& plugin)
{
    // The help lines differ in their preposition; both are meant.
    if (mapping::plugin_Mode != mapping::kModeInsertEffect) {
        mainTitle_Sub()->stringValue.set("Logic Pro Instrument Mapper");
        updateHelperDisplay("Editing " + plugin + " using Instrument Mode");
    } else {
        mainTitle_Sub()->stringValue.set("Logic Pro Insert/Effect Mapper");
        updateHelperDisplay("Editing " + plugin + " in Insert/Effect Mode");
    }
}

void ViewController::kvPluginMode_Changed(std::shared_ptr<RadioMatrix> sender)
{
    if (!isPluginBeingEdited())
        return;
    const Operation edit(*this, "Change Mode");
    if (changedPots() > 0)
        leaveEdits();
    mapping::plugin_Mode = sender->selectedTag.get();
    updateHelperDisplay("Reading Parameters... Please Wait...");
    changePlugInModeAndReadPlist(mapping::plugin_Mode, 1);
    lookForDraft();
}
