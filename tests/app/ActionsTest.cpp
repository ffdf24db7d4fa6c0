#include "app/interface/Actions.h"
#include "app/AppDelegate.h"
#include "app/interface/Lifecycle.h"
#include "app/interface/Menus.h"
#include "tests/support/WindowTest.h"

#include <QAction>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QPointF>
#include <QShortcut>
#include <QSysInfo>
#include <QTest>
#include <QTimer>

#include <curl/curl.h>

#include <algorithm>
#include <map>
#include <set>

namespace test {

using testing::ElementsAre;

namespace {

/// What Apple keeps for the system on every Mac, and for menus that every program has, as Qt writes it: "Ctrl" is the
/// Command key there and "Meta" the Control key.
const char* const kTakenOnAMac[] = {
    // The program's own menu, windows and documents
    "Ctrl+H",
    "Ctrl+Alt+H",
    "Ctrl+Q",
    "Ctrl+Shift+Q",
    "Ctrl+Alt+Shift+Q",
    "Ctrl+,",
    "Ctrl+M",
    "Ctrl+Alt+M",
    "Ctrl+W",
    "Ctrl+Alt+W",
    "Ctrl+`",
    "Ctrl+Shift+`",
    "Ctrl+Alt+`",
    "Meta+Ctrl+F",
    "Ctrl+.",
    "Ctrl+?",
    "Ctrl+Shift+/",
    "Ctrl+A",
    "Ctrl+C",
    "Ctrl+V",
    "Ctrl+X",
    "Ctrl+Z",
    "Ctrl+Shift+Z",
    "Ctrl+Alt+T",
    // Programs, Spotlight, Dock, Finder
    "Ctrl+Tab",
    "Ctrl+Shift+Tab",
    "Ctrl+Space",
    "Ctrl+Alt+Space",
    "Ctrl+Shift+Space",
    "Meta+Ctrl+Space",
    "Meta+Space",
    "Meta+Alt+Space",
    "Ctrl+Alt+D",
    "Meta+Ctrl+D",
    "Ctrl+Alt+Esc",
    "Ctrl+Alt+Shift+Esc",
    "Ctrl+Esc",
    "Meta+Ctrl+Q",
    "Ctrl+Shift+Del",
    "Ctrl+Shift+Backspace",
    // Pictures of the screen
    "Ctrl+Shift+3",
    "Ctrl+Shift+4",
    "Ctrl+Shift+5",
    "Ctrl+Shift+6",
    "Meta+Ctrl+Shift+3",
    "Meta+Ctrl+Shift+4",
    // Mission Control, spaces, keyboard access
    "Meta+Up",
    "Meta+Down",
    "Meta+Left",
    "Meta+Right",
    "Meta+1",
    "Meta+2",
    "Meta+3",
    "Meta+4",
    "Meta+Tab",
    "Meta+Shift+Tab",
    "Meta+F1",
    "Meta+F2",
    "Meta+F3",
    "Meta+F4",
    "Meta+Shift+F4",
    "Meta+F5",
    "Meta+F6",
    "Meta+Shift+F6",
    "Meta+F7",
    "Meta+F8",
    "F11",
    "F12",
    "Ctrl+F3",
    "Ctrl+F5",
    "Ctrl+Alt+F5",
    // Zoom, contrast
    "Ctrl+Alt+8",
    "Ctrl+Alt+=",
    "Ctrl+Alt+-",
    "Meta+Ctrl+Alt+8",
    "Meta+Ctrl+Alt+,",
    "Meta+Ctrl+Alt+.",
};
/// Those that mean just that.
const std::map<std::string, std::string> kMeant = {
    {"terminate", "Ctrl+Q"}, {"closeWindow", "Ctrl+W"}, {"minimiseWindow", "Ctrl+M"},
    {"undo", "Ctrl+Z"},      {"redo", "Ctrl+Shift+Z"},  {"kvHelpMe", "Ctrl+?"},
    {"cutSlots", "Ctrl+X"},  {"copySlots", "Ctrl+C"},   {"pasteSlots", "Ctrl+V"},
};

std::string named(const QKeySequence& keys)
{
    return keys.toString(QKeySequence::PortableText).toStdString();
}

} // namespace

class ActionsTest : public WindowTest {
protected:
    void activate(const char* window)
    {
        find<>(window)->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(find<>(window)));
    }
    void trigger(const char* item) { find<QAction>(item)->trigger(); }
};

TEST_F(ActionsTest, NoKeyIsTheMacsOwnUnlessItMeansTheSame)
{
    std::set<std::string> taken;
    for (const char* keys : kTakenOnAMac) {
        ASSERT_FALSE(QKeySequence(QLatin1String(keys)).isEmpty()) << keys;
        taken.insert(named(QKeySequence(QLatin1String(keys))));
    }
    for (const interface::Action& action : interface::Action::all()) {
        const auto meant = kMeant.find(action.name);
        for (const QKeySequence& keys : action.keys.sequences) {
            EXPECT_FALSE(keys.isEmpty()) << action.name;
            EXPECT_TRUE(!taken.count(named(keys)) || (meant != kMeant.end() && meant->second == named(keys)))
                << action.name << " " << named(keys);
        }
    }
}

TEST_F(ActionsTest, NoTwoOperationsShareAKey)
{
    launch();
    std::map<std::string, std::string> owners;
    for (const interface::Action& action : interface::Action::all()) {
        for (const QKeySequence& keys : find<QAction>(action.name)->shortcuts())
            EXPECT_TRUE(owners.emplace(named(keys), action.name).second)
                << named(keys) << ": " << action.name << " and " << owners[named(keys)];
    }
    EXPECT_GE(owners.size(), 30u);
    // Plain keys belong to a place of the window.
    std::set<std::pair<const QObject*, std::string>> plain;
    for (const QShortcut* key : find<>("cwinMainWindow")->findChildren<QShortcut*>()) {
        EXPECT_EQ(owners.count(named(key->key())), 0u) << named(key->key());
        EXPECT_TRUE(plain.emplace(key->parent(), named(key->key())).second) << named(key->key());
    }
    EXPECT_GE(plain.size(), 16u);
}

TEST_F(ActionsTest, NoSlipOfAnotherKeyPutsBackAFile)
{
    constexpr Qt::KeyboardModifier kModifiers[] = {Qt::ShiftModifier, Qt::ControlModifier, Qt::AltModifier,
                                                   Qt::MetaModifier};
    // Which keys lie beside one another.
    const QString rows[] = {QStringLiteral("1234567890"), QStringLiteral("QWERTYUIOP"), QStringLiteral("ASDFGHJKL"),
                            QStringLiteral("ZXCVBNM")};
    const auto place = [&](Qt::Key key) {
        for (int row = 0; row < 4; ++row) {
            if (const auto at = rows[row].indexOf(QChar(static_cast<char16_t>(key))); at >= 0)
                return QPointF(static_cast<double>(at) + row * 0.4, row);
        }
        return QPointF(-9, -9);
    };
    const auto isSlip = [&](const QKeySequence& one, const QKeySequence& other) {
        if (one[0].key() == other[0].key()) {
            const auto differing = one[0].keyboardModifiers() ^ other[0].keyboardModifiers();
            return std::ranges::count_if(kModifiers, [&](auto each) { return differing.testFlag(each); }) <= 1;
        }
        const QPointF way = place(one[0].key()) - place(other[0].key());
        return one[0].keyboardModifiers() == other[0].keyboardModifiers() && QPointF::dotProduct(way, way) < 1.5;
    };
    EXPECT_TRUE(isSlip(QKeySequence(QStringLiteral("Ctrl+P")), QKeySequence(QStringLiteral("Ctrl+Shift+P"))));
    EXPECT_TRUE(isSlip(QKeySequence(QStringLiteral("Ctrl+O")), QKeySequence(QStringLiteral("Ctrl+L"))));
    EXPECT_FALSE(isSlip(QKeySequence(QStringLiteral("Ctrl+O")), QKeySequence(QStringLiteral("Ctrl+U"))));
    for (const char* recall : {"kvRecallOriginalMapping", "kvRecallPreviousMapping"}) {
        const QKeySequence keys = interface::Action::named(recall).keys.sequences.value(0);
        ASSERT_EQ(keys.count(), 1) << recall;
        for (const interface::Action& other : interface::Action::all()) {
            for (const QKeySequence& otherKeys : other.keys.sequences) {
                const bool isOther = other.name != std::string(recall);
                EXPECT_FALSE(isOther && isSlip(keys, otherKeys)) << recall << " and " << other.name;
            }
        }
        for (const char* taken : kTakenOnAMac)
            EXPECT_FALSE(isSlip(keys, QKeySequence(QLatin1String(taken)))) << recall << " and " << taken;
    }
}

TEST_F(ActionsTest, AMacMovesOnlyQuitAndAboutAndWhatIsTheProgramsOwn)
{
    for (const interface::Action& action : interface::Action::all()) {
        const bool quits = action.name == std::string("terminate");
        const bool tells = action.name == std::string("about");
        // A Mac's own dialogs look for the items that cut, copy and paste, and move none of them.
        const bool isForTexts =
            QStringList{QStringLiteral("cutSlots"), QStringLiteral("copySlots"), QStringLiteral("pasteSlots")}.contains(
                QString::fromLatin1(action.name));
        const bool isOfTheProgram = action.name == std::string("saveAction");
        const auto role = quits            ? QAction::QuitRole
                          : tells          ? QAction::AboutRole
                          : isOfTheProgram ? QAction::ApplicationSpecificRole
                          : isForTexts     ? QAction::TextHeuristicRole
                                           : QAction::NoRole;
        EXPECT_EQ(action.role, role) << action.name;
    }
}

TEST_F(ActionsTest, AMacHasAWindowMenu)
{
    for (const bool onAMac : {true, false}) {
        QMainWindow window;
        interface::makeMenus(window, onAMac);
        const QList<QAction*> menus = window.menuBar()->actions();
        const auto shown = std::find_if(menus.begin(), menus.end(), [](const QAction* menu) {
            return menu->isVisible() && menu->text() == QLatin1String("&Window");
        });
        ASSERT_EQ(shown != menus.end(), onAMac);
        if (!onAMac)
            continue;
        EXPECT_EQ((*std::next(shown))->text(), QStringLiteral("&Help"));
        std::vector<std::string> items;
        for (const QAction* item : (*shown)->menu()->actions())
            items.push_back(item->text().toStdString() + " " + named(item->shortcut()));
        EXPECT_THAT(items, ElementsAre("Minimise Ctrl+M", "Zoom "));
    }
}

TEST_F(ActionsTest, ItemsOfTheWindowMenuWorkOnTheWindowInFront)
{
    launch();
    trigger("kvLoginToCloudAccount");
    for (const char* front : {"cwinCloudWindow", "cwinMainWindow"}) {
        activate(front);
        trigger("zoomWindow");
        EXPECT_TRUE(find<>(front)->isMaximized()) << front;
        trigger("zoomWindow");
        EXPECT_FALSE(find<>(front)->isMaximized()) << front;
        activate(front);
        trigger("minimiseWindow");
        EXPECT_TRUE(find<>(front)->isMinimized()) << front;
        find<>(front)->showNormal();
    }
    activate("cwinMainWindow");
    trigger("zoomWindow");
    EXPECT_FALSE(find<>("cwinCloudWindow")->isMaximized());
}

TEST_F(ActionsTest, TheKeyForClosingClosesTheCommunityWindowInFront)
{
    launch();
    for (const char* name : {"cwinCloudWindow", "cwinUploadWindow", "cwinDownloadWindow"})
        find<>(name)->show();
    for (const char* name : {"cwinUploadWindow", "cwinCloudWindow", "cwinDownloadWindow"}) {
        activate(name);
        QTest::keyClick(find<>(name), Qt::Key_W, Qt::ControlModifier);
        EXPECT_FALSE(find<>(name)->isVisible()) << name;
        EXPECT_TRUE(find<>("cwinMainWindow")->isVisible()) << name;
    }
    EXPECT_FALSE(controller().cwinUploadWindow()->visible.get());
}

TEST_F(ActionsTest, TheItemForClosingClosesTheWindowInFront)
{
    launch();
    find<>("cwinCloudWindow")->show();
    activate("cwinCloudWindow");
    trigger("closeWindow"); // as a Mac does from its one menu bar
    EXPECT_FALSE(find<>("cwinCloudWindow")->isVisible());
    EXPECT_TRUE(find<>("cwinMainWindow")->isVisible());
}

TEST_F(ActionsTest, TheKeyForClosingQuitsFromTheMainWindow)
{
    launch();
    AppDelegate delegate(platform());
    const interface::Lifecycle lifecycle(delegate, loaded());
    activate("cwinMainWindow");
    QTimer::singleShot(0, [&] { QTest::keyClick(find<>("cwinMainWindow"), Qt::Key_W, Qt::ControlModifier); });
    QTimer tooLate;
    QObject::connect(&tooLate, &QTimer::timeout, [] { QApplication::exit(99); });
    tooLate.start(5000);
    EXPECT_EQ(QApplication::exec(), 0);
    EXPECT_FALSE(find<>("cwinMainWindow")->isVisible());
}

TEST_F(ActionsTest, AboutTellsTheVersionTheSystemTheLibrariesAndTheirLicences)
{
    launch();
    const auto alerts = alertsOf([this] { trigger("about"); });
    ASSERT_EQ(alerts.size(), 1u);
    EXPECT_EQ(alerts[0].text, "kvOrvantaLogic Tool " + QApplication::applicationVersion().toStdString());
    const std::string curl = ::curl_version();
    EXPECT_EQ(alerts[0].informativeText,
              "System: " + QSysInfo::prettyProductName().toStdString() + ", " +
                  QSysInfo::currentCpuArchitecture().toStdString() + "\nLibraries: Qt " + qVersion() + ", libcurl " +
                  curl.substr(8, curl.find(' ') - 8) +
                  "\n\nUses Qt under the GNU Lesser General Public License, version 3 "
                  "(https://www.gnu.org/licenses/lgpl-3.0.html), and libcurl under the curl licence "
                  "(https://curl.se/docs/copyright.html).");
    EXPECT_THAT(alerts[0].buttons, ElementsAre("OK"));
}

} // namespace test
