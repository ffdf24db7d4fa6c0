#include "app/ViewControllerOperation.h"
#include "mapping/EditingState.h"
#include "mapping/ParameterOrder.h"
#include "panel/PageMoves.h"

#include <functional>
#include <optional>
#include <vector>

namespace {

/// The selected parameters, in the list's order; the blank entry is none.
std::vector<panel::SlotContent> selectedContents(const platform::ArrayController& parameters)
{
    std::vector<panel::SlotContent> contents;
    for (const platform::Record* parameter : parameters.selectedObjects()) {
        if (!mapping::isEmptyEntry(*parameter))
            contents.push_back(panel::contentOf(*parameter));
    }
    return contents;
}

} // namespace

void ViewController::fillFromPot(Sender)
{
    fillFrom([pot = potChoice.get().focusedPot](panel::Mapping& edited) {
        if (pot != panel::PotChoice::kNone)
            return panel::slotFor(edited.shownPage, pot);
        const std::int32_t position = panel::firstEmptySlotFrom(edited, edited.shownPage);
        edited.shownPage = position / mapping::kPotsPerPage + 1;
        return position;
    });
}

void ViewController::fillControls(std::int32_t control)
{
    fillFrom([control](const panel::Mapping& edited) { return panel::slotFor(edited.shownPage, control); });
}

void ViewController::fillPage(std::int32_t page)
{
    fillFrom([page](const panel::Mapping& edited) { return panel::firstEmptySlotOf(edited, page); });
}

void ViewController::fillFrom(const std::function<std::optional<std::int32_t>(panel::Mapping&)>& begin)
{
    const auto contents = selectedContents(*arrayControllerPlistSelected());
    if (contents.empty())
        return;
    editMapping(contents.size() == 1 ? "Assign Parameter" : "Fill Pots", [&](panel::Mapping& edited) {
        if (const auto position = begin(edited))
            panel::layOn(edited, *position, contents);
    });
}

void ViewController::exchangeSlots(std::int32_t one, std::int32_t other)
{
    editMapping("Exchange Pots", [=](panel::Mapping& edited) { panel::exchangeSlots(edited, one, other); });
}

void ViewController::movePotToPage(std::int32_t position, std::int32_t page)
{
    editMapping("Move Pot", [=](panel::Mapping& edited) { panel::moveToPage(edited, position, page); });
}

void ViewController::movePageBefore(std::int32_t page, std::int32_t before)
{
    editMapping("Move Page", [=](panel::Mapping& edited) { panel::movePageBefore(edited, page, before); });
}
