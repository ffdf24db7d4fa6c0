#include "chart/Chart.h"

#include "mapping/ParameterOrder.h"
#include "platform/Utf8.h"

namespace chart {

std::string header(std::string_view plugin, std::string_view fileLocation)
{
    std::string text = "<html><body><h1>MCU Mapping for '";
    text += plugin;
    text += "'</h1><p>File Location: ";
    text += fileLocation;
    text += "</p><style>table {width:100%; border: solid 1px;text-align:left;background-color:grey;} "
            "table th{font-size:85%;background-color:lime;} "
            "table td{font-size:85%;text-align:center;height:50px;width:10%;background-color:white;} "
            "</style><table><tr><th>Section</th>";
    for (int pot = 1; pot <= mapping::kPotsPerPage; ++pot)
        text += "<th style='text-align:center;'>Pot " + std::to_string(pot) + "</th>";
    text += "</tr>";
    return text;
}

std::string pageTitle(std::int32_t page)
{
    return "Page " + std::to_string(page) + " Encoders";
}

void appendRow(std::string& document, const std::vector<platform::Record>& entries, std::int32_t first,
               std::int32_t last, std::string_view title)
{
    document += "<tr><th>";
    document += title;
    document += "</th>";
    for (std::int32_t position = first; position <= last; ++position) {
        document += "<td>";
        document += mapping::nameAt(entries, position - 1);
        document += "</td>";
    }
    document += "</tr>";
}

void appendEnd(std::string& document)
{
    document += "</table></body></html>";
}

bool canBeWritten(std::string_view document)
{
    return platform::isAscii(document);
}

} // namespace chart
