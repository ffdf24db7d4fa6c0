#include "app/interface/Interface.h"

#include "app/ViewController.h"
#include "app/interface/CommunityWindows.h"
#include "app/interface/DragData.h"
#include "app/interface/EditingView.h"
#include "app/interface/Keyboard.h"
#include "app/interface/MainWindow.h"
#include "app/interface/panel/FrontPanel.h"
#include "app/interface/panel/PageOverview.h"
#include "community/Listing.h"
#include "mapping/ParameterOrder.h"
#include "platform/qt/Bindings.h"
#include "platform/qt/RecordListView.h"
#include "platform/qt/RecordSort.h"
#include "platform/qt/RecordTableModel.h"
#include "platform/qt/Text.h"
#include "plugins/PluginScan.h"

#include <QAction>
#include <QButtonGroup>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>

#include <algorithm>
#include <initializer_list>

namespace interface {

namespace qt = platform::qt;
using platform::Button;
using platform::RadioMatrix;
using platform::TableView;
using platform::TextField;
using platform::Window;

namespace {

template <typename T>
struct OutletEntry {
    const char* name;
    void (Outlets::*set)(std::shared_ptr<T>);
};

using Action = void (ViewController::*)(ViewController::Sender);

struct ButtonEntry {
    const char* name;
    void (Outlets::*set)(std::shared_ptr<Button>);
    Action action;
};

struct ActionEntry {
    const char* name;
    Action action;
};

const OutletEntry<TextField> kTextFields[] = {
    {"lab_PageCurrentlyDisplayed", &Outlets::setLab_PageCurrentlyDisplayed},
    {"labKOScreen_Title", &Outlets::setLabKOScreen_Title},
    {"labPluginPlistLocation", &Outlets::setLabPluginPlistLocation},
    {"kvControl1", &Outlets::setKvControl1},
    {"kvControl2", &Outlets::setKvControl2},
    {"kvControl3", &Outlets::setKvControl3},
    {"kvControl4", &Outlets::setKvControl4},
    {"kvControl5", &Outlets::setKvControl5},
    {"kvControl6", &Outlets::setKvControl6},
    {"kvControl7", &Outlets::setKvControl7},
    {"kvControl8", &Outlets::setKvControl8},
    {"mainTitle_Sub", &Outlets::setMainTitle_Sub},
    {"labelHelperDisplay", &Outlets::setLabelHelperDisplay},
    {"labTotalPagesIndicator", &Outlets::setLabTotalPagesIndicator},
    {"pageLimitWarning", &Outlets::setPageLimitWarning},
    {"cwinUserName", &Outlets::setCwinUserName},
    {"cwinPinCode", &Outlets::setCwinPinCode},
    {"cwinUserNameNew", &Outlets::setCwinUserNameNew},
    {"cwinEmailAddrNew", &Outlets::setCwinEmailAddrNew},
    {"cwinUploadComments", &Outlets::setCwinUploadComments},
    {"cwinUploadedComments", &Outlets::setCwinUploadedComments},
};

// Buttons that an outlet refers to, and what each sends.
const ButtonEntry kButtons[] = {
    {"kvRotaryBtn1", &Outlets::setKvRotaryBtn1, &ViewController::kvRotBtn1_Pressed},
    {"kvRotaryBtn2", &Outlets::setKvRotaryBtn2, &ViewController::kvRotBtn2_Pressed},
    {"kvRotaryBtn3", &Outlets::setKvRotaryBtn3, &ViewController::kvRotBtn3_Pressed},
    {"kvRotaryBtn4", &Outlets::setKvRotaryBtn4, &ViewController::kvRotBtn4_Pressed},
    {"kvRotaryBtn5", &Outlets::setKvRotaryBtn5, &ViewController::kvRotBtn5_Pressed},
    {"kvRotaryBtn6", &Outlets::setKvRotaryBtn6, &ViewController::kvRotBtn6_Pressed},
    {"kvRotaryBtn7", &Outlets::setKvRotaryBtn7, &ViewController::kvRotBtn7_Pressed},
    {"kvRotaryBtn8", &Outlets::setKvRotaryBtn8, &ViewController::kvRotBtn8_Pressed},
    {"kv_btn_cloudLibrary", &Outlets::setKv_btn_cloudLibrary, &ViewController::kvCommunityLibrary},
    {"kv_btn_cloudLibraryDownload", &Outlets::setKv_btn_cloudLibraryDownload,
     &ViewController::kvCommunityLibraryDownload},
};

const OutletEntry<Window> kWindows[] = {
    {"cwinMainWindow", &Outlets::setCwinMainWindow},
    {"cwinDownloadWindow", &Outlets::setCwinDownloadWindow},
    {"cwinUploadWindow", &Outlets::setCwinUploadWindow},
    {"cwinCloudWindow", &Outlets::setCwinCloudWindow},
};

// What the other buttons and the menu items send; each carries its action's name.
const ActionEntry kActions[] = {
    {"btnRunCheck", &ViewController::btnRunCheck},
    {"prevPageButtonPressed", &ViewController::prevPageButtonPressed},
    {"nextPageButtonPressed", &ViewController::nextPageButtonPressed},
    {"firstPageButtonPressed", &ViewController::firstPageButtonPressed},
    {"lastPageButtonPressed", &ViewController::lastPageButtonPressed},
    {"newPageButtonPressed", &ViewController::newPageButtonPressed},
    {"deletePageButtonPressed", &ViewController::deletePageButtonPressed},
    {"clearAllPagesButtonPressed", &ViewController::clearAllPagesButtonPressed},
    {"kvExportToPlist", &ViewController::kvExportToPlist},
    {"kvRecallOriginalMapping", &ViewController::kvRecallOriginalMapping},
    {"kvRecallPreviousMapping", &ViewController::kvRecallPreviousMapping},
    {"kvCreateChart", &ViewController::kvCreateChart},
    {"kvLoginToCloudAccount", &ViewController::kvLoginToCloudAccount},
    {"cwinLoginAttempt", &ViewController::cwinLoginAttempt},
    {"cwinNewUserCreate", &ViewController::cwinNewUserCreate},
    {"kvCommunityUploadBtn", &ViewController::kvCommunityUploadBtn},
    {"kvCommunityLoadSelectedDownload", &ViewController::kvCommunityLoadSelectedDownload},
    {"kvHelpMe", &ViewController::kvHelpMe},
    {"undo", &ViewController::undo},
    {"undoButton", &ViewController::undo},
    {"redo", &ViewController::redo},
    {"redoButton", &ViewController::redo},
    {"kvMovePage_First", &ViewController::kvMovePage_First},
    {"kvMovePage_Last", &ViewController::kvMovePage_Last},
    {"kvMovePage_Prev", &ViewController::kvMovePage_Prev},
    {"kvMovePage_Next", &ViewController::kvMovePage_Next},
};

// Menu items that press a button which has a name of its own.
const std::pair<const char*, const char*> kItemsOfButtons[] = {
    {"kvRotBtn1_Pressed", "kvRotaryBtn1"},         {"kvRotBtn2_Pressed", "kvRotaryBtn2"},
    {"kvRotBtn3_Pressed", "kvRotaryBtn3"},         {"kvRotBtn4_Pressed", "kvRotaryBtn4"},
    {"kvRotBtn5_Pressed", "kvRotaryBtn5"},         {"kvRotBtn6_Pressed", "kvRotaryBtn6"},
    {"kvRotBtn7_Pressed", "kvRotaryBtn7"},         {"kvRotBtn8_Pressed", "kvRotaryBtn8"},
    {"kvCommunityLibrary", "kv_btn_cloudLibrary"}, {"kvCommunityLibraryDownload", "kv_btn_cloudLibraryDownload"},
    {"modeInstrument", "kvPluginMode_1"},          {"modeInsertEffect", "kvPluginMode_0"},
    {"unmappedOnlyItem", "unmappedOnly"},
};

constexpr int kCommentsWidth = 320;
/// No cell shows more.
constexpr std::size_t kMostPotsTold = 40;

void bindTextField(const std::shared_ptr<TextField>& field, QWidget* widget)
{
    if (auto* label = qobject_cast<QLabel*>(widget)) {
        field->stringValue.set(label->text().toStdString()); // the layout's own text counts until one is set
        qt::bind(field, label);
    } else if (auto* line = qobject_cast<QLineEdit*>(widget)) {
        qt::bind(field, line);
    } else if (auto* text = qobject_cast<QPlainTextEdit*>(widget)) {
        qt::bind(field, text);
    }
}

std::vector<qt::RecordColumn> sharedColumns(const std::vector<platform::Record>& entries)
{
    std::vector<qt::RecordColumn> columns;
    for (const auto& [key, title] : community::columnsOf(entries))
        columns.push_back({qt::toQt(title), key});
    return columns;
}

/// The column of the names takes what room there is; the others begin with these widths.
void giveRoomTo(int column, QHeaderView* header, std::initializer_list<std::pair<int, int>> widths)
{
    header->setStretchLastSection(false);
    header->setSectionResizeMode(column, QHeaderView::Stretch);
    for (const auto& [other, width] : widths)
        header->resizeSection(other, width);
}

void showProgress(QProgressBar* bar, const platform::DownloadProgress& progress)
{
    bar->setVisible(progress.running > 0);
    // Without an end the bar only says that something goes on. It counts in whole KiB, which an int holds.
    bar->setMaximum(static_cast<int>(progress.expected >> 10));
    bar->setValue(static_cast<int>(progress.received >> 10));
}

} // namespace

Interface::Interface(ViewController& controller) : controller_(controller), loggedInAs_(std::make_shared<TextField>())
{
    windows_.emplace_back(new MainWindow);
    windows_.emplace_back(makeAccountWindow());
    windows_.emplace_back(makeUploadWindow());
    windows_.emplace_back(makeDownloadWindow());
    nameObjects();
    connectTextFields();
    connectButtons();
    connectWindows();
    connectModeSwitch();
    connectLists();
    connectActions();
    connectPanel();
    tellShortcuts();
    editing_ = std::make_unique<EditingView>(controller_, *this);
    connections_.push_back(controller_.downloadProgress().onChange(
        [bar = find<QProgressBar>("downloadProgress")](const auto& progress) { showProgress(bar, progress); }));
}

Interface::~Interface()
{
    controller_.setLabLoggedInAs(nullptr);
}

void Interface::nameObjects()
{
    for (const auto& window : windows_) {
        named_.emplace(window->objectName().toStdString(), window.get());
        for (QObject* object : window->findChildren<QObject*>()) {
            if (!object->objectName().isEmpty())
                named_.emplace(object->objectName().toStdString(), object);
        }
    }
}

void Interface::connectTextFields()
{
    for (const auto& [name, set] : kTextFields) {
        auto field = std::make_shared<TextField>();
        bindTextField(field, find<QWidget>(name));
        (controller_.*set)(std::move(field));
    }
    bindTextField(loggedInAs_, find<QWidget>("labLoggedInAs"));
    controller_.setLabLoggedInAs(loggedInAs_.get());
}

void Interface::connectButtons()
{
    for (const auto& entry : kButtons) {
        auto button = std::make_shared<Button>();
        qt::bind(button, find<QAbstractButton>(entry.name));
        connections_.push_back(
            button->pressed.connect([this, action = entry.action] { (controller_.*action)(nullptr); }));
        (controller_.*entry.set)(std::move(button));
    }
    controller_.kv_btn_cloudLibrary()->enabled.set(false); // until somebody is logged in
}

void Interface::connectWindows()
{
    for (const auto& [name, set] : kWindows) {
        auto window = std::make_shared<Window>();
        qt::bind(window, find<QWidget>(name));
        (controller_.*set)(std::move(window));
    }
}

void Interface::connectModeSwitch()
{
    auto* cells = new QButtonGroup(find<QWidget>("kvPluginMode"));
    for (const std::int32_t tag : RadioMatrix::kTags)
        cells->addButton(find<QAbstractButton>(qPrintable(QStringLiteral("kvPluginMode_%1").arg(tag))), tag);
    auto matrix = std::make_shared<RadioMatrix>();
    qt::bind(matrix, cells);
    connections_.push_back(
        matrix->cellChosen.connect([this] { controller_.kvPluginMode_Changed(controller_.kvPluginMode()); }));
    controller_.setKvPluginMode(std::move(matrix));
}

void Interface::connectLists()
{
    const auto connectList = [this](const char* viewName, const char* modelName,
                                    const std::shared_ptr<platform::ArrayController>& rows,
                                    std::vector<qt::RecordColumn> columns, std::string toolTipKey, auto action) {
        auto* view = find<qt::RecordListView>(viewName);
        auto* model = new qt::RecordTableModel(rows, std::move(columns), std::move(toolTipKey), view);
        model->setObjectName(QString::fromLatin1(modelName));
        view->setModel(model);
        auto table = std::make_shared<TableView>();
        connections_.push_back(table->rowChosen.connect([this, action] { (controller_.*action)(nullptr); }));
        view->follow(rows, table);
        return table;
    };

    const auto plugins = std::make_shared<platform::ArrayController>();
    controller_.setMyArrayController(plugins);
    controller_.setPluginTableView(connectList("pluginTableView", "myArrayController", plugins,
                                               {{QObject::tr("Plugin"), plugins::kPlugin},
                                                {QObject::tr("Type"), plugins::kType},
                                                {QObject::tr("State"), plugins::kState}},
                                               plugins::kFileLocation, &ViewController::tablePluginSelected));
    auto* pluginView = find<qt::RecordListView>("pluginTableView");
    pluginView->setSortingEnabled(true);
    pluginView->sortByColumn(0, Qt::AscendingOrder);
    giveRoomTo(0, pluginView->header(), {{1, 160}, {2, 80}});

    const auto parameters = std::make_shared<platform::ArrayController>();
    controller_.setArrayControllerPlistSelected(parameters);
    controller_.setTablePlistOfSelectedPlugin(
        connectList("tablePlistOfSelectedPlugin", "arrayControllerPlistSelected", parameters,
                    {{QObject::tr("Number"), mapping::kParamNum},
                     {QObject::tr("Parameter"), mapping::kParameter},
                     {QObject::tr("On pots"), {}, [this](const auto& record) { return potsOf(record); }}},
                    {}, &ViewController::tablePlistView));
    auto* parameterView = find<qt::RecordListView>("tablePlistOfSelectedPlugin");
    giveRoomTo(1, parameterView->header(), {{0, 80}, {2, 240}});
    static_cast<qt::RecordTableModel*>(parameterView->model())->setDragType(QString::fromLatin1(kParameterDrag));
    parameterView->setDragEnabled(true);
    qt::bindFilter(parameters, find<QLineEdit>("parameterSearch"));

    const auto shared = std::make_shared<platform::ArrayController>();
    controller_.setArrayController_downloadList(shared);
    controller_.setCwinPlistAvailable(connectList("cwinPlistAvailable", "arrayController_downloadList", shared, {}, {},
                                                  &ViewController::cwin_DownloadAvalableHighlighted));
    auto* sharedView = find<qt::RecordListView>("cwinPlistAvailable");
    static_cast<qt::RecordTableModel*>(sharedView->model())->setColumns(sharedColumns);
    sharedView->header()->setDefaultSectionSize(105);
    connections_.push_back(
        shared->arrangedChanged.connect([sharedView] { sharedView->header()->resizeSection(0, kCommentsWidth); }));
}

QString Interface::potsOf(const platform::Record& parameter) const
{
    if (mapping::isEmptyEntry(parameter))
        return QObject::tr("clears a pot");
    auto positions = controller_.mappedPots().positionsOf(parameter);
    const bool isCut = positions.size() > kMostPotsTold;
    positions.resize(std::min(positions.size(), kMostPotsTold));
    return qt::toQt(mapping::potsText(positions)) + (isCut ? QStringLiteral(", \u2026") : QString());
}

void Interface::connectActions()
{
    for (const auto& entry : kActions) {
        const auto send = [this, action = entry.action] { (controller_.*action)(nullptr); };
        if (auto* button = find<QAbstractButton>(entry.name))
            QObject::connect(button, &QAbstractButton::clicked, button, send);
        if (auto* item = find<QAction>(entry.name))
            QObject::connect(item, &QAction::triggered, item, send);
    }
    connections_.push_back(controller_.kv_btn_cloudLibrary()->enabled.onChange(
        [item = find<QAction>("kvCommunityLibrary")](bool enabled) { item->setEnabled(enabled); }));
    find<QAction>("kvCommunityLibrary")->setEnabled(controller_.kv_btn_cloudLibrary()->enabled.get());
    for (const auto& [itemName, buttonName] : kItemsOfButtons) {
        auto* item = find<QAction>(itemName);
        auto* button = find<QAbstractButton>(buttonName);
        QObject::connect(item, &QAction::triggered, button, &QAbstractButton::click);
        if (button->isCheckable())
            QObject::connect(button, &QAbstractButton::toggled, item, &QAction::setChecked);
    }
    auto* search = find<QLineEdit>("parameterSearch");
    QObject::connect(find<QAction>("findParameter"), &QAction::triggered, search, [search] {
        search->setFocus(Qt::ShortcutFocusReason);
        search->selectAll();
    });
}

void Interface::connectPanel()
{
    auto* panel = find<FrontPanel>("frontPanel");
    // The dragged row is the selected one, so a drop is a press.
    QObject::connect(panel, &FrontPanel::parameterDropped, panel,
                     [this](int pot) { controller_.clickControl(pot - 1); });
    QObject::connect(panel, &FrontPanel::potDropped, panel,
                     [this](int from, int onto) { controller_.exchangeControls(from - 1, onto - 1); });
    auto* overview = find<PageOverview>("pageOverview");
    QObject::connect(overview, &PageOverview::pageChosen, overview, [this](int page) { controller_.showPage(page); });
    connectPotKeys(*this);
}

void Interface::tellShortcuts()
{
    for (const QAction* item : mainWindow()->findChildren<QAction*>()) {
        if (item->shortcut().isEmpty())
            continue;
        const char* name = nullptr;
        for (const auto& [itemName, buttonName] : kItemsOfButtons) {
            if (item->objectName() == QLatin1String(itemName))
                name = buttonName;
        }
        if (auto* button = find<QAbstractButton>(name ? name : qPrintable(item->objectName())))
            button->setToolTip(withShortcut(button->toolTip(), *item));
    }
}

QString Interface::withShortcut(const QString& toolTip, const QAction& item)
{
    return QStringLiteral("%1 (%2)").arg(toolTip, item.shortcut().toString(QKeySequence::NativeText));
}

} // namespace interface
