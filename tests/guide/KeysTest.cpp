// The guide's list of keys beside the table of actions, and each of its other keys pressed on the real window.

#include "app/interface/Actions.h"
#include "mapping/EditingState.h"
#include "tests/guide/GuidePages.h"
#include "tests/support/WindowTest.h"

#include <QKeySequence>
#include <QLineEdit>
#include <QTest>

#include <algorithm>
#include <functional>
#include <map>

namespace test {

using interface::Action;
using interface::Menu;

namespace {

constexpr char kKeys[] = "keys.md";
const QString kNone = QStringLiteral("–");

/// Where the key is what the system has for something, a Mac's. Only a Mac knows these by itself.
struct Standard {
    const char* action;
    QKeySequence::StandardKey key;
    const char* onAMac;
};
const Standard kStandards[] = {
    {"btnRunCheck", QKeySequence::Refresh, "Ctrl+R"},
    {"kvExportToPlist", QKeySequence::Save, "Ctrl+S"},
    {"kvCreateChart", QKeySequence::Print, "Ctrl+P"},
    {"closeWindow", QKeySequence::Close, "Ctrl+W"},
    {"undo", QKeySequence::Undo, "Ctrl+Z"},
    {"redo", QKeySequence::Redo, "Ctrl+Shift+Z"},
    {"cutSlots", QKeySequence::Cut, "Ctrl+X"},
    {"copySlots", QKeySequence::Copy, "Ctrl+C"},
    {"pasteSlots", QKeySequence::Paste, "Ctrl+V"},
    {"findParameter", QKeySequence::Find, "Ctrl+F"},
    {"newPageButtonPressed", QKeySequence::New, "Ctrl+N"},
    {"kvHelpMe", QKeySequence::HelpContents, "Ctrl+?"},
};

#ifdef Q_OS_MACOS
constexpr bool kIsAMac = true;
#else
constexpr bool kIsAMac = false;
#endif

QString portable(const QKeySequence& keys)
{
    return keys.toString(QKeySequence::PortableText);
}

QKeySequence onAMac(const Action& action)
{
    const auto standard = std::ranges::find(kStandards, std::string_view(action.name), &Standard::action);
    const bool isStandard =
        standard != std::end(kStandards) && action.keys.sequences == QKeySequence::keyBindings(standard->key);
    return isStandard && !kIsAMac ? QKeySequence(QLatin1String(standard->onAMac)) : action.keys.sequences.front();
}

/// Of several that the system has, the one that is a Mac's, too.
QKeySequence elsewhere(const Action& action)
{
    return action.keys.sequences.contains(onAMac(action)) ? onAMac(action) : action.keys.sequences.front();
}

/// As the guide writes a key of a Mac: "⇧⌘Page Up".
QString macText(const QKeySequence& keys)
{
    static const std::map<QString, QString> kNames = {
        {QStringLiteral("PgUp"), QStringLiteral("Page Up")}, {QStringLiteral("PgDown"), QStringLiteral("Page Down")},
        {QStringLiteral("Backspace"), QStringLiteral("⌫")},  {QStringLiteral("Del"), QStringLiteral("⌦")},
        {QStringLiteral("Up"), QStringLiteral("↑")},         {QStringLiteral("Down"), QStringLiteral("↓")},
        {QStringLiteral("Left"), QStringLiteral("←")},       {QStringLiteral("Right"), QStringLiteral("→")}};
    QStringList parts = portable(keys).split(QLatin1Char('+'));
    const QString key = parts.takeLast();
    QString text;
    for (const auto& [name, sign] : {std::pair{"Meta", "⌃"}, {"Alt", "⌥"}, {"Shift", "⇧"}, {"Ctrl", "⌘"}}) {
        if (parts.contains(QLatin1String(name)))
            text += QString::fromUtf8(sign);
    }
    const auto named = kNames.find(key);
    return text + (named == kNames.end() ? key : named->second);
}

QString inBackticks(const QString& text)
{
    return QLatin1Char('`') + text + QLatin1Char('`');
}

/// The eight pots are one row.
QString nameOf(const Action& action)
{
    const QString name = action.translated(action.text);
    return action.pot == 1 ? name + QStringLiteral(" to 8") : name;
}
QString keysOf(const Action& action, const QString& key)
{
    QString last = key;
    last.replace(last.size() - 1, 1, QLatin1Char('8'));
    return action.pot == 1 ? inBackticks(key) + QStringLiteral(" to ") + inBackticks(last) : inBackticks(key);
}

const std::pair<Menu, const char*> kMenus[] = {
    {Menu::file, "File menu"},       {Menu::edit, "Edit menu"},           {Menu::page, "Page menu"},
    {Menu::compare, "Compare menu"}, {Menu::community, "Community menu"}, {Menu::window, "Window menu"},
    {Menu::help, "Help menu"},
};

std::string asRow(const QStringList& cells)
{
    return QStringLiteral("| %1 |").arg(cells.join(QLatin1String(" | "))).toStdString();
}

/// Says of each row that is on one side only what to do about it.
void compareRows(const char* heading, const std::vector<QStringList>& wanted, const std::vector<QStringList>& written)
{
    for (const QStringList& row : wanted)
        EXPECT_TRUE(std::ranges::count(written, row) == 1)
            << "docs/guide/keys.md, \"" << heading << "\", lacks this row:\n"
            << asRow(row);
    for (const QStringList& row : written)
        EXPECT_TRUE(std::ranges::count(wanted, row) == 1)
            << "docs/guide/keys.md, \"" << heading << "\", has a row that is not so:\n"
            << asRow(row);
}

} // namespace

TEST(GuideKeys, OfEveryMenuAreThoseOfTheActions)
{
    const QString page = guidePage(kKeys);
    std::size_t rows = 0;
    for (const auto& [menu, heading] : kMenus) {
        std::vector<QStringList> wanted;
        for (const Action& action : Action::all()) {
            if (action.menu != menu || action.keys.sequences.isEmpty() || action.pot > 1)
                continue;
            const bool isAMacsAlone = menu == Menu::window;
            wanted.push_back({nameOf(action), keysOf(action, macText(onAMac(action))),
                              isAMacsAlone ? kNone : keysOf(action, portable(elsewhere(action)))});
        }
        std::vector<QStringList> written = tableBelow(page, QString::fromLatin1(heading));
        if (kIsAMac) { // what is elsewhere is not known there
            for (auto* side : {&wanted, &written}) {
                for (QStringList& row : *side)
                    row.resize(std::min<qsizetype>(row.size(), 2));
            }
        }
        compareRows(heading, wanted, written);
        rows += wanted.size();
    }
    EXPECT_GE(rows, 40u);
}

TEST(GuideKeys, OfThePotsAreEightInARow)
{
    for (const Action& action : Action::all()) {
        if (action.pot == 0)
            continue;
        EXPECT_EQ(portable(action.keys.sequences.front()), QStringLiteral("Ctrl+%1").arg(action.pot));
        EXPECT_EQ(portable(action.plainKeys.sequences.front()), QString::number(action.pot));
    }
}

TEST(GuideKeys, WithoutAnotherKeyAreThoseOfTheActions)
{
    std::vector<QStringList> wanted;
    for (const Action& action : Action::all()) {
        if (action.plainKeys.sequences.isEmpty() || action.pot > 1)
            continue;
        QStringList keys;
        for (const QKeySequence& key : action.plainKeys.sequences)
            keys += keysOf(action, macText(key));
        QStringList row = {nameOf(action)};
        for (const auto place : {interface::kOnPots, interface::kOnTiles, interface::kOnParameters})
            row += action.plainKeyPlaces & place ? keys.join(QLatin1String(" or ")) : kNone;
        wanted.push_back(row);
    }
    EXPECT_GE(wanted.size(), 6u);
    const char* heading = "Without another key";
    compareRows(heading, wanted, tableBelow(guidePage(kKeys), QString::fromLatin1(heading)));
}

TEST(GuideKeys, BehindANameAreThoseOfItsAction)
{
    std::map<QString, QString> keys;
    for (const Action& action : Action::all()) {
        if (!action.keys.sequences.isEmpty())
            keys[action.translated(action.text)] = macText(onAMac(action));
    }
    // What a button says for short.
    for (const Action& action : Action::all()) {
        if (action.caption && !action.keys.sequences.isEmpty())
            keys.emplace(action.translated(action.caption), macText(onAMac(action)));
    }
    int names = 0;
    for (const std::string& page : guidePages()) {
        auto matches =
            QRegularExpression(QStringLiteral(R"(\*\*([^*]+)\*\*\s+\(`([^`]+)`\))")).globalMatch(guidePage(page));
        while (matches.hasNext()) {
            const auto match = matches.next();
            const QString name = match.captured(1).simplified();
            ++names;
            ASSERT_TRUE(keys.contains(name)) << page << " gives a key to what has none: " << name.toStdString();
            EXPECT_EQ(match.captured(2), keys[name]) << page << ": " << name.toStdString();
        }
    }
    EXPECT_GE(names, 30);
}

class GuideKeysElsewhere : public WindowTest {
protected:
    void load()
    {
        for (const char* plugin : {"Another", "Synth"})
            writeDictionary(builtIn(plugin), orderFile(numbered(24)));
        launch();
        activate("cwinMainWindow");
        select("Synth");
    }
    void activate(const char* window)
    {
        find<>(window)->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(find<>(window)));
    }
    void focus(const char* name)
    {
        find<>(name)->setFocus();
        ASSERT_TRUE(find<>(name)->hasFocus()) << name;
    }
    static void key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(QApplication::focusWidget(), key, modifiers);
    }
    bool hasFocus(const char* name) const { return find<>(name)->hasFocus(); }
    std::size_t chosen() { return controller().potChoice.get().pots.size(); }
    std::size_t selectedParameters() { return controller().arrayControllerPlistSelected()->selectedRows().size(); }

    static constexpr const char* kParameters = "tablePlistOfSelectedPlugin";
};

TEST_F(GuideKeysElsewhere, DoWhatTheGuideSays)
{
    using Try = std::function<void()>;
    const std::map<std::string, std::map<std::string, Try>> tries = {
        {"On the front panel",
         {{"`←` or `→`",
           [this] {
               focus("kvRotaryBtn3");
               key(Qt::Key_Right);
               EXPECT_TRUE(hasFocus("kvRotaryBtn4"));
               key(Qt::Key_Left);
               EXPECT_TRUE(hasFocus("kvRotaryBtn3"));
           }},
          {"`Space` or `Return`",
           [this] {
               for (const auto press : {Qt::Key_Space, Qt::Key_Return}) {
                   chooseParameter("Knob 9");
                   focus("kvRotaryBtn3");
                   key(press);
                   EXPECT_EQ(potLabel(3), "Knob 9");
                   controller().undo();
               }
           }},
          {"`⇧←` or `⇧→`",
           [this] {
               focus("kvRotaryBtn3");
               key(Qt::Key_Right, Qt::ShiftModifier);
               EXPECT_EQ(chosen(), 2u);
               focus("kvRotaryBtn6");
               key(Qt::Key_Left, Qt::ShiftModifier);
               EXPECT_EQ(chosen(), 2u);
           }},
          {"`⌘A`",
           [this] {
               focus("kvRotaryBtn3");
               key(Qt::Key_A, Qt::ControlModifier);
               EXPECT_EQ(chosen(), 8u);
           }},
          {"`Esc`",
           [this] {
               focus("kvRotaryBtn3");
               key(Qt::Key_A, Qt::ControlModifier);
               key(Qt::Key_Escape);
               EXPECT_EQ(chosen(), 1u);
           }}}},
        {"In the strip of pages",
         {{"`←` or `→`",
           [this] {
               focus("pageOverview");
               key(Qt::Key_Right);
               EXPECT_EQ(mapping::curPage, 2);
               key(Qt::Key_Left);
               EXPECT_EQ(mapping::curPage, 1);
           }},
          {"`↑` or `↓`",
           [this] {
               find<>("cwinMainWindow")->resize(1240, 1400);
               for (int page = 4; page <= 40; ++page)
                   controller().newPageButtonPressed();
               controller().firstPageButtonPressed();
               QApplication::processEvents();
               focus("pageOverview");
               key(Qt::Key_Down);
               EXPECT_GT(mapping::curPage, 2);
               key(Qt::Key_Up);
               EXPECT_EQ(mapping::curPage, 1);
           }}}},
        {"In a list",
         {{"`Home`, `End`, `Page Up` or `Page Down`",
           [this] {
               focus(kParameters);
               key(Qt::Key_End);
               EXPECT_EQ(selectedRow(kParameters), 24);
               key(Qt::Key_PageUp);
               EXPECT_LT(selectedRow(kParameters), 24);
               key(Qt::Key_Home);
               EXPECT_EQ(selectedRow(kParameters), 0);
               key(Qt::Key_PageDown);
               EXPECT_GT(selectedRow(kParameters), 0);
               EXPECT_EQ(mapping::curPage, 1);
           }},
          {"`Return` or `Space`",
           [this] {
               for (const auto press : {Qt::Key_Return, Qt::Key_Space}) {
                   select("Synth");
                   focus("pluginTableView");
                   key(Qt::Key_Up);
                   EXPECT_EQ(text("labKOScreen_Title"), "Synth (Logic Built-In)");
                   key(press);
                   EXPECT_EQ(text("labKOScreen_Title"), "Another (Logic Built-In)");
               }
           }},
          {"`⌘A`",
           [this] {
               focus(kParameters);
               key(Qt::Key_A, Qt::ControlModifier);
               EXPECT_GE(selectedParameters(), 24u);
           }}}},
        {"In a search field",
         {{"`↑` or `↓`",
           [this] {
               focus("parameterSearch");
               key(Qt::Key_Down);
               EXPECT_EQ(selectedRow(kParameters), 1);
               key(Qt::Key_Up);
               EXPECT_EQ(selectedRow(kParameters), 0);
               focus("pluginSearch");
               key(Qt::Key_Down);
               EXPECT_TRUE(hasFocus("pluginTableView"));
           }},
          {"`Return`",
           [this] {
               for (const auto& [field, list] :
                    {std::pair{"parameterSearch", kParameters}, {"pluginSearch", "pluginTableView"}}) {
                   focus(field);
                   key(Qt::Key_Return);
                   EXPECT_TRUE(hasFocus(list)) << field;
               }
           }},
          {"`Esc`",
           [this] {
               for (const auto& [field, list] :
                    {std::pair{"parameterSearch", kParameters}, {"pluginSearch", "pluginTableView"}}) {
                   focus(field);
                   typeInto(field, "knob");
                   focus(field);
                   key(Qt::Key_Escape);
                   EXPECT_EQ(text(field), "");
                   EXPECT_TRUE(hasFocus(field));
                   key(Qt::Key_Escape);
                   EXPECT_TRUE(hasFocus(list)) << field;
               }
           }}}},
        {"In the community windows",
         {{"`Esc`",
           [this] {
               for (const char* window : {"cwinCloudWindow", "cwinUploadWindow", "cwinDownloadWindow"}) {
                   find<>(window)->show();
                   activate(window);
                   QTest::keyClick(find<>(window), Qt::Key_Escape);
                   EXPECT_FALSE(find<>(window)->isVisible()) << window;
               }
           }},
          {"`Return`",
           [this] {
               for (const auto& [field, answer] :
                    {std::pair{"cwinPinCode", "Login failed"}, {"cwinEmailAddrNew", "Create New User Response"}}) {
                   find<>("cwinCloudWindow")->show();
                   activate("cwinCloudWindow");
                   focus(field);
                   const auto alerts = alertsOf([] { key(Qt::Key_Return); });
                   ASSERT_EQ(alerts.size(), 1u) << field;
                   EXPECT_EQ(alerts[0].text, answer);
               }
           }}}},
    };
    const QString page = guidePage(kKeys);
    for (const auto& [heading, keys] : tries) {
        std::vector<std::string> written;
        for (const QStringList& row : tableBelow(page, QString::fromStdString(heading)))
            written.push_back(row.front().toStdString());
        for (const std::string& row : written)
            EXPECT_TRUE(keys.contains(row)) << "\"" << heading << "\" has keys that nobody tries: " << row;
        for (const auto& [row, attempt] : keys) {
            EXPECT_EQ(std::ranges::count(written, row), 1) << "\"" << heading << "\" lacks the row of " << row;
            load();
            SCOPED_TRACE(heading + ": " + row);
            attempt();
        }
    }
}

} // namespace test
