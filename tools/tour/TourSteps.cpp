#include "tools/tour/EditingSteps.h"
#include "tools/tour/Tour.h"

#include <QAbstractItemModel>
#include <QAbstractItemView>
#include <QApplication>
#include <QFile>
#include <QLineEdit>
#include <QPalette>
#include <QRegularExpression>
#include <QStyle>
#include <QUrl>

namespace tour {

namespace {

const char* const kPots[] = {"kvRotaryBtn1", "kvRotaryBtn2", "kvRotaryBtn3", "kvRotaryBtn4",
                             "kvRotaryBtn5", "kvRotaryBtn6", "kvRotaryBtn7", "kvRotaryBtn8"};
const char* const kLabels[] = {"kvControl1", "kvControl2", "kvControl3", "kvControl4",
                               "kvControl5", "kvControl6", "kvControl7", "kvControl8"};

/// The system's folders moved away while it lives, so that a scan finds nothing.
class EmptyLibrary {
public:
    EmptyLibrary()
    {
        qputenv("HOME", "/nonexistent");
        qputenv("KV_LOCAL_LIBRARY", "/nonexistent");
    }
    EmptyLibrary(const EmptyLibrary&) = delete;
    EmptyLibrary& operator=(const EmptyLibrary&) = delete;
    ~EmptyLibrary()
    {
        qputenv("HOME", home_);
        qputenv("KV_LOCAL_LIBRARY", library_);
    }

private:
    QByteArray home_ = qgetenv("HOME");
    QByteArray library_ = qgetenv("KV_LOCAL_LIBRARY");
};

QString emptyStart(Tour& tour)
{
    tour.find<QWidget>("cwinMainWindow")->resize(1280, 800); // the screen without a desktop is smaller
    const EmptyLibrary moved;
    tour.click("btnRunCheck");
    tour.expect(tour.find<QAbstractItemView>("pluginTableView")->model()->rowCount() == 0,
                QStringLiteral("nothing is found"));
    const QString hint = tour.find<QWidget>("pluginTableView")->accessibleDescription();
    tour.expect(!hint.isEmpty(), QStringLiteral("the empty list says what to do"));
    return hint.simplified();
}

QString start(Tour& tour)
{
    tour.click("btnRunCheck");
    const int rows = tour.find<QAbstractItemView>("pluginTableView")->model()->rowCount();
    tour.expect(rows > 0, QStringLiteral("the scan lists plug-ins"));
    return QStringLiteral("the scan lists %1 plug-ins").arg(rows);
}

QString select(Tour& tour)
{
    tour.clickRow("pluginTableView", QStringLiteral("Wendlebrook EQ"));
    tour.expect(tour.text("labKOScreen_Title") == QLatin1String("Wendlebrook EQ (Logic Built-In)"),
                QStringLiteral("the panel names the plug-in"));
    return tour.text("labKOScreen_Title") + QStringLiteral(", ") + tour.text("lab_PageCurrentlyDisplayed");
}

QString search(Tour& tour)
{
    tour.type("parameterSearch", QStringLiteral("freq"));
    const int rows = tour.find<QAbstractItemView>("tablePlistOfSelectedPlugin")->model()->rowCount();
    tour.expect(rows > 1, QStringLiteral("the search finds a parameter"));
    return QStringLiteral("\"freq\" leaves %1 parameters and the blank entry").arg(rows - 1);
}

QString assign(Tour& tour)
{
    tour.find<QLineEdit>("parameterSearch")->clear();
    auto* model = tour.find<QAbstractItemView>("tablePlistOfSelectedPlugin")->model();
    const QString first = model->index(3, 1).data().toString();
    tour.clickRow("tablePlistOfSelectedPlugin", first, 1);
    for (const char* pot : kPots)
        tour.click(pot);
    for (int pot = 0; pot < 8; ++pot) {
        tour.expect(tour.text(kLabels[pot]) == model->index(3 + pot, 1).data().toString(),
                    QStringLiteral("pot %1 took the next parameter").arg(pot + 1));
    }
    return QStringLiteral("pots 1 to 8 took \"%1\" and the seven after it").arg(first);
}

QString addPage(Tour& tour)
{
    tour.click("newPageButtonPressed");
    tour.expect(tour.text("lab_PageCurrentlyDisplayed") == QLatin1String("Page 3 of 3"),
                QStringLiteral("the new page is shown"));
    tour.clickRow("tablePlistOfSelectedPlugin", QStringLiteral("Output Gain"), 1);
    tour.click(kPots[0]);
    return tour.text("lab_PageCurrentlyDisplayed") + QStringLiteral(", pot 1 is ") + tour.text(kLabels[0]);
}

QString unmapped(Tour& tour)
{
    tour.click("unmappedOnly");
    const int rows = tour.find<QAbstractItemView>("tablePlistOfSelectedPlugin")->model()->rowCount();
    const QString seen = tour.text("mappedReadOut") + QStringLiteral(", ") + tour.text("unsavedReadOut");
    tour.expect(tour.find<QWidget>("cwinMainWindow")->isWindowModified(), QStringLiteral("the window is marked"));
    tour.click("unmappedOnly");
    tour.expect(tour.find<QAbstractItemView>("tablePlistOfSelectedPlugin")->model()->rowCount() > rows,
                QStringLiteral("the filter is off again"));
    return seen;
}

QString undo(Tour& tour)
{
    const QString before = tour.text("lab_PageCurrentlyDisplayed");
    tour.click("undoButton");
    tour.click("undoButton");
    tour.expect(tour.text("lab_PageCurrentlyDisplayed") != before, QStringLiteral("the new page is taken back"));
    const QString undone = tour.text("lab_PageCurrentlyDisplayed");
    tour.click("redoButton");
    tour.click("redoButton");
    tour.expect(tour.text("lab_PageCurrentlyDisplayed") == before, QStringLiteral("and made again"));
    return before + QStringLiteral(" and back to ") + undone + QStringLiteral(", then forth again");
}

QString movePage(Tour& tour)
{
    const QString carried = tour.text(kLabels[0]);
    tour.click("kvMovePage_First");
    tour.expect(tour.text("lab_PageCurrentlyDisplayed") == QLatin1String("Page 1 of 3") &&
                    tour.text(kLabels[0]) == carried,
                QStringLiteral("the page went to the front"));
    return QStringLiteral("the new page is now ") + tour.text("lab_PageCurrentlyDisplayed");
}

QString save(Tour& tour)
{
    tour.answerAlert();
    tour.click("kvExportToPlist");
    tour.expect(tour.textOfAlert() == QLatin1String("New Mapping has been saved"), QStringLiteral("the save is told"));
    return tour.textOfAlert();
}

QString recall(Tour& tour)
{
    tour.answerAlert();
    tour.click("kvRecallOriginalMapping");
    tour.expect(tour.textOfAlert() == QLatin1String("Recalled mapping has been applied"),
                QStringLiteral("the recall is told"));
    return tour.textOfAlert() + QStringLiteral(", ") + tour.text("lab_PageCurrentlyDisplayed");
}

QString chart(Tour& tour)
{
    tour.click("kvCreateChart");
    const QString file = QUrl(tour.openedUrl()).toLocalFile();
    tour.expect(QFile::exists(file), QStringLiteral("the chart is written"));
    return QStringLiteral("opened ") + file.section(QLatin1Char('/'), -2);
}

QString synthesizer(Tour& tour)
{
    tour.clickRow("pluginTableView", QStringLiteral("Obrelle"));
    tour.click("lastPageButtonPressed");
    tour.expect(tour.text("lab_PageCurrentlyDisplayed") == QLatin1String("Page 40 of 40"),
                QStringLiteral("the synthesizer has 40 pages"));
    return tour.text("labKOScreen_Title") + QStringLiteral(", ") + tour.text("lab_PageCurrentlyDisplayed");
}

QString saveSynthesizer(Tour& tour)
{
    tour.clickRow("tablePlistOfSelectedPlugin",
                  tour.find<QAbstractItemView>("tablePlistOfSelectedPlugin")->model()->index(9, 1).data().toString(),
                  1);
    for (const char* pot : kPots)
        tour.click(pot);
    tour.answerAlert();
    tour.click("kvExportToPlist");
    tour.expect(tour.textOfAlert() == QLatin1String("New Mapping has been saved"), QStringLiteral("the save is told"));
    return QStringLiteral("pots 1 to 8 of page 40 assigned and saved");
}

QPalette darkPalette()
{
    QPalette dark(QColor(0x35, 0x37, 0x3a), QColor(0x2b, 0x2d, 0x30));
    dark.setColor(QPalette::Base, QColor(0x1e, 0x1f, 0x22));
    dark.setColor(QPalette::AlternateBase, QColor(0x25, 0x26, 0x29));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText})
        dark.setColor(role, QColor(0xe6, 0xe6, 0xe8));
    dark.setColor(QPalette::PlaceholderText, QColor(0xa0, 0xa2, 0xa6));
    dark.setColor(QPalette::ToolTipBase, QColor(0x1e, 0x1f, 0x22));
    dark.setColor(QPalette::Highlight, QColor(0x2f, 0x65, 0xa8));
    dark.setColor(QPalette::HighlightedText, Qt::white);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        dark.setColor(QPalette::Disabled, role, QColor(0x86, 0x88, 0x8c));
    return dark;
}

QString dark(Tour& tour)
{
    QApplication::setPalette(darkPalette());
    QApplication::processEvents();
    const QColor window = tour.find<QWidget>("cwinMainWindow")->palette().color(QPalette::Window);
    tour.expect(window.lightness() < 80, QStringLiteral("the window follows"));
    return QStringLiteral("as on a dark desktop");
}

QString light(Tour& tour)
{
    QApplication::setPalette(QApplication::style()->standardPalette());
    tour.clickRow("pluginTableView", QStringLiteral("Longwether Matrix"));
    return tour.text("labKOScreen_Title") + QStringLiteral(", ") + tour.text("labTotalPagesIndicator");
}

QString markup(Tour& tour)
{
    tour.clickRow("pluginTableView", QStringLiteral("Brindle <b> & Co"));
    return tour.text("labKOScreen_Title") + QStringLiteral(": names are shown as they are");
}

QString newAccount(Tour& tour)
{
    tour.click("kvLoginToCloudAccount");
    tour.type("cwinUserNameNew", QStringLiteral("tourist"));
    tour.type("cwinEmailAddrNew", QStringLiteral("tourist@example.org"));
    tour.answerAlert();
    tour.click("cwinNewUserCreate");
    tour.expect(tour.textOfAlert() == QLatin1String("Create New User Response"), QStringLiteral("the server answers"));
    const auto pin = QRegularExpression(QStringLiteral("\\b\\d{4,}\\b")).match(tour.informativeTextOfAlert());
    tour.expect(pin.hasMatch(), QStringLiteral("the server tells a PIN"));
    tour.remember(pin.captured());
    return QStringLiteral("the server made an account and told its PIN");
}

QString logIn(Tour& tour)
{
    tour.type("cwinUserName", QStringLiteral("tourist"));
    tour.type("cwinPinCode", tour.remembered());
    tour.lookAt("cwinCloudWindow");
    return QStringLiteral("name and PIN typed");
}

QString loggedIn(Tour& tour)
{
    tour.click("cwinLoginAttempt");
    tour.expect(tour.text("labLoggedInAs") == QLatin1String("Logged in as tourist"), QStringLiteral("logged in"));
    return tour.text("labLoggedInAs");
}

QString upload(Tour& tour)
{
    tour.clickRow("pluginTableView", QStringLiteral("Wendlebrook EQ"));
    tour.click("kv_btn_cloudLibrary");
    tour.type("cwinUploadComments", QStringLiteral("Bands in order, gains on page 2"));
    tour.lookAt("cwinUploadWindow");
    return QStringLiteral("a comment for the others");
}

QString uploaded(Tour& tour)
{
    tour.answerAlert();
    tour.click("kvCommunityUploadBtn");
    tour.expect(tour.textOfAlert() == QLatin1String("Upload notification"), QStringLiteral("the server answers"));
    tour.expect(tour.informativeTextOfAlert().contains(QLatin1String("now shared")),
                QStringLiteral("the server took the upload"));
    return tour.textOfAlert() + QStringLiteral(": ") + tour.informativeTextOfAlert().simplified();
}

QString browse(Tour& tour)
{
    tour.click("kv_btn_cloudLibraryDownload");
    tour.lookAt("cwinDownloadWindow");
    const auto* shared = tour.find<QAbstractItemView>("cwinPlistAvailable")->model();
    tour.expect(shared->index(0, 0).data().toString() == QLatin1String("Bands in order, gains on page 2"),
                QStringLiteral("the upload is listed first"));
    return QStringLiteral("%1 shared mappings").arg(shared->rowCount());
}

QString preview(Tour& tour)
{
    tour.clickRow("cwinPlistAvailable", QStringLiteral("Teo Marrable"), 3);
    tour.click("previewShared");
    tour.waitUntil([&tour] { return !tour.text("previewSummary").isEmpty(); }, QStringLiteral("the mapping is shown"));
    const auto* pots = tour.find<QAbstractItemView>("previewTable")->model();
    tour.expect(pots->index(0, 0).data().toString() == QLatin1String("Low Gain"),
                QStringLiteral("pot 1 is as it was shared"));
    tour.lookAt("cwinDownloadWindow");
    return tour.text("previewSummary");
}

QString download(Tour& tour)
{
    tour.answerAlert();
    tour.click("kvCommunityLoadSelectedDownload");
    tour.waitForAlert();
    tour.expect(tour.textOfAlert() == QLatin1String("OK Done"), QStringLiteral("the download is loaded"));
    tour.expect(tour.text(kLabels[0]) == QLatin1String("Low Gain"), QStringLiteral("pot 1 is as it was shared"));
    return tour.textOfAlert() + QStringLiteral(", pot 1 is ") + tour.text(kLabels[0]);
}

QString help(Tour& tour)
{
    tour.answerAlert();
    tour.click("kvHelpMe");
    tour.expect(tour.textOfAlert() == QLatin1String("Brief instructions on use"), QStringLiteral("help is shown"));
    return tour.textOfAlert();
}

QString about(Tour& tour)
{
    tour.answerAlert();
    tour.chooseFromMenuBar("about");
    tour.expect(tour.informativeTextOfAlert().contains(QLatin1String("libcurl ")),
                QStringLiteral("libraries are told"));
    return tour.textOfAlert() + QStringLiteral(": ") +
           tour.informativeTextOfAlert().section(QLatin1String("\n\n"), 0, 0).simplified();
}

QString selectAgain(Tour& tour)
{
    tour.clickRow("pluginTableView", QStringLiteral("Longwether Matrix"));
    tour.expect(!tour.find<QWidget>("cwinDownloadWindow")->isVisible(), QStringLiteral("the download window closed"));
    return QStringLiteral("another plug-in closed the community windows");
}

} // namespace

std::vector<Step> allSteps()
{
    // clang-format off
    return {
        {QStringLiteral("empty-start"), emptyStart},
        {QStringLiteral("start"), start},
        {QStringLiteral("select"), select,
         {{QStringLiteral("choose"), {"pluginReadOut", "pluginTableView"}}}},
        {QStringLiteral("search"), search,
         {{QStringLiteral("search"), {"mappedReadOut", "tablePlistOfSelectedPlugin"}, 170}}},
        {QStringLiteral("assign"), assign,
         {{QStringLiteral("press"), {"frontPanel", "pageOverview"}},
          {QStringLiteral("readme-press"), {"kvRotaryBtn1", "kvControl1", "kvControl3"}}}},
        {QStringLiteral("add-page"), addPage},
        {QStringLiteral("unsaved"), unmapped},
        {QStringLiteral("undo"), undo, {{QStringLiteral("window"), {"cwinMainWindow"}}}},
        {QStringLiteral("move-page"), movePage,
         {{QStringLiteral("pages"), {"pageOverview", "firstPageButtonPressed", "clearAllPagesButtonPressed"}}}},
        {QStringLiteral("save"), save, {{QStringLiteral("save"), {}}}},
        {QStringLiteral("recall"), recall},
        {QStringLiteral("chart"), chart},
        {QStringLiteral("synthesizer"), synthesizer},
        {QStringLiteral("save-synthesizer"), saveSynthesizer},
        {QStringLiteral("compare"), compare,
         {{QStringLiteral("compare"), {"frontPanel", "pageOverview", "differenceHint"}}}},
        {QStringLiteral("pdf"), chartAsPdf},
        {QStringLiteral("dark"), dark},
        {QStringLiteral("large"), light},
        {QStringLiteral("names-as-they-are"), markup},
        {QStringLiteral("filter"), filterPlugins},
        {QStringLiteral("context-menu"), contextMenu,
         {{QStringLiteral("pot-menu"), {"kvRotaryBtn1", "kvControl6"}}}},
        {QStringLiteral("insert-pot"), insertPot},
        {QStringLiteral("fill"), fill},
        {QStringLiteral("paste-page"), pastePage},
        {QStringLiteral("draft"), leaveDraft, {{QStringLiteral("draft"), {"draftBar", "pluginTableView"}}}},
        {QStringLiteral("new-account"), newAccount},
        {QStringLiteral("log-in"), logIn, {{QStringLiteral("account"), {"cwinCloudWindow"}}}},
        {QStringLiteral("logged-in"), loggedIn},
        {QStringLiteral("upload"), upload},
        {QStringLiteral("uploaded"), uploaded},
        {QStringLiteral("browse"), browse},
        {QStringLiteral("preview"), preview, {{QStringLiteral("preview"), {"cwinDownloadWindow"}}}},
        {QStringLiteral("download"), download},
        {QStringLiteral("help"), help},
        {QStringLiteral("about"), about},
        {QStringLiteral("select-another"), selectAgain},
    };
    // clang-format on
}

} // namespace tour
