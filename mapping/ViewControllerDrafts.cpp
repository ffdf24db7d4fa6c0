#include "app/ViewControllerOperation.h"
#include "mapping/EditingSnapshot.h"
#include "mapping/EditingState.h"
#include "mapping/ParameterOrder.h"

#include <ctime>
#include <utility>
#include <vector>

namespace {

bool isWhatIsEdited(const mapping::Draft& draft)
{
    return draft.mode == mapping::plugin_Mode && draft.totalPages == mapping::totalPages &&
           draft.order == mapping::orderOf(mapping::plistBuild);
}

} // namespace

bool ViewController::keepDraft()
{
    const bool areHeldKept = drafts_.keepHeld();
    return keepEdits() && areHeldKept;
}

bool ViewController::keepEdits()
{
    if (!isMappingLoaded())
        return true;
    if (!hasUnsavedChanges()) {
        drafts_.drop();
        keptEdit_.reset();
        return true;
    }
    if (std::exchange(datedRevision_, historyRevision_) != historyRevision_)
        editedAt_ = std::time(nullptr);
    const std::pair edit(historyRevision_, mapping::curPage);
    if (edit == keptEdit_)
        return true;
    const std::string path = labPluginPlistLocation()->stringValue.get();
    if (!drafts_.keep({path, mapping::orderOf(mapping::plistBuild), mapping::totalPages, mapping::curPage,
                       mapping::plugin_Mode, editedAt_})) {
        platform_.log.write("Unsaved edits could not be kept: " + path);
        return false;
    }
    keptEdit_ = edit;
    return true;
}

void ViewController::leaveEdits()
{
    keepEdits();
    drafts_.leave();
    keptEdit_.reset();
    draftStep_ = DraftStep::leavesEdits;
}

void ViewController::lookForDraft()
{
    leftDraft_.reset();
    for (mapping::KeptDraft& left : drafts_.leftOf(labPluginPlistLocation()->stringValue.get())) {
        if (left.draft.mode != savedMode_ || potsThatDiffer(left.draft) > 0) {
            leftDraft_ = std::move(left);
            break;
        }
        drafts_.discard(left.file); // it was saved before the program was killed
    }
    drafts_.look();
    draftsChanged.emit();
}

void ViewController::settleDrafts()
{
    std::vector<mapping::KeptDraft> same;
    for (mapping::KeptDraft& left : drafts_.leftOf(labPluginPlistLocation()->stringValue.get())) {
        if (isWhatIsEdited(left.draft))
            same.push_back(std::move(left));
    }
    if (!same.empty()) {
        editedAt_ = same.front().draft.madeAt;
        datedRevision_ = historyRevision_;
    }
    if (keepEdits()) {
        for (const mapping::KeptDraft& left : same)
            drafts_.discard(left.file);
    }
    lookForDraft();
}

std::size_t ViewController::potsThatDiffer(const mapping::Draft& draft) const
{
    return mapping::differingSlots(savedEntries_, mapping::mappingOf(draft.order));
}

std::optional<std::size_t> ViewController::potsInLeftDraft() const
{
    return leftDraft_ ? std::optional(potsThatDiffer(leftDraft_->draft)) : std::nullopt;
}

void ViewController::bringBackDraft(Sender)
{
    if (!leftDraft_ || !isMappingLoaded())
        return;
    const mapping::Draft draft = leftDraft_->draft;
    {
        const Operation edit(*this, "Bring Back Draft");
        leaveEdits(); // what was edited meanwhile is a draft of its own
        draftStep_ = DraftStep::bringsBack;
        mapping::plistBuild = mapping::mappingOf(draft.order);
        mapping::totalPages = draft.totalPages;
        mapping::plugin_Mode = draft.mode;
        kvPluginMode()->selectCell(draft.mode != mapping::kModeInsertEffect ? 0 : 1);
        populateKnobLabels(draft.curPage);
        showMode(loadedPlugin());
    }
    settleDrafts();
}

void ViewController::discardDraft(Sender)
{
    if (!leftDraft_)
        return;
    drafts_.discard(leftDraft_->file);
    lookForDraft();
}
