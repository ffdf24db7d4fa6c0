#include "app/ViewControllerOperation.h"
#include "mapping/EditingState.h"
#include "mapping/ParameterOrder.h"
#include "panel/CopiedSlots.h"
#include "panel/Edits.h"
#include "panel/OfferedHere.h"

#include <optional>
#include <utility>
#include <vector>

void ViewController::editMapping(const std::string& name, const std::function<void(panel::Mapping&)>& edit)
{
    if (!isMappingLoaded())
        return;
    const Operation operation(*this, name);
    panel::Mapping edited{std::move(mapping::plistBuild), mapping::totalPages, mapping::curPage};
    edit(edited);
    mapping::plistBuild = std::move(edited.entries);
    mapping::totalPages = edited.totalPages;
    populateKnobLabels(edited.shownPage);
}

void ViewController::clearPage(Sender)
{
    editMapping("Clear Page", [](panel::Mapping& edited) {
        panel::clearSlots(edited, panel::positionsOf({.isPage = true}, edited.shownPage));
    });
}

void ViewController::clearPot(Sender)
{
    const panel::PotChoice& choice = potChoice.get();
    editMapping(choice.pots.size() > 1 ? "Clear Pots" : "Clear Pot", [&choice](panel::Mapping& edited) {
        panel::clearSlots(edited, panel::positionsOf(choice, edited.shownPage));
    });
}

void ViewController::cutSlots(Sender)
{
    const panel::PotChoice choice = potChoice.get();
    if (panel::positionsOf(choice, mapping::curPage).empty())
        return;
    copySlots();
    editMapping("Cut", [&choice](panel::Mapping& edited) {
        if (choice.isPage)
            panel::cutPage(edited);
        else
            panel::clearSlots(edited, panel::positionsOf(choice, edited.shownPage));
    });
}

void ViewController::copySlots(Sender)
{
    const auto positions = panel::positionsOf(potChoice.get(), mapping::curPage);
    if (!isMappingLoaded() || positions.empty())
        return;
    panel::CopiedSlots copied = panel::copySlots(mapping::plistBuild, positions);
    copied.source = labPluginPlistLocation()->stringValue.get();
    copied.arePages = potChoice.get().isPage;
    platform_.clipboard.set(panel::bytesOf(copied), panel::textOf(mapping::plistBuild, positions));
}

void ViewController::pasteSlots(Sender)
{
    const panel::PotChoice choice = potChoice.get();
    const bool hasPot = choice.focusedPot != panel::PotChoice::kNone;
    const auto copied = panel::copiedSlotsIn(platform_.clipboard.own());
    if (!isMappingLoaded() || !copied)
        return;
    std::vector<std::optional<panel::SlotContent>> found(copied->contents.begin(), copied->contents.end());
    // A parameter may stand in the mapping that the list does not offer; within the plug-in it is moved as it is.
    if (copied->source != labPluginPlistLocation()->stringValue.get()) {
        found = panel::offeredHere(copied->contents, *offeredParameters(),
                                   [this](std::string_view name) { return platform_.localization.folded(name); });
    }
    editMapping("Paste", [&](panel::Mapping& edited) {
        if (copied->arePages)
            panel::pastePages(edited, found);
        else
            panel::pasteSlots(edited, panel::slotFor(edited.shownPage, hasPot ? choice.focusedPot : 0), found);
    });
    placed.set(panel::placedOf(copied->contents, found));
}

void ViewController::insertPot(Sender)
{
    const std::int32_t pot = potChoice.get().focusedPot;
    if (pot == panel::PotChoice::kNone)
        return;
    editMapping("Insert Pot",
                [pot](panel::Mapping& edited) { panel::insertSlot(edited, panel::slotFor(edited.shownPage, pot)); });
}

void ViewController::removePot(Sender)
{
    const std::int32_t pot = potChoice.get().focusedPot;
    if (pot == panel::PotChoice::kNone)
        return;
    editMapping("Remove Pot",
                [pot](panel::Mapping& edited) { panel::removeSlot(edited, panel::slotFor(edited.shownPage, pot)); });
}

void ViewController::insertPage(Sender)
{
    editMapping("Insert Page", [](panel::Mapping& edited) { panel::insertEmptyPages(edited, edited.shownPage, 1); });
}

void ViewController::duplicatePage(Sender)
{
    editMapping("Duplicate Page", panel::duplicatePage);
}

void ViewController::mapUnmapped(Sender)
{
    const platform::SharedRecords parameters = offeredParameters();
    editMapping("Map Unmapped", [&](panel::Mapping& edited) { panel::mapUnmapped(edited, *parameters); });
}

void ViewController::tidyUp(Sender)
{
    editMapping("Tidy Up", panel::tidyUp);
}
