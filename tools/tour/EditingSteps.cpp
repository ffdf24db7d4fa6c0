#include "tools/tour/EditingSteps.h"

#include "tools/tour/Tour.h"

#include <QAbstractItemView>
#include <QFile>
#include <QFileInfo>
#include <QLineEdit>
#include <QUrl>

namespace tour {

namespace {

const char* const kPlugins = "pluginTableView";
const char* const kParameters = "tablePlistOfSelectedPlugin";
const char* const kShownPage = "lab_PageCurrentlyDisplayed";

} // namespace

QString compare(Tour& tour)
{
    tour.chooseFromMenuBar("compareWithOriginal");
    const QString differences = tour.text("differenceHint");
    tour.expect(differences == QLatin1String("8 pots differ from the original backup"),
                QStringLiteral("what was saved differs"));
    tour.press("cwinMainWindow", Qt::Key_Down, Qt::AltModifier);
    const QString pot = tour.find<QWidget>("kvRotaryBtn1")->accessibleDescription();
    tour.expect(pot.contains(QLatin1String("; in the original backup: ")), QStringLiteral("the pot names both"));
    return differences + QStringLiteral(", pot 1: ") + pot;
}

QString chartAsPdf(Tour& tour)
{
    tour.chooseFromMenuBar("compareWithNothing");
    const QString path = tour.answerSaveDialog(QStringLiteral("Obrelle chart.pdf"));
    tour.chooseFromMenuBar("chartPdf");
    tour.expect(QUrl(tour.openedUrl()).toLocalFile() == path, QStringLiteral("the chart is opened"));
    QFile file(path);
    tour.expect(file.open(QIODevice::ReadOnly), QStringLiteral("the chart is written"));
    const QByteArray bytes = file.readAll();
    const auto sheets = bytes.count("/Type /Page\n");
    tour.expect(bytes.startsWith("%PDF-") && sheets > 1, QStringLiteral("it is a PDF of several sheets"));
    return QStringLiteral("%1 sheets in %2").arg(sheets).arg(QFileInfo(path).fileName());
}

QString filterPlugins(Tour& tour)
{
    const QString loaded = tour.text("labKOScreen_Title");
    tour.type("pluginSearch", QStringLiteral("echo"));
    const auto* plugins = tour.find<QAbstractItemView>(kPlugins)->model();
    tour.expect(plugins->rowCount() == 3, QStringLiteral("two echoes and what is loaded are left"));
    tour.expect(tour.text("labKOScreen_Title") == loaded, QStringLiteral("nothing is loaded by that"));
    return QStringLiteral("\"echo\" leaves ") + tour.text("pluginReadOut");
}

QString contextMenu(Tour& tour)
{
    tour.clickRow(kPlugins, QStringLiteral("Quillmoor Echo"));
    tour.find<QLineEdit>("pluginSearch")->clear();
    tour.openContextMenu("kvRotaryBtn3");
    tour.lookAt("cwinMainWindow");
    return QStringLiteral("what can be done with pot 3, ") + tour.text("kvControl3");
}

QString insertPot(Tour& tour)
{
    const QString former = tour.text("kvControl3");
    tour.openContextMenu("kvRotaryBtn3");
    tour.choose("insertPot");
    tour.expect(tour.text("kvControl3") == QLatin1String("-") && tour.text("kvControl4") == former,
                QStringLiteral("the pots from 3 on moved"));
    return former + QStringLiteral(" and what follows moved on from pot 3");
}

QString fill(Tour& tour)
{
    tour.click("undoButton");
    tour.click("newPageButtonPressed");
    tour.clickRow(kParameters, QStringLiteral("Left Level"), 1);
    tour.clickRow(kParameters, QStringLiteral("Right Delay Time"), 1, Qt::ShiftModifier);
    tour.clickRow(kParameters, QStringLiteral("Right Feedback"), 1, Qt::ControlModifier);
    tour.clickRow(kParameters, QStringLiteral("Right Pan"), 1, Qt::ControlModifier);
    tour.press(kParameters, Qt::Key_Return, Qt::ControlModifier);
    tour.expect(tour.text(kShownPage) == QLatin1String("Page 4 of 4") &&
                    tour.text("kvControl1") == QLatin1String("Left Level") &&
                    tour.text("kvControl4") == QLatin1String("Right Pan"),
                QStringLiteral("the selection is laid on the new page"));
    return QStringLiteral("4 parameters on ") + tour.text(kShownPage);
}

QString pastePage(Tour& tour)
{
    tour.clickPage(3);
    tour.press("pageOverview", Qt::Key_C, Qt::ControlModifier);
    tour.clickRow(kPlugins, QStringLiteral("Thistlewick Hall"));
    tour.press(kPlugins, Qt::Key_V, Qt::ControlModifier);
    tour.expect(tour.text(kShownPage) == QLatin1String("Page 2 of 4"), QStringLiteral("a page came behind the first"));
    const QString placed = tour.text("placedHint");
    tour.expect(placed.startsWith(QLatin1String("3 of 7 placed; not offered here: ")),
                QStringLiteral("what is not offered is told"));
    return placed;
}

QString leaveDraft(Tour& tour)
{
    tour.clickRow(kPlugins, QStringLiteral("Quillmoor Echo"));
    tour.clickRow(kPlugins, QStringLiteral("Thistlewick Hall"));
    auto* bar = tour.find<QWidget>("draftBar");
    tour.expect(bar->isVisible(), QStringLiteral("the edits that were left can be brought back"));
    return bar->accessibleName();
}

} // namespace tour
