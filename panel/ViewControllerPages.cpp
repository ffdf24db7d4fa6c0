#include "app/ViewControllerOperation.h"
#include "mapping/EditingState.h"
#include "mapping/ParameterOrder.h"
#include "panel/Pages.h"

#include <algorithm>

using mapping::curPage;
using mapping::plistBuild;
using mapping::totalPages;

void ViewController::prevPageButtonPressed(Sender)
{
    if (isMappingLoaded())
        populateKnobLabels(std::max(curPage - 1, 1));
}

void ViewController::nextPageButtonPressed(Sender)
{
    if (isMappingLoaded())
        populateKnobLabels(std::min(curPage + 1, totalPages));
}

void ViewController::firstPageButtonPressed(Sender)
{
    if (isMappingLoaded())
        populateKnobLabels(1);
}

void ViewController::lastPageButtonPressed(Sender)
{
    if (isMappingLoaded())
        populateKnobLabels(totalPages);
}

void ViewController::newPageButtonPressed(Sender)
{
    addControlsPage();
}

void ViewController::deletePageButtonPressed(Sender)
{
    removeControlsPage();
}

void ViewController::clearAllPagesButtonPressed(Sender)
{
    clearAllPages();
}

void ViewController::kvMovePage_First(Sender)
{
    movePageAndPageTo(curPage, 1);
}

void ViewController::kvMovePage_Last(Sender)
{
    movePageAndPageTo(curPage, totalPages);
}

void ViewController::kvMovePage_Prev(Sender)
{
    movePageAndPageTo(curPage, curPage - 1);
}

void ViewController::kvMovePage_Next(Sender)
{
    movePageAndPageTo(curPage, curPage + 1);
}

void ViewController::addControlsPage()
{
    if (!isMappingLoaded())
        return;
    const Operation edit(*this, "Add Page");
    ++totalPages;
    panel::appendPage(plistBuild, totalPages);
    curPage = totalPages;
    populateKnobLabels(curPage);
}

void ViewController::removeControlsPage()
{
    if (!isMappingLoaded())
        return;
    if (curPage < 2) {
        alertUserAndSub("Cannot delete first page", "Sorry!");
        return;
    }
    const Operation edit(*this, "Delete Page");
    panel::removePage(plistBuild, curPage);
    --curPage;
    --totalPages;
    populateKnobLabels(curPage);
}

void ViewController::clearAllPages()
{
    if (!isMappingLoaded())
        return;
    const Operation edit(*this, "Clear All Pages");
    panel::clearFirstPage(plistBuild);
    totalPages = 1;
    curPage = 1;
    populateKnobLabels(curPage);
}

void ViewController::startFromScratch(Sender)
{
    if (!isMappingLoaded())
        return;
    const Operation edit(*this, "Start From Scratch");
    panel::keepOneEmptyPage(plistBuild);
    totalPages = 1;
    populateKnobLabels(1);
}

void ViewController::movePageAndPageTo(std::int32_t from, std::int32_t to)
{
    if (!isMappingLoaded())
        return;
    if (to < 1 || to > totalPages) {
        alertUserAndSub("Sorry not possible", "Page " + std::to_string(to) + " does not exist, cannot move page!");
        return;
    }
    if (to == from)
        return;
    const Operation edit(*this, "Exchange Pages");
    curPage = to;
    for (std::int32_t pot = 0; pot < mapping::kPotsPerPage; ++pot)
        moveParameterPositionAndToMovePageMode(panel::slotFor(from, pot), panel::slotFor(to, pot), 1);
}
