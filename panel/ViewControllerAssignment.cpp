#include "app/ViewControllerOperation.h"
#include "mapping/EditingState.h"
#include "mapping/ParameterOrder.h"
#include "panel/Pages.h"

void ViewController::kvRotBtn1_Pressed(Sender)
{
    clickControl(0);
}

void ViewController::kvRotBtn2_Pressed(Sender)
{
    clickControl(1);
}

void ViewController::kvRotBtn3_Pressed(Sender)
{
    clickControl(2);
}

void ViewController::kvRotBtn4_Pressed(Sender)
{
    clickControl(3);
}

void ViewController::kvRotBtn5_Pressed(Sender)
{
    clickControl(4);
}

void ViewController::kvRotBtn6_Pressed(Sender)
{
    clickControl(5);
}

void ViewController::kvRotBtn7_Pressed(Sender)
{
    clickControl(6);
}

void ViewController::kvRotBtn8_Pressed(Sender)
{
    clickControl(7);
}

void ViewController::clickControl(std::int32_t control)
{
    const std::int32_t source = arrayControllerPlistSelected()->selectionIndex();
    const platform::Record* parameter = arrayControllerPlistSelected()->arrangedObject(source);
    if (!isMappingLoaded() || !parameter)
        return;
    const Operation edit(*this, mapping::isEmptyEntry(*parameter) ? "Clear Pot" : "Assign Parameter");
    moveParameterPositionAndToMovePageMode(source, panel::slotFor(mapping::curPage, control), 0);
}

void ViewController::moveParameterPositionAndToMovePageMode(std::int32_t from, std::int32_t to,
                                                            std::int32_t movePageMode)
{
    const auto slot = [](std::int32_t position) -> platform::Record& {
        return mapping::plistBuild.at(static_cast<std::size_t>(position));
    };
    const Operation edit(*this, movePageMode == 1 ? "Exchange Pots" : "Assign Parameter");
    const auto list = arrayControllerPlistSelected();
    const bool exchange = movePageMode == 1;
    const platform::Record* parameter = exchange ? &slot(from) : list->arrangedObject(from);
    if (!parameter)
        return;
    const panel::SlotContent source = panel::contentOf(*parameter);
    if (exchange)
        panel::exchangeContents(mapping::plistBuild, from, to);
    else
        panel::setContent(slot(to), source);
    populateKnobLabels(mapping::curPage);
    // Also in a page move, once for every parameter moved; that is meant.
    if (source.name != mapping::kEmptyName)
        list->selectNext();
}
