#include "app/interface/Interface.h"

#include "app/ViewController.h"
#include "app/interface/Actions.h"
#include "app/interface/CommunityWindows.h"
#include "app/interface/ComparisonView.h"
#include "app/interface/ContextMenus.h"
#include "app/interface/EditingView.h"
#include "app/interface/GoToPage.h"
#include "app/interface/ListsView.h"
#include "app/interface/MainWindow.h"
#include "app/interface/PreviewView.h"
#include "app/interface/panel/FrontPanel.h"
#include "app/interface/panel/PageDrags.h"
#include "app/interface/panel/PageOverview.h"
#include "app/interface/panel/Pot.h"
#include "mapping/EditingState.h"
#include "panel/Finding.h"
#include "panel/Pages.h"
#include "platform/qt/Bindings.h"
#include "platform/qt/LongText.h"
#include "platform/qt/RecordListView.h"
#include "platform/qt/RecordSort.h"
#include "platform/qt/Text.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QButtonGroup>
#include <QKeySequence>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QShortcut>

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

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

struct ListEntry {
    const char* name;
    void (Outlets::*setRows)(std::shared_ptr<platform::ArrayController>);
    void (Outlets::*setTable)(std::shared_ptr<TableView>);
    Action::Call rowChosen;
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

const OutletEntry<Button> kButtons[] = {
    {"kvRotaryBtn1", &Outlets::setKvRotaryBtn1},
    {"kvRotaryBtn2", &Outlets::setKvRotaryBtn2},
    {"kvRotaryBtn3", &Outlets::setKvRotaryBtn3},
    {"kvRotaryBtn4", &Outlets::setKvRotaryBtn4},
    {"kvRotaryBtn5", &Outlets::setKvRotaryBtn5},
    {"kvRotaryBtn6", &Outlets::setKvRotaryBtn6},
    {"kvRotaryBtn7", &Outlets::setKvRotaryBtn7},
    {"kvRotaryBtn8", &Outlets::setKvRotaryBtn8},
    {"kv_btn_cloudLibrary", &Outlets::setKv_btn_cloudLibrary},
    {"kv_btn_cloudLibraryDownload", &Outlets::setKv_btn_cloudLibraryDownload},
};

const ListEntry kLists[] = {
    {"pluginTableView", &Outlets::setMyArrayController, &Outlets::setPluginTableView,
     &ViewController::tablePluginSelected},
    {"tablePlistOfSelectedPlugin", &Outlets::setArrayControllerPlistSelected, &Outlets::setTablePlistOfSelectedPlugin,
     &ViewController::tablePlistView},
    {"cwinPlistAvailable", &Outlets::setArrayController_downloadList, &Outlets::setCwinPlistAvailable,
     &ViewController::cwin_DownloadAvalableHighlighted},
};

const OutletEntry<Window> kWindows[] = {
    {"cwinMainWindow", &Outlets::setCwinMainWindow},
    {"cwinDownloadWindow", &Outlets::setCwinDownloadWindow},
    {"cwinUploadWindow", &Outlets::setCwinUploadWindow},
    {"cwinCloudWindow", &Outlets::setCwinCloudWindow},
};

/// Where plain keys work.
const std::pair<Places, const char*> kPlaces[] = {
    {kOnPots, "frontPanel"}, {kOnTiles, "pageOverview"}, {kOnParameters, "tablePlistOfSelectedPlugin"}};

void bindTextField(const std::shared_ptr<TextField>& field, QWidget* widget)
{
    if (auto* label = qobject_cast<QLabel*>(widget)) {
        field->stringValue.set(label->text().toStdString()); // the layout's own text counts until one is set
        qt::bind(field, label);
    } else if (auto* line = qobject_cast<QLineEdit*>(widget)) {
        qt::bind(field, line);
    } else if (auto* text = qobject_cast<qt::LongTextField*>(widget)) {
        qt::bind(field, text);
    }
}

/// Makes the button do what its item does, or the item what the button does by itself, and the button tell what the
/// item knows: whether it can be done now, and with which key.
void join(QAbstractButton* button, QAction* item, const Action& action)
{
    if (action.call)
        QObject::connect(button, &QAbstractButton::clicked, item, &QAction::trigger);
    else
        QObject::connect(item, &QAction::triggered, button, &QAbstractButton::click);
    if (button->isCheckable())
        QObject::connect(button, &QAbstractButton::toggled, item, &QAction::setChecked);
    const auto follow = [button, item, &action] {
        button->setEnabled(item->isEnabled());
        if (!action.toolTip) {
            button->setAccessibleName(item->text());
            button->setToolTip(action.withKeys(item->text()));
        }
    };
    button->setToolTip(action.withKeys(action.translated(action.toolTip)));
    follow();
    QObject::connect(item, &QAction::changed, button, follow);
}

panel::PotChoice potChoiceAt(const QWidget* focused, const FrontPanel& panel)
{
    panel::PotChoice choice;
    choice.isPage = qobject_cast<const PageOverview*>(focused) != nullptr;
    choice.isText = qobject_cast<const QLineEdit*>(focused) || qobject_cast<const QPlainTextEdit*>(focused);
    if (const auto* pot = qobject_cast<const Pot*>(focused)) {
        choice.focusedPot = pot->number() - 1;
        for (const int chosen : panel.chosenPots())
            choice.pots.push_back(chosen - 1);
        if (choice.pots.empty())
            choice.pots = {choice.focusedPot};
    }
    return choice;
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
    connectWindows();
    connectModeSwitch();
    connectLists();
    connectActions();
    connectPanel();
    qt::bind(controller_.downloadProgress(), find<QProgressBar>("downloadProgress"));
    lists_ = std::make_unique<ListsView>(controller_, *this);
    editing_ = std::make_unique<EditingView>(controller_, *this);
    comparison_ = std::make_unique<ComparisonView>(controller_, *this);
    preview_ = std::make_unique<PreviewView>(controller_, *this);
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
    auto matrix = std::make_shared<RadioMatrix>();
    qt::bind(matrix, find<QWidget>("kvPluginMode")->findChild<QButtonGroup*>());
    connections_.push_back(
        matrix->cellChosen.connect([this] { controller_.kvPluginMode_Changed(controller_.kvPluginMode()); }));
    controller_.setKvPluginMode(std::move(matrix));
}

void Interface::connectLists()
{
    for (const auto& [name, setRows, setTable, rowChosen] : kLists) {
        const auto* list = find<qt::RecordListView>(name);
        (controller_.*setRows)(list->rows());
        (controller_.*setTable)(list->table());
        connections_.push_back(
            list->table()->rowChosen.connect([this, rowChosen = rowChosen] { (controller_.*rowChosen)(nullptr); }));
    }
}

void Interface::connectActions()
{
    for (const Action& action : Action::all()) {
        auto* item = find<QAction>(action.name);
        if (action.call)
            connectCall(action, item);
        if (auto* button = find<QAbstractButton>(action.buttonName()))
            join(button, item, action);
        for (const QKeySequence& plain : action.plainKeys.sequences) {
            for (const auto& [place, name] : kPlaces) {
                if (!(action.plainKeyPlaces & place))
                    continue;
                auto* key = new QShortcut(plain, find<QWidget>(name));
                key->setAutoRepeat(action.repeats);
                key->setContext(Qt::WidgetWithChildrenShortcut);
                QObject::connect(key, &QShortcut::activated, item, &QAction::trigger);
            }
        }
    }
    controller_.kv_btn_cloudLibrary()->enabled.set(false); // until somebody is logged in
    find<QAction>("userGuide")->setVisible(controller_.hasUserGuide());
}

void Interface::connectCall(const Action& action, QAction* item)
{
    const auto send = [this, call = action.call] { (controller_.*call)(nullptr); };
    const auto outlet = std::find_if(std::begin(kButtons), std::end(kButtons), [&](const auto& entry) {
        return std::string_view(entry.name) == action.buttonName();
    });
    if (outlet == std::end(kButtons)) {
        QObject::connect(item, &QAction::triggered, item, send);
        return;
    }
    auto button = std::make_shared<Button>();
    qt::bind(button, item);
    connections_.push_back(button->pressed.connect(send));
    (controller_.*outlet->set)(std::move(button));
}

void Interface::connectPanel()
{
    auto* panel = find<FrontPanel>("frontPanel");
    auto* overview = find<PageOverview>("pageOverview");
    // The dragged rows are the selected ones, so a drop of one is a press.
    QObject::connect(panel, &FrontPanel::parametersDropped, panel, [this](int pot) {
        const bool isOne = controller_.arrayControllerPlistSelected()->selectedRows().size() == 1;
        isOne ? controller_.clickControl(pot - 1) : controller_.fillControls(pot - 1);
    });
    QObject::connect(panel, &FrontPanel::potDropped, panel, [this](int page, int from, int onto) {
        controller_.exchangeSlots(panel::slotFor(page, from - 1), panel::slotFor(mapping::curPage, onto - 1));
    });
    connectPages(*overview);
    const auto endDrag = [overview](bool wasDropped) { overview->drags().end(wasDropped); };
    QObject::connect(panel, &FrontPanel::dragEnded, overview, endDrag);
    QObject::connect(find<qt::RecordListView>("tablePlistOfSelectedPlugin"), &qt::RecordListView::dragEnded, overview,
                     endDrag);
    contextMenus_ = std::make_unique<ContextMenus>(*this, [this](const QWidget* meant) { choosePots(meant); });
    // A menu is opened to do something with what had the focus. Followed for as long as this has its windows.
    QObject::connect(qApp, &QApplication::focusChanged, contextMenus_.get(), [this](QWidget*, const QWidget* now) {
        // An alert gives it back.
        if (now && !qobject_cast<const QMenuBar*>(now) && !qobject_cast<const QMenu*>(now) && !now->window()->isModal())
            choosePots(now);
    });
    QObject::connect(panel, &FrontPanel::choiceChanged, contextMenus_.get(),
                     [this] { choosePots(QApplication::focusWidget()); });
    auto* goToPage = find<GoToPage>("goToPagePopup");
    goToPage->setGoTo([this](const QString& text) {
        const auto folded = [](std::string_view name) { return qt::fromQt(qt::foldedForSearch(qt::toQt(name))); };
        const auto page = panel::pageMeant(qt::fromQt(text), mapping::plistBuild, mapping::totalPages, folded);
        if (page)
            controller_.showPage(*page);
        return page.has_value();
    });
    QObject::connect(find<QAction>("goToPage"), &QAction::triggered, goToPage, &GoToPage::open);
}

void Interface::connectPages(PageOverview& overview)
{
    QObject::connect(&overview, &PageOverview::pageChosen, &overview, [this](int page) { controller_.showPage(page); });
    const PageDrags* drags = &overview.drags();
    QObject::connect(drags, &PageDrags::parametersDropped, &overview, [this](int page) { controller_.fillPage(page); });
    QObject::connect(drags, &PageDrags::potDropped, &overview, [this](int page, int pot, int onto) {
        controller_.movePotToPage(panel::slotFor(page, pot - 1), onto);
    });
    QObject::connect(drags, &PageDrags::pageDropped, &overview,
                     [this](int page, int before) { controller_.movePageBefore(page, before); });
}

void Interface::choosePots(const QWidget* focused)
{
    auto* panel = find<FrontPanel>("frontPanel");
    if (!qobject_cast<const Pot*>(focused))
        panel->leaveChoice();
    controller_.potChoice.set(potChoiceAt(focused, *panel));
}

} // namespace interface
