#include "app/ViewControllerOperation.h"
#include "mapping/EditingSnapshot.h"
#include "mapping/EditingState.h"
#include "mapping/ParameterOrder.h"

#include <ctime>
#include <utility>

namespace {

/// The draft of what is edited now, made just now.
mapping::Draft draftOf(std::string plugin)
{
    return {std::move(plugin),    mapping::orderOf(mapping::plistBuild),
            mapping::totalPages,  mapping::curPage,
            mapping::plugin_Mode, std::time(nullptr)};
}

/// Whether bringing the draft back would change anything that a save writes or a step of the history keeps.
bool isWhatIsEdited(const mapping::Draft& draft)
{
    return draft.mode == mapping::plugin_Mode && draft.totalPages == mapping::totalPages &&
           draft.order == mapping::orderOf(mapping::plistBuild);
}

} // namespace

void ViewController::keepDraft()
{
    if (!isMappingLoaded())
        return;
    if (!hasUnsavedChanges()) {
        drafts_.drop();
    } else if (const std::pair edit(historyRevision_, mapping::curPage); edit != keptEdit_) {
        if (drafts_.keep(draftOf(labPluginPlistLocation()->stringValue.get())))
            keptEdit_ = edit;
        else
            return;
    }
    if (leftDraft_ && isWhatIsEdited(leftDraft_->draft))
        discardLeftDraft(); // it was brought back, or the edits were made again
}

void ViewController::leaveEdits()
{
    keepDraft();
    drafts_.leave();
    keptEdit_.reset();
}

void ViewController::lookForDraft()
{
    const std::string plugin = labPluginPlistLocation()->stringValue.get();
    leftDraft_.reset();
    for (mapping::KeptDraft& left : drafts_.leftOf(plugin)) {
        if (!isWhatIsEdited(left.draft)) {
            leftDraft_ = std::move(left);
            break;
        }
        drafts_.discard(left.file); // as the file has it
    }
    draftsChanged.emit();
}

void ViewController::discardLeftDraft()
{
    drafts_.discard(leftDraft_->file);
    lookForDraft();
}

std::optional<std::size_t> ViewController::potsInLeftDraft() const
{
    if (!leftDraft_)
        return std::nullopt;
    return mapping::differingSlots(savedEntries_, mapping::mappingOf(leftDraft_->draft.order));
}

void ViewController::bringBackDraft(Sender)
{
    if (!leftDraft_ || !isPluginBeingEdited())
        return;
    {
        const Operation edit(*this, "Bring Back Draft");
        const mapping::Draft draft = leftDraft_->draft;
        leaveEdits(); // what was edited meanwhile is a draft of its own
        mapping::plistBuild = mapping::mappingOf(draft.order);
        mapping::totalPages = draft.totalPages;
        mapping::plugin_Mode = draft.mode;
        kvPluginMode()->selectCell(draft.mode != mapping::kModeInsertEffect ? 0 : 1);
        populateKnobLabels(draft.curPage);
        showMode();
    }
    keepDraft();
}

void ViewController::discardDraft(Sender)
{
    if (leftDraft_)
        discardLeftDraft();
}
