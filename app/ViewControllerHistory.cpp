#include "app/ViewControllerOperation.h"
#include "mapping/EditingState.h"
#include "mapping/ParameterOrder.h"

#include <memory>
#include <utility>

namespace {

mapping::EditingNumbers editingNumbers()
{
    return {mapping::totalPages, mapping::curPage, mapping::plugin_Mode};
}

} // namespace

ViewController::Operation::Operation(ViewController& controller) : controller_(controller)
{
    ++controller_.operationDepth_;
}

ViewController::Operation::Operation(ViewController& controller, const std::string& name) : Operation(controller)
{
    if (controller_.operationDepth_ > 1)
        return; // part of a larger edit
    name_ = name;
    before_ = {mapping::plistBuild, controller_.offeredParameters(), editingNumbers()};
    pathBefore_ = controller_.labPluginPlistLocation()->stringValue.get();
}

ViewController::Operation::~Operation()
{
    if (--controller_.operationDepth_ > 0)
        return;
    if (before_)
        controller_.finishEdit(name_, *before_, pathBefore_);
    controller_.offered_ = controller_.offeredParameters();
    const auto parameters = controller_.arrayControllerPlistSelected();
    if (std::exchange(controller_.mappedRevision_, parameters->contentRevision()) != parameters->contentRevision()) {
        controller_.mappedPots_ = mapping::MappedPots(parameters->content());
    }
    controller_.mappedPots_.setEntries(mapping::plistBuild, mapping::totalPages);
    controller_.compare();
    controller_.editingChanged.emit();
}

void ViewController::undo(Sender)
{
    const Operation operation(*this); // tells when the history, too, has gone back
    history_->undo();
}

void ViewController::redo(Sender)
{
    const Operation operation(*this);
    history_->redo();
}

std::size_t ViewController::changedPots() const
{
    return mapping::differingSlots(savedEntries_, mapping::plistBuild);
}

bool ViewController::hasUnsavedChanges() const
{
    return hasUnsavedMode() || changedPots() > 0;
}

bool ViewController::hasUnsavedMode() const
{
    return mapping::plugin_Mode != savedMode_;
}

std::optional<mapping::BackupComparison> ViewController::compareWithBackup(const std::string& suffix) const
{
    if (!isMappingLoaded())
        return std::nullopt;
    return mapping::compareBackup(labPluginPlistLocation()->stringValue.get(), suffix, mapping::plistBuild);
}

platform::SharedRecords ViewController::offeredParameters() const
{
    const auto list = arrayControllerPlistSelected()->sharedContent();
    return list->empty() ? offered_ : list;
}

void ViewController::finishEdit(const std::string& name, const mapping::EditingSnapshot& before,
                                const std::string& pathBefore)
{
    const DraftStep draftStep = std::exchange(draftStep_, DraftStep::none);
    placed.set({});
    if (labPluginPlistLocation()->stringValue.get() != pathBefore) {
        history_->forgetAll(); // another plug-in
        ++historyRevision_;
        return;
    }
    auto change = std::make_shared<const mapping::EditingChange>(
        mapping::changeSince(before, mapping::plistBuild, offeredParameters(), editingNumbers()));
    if (change->isEmpty())
        return;
    ++historyRevision_;
    history_->remember(
        platform_.localization.localizedString(name),
        [this, change, draftStep] { goThrough(*change, true, draftStep); },
        [this, change, draftStep] { goThrough(*change, false, draftStep); });
}

void ViewController::goThrough(const mapping::EditingChange& change, bool forward, DraftStep draftStep)
{
    const Operation operation(*this);
    // What was brought back and is taken back again is what was left, as before.
    if (draftStep == DraftStep::bringsBack || (forward && draftStep == DraftStep::leavesEdits))
        leaveEdits();
    draftStep_ = DraftStep::none;
    placed.set({});
    ++historyRevision_;
    const auto go = forward ? mapping::makeAgain : mapping::takeBack;
    const mapping::EditingNumbers& numbers = forward ? change.after : change.before;
    go(change.entries, mapping::plistBuild);
    if (const auto& parameters = forward ? change.parametersAfter : change.parametersBefore) {
        offered_ = parameters; // while no plug-in is chosen none of them are shown
        if (isPluginBeingEdited()) {
            arrayControllerPlistSelected()->filterText.set({}); // or the blank entry is selected below a search
            arrayControllerPlistSelected()->setSharedContent(parameters);
            arrayControllerPlistSelected()->setSelectionIndex(0);
        }
    }
    mapping::totalPages = numbers.totalPages;
    mapping::plugin_Mode = numbers.mode;
    populateKnobLabels(numbers.curPage);
    if (change.before.mode != change.after.mode) {
        kvPluginMode()->selectCell(numbers.mode != mapping::kModeInsertEffect ? 0 : 1);
        showMode(loadedPlugin());
    }
    if (draftStep != DraftStep::none)
        settleDrafts();
}

void ViewController::noteSaved()
{
    savedEntries_ = mapping::plistBuild;
    savedMode_ = mapping::plugin_Mode;
}
