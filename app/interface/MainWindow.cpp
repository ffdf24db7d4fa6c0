#include "app/interface/MainWindow.h"

#include "app/interface/Fonts.h"
#include "app/interface/Menus.h"
#include "app/interface/SearchField.h"
#include "app/interface/Widgets.h"
#include "app/interface/panel/FrontPanel.h"
#include "app/interface/panel/PageOverview.h"
#include "platform/qt/ElidedLabel.h"
#include "platform/qt/RecordListView.h"
#include "platform/qt/Typing.h"

#include <QApplication>
#include <QCheckBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QSplitter>

#include <initializer_list>

namespace interface {

namespace {

QHBoxLayout* row(std::initializer_list<QWidget*> widgets)
{
    auto* layout = new QHBoxLayout;
    for (QWidget* widget : widgets)
        layout->addWidget(widget);
    return layout;
}

/// Adds buttons to a row with little room between them, so that they read as one group.
void addGroup(QHBoxLayout* layout, std::initializer_list<QWidget*> widgets)
{
    QHBoxLayout* group = row(widgets);
    group->setSpacing(4);
    layout->addLayout(group);
}

/// A splitter keeps its parts the wrong way round among its children, which is how a screen reader would tell them.
void tellPartsInOrder(const QSplitter* splitter)
{
    for (int part = splitter->count() - 1; part >= 0; --part)
        splitter->widget(part)->lower();
}

/// A button of a group whose caption is part of what it does.
QPushButton* makeMoveButton(const char* name, const QString& title, const QString& accessibleName,
                            const QString& toolTip, const char* symbol)
{
    QPushButton* button = makeButton(name, title, toolTip, symbol);
    button->setAccessibleName(accessibleName);
    return button;
}

QWidget* makeModeSwitch()
{
    auto* matrix = new QWidget;
    matrix->setObjectName(QStringLiteral("kvPluginMode"));
    matrix->setAccessibleName(QObject::tr("Editing mode"));
    auto* layout = new QHBoxLayout(matrix);
    layout->setContentsMargins(0, 0, 0, 0);
    const std::tuple<const char*, QString, QString> cells[] = {
        {"kvPluginMode_1", QObject::tr("Instrument"), QObject::tr("Edit the plug-in as an instrument")},
        {"kvPluginMode_0", QObject::tr("Insert/Effect"), QObject::tr("Edit the plug-in as an insert or effect")},
    };
    for (const auto& [name, title, toolTip] : cells) {
        auto* cell = new QRadioButton(title);
        cell->setObjectName(QString::fromLatin1(name));
        cell->setToolTip(toolTip);
        layout->addWidget(cell);
    }
    return matrix;
}

QLayout* makeTitle()
{
    auto* title = makeHeading(QStringLiteral("kvOrvantaLogic Tool"));
    title->setFont(titleFont(title->font(), 1));
    auto* layout = new QVBoxLayout;
    layout->setSpacing(0);
    layout->addWidget(title);
    layout->addWidget(makeLabel("mainTitle_Sub"));
    return layout;
}

QLayout* makeHeader()
{
    auto* layout = new QHBoxLayout;
    layout->setSpacing(14);
    layout->addLayout(makeTitle(), 1);
    layout->addWidget(makeModeSwitch());
    layout->addWidget(makeSeparator());
    addGroup(layout,
             {makeSymbolButton("undoButton", QObject::tr("Undo"), QObject::tr("Take back the last edit"), "undo"),
              makeSymbolButton("redoButton", QObject::tr("Redo"), QObject::tr("Make it again"), "redo")});
    layout->addWidget(makeSeparator());
    addGroup(layout, {makeButton("kvExportToPlist", QObject::tr("Save Mapping"),
                                 QObject::tr("Write the mapping into the plug-in's file and keep backups"), "save"),
                      makeButton("kvRecallOriginalMapping", QObject::tr("Recall Original"),
                                 QObject::tr("Put back the file as it was before the first save"), "recall-original"),
                      makeButton("kvRecallPreviousMapping", QObject::tr("Recall Previous"),
                                 QObject::tr("Put back the file as it was before the last save"), "recall-previous"),
                      makeButton("kvCreateChart", QObject::tr("Chart"),
                                 QObject::tr("Write the mapping as an HTML chart and open it"), "chart")});
    layout->addWidget(makeSeparator());
    layout->addWidget(makeButton("kvHelpMe", QObject::tr("Help"), QObject::tr("Brief instructions on use"), "help"));
    return layout;
}

QWidget* makePluginColumn()
{
    auto* heading = makeHeading(QObject::tr("Plugins"));
    auto* list = makeList("pluginTableView", heading->text());
    list->leaveTypingToTheWindow();
    QHBoxLayout* top = row({heading});
    top->addStretch(1);
    top->addWidget(makeButton("btnRunCheck", QObject::tr("Scan for plugins"),
                              QObject::tr("Look for plug-ins with a parameter order again"), "scan"));
    auto* column = new QWidget;
    auto* layout = new QVBoxLayout(column);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(top);
    layout->addWidget(list, 1);
    return column;
}

QWidget* makeParameterColumn()
{
    auto* heading = makeHeading(QObject::tr("Plugin Parameters"));
    auto* list = makeList("tablePlistOfSelectedPlugin", heading->text());
    list->leaveTypingToTheWindow();
    auto* search = new SearchField;
    search->setObjectName(QStringLiteral("parameterSearch"));
    search->setPlaceholderText(QObject::tr("Search parameters"));
    search->setAccessibleName(QObject::tr("Search parameters"));
    search->setList(list);
    auto* unmapped = new QCheckBox(QObject::tr("Not mapped yet"));
    unmapped->setObjectName(QStringLiteral("unmappedOnly"));
    unmapped->setToolTip(QObject::tr("Show only parameters that stand on no pot"));
    QHBoxLayout* top = row({heading});
    auto* readOut = makeLabel("mappedReadOut");
    readOut->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    top->addWidget(readOut, 1);
    QHBoxLayout* narrowing = row({search, unmapped});
    narrowing->setStretch(0, 1);
    auto* column = new QWidget;
    auto* layout = new QVBoxLayout(column);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(top);
    layout->addLayout(narrowing);
    layout->addWidget(list, 1);
    return column;
}

QWidget* makeLists()
{
    auto* lists = new QSplitter(Qt::Horizontal);
    lists->setObjectName(QStringLiteral("listsSplitter"));
    lists->addWidget(makePluginColumn());
    lists->addWidget(makeParameterColumn());
    lists->setChildrenCollapsible(false);
    lists->setStretchFactor(0, 3);
    lists->setStretchFactor(1, 4);
    tellPartsInOrder(lists);
    return lists;
}

QLayout* makePageControls()
{
    auto* layout = new QHBoxLayout;
    layout->setSpacing(10);
    addGroup(layout, {new QLabel(QObject::tr("Show page")),
                      makeSymbolButton("firstPageButtonPressed", QObject::tr("Show first page"),
                                       QObject::tr("Show the first page"), "page-first"),
                      makeSymbolButton("prevPageButtonPressed", QObject::tr("Show previous page"),
                                       QObject::tr("Show the page before"), "page-previous"),
                      makeSymbolButton("nextPageButtonPressed", QObject::tr("Show next page"),
                                       QObject::tr("Show the page after"), "page-next"),
                      makeSymbolButton("lastPageButtonPressed", QObject::tr("Show last page"),
                                       QObject::tr("Show the last page"), "page-last")});
    layout->addWidget(makeSeparator());
    addGroup(layout, {new QLabel(QObject::tr("Move page to")),
                      makeMoveButton("kvMovePage_First", QObject::tr("First"), QObject::tr("Move page to first"),
                                     QObject::tr("Exchange this page with the first one"), "move-first"),
                      makeMoveButton("kvMovePage_Prev", QObject::tr("Previous"), QObject::tr("Move page to previous"),
                                     QObject::tr("Exchange this page with the one before"), "move-previous"),
                      makeMoveButton("kvMovePage_Next", QObject::tr("Next"), QObject::tr("Move page to next"),
                                     QObject::tr("Exchange this page with the one after"), "move-next"),
                      makeMoveButton("kvMovePage_Last", QObject::tr("Last"), QObject::tr("Move page to last"),
                                     QObject::tr("Exchange this page with the last one"), "move-last")});
    layout->addWidget(makeSeparator());
    layout->addWidget(makeButton("newPageButtonPressed", QObject::tr("New Page"),
                                 QObject::tr("Add an empty page at the end"), "page-new"));
    layout->addStretch(1);
    // What takes something away stands apart.
    addGroup(layout, {makeButton("deletePageButtonPressed", QObject::tr("Delete Page"),
                                 QObject::tr("Delete the page shown"), "page-delete"),
                      makeButton("clearAllPagesButtonPressed", QObject::tr("Clear All"),
                                 QObject::tr("Empty the first page and make it the only one"), "clear-all")});
    return layout;
}

QLayout* makeStatusRow()
{
    auto* layout = new QHBoxLayout;
    layout->setSpacing(14);
    layout->addWidget(makeLabel("labelHelperDisplay"), 5);
    layout->addWidget(makeLabel("pageLimitWarning"), 0);
    auto* unsaved = makeLabel("unsavedReadOut");
    unsaved->setFont(boldFont(unsaved->font()));
    layout->addWidget(unsaved, 2);
    auto* path = makeLabel("labPluginPlistLocation", Qt::ElideMiddle);
    layout->addWidget(path, 4);
    layout->addWidget(makeSeparator());
    auto* signedIn = makeLabel("labLoggedInAs");
    signedIn->setMinimumWidth(120);
    layout->addWidget(signedIn, 1);
    addGroup(layout,
             {makeButton("kvLoginToCloudAccount", QObject::tr("Account"),
                         QObject::tr("Log in to the community library or ask for an account"), "account"),
              makeButton("kv_btn_cloudLibrary", QObject::tr("Share"), QObject::tr("Upload the saved mapping"), "share"),
              makeButton("kv_btn_cloudLibraryDownload", QObject::tr("Browse"),
                         QObject::tr("See what others shared for this plug-in"), "browse")});
    return layout;
}

QWidget* makeLowerView()
{
    auto* lower = new QWidget;
    auto* layout = new QVBoxLayout(lower);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* panel = new FrontPanel;
    panel->setObjectName(QStringLiteral("frontPanel"));
    layout->addWidget(panel, 1);
    layout->addWidget(new PageOverview(lower));
    layout->addLayout(makePageControls());
    return lower;
}

QWidget* makeViews()
{
    auto* views = new QSplitter(Qt::Vertical);
    views->setObjectName(QStringLiteral("viewsSplitter"));
    views->addWidget(makeLists());
    views->addWidget(makeLowerView());
    views->setChildrenCollapsible(false);
    views->setStretchFactor(0, 1);
    tellPartsInOrder(views);
    return views;
}

} // namespace

MainWindow::MainWindow()
{
    setObjectName(QStringLiteral("cwinMainWindow"));
    setWindowTitle(QStringLiteral("kvOrvantaLogic Tool"));

    makeMenus(*this);
    auto* content = new QWidget;
    auto* layout = new QVBoxLayout(content);
    layout->setContentsMargins(10, 8, 10, 8);
    layout->setSpacing(8);
    layout->addLayout(makeHeader());
    layout->addWidget(makeViews(), 1);
    layout->addLayout(makeStatusRow());
    setCentralWidget(content);
    constexpr QSize kUsual(1240, 770);
    constexpr QSize kFrame(16, 48); // about what the system draws around a window
    resize(kUsual.boundedTo(screen()->availableSize() - kFrame));
}

void MainWindow::keyPressEvent(QKeyEvent* event)
{
    auto* search = findChild<SearchField*>();
    if (!platform::qt::isTyping(*event) || search->hasFocus()) {
        QMainWindow::keyPressEvent(event);
        return;
    }
    search->setFocus(Qt::ShortcutFocusReason);
    QApplication::sendEvent(search, event);
}

} // namespace interface
