#include "tests/trust/RandomUser.h"

#include "app/interface/panel/FrontPanel.h"
#include "app/interface/panel/PageOverview.h"
#include "mapping/EditingState.h"
#include "mapping/ParameterOrder.h"
#include "platform/qt/Text.h"
#include "tests/support/Alerts.h"
#include "tests/support/Dragged.h"
#include "tests/support/TestBaseUrl.h"

#include <QAbstractButton>
#include <QAction>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QMenu>
#include <QTest>
#include <QTimer>
#include <QTreeView>

#include <algorithm>
#include <numeric>

namespace test {

using platform::qt::fromQt;
using platform::qt::toQt;

namespace {

// As often as somebody at work would use them; what opens windows and what reads the disk comes less often.
const char* const kOftenUsed[] = {
    "firstPageButtonPressed",
    "prevPageButtonPressed",
    "nextPageButtonPressed",
    "lastPageButtonPressed",
    "newPageButtonPressed",
    "newPageButtonPressed",
    "deletePageButtonPressed",
    "deletePageButtonPressed",
    "kvMovePage_First",
    "kvMovePage_Prev",
    "kvMovePage_Next",
    "kvMovePage_Last",
    "undoButton",
    "undoButton",
    "undoButton",
    "redoButton",
    "redoButton",
    "unmappedOnly",
};
const char* const kSeldomUsed[] = {
    "clearAllPagesButtonPressed",
    "kvExportToPlist",
    "kvExportToPlist",
    "kvRecallOriginalMapping",
    "kvRecallPreviousMapping",
    "bringBackDraft",
    "bringBackDraft",
    "discardDraft",
    "kvCreateChart",
    "kvPluginMode_1",
    "kvPluginMode_0",
    "btnRunCheck",
    "kvHelpMe",
};
const char* const kCommunityFields[] = {"cwinUserName", "cwinPinCode", "cwinUserNameNew", "cwinEmailAddrNew",
                                        "cwinUploadComments"};
const char* const kCommunity[] = {
    "kvLoginToCloudAccount", "kv_btn_cloudLibrary",  "kv_btn_cloudLibraryDownload", "cwinLoginAttempt",
    "cwinNewUserCreate",     "kvCommunityUploadBtn", "cwinPlistAvailable",          "kvCommunityLoadSelectedDownload",
    "previewShared",         "previewShared",
};
const char* const kItems[] = {
    "clearPot",
    "clearPage",
    "cutSlots",
    "copySlots",
    "copySlots",
    "pasteSlots",
    "pasteSlots",
    "pasteSlots",
    "insertPot",
    "removePot",
    "insertPage",
    "duplicatePage",
    "fillFromPot",
    "fillFromPot",
    "showOnPanel",
    "findInList",
    "nextDifference",
    "previousDifference",
    "takePot",
    "takePage",
    "compareWithNothing",
    "compareWithSaved",
    "compareWithPrevious",
    "compareWithOriginal",
    "compareWithDownloaded",
};
/// What leaves few pages or makes many.
const char* const kRareItems[] = {"mapUnmapped", "tidyUp", "tidyUp", "startFromScratch"};
const char* const kPagesMeant[] = {"1", "2", " 3 ", "99", "k", "volume 1", "\u00e9", "nothing has this"};

struct Key {
    const char* name;
    Qt::Key key;
    Qt::KeyboardModifiers modifiers = Qt::NoModifier;
};
const Key kKeys[] = {
    {"1", Qt::Key_1},
    {"2", Qt::Key_2},
    {"8", Qt::Key_8},
    {"Ctrl+1", Qt::Key_1, Qt::ControlModifier},
    {"Ctrl+5", Qt::Key_5, Qt::ControlModifier},
    {"Ctrl+8", Qt::Key_8, Qt::ControlModifier},
    {"PageUp", Qt::Key_PageUp},
    {"PageDown", Qt::Key_PageDown},
    {"Home", Qt::Key_Home},
    {"End", Qt::Key_End},
    {"Ctrl+PageUp", Qt::Key_PageUp, Qt::ControlModifier},
    {"Ctrl+PageDown", Qt::Key_PageDown, Qt::ControlModifier},
    {"Ctrl+Z", Qt::Key_Z, Qt::ControlModifier},
    {"Ctrl+Shift+Z", Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier},
    {"Ctrl+F", Qt::Key_F, Qt::ControlModifier},
    {"Ctrl+S", Qt::Key_S, Qt::ControlModifier},
    {"Ctrl+N", Qt::Key_N, Qt::ControlModifier},
    {"Ctrl+D", Qt::Key_D, Qt::ControlModifier},
    {"Ctrl+A", Qt::Key_A, Qt::ControlModifier},
    {"Ctrl+Shift+M", Qt::Key_M, Qt::ControlModifier | Qt::ShiftModifier},
    {"Ctrl+Shift+I", Qt::Key_I, Qt::ControlModifier | Qt::ShiftModifier},
    {"Ctrl+C", Qt::Key_C, Qt::ControlModifier},
    {"Ctrl+V", Qt::Key_V, Qt::ControlModifier},
    {"Ctrl+X", Qt::Key_X, Qt::ControlModifier},
    {"Ctrl+G", Qt::Key_G, Qt::ControlModifier},
    {"Ctrl+J", Qt::Key_J, Qt::ControlModifier},
    {"Ctrl+T", Qt::Key_T, Qt::ControlModifier},
    {"Ctrl+Return", Qt::Key_Return, Qt::ControlModifier},
    {"Alt+Down", Qt::Key_Down, Qt::AltModifier},
    {"Shift+Down", Qt::Key_Down, Qt::ShiftModifier},
    {"Shift+Up", Qt::Key_Up, Qt::ShiftModifier},
    {"Shift+Left", Qt::Key_Left, Qt::ShiftModifier},
    {"Shift+Right", Qt::Key_Right, Qt::ShiftModifier},
    {"Tab", Qt::Key_Tab},
    {"Tab", Qt::Key_Tab},
    {"Shift+Tab", Qt::Key_Backtab, Qt::ShiftModifier},
    {"Up", Qt::Key_Up},
    {"Down", Qt::Key_Down},
    {"Down", Qt::Key_Down},
    {"Left", Qt::Key_Left},
    {"Right", Qt::Key_Right},
    {"Space", Qt::Key_Space},
    {"Return", Qt::Key_Return},
    {"Escape", Qt::Key_Escape},
    {"Escape", Qt::Key_Escape},
    {"Backspace", Qt::Key_Backspace},
    {"Delete", Qt::Key_Delete},
    {"k", Qt::Key_K},
    {"A", Qt::Key_A, Qt::ShiftModifier},
};

constexpr int kForever = 24 * 3600 * 1000;

const char* const kSearches[] = {"Knob", "1",  "00",  "é",      "ホ", "nothing has this",
                                 "  ",   "%1", "<b>", "1 knob", "p1", "1.2"};

Texts withGaps(Texts order)
{
    for (std::size_t i = 4; i < order.size(); i += 7)
        order[i] = "-1";
    return order;
}

Texts ofManyScripts()
{
    return {"1 Temps d’écho", "2 カットオフ", "3 <b>Drive</b>", "-1",       "3 <b>Drive</b>", "5 %1 Mix", "6 🌊 Vague",
            "7 حجم",          "8 Größe",      "9 &amp; Co",     "no-blank", "1 Temps d’écho", "12  Two"};
}

/// What the community server says to a request: mostly what it should.
std::string replyTo(const std::string& request, std::size_t number)
{
    const auto asks = [&](const char* what) { return request.find(what) < request.find("\r\n"); };
    if (number % 7 == 3)
        return {}; // hangs up
    if (asks("checkuser.php"))
        return reply(number % 3 ? "\nOK\n" : "no");
    if (asks("kv_listplists.php"))
        return reply(R"([{"patchID": 1, "fileLocation": "shared one", "userComments": "<b>Größe</b>\nline"},)"
                     R"( {"patchID": "2", "fileLocation": "shared/two"}, {}])");
    if (!asks("GET "))
        return reply("Done");
    const Texts order = number % 2 ? withGaps(numbered(30, "Shared")) : Texts();
    auto dictionary = orderFile(order);
    return number % 5 ? reply(platform::plist::write({platform::plist::Value(dictionary), {}}))
                      : reply("no property list");
}

} // namespace

const RandomUser::Deed RandomUser::kDeeds[] = {
    {20, &RandomUser::useItem},         {8, &RandomUser::choosePots},
    {6, &RandomUser::chooseRows},       {6, &RandomUser::openMenu},
    {3, &RandomUser::goToPage},         {24, &RandomUser::pressPotButton},
    {24, &RandomUser::pressButton},     {3, &RandomUser::choosePlugin},
    {14, &RandomUser::chooseRow},       {4, &RandomUser::restOnRow},
    {6, &RandomUser::typeSearch},       {20, &RandomUser::pressKey},
    {1, &RandomUser::sortPlugins},      {14, &RandomUser::drag},
    {4, &RandomUser::choosePage},       {5, &RandomUser::useCommunity},
    {3, &RandomUser::typeForCommunity}, {1, &RandomUser::quit},
};

RandomUser::Chance::Chance(unsigned seed, int step)
{
    std::seed_seq both{seed, static_cast<unsigned>(step)};
    engine_.seed(both);
}

void RandomUser::startOver()
{
    for (const char* folder : {"Library", "home", "config", "data", "state"})
        std::filesystem::remove_all(home_ / folder);
    writeDictionary(builtIn("Empty"), orderFile({}));
    writeDictionary(builtIn("Nine"), orderFile(numbered(9)));
    writeDictionary(builtIn("Binary"), orderFile(withGaps(numbered(40, "Volume"))), platform::plist::Form::binary);
    writeDictionary(thirdParty("Maker", "Large"), orderFile(withGaps(numbered(300))));
    writeDictionary(thirdParty("Ünï", "Écho 界 🌊"), orderFile(ofManyScripts()));
    workspace_.opened.clear();
    QGuiApplication::clipboard()->clear();
    openCommunity();
    start();
}

void RandomUser::start()
{
    launch();
    // How far keys and drags get would otherwise be up to the machine.
    restTimer().setInterval(kForever);
    dragRestTimer().setInterval(kForever);
    find<QWidget>("cwinMainWindow")->activateWindow();
}

std::string RandomUser::doSomething(unsigned seed, int step)
{
    Chance chance(seed, step);
    unsavedAtQuit_.reset();
    const int all = std::accumulate(std::begin(kDeeds), std::end(kDeeds), 0,
                                    [](int sum, const Deed& deed) { return sum + deed.weight; });
    int drawn = chance.below(all);
    const Deed* deed = kDeeds;
    while (drawn >= deed->weight)
        drawn -= deed++->weight;
    std::string done = (this->*deed->act)(chance);
    QApplication::processEvents();
    // When a download ends would otherwise be up to the machine.
    waitUntil([this] {
        return controller().downloadProgress().get().running == 0 &&
               controller().sharedPreview().state != ViewController::SharedPreview::State::fetching;
    });
    QApplication::processEvents(); // its end is told behind everything else
    return done;
}

std::string RandomUser::pressPotButton(Chance& chance)
{
    return clickButton(("kvRotaryBtn" + std::to_string(chance.below(8) + 1)).c_str());
}

std::string RandomUser::pressButton(Chance& chance)
{
    return clickButton(chance.below(5) ? chance.oneOf(kOftenUsed) : chance.oneOf(kSeldomUsed));
}

std::string RandomUser::choosePlugin(Chance& chance)
{
    return clickRowAt("pluginTableView", chance.below(5));
}

std::string RandomUser::restOnRow(Chance& chance)
{
    if (!isOnTheWay() && chance.below(4) == 0) { // hardly ever do the other keys come there
        auto* list = find<QAbstractItemView>("pluginTableView");
        list->setFocus();
        QTest::keyClick(list, chance.below(2) ? Qt::Key_Down : Qt::Key_Up);
        return "move on in pluginTableView";
    }
    if (!isOnTheWay())
        return {};
    restTimer().start(0);
    waitUntil([this] { return !isOnTheWay(); });
    restTimer().setInterval(kForever);
    return "rest in pluginTableView";
}

bool RandomUser::isOnTheWay() const
{
    return restTimer().isActive();
}

QTimer& RandomUser::restTimer() const
{
    return *find("pluginTableView")->findChild<QTimer*>(QStringLiteral("rest"));
}

QTimer& RandomUser::dragRestTimer() const
{
    return *find("pageOverview")->findChild<QTimer*>(QStringLiteral("dragRest"));
}

std::string RandomUser::useItem(Chance& chance)
{
    const char* const name = chance.below(15) ? chance.oneOf(kItems) : chance.oneOf(kRareItems);
    auto* item = find<QAction>(name);
    if (!item->isEnabled())
        return {};
    item->trigger();
    return std::string("use ") + name;
}

std::string RandomUser::choosePots(Chance& chance)
{
    if (!isEnabled("kvRotaryBtn1"))
        return {};
    if (chance.below(4) == 0) {
        find<QWidget>("pageOverview")->setFocus(Qt::TabFocusReason);
        return "go to the tiles";
    }
    auto* pot = potAt(chance.below(8) + 1);
    const std::string name = fromQt(pot->objectName());
    const Qt::KeyboardModifiers modifiers[] = {Qt::NoModifier, Qt::ShiftModifier, Qt::ControlModifier};
    const int kind = chance.below(3);
    if (kind == 0)
        pot->setFocus(Qt::TabFocusReason);
    else
        QTest::mouseClick(pot, Qt::LeftButton, modifiers[kind]);
    return (kind == 0 ? "go to " : kind == 1 ? "Shift+click " : "Ctrl+click ") + name;
}

std::string RandomUser::chooseRows(Chance& chance)
{
    const char* const list = "tablePlistOfSelectedPlugin";
    const int rows = find<QAbstractItemView>(list)->model()->rowCount();
    if (rows == 0)
        return {};
    const bool isRange = chance.below(2) != 0;
    const int selected = std::max(controller().arrayControllerPlistSelected()->selectionIndex(), 0);
    const int row = isRange ? std::min(selected + chance.below(12), rows - 1) : chance.below(rows);
    return (isRange ? "Shift+" : "Ctrl+") + clickRowAt(list, row, isRange ? Qt::ShiftModifier : Qt::ControlModifier);
}

std::string RandomUser::openMenu(Chance& chance)
{
    QWidget* over = nullptr;
    QPoint at;
    if (chance.below(2)) {
        over = potAt(chance.below(8) + 1);
        at = over->rect().center();
    } else {
        auto* list = find<QAbstractItemView>(chance.below(2) ? "pageOverview" : "tablePlistOfSelectedPlugin");
        const int rows = list->model()->rowCount();
        if (rows == 0)
            return {};
        const QModelIndex row = list->model()->index(chance.below(rows), 0);
        list->scrollTo(row);
        over = list->viewport();
        at = list->visualRect(row).center();
    }
    if (!over->isEnabled())
        return {};
    QContextMenuEvent event(QContextMenuEvent::Mouse, at, over->mapToGlobal(at));
    QApplication::sendEvent(over, &event);
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    if (!menu)
        return {};
    const std::string done = "open " + fromQt(menu->objectName());
    QAction* item = menu->actions().at(chance.below(static_cast<int>(menu->actions().size())));
    if (chance.below(3) == 0 || item->isSeparator() || !item->isEnabled()) {
        QTest::keyClick(menu, Qt::Key_Escape);
        return done + " and close it";
    }
    QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(item).center());
    return done + " and click " + fromQt(item->objectName());
}

std::string RandomUser::goToPage(Chance& chance)
{
    auto* item = find<QAction>("goToPage");
    if (!item->isEnabled())
        return {};
    item->trigger();
    const std::string text = chance.oneOf(kPagesMeant);
    auto* field = find<QLineEdit>("goToPageField");
    type(field, text);
    const int end = chance.below(4);
    if (end > 0)
        QTest::keyClick(field, end == 1 ? Qt::Key_Escape : Qt::Key_Return);
    return "go to page \"" + text + (end == 0 ? "\" and leave it" : end == 1 ? "\" and give it up" : "\"");
}

std::string RandomUser::chooseRow(Chance& chance)
{
    const int rows = find<QAbstractItemView>("tablePlistOfSelectedPlugin")->model()->rowCount();
    return rows > 0 ? clickRowAt("tablePlistOfSelectedPlugin", chance.below(rows)) : std::string();
}

std::string RandomUser::typeSearch(Chance& chance)
{
    const char* const name = chance.below(4) ? "parameterSearch" : "pluginSearch";
    auto* search = find<QLineEdit>(name);
    if (chance.below(2)) {
        search->clear();
        return std::string("clear ") + name;
    }
    const std::string text = chance.oneOf(kSearches);
    type(search, text);
    return std::string("type into ") + name + " \"" + text + "\"";
}

std::string RandomUser::pressKey(Chance& chance)
{
    const Key& key = chance.oneOf(kKeys);
    auto* window = find<QWidget>("cwinMainWindow");
    if (!QApplication::activeWindow()) { // an alert that goes gives the focus to nobody where there is no desktop
        window->activateWindow();
        QApplication::processEvents();
    }
    QWidget* target = QApplication::focusWidget();
    if (!target)
        target = window;
    const std::string where = fromQt(target->objectName());
    QTest::keyClick(target, key.key, key.modifiers);
    return std::string("key ") + key.name + " in " + where;
}

std::string RandomUser::sortPlugins(Chance& chance)
{
    QHeaderView* header = find<QTreeView>("pluginTableView")->header();
    const int column = chance.below(3);
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                      {header->sectionViewportPosition(column) + header->sectionSize(column) / 2, 5});
    return "sort by column " + std::to_string(column);
}

std::string RandomUser::drag(Chance& chance)
{
    using Kind = interface::DragData::Kind;
    if (!isEnabled("kvRotaryBtn1"))
        return {};
    const auto& parameters = *controller().arrayControllerPlistSelected();
    interface::DragData data {
        .state = controller().historyRevision() + parameters.contentRevision()
    };
    std::string done = "drag ";
    const int page = chance.below(mapping::totalPages) + 1;
    const int pot = chance.below(8) + 1;
    switch (chance.below(3)) {
    case 0:
        data.kind = Kind::parameters;
        for (const platform::Record* selected : parameters.selectedObjects())
            data.parameters += mapping::isEmptyEntry(*selected) ? 0 : 1;
        done += std::to_string(data.parameters) + " parameters";
        break;
    case 1:
        data.kind = Kind::pot;
        data.page = chance.below(2) ? page : mapping::curPage;
        data.pot = pot;
        done += "pot " + std::to_string(pot) + " of page " + std::to_string(data.page);
        break;
    default:
        data.kind = Kind::page;
        data.page = page;
        done += "page " + std::to_string(page);
    }
    if (data.kind == Kind::parameters && parameters.selectionIndex() < 0)
        return {};
    return done + dropSomewhere(Dragged(data), chance);
}

std::string RandomUser::dropSomewhere(Dragged&& dragged, Chance& chance)
{
    auto* strip = find<QAbstractItemView>("pageOverview");
    auto* panel = find<interface::FrontPanel>("frontPanel");
    const int tile = chance.below(strip->model()->rowCount());
    const QModelIndex index = strip->model()->index(tile, 0);
    strip->scrollTo(index);
    const QRect place = strip->visualRect(index);
    const QPoint at(place.left() + 1 + chance.below(std::max(place.width() - 2, 1)), place.center().y());
    const std::string onTile = " over tile " + std::to_string(tile + 1);
    std::string done;
    bool wasDropped = false;
    if (chance.below(3) == 0) {
        dragged.enter(*strip->viewport(), at);
        dragged.move(*strip->viewport(), at);
        if (dragRestTimer().isActive()) {
            dragRestTimer().start(0);
            waitUntil([this] { return !dragRestTimer().isActive(); });
            dragRestTimer().setInterval(kForever);
            done += onTile + ", rest,";
        }
        Dragged::leave(*strip->viewport());
    }
    const int where = chance.below(5);
    if (where < 2) {
        const int pot = chance.below(8) + 1;
        wasDropped = dragged.dropOn(*panel, potAt(pot)->geometry().center());
        done += " onto pot " + std::to_string(pot);
    } else if (where < 4) {
        wasDropped = dragged.dropOn(*strip->viewport(), at);
        done += onTile + " and let it go";
    } else {
        done += " and give it up";
    }
    Q_EMIT panel->dragEnded(wasDropped); // as of what was dragged
    return done;
}

std::string RandomUser::choosePage(Chance& chance)
{
    const int page = chance.below(mapping::totalPages) + 1;
    Q_EMIT find<interface::PageOverview>("pageOverview")->pageChosen(page);
    return "choose page " + std::to_string(page);
}

std::string RandomUser::useCommunity(Chance& chance)
{
    // Its threads are kept until it ends.
    if (community_->requests().size() > 100)
        openCommunity();
    const char* name = chance.oneOf(kCommunity);
    std::string done = loaded().find<QAbstractButton>(name) ? clickButton(name) : clickRowAt(name, chance.below(3));
    return done;
}

std::string RandomUser::quit(Chance&)
{
    if (controller().isMappingLoaded() && controller().hasUnsavedChanges())
        unsavedAtQuit_ = {text("labPluginPlistLocation"), mapping::orderOf(mapping::plistBuild)};
    controller().keepDraft();
    start();
    return "quit and start again";
}

std::string RandomUser::typeForCommunity(Chance& chance)
{
    const char* name = chance.oneOf(kCommunityFields);
    const std::string text = chance.oneOf(kSearches);
    auto* field = find<QWidget>(name);
    if (!field->isVisible())
        return {};
    type(field, text);
    return "type \"" + text + "\" into " + name;
}

void RandomUser::type(QWidget* field, const std::string& text)
{
    field->setFocus();
    QInputMethodEvent typed; // key clicks are for ASCII only
    typed.setCommitString(toQt(text));
    QApplication::sendEvent(field, &typed);
}

std::string RandomUser::clickButton(const char* name)
{
    auto* button = find<QAbstractButton>(name);
    if (!button->isEnabled() || !button->isVisible())
        return {};
    QTest::mouseClick(button, Qt::LeftButton);
    return std::string("click ") + name;
}

QWidget* RandomUser::potAt(int number) const
{
    return find<QWidget>(("kvRotaryBtn" + std::to_string(number)).c_str());
}

std::string RandomUser::clickRowAt(const char* list, int row, Qt::KeyboardModifiers modifiers)
{
    auto* view = find<QAbstractItemView>(list);
    if (!view->isVisible() || row >= view->model()->rowCount())
        return {};
    const QModelIndex index = view->model()->index(row, 0);
    view->scrollTo(index);
    QTest::mouseClick(view->viewport(), Qt::LeftButton, modifiers, view->visualRect(index).center());
    return "click row " + std::to_string(row) + " of " + list;
}

void RandomUser::openCommunity()
{
    community_ = std::make_unique<ScriptedPeer>();
    setBaseUrl(community_->url());
    for (int connection = 0; connection < 1000; ++connection) {
        community_->play([peer = community_.get()](ScriptedPeer::Connection& link) {
            const std::vector<std::string> requests = peer->requests();
            link.send(replyTo(requests.back(), requests.size()));
        });
    }
}

} // namespace test
