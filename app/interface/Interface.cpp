#include "app/interface/Interface.h"

#include "app/ViewController.h"
#include "app/interface/CommunityWindows.h"
#include "app/interface/MainWindow.h"
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
    {"kvMovePage_First", &ViewController::kvMovePage_First},
    {"kvMovePage_Last", &ViewController::kvMovePage_Last},
    {"kvMovePage_Prev", &ViewController::kvMovePage_Prev},
    {"kvMovePage_Next", &ViewController::kvMovePage_Next},
};

// What needs a mapping, and what needs its plug-in to be the selected row too.
const char* const kNeedMapping[] = {
    "firstPageButtonPressed",
    "prevPageButtonPressed",
    "nextPageButtonPressed",
    "lastPageButtonPressed",
    "kvMovePage_First",
    "kvMovePage_Prev",
    "kvMovePage_Next",
    "kvMovePage_Last",
    "newPageButtonPressed",
    "deletePageButtonPressed",
    "clearAllPagesButtonPressed",
    "kvExportToPlist",
};
const char* const kNeedPlugin[] = {
    "kvRecallOriginalMapping",
    "kvRecallPreviousMapping",
    "kvCreateChart",
    "kvPluginMode",
};

constexpr int kCommentsWidth = 320;

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
    connectTextFields();
    connectButtons();
    connectWindows();
    connectModeSwitch();
    connectLists();
    connectActions();
    followEditing();
}

Interface::~Interface()
{
    controller_.setLabLoggedInAs(nullptr);
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
    pluginView->header()->resizeSection(0, 230);
    pluginView->header()->resizeSection(1, 150);

    const auto parameters = std::make_shared<platform::ArrayController>();
    parameters->setArrangement(qt::matchingAny({mapping::kParamNum, mapping::kParameter}));
    controller_.setArrayControllerPlistSelected(parameters);
    controller_.setTablePlistOfSelectedPlugin(
        connectList("tablePlistOfSelectedPlugin", "arrayControllerPlistSelected", parameters,
                    {{QObject::tr("Number"), mapping::kParamNum}, {QObject::tr("Parameter"), mapping::kParameter}}, {},
                    &ViewController::tablePlistView));
    find<qt::RecordListView>("tablePlistOfSelectedPlugin")->header()->resizeSection(0, 80);
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

void Interface::connectActions()
{
    for (const auto& entry : kActions) {
        const auto send = [this, action = entry.action] { (controller_.*action)(nullptr); };
        if (auto* button = find<QAbstractButton>(entry.name))
            QObject::connect(button, &QAbstractButton::clicked, button, send);
        if (auto* item = find<QAction>(entry.name))
            QObject::connect(item, &QAction::triggered, item, send);
    }
}

void Interface::followEditing()
{
    connections_.push_back(
        controller_.labPluginPlistLocation()->stringValue.onChange([this](const std::string&) { enableEditing(); }));
    connections_.push_back(controller_.myArrayController()->selectionChanged.connect([this] { enableEditing(); }));
    connections_.push_back(controller_.downloadProgress().onChange(
        [bar = find<QProgressBar>("downloadProgress")](const auto& progress) { showProgress(bar, progress); }));
    enableEditing();
}

void Interface::enableEditing()
{
    const bool hasMapping = !controller_.labPluginPlistLocation()->stringValue.get().empty();
    const bool hasPlugin = hasMapping && controller_.myArrayController()->selection() != nullptr;
    const auto enable = [this](const char* name, bool enabled) {
        find<QWidget>(name)->setEnabled(enabled);
        if (auto* item = find<QAction>(name))
            item->setEnabled(enabled);
    };
    for (const char* name : kNeedMapping)
        enable(name, hasMapping);
    for (const char* name : kNeedPlugin)
        enable(name, hasPlugin);
    for (const auto& pot : {controller_.kvRotaryBtn1(), controller_.kvRotaryBtn2(), controller_.kvRotaryBtn3(),
                            controller_.kvRotaryBtn4(), controller_.kvRotaryBtn5(), controller_.kvRotaryBtn6(),
                            controller_.kvRotaryBtn7(), controller_.kvRotaryBtn8()})
        pot->enabled.set(hasPlugin);
}

} // namespace interface
