#include "app/interface/MainWindow.h"

#include "app/interface/Actions.h"
#include "app/interface/DraftBar.h"
#include "app/interface/Fonts.h"
#include "app/interface/GoToPage.h"
#include "app/interface/Menus.h"
#include "app/interface/SearchField.h"
#include "app/interface/Widgets.h"
#include "app/interface/panel/FrontPanel.h"
#include "app/interface/panel/PageOverview.h"
#include "mapping/ParameterOrder.h"
#include "platform/controls/ArrayController.h"
#include "platform/qt/ElidedLabel.h"
#include "platform/qt/RecordListView.h"
#include "platform/qt/Typing.h"
#include "plugins/PluginScan.h"

#include <QAction>
#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QSplitter>

#include <algorithm>
#include <initializer_list>
#include <memory>
#include <utility>

namespace interface {

namespace {

QHBoxLayout* row(std::initializer_list<QWidget*> widgets)
{
    auto* layout = new QHBoxLayout;
    for (QWidget* widget : widgets)
        layout->addWidget(widget);
    return layout;
}

/// Adds the buttons of a row, after a caption if they have one, with little room between them so that they read as one
/// group.
void addGroup(QHBoxLayout* layout, ButtonRow buttons, const QString& caption = {})
{
    auto* group = new QHBoxLayout;
    group->setSpacing(4);
    if (!caption.isEmpty())
        group->addWidget(new QLabel(caption));
    for (const Action& action : Action::all()) {
        if (action.row == buttons)
            group->addWidget(makeButton(action));
    }
    layout->addLayout(group);
}

QSplitter* makeSplitter(Qt::Orientation orientation, const char* name)
{
    auto* splitter = new QSplitter(orientation);
    splitter->setObjectName(QLatin1String(name));
    splitter->setHandleWidth(std::max(splitter->handleWidth(), 4)); // some styles' are a line
    return splitter;
}

/// A splitter keeps its parts the wrong way round among its children, which is how a screen reader would tell them.
void tellPartsInOrder(const QSplitter* splitter)
{
    for (int part = splitter->count() - 1; part >= 0; --part)
        splitter->widget(part)->lower();
}

QWidget* makeModeSwitch()
{
    auto* matrix = new QWidget;
    matrix->setObjectName(QStringLiteral("kvPluginMode"));
    matrix->setAccessibleName(QObject::tr("Editing mode"));
    auto* layout = new QHBoxLayout(matrix);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* cells = new QButtonGroup(matrix);
    for (const auto& [tag, action] : {std::pair{1, "modeInstrument"}, std::pair{0, "modeInsertEffect"}}) {
        auto* cell = new QRadioButton;
        label(*cell, Action::named(action));
        cells->addButton(cell, tag);
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
    addGroup(layout, ButtonRow::history);
    layout->addWidget(makeSeparator());
    addGroup(layout, ButtonRow::mapping);
    layout->addWidget(makeSeparator());
    addGroup(layout, ButtonRow::help);
    return layout;
}

/// Lists that stand side by side begin at one height, whether there is a button above them or none.
QWidget* makeColumn(QLayout* top, QHBoxLayout* narrowing, QWidget* list)
{
    const std::unique_ptr<QPushButton> scan(makeButton(Action::named("btnRunCheck")));
    narrowing->addStrut(scan->sizeHint().height());
    auto* column = new QWidget;
    auto* layout = new QVBoxLayout(column);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(top);
    layout->addLayout(narrowing);
    layout->addWidget(list, 1);
    return column;
}

QWidget* makePluginColumn()
{
    auto* heading = makeHeading(QObject::tr("Plug-ins"));
    auto* list = makeList("pluginTableView", "myArrayController", heading->text(),
                          {{QObject::tr("Plug-in"), plugins::kPlugin},
                           {QObject::tr("Type"), plugins::kType, 160},
                           {QObject::tr("State"), plugins::kState, 80}},
                          plugins::kFileLocation);
    list->records().setSearchedKeys({plugins::kPlugin, plugins::kType});
    list->setSortingEnabled(true);
    list->sortByColumn(0, Qt::AscendingOrder);
    list->chooseDeliberately();
    list->leaveTypingToTheWindow();
    auto* search = new SearchField;
    search->setObjectName(QStringLiteral("pluginSearch"));
    search->setList(list, QObject::tr("Search plug-ins"));
    search->leadIntoList();
    QHBoxLayout* top = row({heading, makeLabel("pluginReadOut")});
    top->setSpacing(14);
    top->setStretch(1, 1);
    QHBoxLayout* narrowing = row({search});
    narrowing->setStretch(0, 1);
    addGroup(narrowing, ButtonRow::scan);
    return makeColumn(top, narrowing, list);
}

/// A press while searching is meant for what was found, never for the blank entry, which every search leaves on top.
void selectFound(platform::ArrayController& parameters)
{
    const platform::Record* selected = parameters.selection();
    if (parameters.filterText.get().empty() || (selected && !mapping::isEmptyEntry(*selected)))
        return;
    if (const auto& rows = parameters.selectedRows(); rows.size() > 1)
        parameters.setSelectedRows(rows, rows[1]); // found, too
    else
        parameters.setSelectionIndex(1); // none when nothing was found
}

QWidget* makeParameterColumn()
{
    auto* heading = makeHeading(QObject::tr("Plugin Parameters"));
    auto* list = makeList("tablePlistOfSelectedPlugin", "arrayControllerPlistSelected", heading->text(),
                          {{QObject::tr("Number"), mapping::kParamNum, 80},
                           {QObject::tr("Parameter"), mapping::kParameter},
                           {QObject::tr("On pots"), {}, 240}});
    list->selectSeveral();
    list->leaveTypingToTheWindow();
    auto* search = new SearchField;
    search->setObjectName(QStringLiteral("parameterSearch"));
    search->setList(list, QObject::tr("Search parameters"));
    QObject::connect(search, &QLineEdit::textChanged, list, [list] { selectFound(*list->rows()); });
    auto* unmapped = new QCheckBox;
    label(*unmapped, Action::named("unmappedOnlyItem"));
    auto* readOut = makeLabel("mappedReadOut");
    readOut->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    QHBoxLayout* top = row({heading, readOut});
    top->setStretch(1, 1);
    QHBoxLayout* narrowing = row({search, unmapped});
    narrowing->setStretch(0, 1);
    return makeColumn(top, narrowing, list);
}

QWidget* makeLists()
{
    auto* lists = makeSplitter(Qt::Horizontal, "listsSplitter");
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
    addGroup(layout, ButtonRow::showPage, QObject::tr("Show page"));
    layout->addWidget(makeSeparator());
    addGroup(layout, ButtonRow::movePage, QObject::tr("Exchange with"));
    layout->addWidget(makeSeparator());
    addGroup(layout, ButtonRow::newPage);
    layout->addStretch(1);
    // What takes something away stands apart.
    addGroup(layout, ButtonRow::removePage);
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
    unsaved->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed); // the others are shortened first
    layout->addWidget(unsaved);
    auto* path = makeLabel("labPluginPlistLocation", Qt::ElideMiddle);
    layout->addWidget(path, 4);
    layout->addWidget(makeSeparator());
    auto* signedIn = makeLabel("labLoggedInAs");
    signedIn->setMinimumWidth(120);
    layout->addWidget(signedIn, 1);
    addGroup(layout, ButtonRow::community);
    return layout;
}

/// Tells what stands behind the last page, and takes it away; hidden while nothing does.
QWidget* makeLeftoverRow()
{
    auto* leftovers = new QWidget;
    auto* layout = new QHBoxLayout(leftovers);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(makeLabel("leftoverHint"), 1);
    addGroup(layout, ButtonRow::leftovers);
    leftovers->hide();
    return leftovers;
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
    auto* difference = makeLabel("differenceHint"); // hidden while nothing is compared
    difference->hide();
    layout->addWidget(difference);
    layout->addWidget(makeLeftoverRow());
    layout->addLayout(makePageControls());
    return lower;
}

QWidget* makeViews()
{
    auto* views = makeSplitter(Qt::Vertical, "viewsSplitter");
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
    layout->addWidget(new DraftBar);
    layout->addWidget(makeViews(), 1);
    auto* placed = makeLabel("placedHint");
    placed->hide();
    layout->addWidget(placed); // a line of its own, with room for names
    layout->addLayout(makeStatusRow());
    setCentralWidget(content);
    new GoToPage(findChild<PageOverview*>(), content);
    connect(findChild<QAction*>(QStringLiteral("findParameter")), &QAction::triggered, this, [this] {
        auto* search = findChild<SearchField*>(QStringLiteral("parameterSearch"));
        search->setFocus(Qt::ShortcutFocusReason);
        search->selectAll();
    });
    findChild<QWidget*>(QStringLiteral("pluginTableView"))->setFocus(Qt::OtherFocusReason); // where the work begins
    onWindowInFront("closeWindow", [](QWidget& front) { front.close(); });
    onWindowInFront("minimiseWindow", [](QWidget& front) { front.showMinimized(); });
    onWindowInFront("zoomWindow",
                    [](QWidget& front) { front.setWindowState(front.windowState() ^ Qt::WindowMaximized); });
    constexpr QSize kUsual(1240, 770);
    constexpr QSize kFrame(16, 48); // about what the system draws around a window
    resize(kUsual.boundedTo(screen()->availableSize() - kFrame));
}

void MainWindow::onWindowInFront(const char* item, void (*work)(QWidget& front))
{
    connect(findChild<QAction*>(QLatin1String(item)), &QAction::triggered, this, [work] {
        if (QWidget* front = QApplication::activeWindow())
            work(*front);
    });
}

void MainWindow::keyPressEvent(QKeyEvent* event)
{
    const QWidget* focused = focusWidget();
    if (!platform::qt::isTyping(*event) || qobject_cast<const SearchField*>(focused)) {
        QMainWindow::keyPressEvent(event);
        return;
    }
    const bool isInPlugins = focused && focused->objectName() == QLatin1String("pluginTableView");
    auto* search = findChild<SearchField*>(QLatin1String(isInPlugins ? "pluginSearch" : "parameterSearch"));
    search->setFocus(Qt::ShortcutFocusReason);
    QApplication::sendEvent(search, event);
}

} // namespace interface
