#include "app/interface/MainWindow.h"

#include "app/interface/FrontPanel.h"
#include "app/interface/Widgets.h"
#include "platform/qt/ElidedLabel.h"
#include "platform/qt/RecordListView.h"

#include <QAction>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSplitter>

#include <initializer_list>

namespace interface {

namespace {

QWidget* column(std::initializer_list<QWidget*> widgets)
{
    auto* holder = new QWidget;
    auto* layout = new QVBoxLayout(holder);
    layout->setContentsMargins(0, 0, 0, 0);
    for (QWidget* widget : widgets)
        layout->addWidget(widget);
    return holder;
}

QHBoxLayout* row(std::initializer_list<QWidget*> widgets)
{
    auto* layout = new QHBoxLayout;
    for (QWidget* widget : widgets)
        layout->addWidget(widget);
    return layout;
}

QGroupBox* group(const QString& title, std::initializer_list<QWidget*> widgets)
{
    auto* box = new QGroupBox(title);
    box->setLayout(row(widgets));
    return box;
}

QWidget* makeModeSwitch()
{
    auto* matrix = new QWidget;
    matrix->setObjectName(QStringLiteral("kvPluginMode"));
    auto* layout = new QHBoxLayout(matrix);
    layout->setContentsMargins(0, 0, 0, 0);
    const std::pair<const char*, QString> cells[] = {
        {"kvPluginMode_1", QObject::tr("Instrument")},
        {"kvPluginMode_0", QObject::tr("Insert/Effect")},
    };
    for (const auto& [name, title] : cells) {
        auto* cell = new QRadioButton(title);
        cell->setObjectName(QString::fromLatin1(name));
        layout->addWidget(cell);
    }
    return matrix;
}

QLayout* makeTitleRow()
{
    auto* title = makeHeading(QStringLiteral("kvOrvantaLogic Tool"));
    QFont large = title->font();
    large.setPointSizeF(large.pointSizeF() * 1.4);
    title->setFont(large);
    auto* layout = new QHBoxLayout;
    layout->setSpacing(12);
    layout->addWidget(title);
    layout->addWidget(makeLabel("mainTitle_Sub"), 1);
    layout->addWidget(makeModeSwitch());
    return layout;
}

QWidget* makeLists()
{
    auto* scan = makeButton("btnRunCheck", QObject::tr("Scan for plugins"),
                            QObject::tr("Look for plug-ins with a parameter order again"));
    auto* pluginColumn = column({makeHeading(QObject::tr("Plugins")), makeList("pluginTableView"), scan});

    auto* search = makeLine("parameterSearch");
    search->setPlaceholderText(QObject::tr("Search parameters"));
    search->setClearButtonEnabled(true);
    auto* parameterColumn =
        column({makeHeading(QObject::tr("Plugin Parameters")), search, makeList("tablePlistOfSelectedPlugin")});

    auto* lists = new QSplitter(Qt::Horizontal);
    lists->addWidget(pluginColumn);
    lists->addWidget(parameterColumn);
    lists->setChildrenCollapsible(false);
    lists->setStretchFactor(0, 3);
    lists->setStretchFactor(1, 4);
    return lists;
}

QLayout* makePageControls()
{
    auto* layout = new QHBoxLayout;
    layout->addWidget(
        group(QObject::tr("Show page"),
              {makeButton("firstPageButtonPressed", QObject::tr("First"), QObject::tr("Show the first page")),
               makeButton("prevPageButtonPressed", QObject::tr("Previous"), QObject::tr("Show the page before")),
               makeButton("nextPageButtonPressed", QObject::tr("Next"), QObject::tr("Show the page after")),
               makeButton("lastPageButtonPressed", QObject::tr("Last"), QObject::tr("Show the last page"))}));
    layout->addWidget(group(
        QObject::tr("Move page to"),
        {makeButton("kvMovePage_First", QObject::tr("First"), QObject::tr("Exchange this page with the first one")),
         makeButton("kvMovePage_Prev", QObject::tr("Previous"), QObject::tr("Exchange this page with the one before")),
         makeButton("kvMovePage_Next", QObject::tr("Next"), QObject::tr("Exchange this page with the one after")),
         makeButton("kvMovePage_Last", QObject::tr("Last"), QObject::tr("Exchange this page with the last one"))}));
    layout->addStretch(1);
    layout->addWidget(
        group(QObject::tr("Edit pages"),
              {makeButton("newPageButtonPressed", QObject::tr("New"), QObject::tr("Add an empty page at the end")),
               makeButton("deletePageButtonPressed", QObject::tr("Delete"), QObject::tr("Delete the page shown")),
               makeButton("clearAllPagesButtonPressed", QObject::tr("Clear All"),
                          QObject::tr("Empty the first page and make it the only one"))}));
    return layout;
}

QLayout* makeFileControls()
{
    auto* signedIn = makeLabel("labLoggedInAs");
    signedIn->setMinimumWidth(170);
    auto* layout = new QHBoxLayout;
    layout->addWidget(group(QObject::tr("Mapping"),
                            {makeButton("kvExportToPlist", QObject::tr("Save Mapping"),
                                        QObject::tr("Write the mapping into the plug-in's file and keep backups")),
                             makeButton("kvRecallOriginalMapping", QObject::tr("Recall Original"),
                                        QObject::tr("Put back the file as it was before the first save")),
                             makeButton("kvRecallPreviousMapping", QObject::tr("Recall Previous"),
                                        QObject::tr("Put back the file as it was before the last save")),
                             makeButton("kvCreateChart", QObject::tr("Chart"),
                                        QObject::tr("Write the mapping as an HTML chart and open it"))}));
    auto* community =
        group(QObject::tr("Community"),
              {makeButton("kvLoginToCloudAccount", QObject::tr("Account"), QObject::tr("Log in or ask for an account")),
               makeButton("kv_btn_cloudLibrary", QObject::tr("Share"), QObject::tr("Upload the saved mapping")),
               makeButton("kv_btn_cloudLibraryDownload", QObject::tr("Browse"),
                          QObject::tr("See what others shared for this plug-in")),
               signedIn});
    layout->addWidget(community, 1);
    layout->addWidget(makeButton("kvHelpMe", QObject::tr("Help"), QObject::tr("Brief instructions on use")), 0,
                      Qt::AlignBottom);
    return layout;
}

QLayout* makeStatusRow()
{
    auto* layout = new QHBoxLayout;
    layout->setSpacing(16);
    layout->addWidget(makeLabel("labelHelperDisplay"), 2);
    layout->addWidget(makeLabel("pageLimitWarning"), 0);
    auto* path = makeLabel("labPluginPlistLocation", Qt::ElideMiddle);
    path->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    layout->addWidget(path, 3);
    return layout;
}

QWidget* makeLowerView()
{
    auto* lower = new QWidget;
    auto* layout = new QVBoxLayout(lower);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(new FrontPanel);
    layout->addLayout(makePageControls());
    layout->addLayout(makeFileControls());
    layout->addLayout(makeStatusRow());
    return lower;
}

} // namespace

MainWindow::MainWindow()
{
    setObjectName(QStringLiteral("cwinMainWindow"));
    setWindowTitle(QStringLiteral("kvOrvantaLogic Tool"));

    auto* content = new QWidget;
    auto* layout = new QVBoxLayout(content);
    layout->setSpacing(10);
    layout->addLayout(makeTitleRow());
    layout->addWidget(makeLists(), 1);
    layout->addWidget(makeLowerView());
    setCentralWidget(content);
    makeMenus();
    resize(1180, 780);
}

void MainWindow::makeMenus()
{
    const auto add = [](QMenu* menu, const char* name, const QString& title, const QKeySequence& shortcut) {
        QAction* action = menu->addAction(title);
        action->setObjectName(QString::fromLatin1(name));
        action->setShortcut(shortcut);
        return action;
    };
    QMenu* file = menuBar()->addMenu(tr("&File"));
    add(file, "btnRunCheck", tr("Scan for plugins"), QKeySequence::Refresh);
    add(file, "kvExportToPlist", tr("Save Mapping"), QKeySequence::Save);
    add(file, "kvCreateChart", tr("Chart"), QKeySequence::Print);
    add(file, "saveAction", tr("Save Application Data"), {});
    file->addSeparator();
    QAction* quit = add(file, "terminate", tr("Quit"), QKeySequence::Quit);
    quit->setMenuRole(QAction::QuitRole);
    QMenu* help = menuBar()->addMenu(tr("&Help"));
    add(help, "kvHelpMe", tr("Brief instructions on use"), QKeySequence::HelpContents);
}

} // namespace interface
