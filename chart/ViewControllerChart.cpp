#include "app/ViewController.h"
#include "chart/Chart.h"
#include "chart/ChartState.h"
#include "mapping/EditingState.h"
#include "platform/Utf8.h"
#include "platform/files/Files.h"
#include "plugins/PluginScan.h"

void ViewController::writebHTMLDataAndRowEndAndLabelPre(std::int32_t first, std::int32_t last, const std::string& title)
{
    chart::appendRow(chart::bHTML, mapping::plistBuild, first, last, title);
}

void ViewController::kvCreateChart(Sender)
{
    outputChartAs("HTML");
}

void ViewController::outputChartAs(const std::string&)
{
    if (!isPluginBeingEdited())
        return;
    const std::string path = myArrayController()->selectionText(plugins::kFileLocation) + ".html";
    if (!platform::isAscii(chart::bHTML) || !platform::files::writeAtomically(path, chart::bHTML))
        platform::files::remove(path); // the chart of another mapping must not be taken for this one's
    platform_.workspace.openFile(path);
}
