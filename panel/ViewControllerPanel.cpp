#include "app/ViewControllerOperation.h"
#include "chart/Chart.h"
#include "chart/ChartState.h"
#include "mapping/EditingState.h"
#include "mapping/ParameterOrder.h"
#include "panel/Finding.h"
#include "panel/Pages.h"
#include "plugins/PluginScan.h"

#include <algorithm>

void ViewController::populateKnobLabels(std::int32_t page)
{
    const Operation operation(*this);
    const std::string plugin = myArrayController()->selectionText(plugins::kPlugin);
    const std::string path = myArrayController()->selectionText(plugins::kFileLocation);
    chart::bHTML = chart::header(plugin, path);
    mapping::curPage = page;
    for (std::int32_t number = 1; number <= mapping::kPotsPerPage; ++number)
        knobLabel(number)->stringValue.set(mapping::kEmptyName);
    const std::int32_t first = panel::firstSlotOf(page);
    writeKnobLabelAndRowEndAndLabelPre(first, first + mapping::kPotsPerPage - 1, "kvControl");
    for (std::int32_t row = 1; row <= mapping::totalPages; ++row) {
        writebHTMLDataAndRowEndAndLabelPre(panel::firstSlotOf(row) + 1, row * mapping::kPotsPerPage,
                                           chart::pageTitle(row));
    }
    lab_PageCurrentlyDisplayed()->stringValue.set(panel::pageReadOut(mapping::curPage, mapping::totalPages));
    labTotalPagesIndicator()->stringValue.set(panel::totalReadOut(mapping::totalPages));
    chart::appendEnd(chart::bHTML);
}

void ViewController::writeKnobLabelAndRowEndAndLabelPre(std::int32_t first, std::int32_t last, const std::string&)
{
    // The eight labels are the only row of labels there is, so the prefix always names them.
    for (std::int32_t position = first; position <= std::min(last, first + mapping::kPotsPerPage - 1); ++position) {
        const std::string name(mapping::nameAt(mapping::plistBuild, position));
        const auto label = knobLabel(position - first + 1);
        label->stringValue.set(name);
        label->toolTip.set(name);
    }
}

void ViewController::updateHelperDisplay(const std::string& text)
{
    labelHelperDisplay()->stringValue.set(text);
}

void ViewController::showPage(std::int32_t page)
{
    if (isMappingLoaded() && page >= 1 && page <= mapping::totalPages)
        populateKnobLabels(page);
}

void ViewController::showOnPanel(Sender)
{
    const platform::Record* selected = arrayControllerPlistSelected()->selection();
    if (!selected)
        return;
    if (const auto page = panel::nextPageOf(mappedPots_.positionsOf(*selected), mapping::curPage))
        showPage(*page);
}

std::shared_ptr<platform::TextField> ViewController::knobLabel(std::int32_t number) const
{
    switch (number) {
    case 1: return kvControl1();
    case 2: return kvControl2();
    case 3: return kvControl3();
    case 4: return kvControl4();
    case 5: return kvControl5();
    case 6: return kvControl6();
    case 7: return kvControl7();
    default: return kvControl8();
    }
}
