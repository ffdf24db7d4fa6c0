#include "app/interface/MainWindow.h"

#include "app/interface/Actions.h"
#include "app/interface/DraftBar.h"
#include "app/interface/FittingRow.h"
#include "app/interface/Fonts.h"
#include "app/interface/GoToPage.h"
#include "app/interface/Menus.h"
#include "app/interface/RowButton.h"
#include "app/interface/SearchField.h"
#include "app/interface/Widgets.h"
#include "app/interface/panel/FrontPanel.h"
#include "app/interface/panel/PageOverview.h"
#include "app/interface/panel/PanelColumn.h"
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
#include <QRadioButton>
#include <QScreen>
#include <QSplitter>

#include <algorithm>
#include <initializer_list>
#include <memory>
#include <utility>

namespace interface {

namespace {

constexpr int kBetweenGroups = 14;
constexpr int kBetweenParts = 10;
const QString kMakerLike(20, QLatin1Char('x'));
const QString kPotsLike(28, QLatin1Char('0'));

QHBoxLayout* row(std::initializer_list<QWidget*> widgets)
{
    auto* layout = new QHBoxLayout;
    for (QWidget* widget : widgets)
        layout->addWidget(widget);
    return layout;
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

QWidget* makeTitle()
{
    auto* heading = makeHeading(QStringLiteral("kvOrvantaLogic Tool"));
    heading->setFont(titleFont(heading->font(), 1));
    auto* title = new QWidget;
    auto* layout = new QVBoxLayout(title);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(heading, 0, Qt::AlignLeading);
    layout->addWidget(makeLabel("mainTitle_Sub"));
    return title;
}

QWidget* makeHeader()
{
    auto* header = new FittingRow(kBetweenGroups, "moreOfMapping", QObject::tr("More for the mapping"));
    header->add(makeTitle(), 1);
    header->add(makeModeSwitch());
    header->addSeparator();
    header->addGroup(ButtonRow::history);
    header->addSeparator();
    header->addGroup(ButtonRow::saving); // apart, to be in words for longest
    header->addGroup(ButtonRow::mapping);
    header->addSeparator();
    header->addGroup(ButtonRow::help);
    return header;
}

/// Lists that stand side by side begin at one height, whether there is a button above them or none.
QWidget* makeColumn(QLayout* top, QHBoxLayout* narrowing, QWidget* list)
{
    const std::unique_ptr<RowButton> scan(makeButton(Action::named("btnRunCheck")));
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
                           {QObject::tr("Type"), plugins::kType, kMakerLike, true},
                           {QObject::tr("State"), plugins::kState, QStringLiteral("Editable")}},
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
    auto* narrowing = new FittingRow(kBetweenParts, "moreOfPlugins", QObject::tr("More for plug-ins"));
    narrowing->add(search, 1);
    narrowing->addGroup(ButtonRow::scan);
    return makeColumn(top, row({narrowing}), list);
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
                          {{QObject::tr("Number"), mapping::kParamNum, QStringLiteral("00000")},
                           {QObject::tr("Parameter"), mapping::kParameter},
                           {QObject::tr("On pots"), {}, kPotsLike, true}});
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
    lists->setContentsMargins(0, 0, lists->isRightToLeft() ? 1 : 0, 0); // by which Qt places the parts too far there
    lists->setStretchFactor(0, 3);
    lists->setStretchFactor(1, 4);
    tellPartsInOrder(lists);
    return lists;
}

QWidget* makePageControls()
{
    auto* controls = new FittingRow(kBetweenParts, "moreOfPages", QObject::tr("More for pages"));
    controls->addGroup(ButtonRow::showPage, QObject::tr("Show page"));
    controls->addSeparator();
    controls->addGroup(ButtonRow::movePage, QObject::tr("Exchange with"));
    controls->addSeparator();
    controls->addGroup(ButtonRow::newPage);
    controls->addStretch();
    // What takes something away stands apart.
    controls->addGroup(ButtonRow::removePage);
    return controls;
}

/// The plug-in's file, and what shows it where it lies, beside each other however short the path is.
QWidget* makePath()
{
    auto* box = new QWidget;
    auto* layout = new QHBoxLayout(box);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(4);
    layout->addWidget(makeButton(Action::named("revealFile")));
    layout->addWidget(makeLabel("labPluginPlistLocation", Qt::ElideLeft), 1); // its end names the plug-in
    return box;
}

QWidget* makeStatusRow()
{
    auto* status = new FittingRow(kBetweenGroups, "moreOfCommunity", QObject::tr("More for the community library"));
    auto* help = makeLabel("labelHelperDisplay");
    help->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed); // room that it does not need is the path's
    status->add(help, 4);
    status->add(makeLabel("pageLimitWarning"));
    auto* unsaved = makeLabel("unsavedReadOut");
    unsaved->setFont(boldFont(unsaved->font()));
    unsaved->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed); // the others are shortened first
    status->add(unsaved);
    status->add(makePath(), 5);
    auto* signedIn = makeLabel("labLoggedInAs");
    signedIn->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
    signedIn->setMinimumWidth(14 * signedIn->fontMetrics().averageCharWidth()); // however little room there is
    status->addSeparator();
    status->add(signedIn); // whole before the path is, whose end is enough
    status->addGroup(ButtonRow::community);
    return status;
}

/// Tells what stands behind the last page, and takes it away; hidden while nothing does.
QWidget* makeLeftoverRow()
{
    auto* leftovers = new FittingRow(kBetweenParts, "moreOfLeftovers", QObject::tr("More for what is left behind"));
    leftovers->add(makeLabel("leftoverHint"), 1);
    leftovers->addGroup(ButtonRow::leftovers);
    leftovers->hide();
    return leftovers;
}

QWidget* makeLowerView()
{
    auto* panel = new FrontPanel;
    panel->setObjectName(QStringLiteral("frontPanel"));
    auto* lower = new QWidget;
    auto* layout = new PanelColumn(panel, new PageOverview, lower);
    auto* difference = makeLabel("differenceHint"); // hidden while nothing is compared
    difference->hide();
    layout->addWidget(difference);
    layout->addWidget(makeLeftoverRow());
    layout->addWidget(makePageControls());
    return lower;
}

QWidget* makeViews()
{
    auto* views = makeSplitter(Qt::Vertical, "viewsSplitter");
    views->addWidget(makeLists());
    views->addWidget(makeLowerView());
    views->setChildrenCollapsible(false);
    for (const int part : {0, 1})
        views->setStretchFactor(part, 1);
    views->setSizes({5000, 5000}); // halves of whatever height there is
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
    layout->addWidget(makeHeader());
    layout->addWidget(new DraftBar);
    layout->addWidget(makeViews(), 1);
    auto* placed = makeLabel("placedHint");
    placed->hide();
    layout->addWidget(placed); // a line of its own, with room for names
    layout->addWidget(makeStatusRow());
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
