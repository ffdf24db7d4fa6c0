#include "app/ViewControllerOperation.h"
#include "mapping/Comparison.h"
#include "mapping/EditingState.h"
#include "mapping/MappingStore.h"
#include "mapping/ParameterOrder.h"
#include "panel/Edits.h"
#include "panel/Pages.h"
#include "platform/files/Files.h"

#include <filesystem>
#include <utility>

using mapping::ComparedWith;

void ViewController::compareWithNothing(Sender)
{
    compareWith(ComparedWith::nothing);
}

void ViewController::compareWithSaved(Sender)
{
    compareWith(ComparedWith::saved);
}

void ViewController::compareWithPrevious(Sender)
{
    compareWith(ComparedWith::previous);
}

void ViewController::compareWithOriginal(Sender)
{
    compareWith(ComparedWith::original);
}

void ViewController::compareWithDownloaded(Sender)
{
    compareWith(ComparedWith::downloaded);
}

bool ViewController::canCompareWith(ComparedWith side) const
{
    const std::filesystem::path plugin = labPluginPlistLocation()->stringValue.get();
    if (!isMappingLoaded() || side == ComparedWith::nothing)
        return isMappingLoaded();
    return platform::files::exists(side == ComparedWith::saved ? plugin : mapping::comparedFile(plugin, side));
}

void ViewController::compareWith(ComparedWith side)
{
    const Operation operation(*this);
    comparedPath_ = labPluginPlistLocation()->stringValue.get();
    comparison_.side = ComparedWith::nothing;
    differences_ = {};
    unreadableSide_ = ComparedWith::nothing;
    if (!isMappingLoaded())
        return;
    if (const auto file = mapping::comparedFile(comparedPath_, side); !file.empty()) {
        auto read = mapping::mappingOfFile(file);
        if (!read) {
            unreadableSide_ = side;
            return;
        }
        differences_ = mapping::Differences(std::move(read->entries));
        comparedMode_ = read->mode;
    } else if (side == ComparedWith::saved) {
        differences_ = mapping::Differences(savedEntries_);
        comparedMode_ = savedMode_;
    }
    comparison_.side = side;
}

void ViewController::followComparedFile()
{
    if (labPluginPlistLocation()->stringValue.get() != comparedPath_)
        compareWith(ComparedWith::nothing);
    else if (unreadableSide_ != ComparedWith::nothing)
        compareWith(unreadableSide_); // it may be another file now
    else if (comparison_.side != ComparedWith::nothing)
        compareWith(comparison_.side);
}

void ViewController::compare()
{
    const ComparedWith side = comparison_.side;
    comparison_ = {};
    if (side == ComparedWith::nothing)
        return;
    comparison_.side = side;
    differences_.follow(mapping::plistBuild);
    comparison_.positions = differences_.positions();
    comparison_.morePages =
        mapping::pagesFilledBy(comparedEntries().size()) - mapping::pagesFilledBy(mapping::plistBuild.size());
    if (comparedMode_ != mapping::plugin_Mode)
        comparison_.otherMode = comparedMode_;
}

void ViewController::nextDifference(Sender)
{
    const std::int32_t pot = potChoice.get().focusedPot;
    const std::int32_t from = pot != panel::PotChoice::kNone ? panel::slotFor(mapping::curPage, pot)
                                                             : panel::firstSlotOf(mapping::curPage) - 1;
    goToDifference(mapping::positionAfter(comparison_.positions, from, panel::firstSlotOf(mapping::totalPages + 1)));
}

void ViewController::previousDifference(Sender)
{
    const std::int32_t pot = potChoice.get().focusedPot;
    const std::int32_t from = pot != panel::PotChoice::kNone ? panel::slotFor(mapping::curPage, pot)
                                                             : panel::firstSlotOf(mapping::curPage + 1);
    goToDifference(mapping::positionBefore(comparison_.positions, from, panel::firstSlotOf(mapping::totalPages + 1)));
}

void ViewController::goToDifference(std::optional<std::int32_t> position)
{
    if (!position)
        return;
    const std::int32_t pot = *position % mapping::kPotsPerPage;
    if (const std::int32_t page = *position / mapping::kPotsPerPage + 1; page != mapping::curPage)
        showPage(page);
    potChoice.set({pot, {pot}, false});
    potGoneTo.emit(pot);
}

void ViewController::takePot(Sender)
{
    const std::int32_t pot = potChoice.get().focusedPot;
    if (pot != panel::PotChoice::kNone)
        takeSlots("Take Pot", panel::slotFor(mapping::curPage, pot), 1);
}

void ViewController::takePage(Sender)
{
    takeSlots("Take Page", panel::firstSlotOf(mapping::curPage), mapping::kPotsPerPage);
}

void ViewController::takeSlots(const std::string& name, std::int32_t first, std::int32_t count)
{
    if (comparison_.side == ComparedWith::nothing)
        return;
    editMapping(name, [&](panel::Mapping& edited) {
        for (std::int32_t position = first; position < first + count; ++position)
            panel::setContent(edited.entries.at(static_cast<std::size_t>(position)),
                              panel::contentAt(comparedEntries(), position));
    });
}
