#include "app/ViewController.h"
#include "chart/Chart.h"
#include "chart/ChartState.h"
#include "chart/PrintedChart.h"
#include "mapping/EditingState.h"
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
    if (!chart::canBeWritten(chart::bHTML) || !platform::files::writeAtomically(path, chart::bHTML))
        platform::files::remove(path); // the chart of another mapping must not be taken for this one's
    platform_.workspace.openFile(path);
}

platform::PrintedTable ViewController::printedChart() const
{
    return chart::printedChart(loadedPlugin(), labPluginPlistLocation()->stringValue.get(), mapping::plugin_Mode,
                               mapping::plistBuild, mapping::totalPages);
}

void ViewController::printChart(Sender)
{
    if (isMappingLoaded() && !platform_.printing.print(printedChart()))
        alertUserAndSub("Chart could not be printed", "The printer, or the file to print to, did not take it.");
}

void ViewController::chartPdf(Sender)
{
    if (!isMappingLoaded())
        return;
    const platform::PrintedTable table = printedChart();
    const auto path = platform_.printing.whereToSave(chart::pdfName(loadedPlugin()));
    if (!path)
        return;
    if (!platform::files::writeAtomically(*path, platform_.printing.pdf(table))) {
        alertUserAndSub("Chart could not be saved",
                        "The folder may be write-protected, or its disk full. What was there before is as it was.\n\n" +
                            path->native());
        return;
    }
    platform_.workspace.openFile(*path);
}
