#include "app/interface/Menus.h"

#include "platform/qt/SymbolIcon.h"

#include <QActionGroup>
#include <QCoreApplication>
#include <QMainWindow>
#include <QMenuBar>

namespace interface {

namespace {

/// One key, or all that the platform has for a standard operation.
struct Keys {
    Keys() = default;
    Keys(QKeySequence::StandardKey standard) : sequences(QKeySequence::keyBindings(standard)) {}
    Keys(Qt::Key key) : sequences{QKeySequence(key)} {}
    Keys(const char* keys) : sequences{QKeySequence(QString::fromLatin1(keys))} {}

    QList<QKeySequence> sequences;
};

struct Item {
    const char* name;
    const char* title; ///< of the context "Menus"; null: a separator
    Keys keys = {};
    const char* symbol = nullptr;
    bool repeats = false; ///< while its key is held down; nothing that edits does, but what can be taken back again
};

const Item kSeparator = {nullptr, nullptr};

QString translated(const char* text)
{
    return QCoreApplication::translate("Menus", text);
}

QAction* add(QMenu* menu, const Item& item)
{
    if (!item.title)
        return menu->addSeparator();
    QAction* action = menu->addAction(translated(item.title));
    action->setObjectName(QString::fromLatin1(item.name));
    action->setShortcuts(item.keys.sequences);
    action->setAutoRepeat(item.repeats);
    if (item.symbol)
        action->setIcon(platform::qt::symbolIcon(QString::fromLatin1(item.symbol)));
    return action;
}

void fill(QMenu* menu, std::initializer_list<Item> items)
{
    for (const Item& item : items)
        add(menu, item);
}

QAction* itemOf(QMenu* menu, const char* name)
{
    return menu->findChild<QAction*>(QLatin1String(name));
}

void makeFileMenu(QMenu* menu)
{
    fill(menu, {
                   {"btnRunCheck", QT_TRANSLATE_NOOP("Menus", "Scan for plugins"), QKeySequence::Refresh, "scan"},
                   kSeparator,
                   {"kvExportToPlist", QT_TRANSLATE_NOOP("Menus", "Save Mapping"), QKeySequence::Save, "save"},
                   {"kvRecallOriginalMapping", QT_TRANSLATE_NOOP("Menus", "Recall Original"), "Ctrl+Shift+O",
                    "recall-original"},
                   {"kvRecallPreviousMapping", QT_TRANSLATE_NOOP("Menus", "Recall Previous"), "Ctrl+Shift+P",
                    "recall-previous"},
                   {"kvCreateChart", QT_TRANSLATE_NOOP("Menus", "Chart"), QKeySequence::Print, "chart"},
                   kSeparator,
                   {"saveAction", QT_TRANSLATE_NOOP("Menus", "Save Application Data"), "Ctrl+Shift+S"},
                   kSeparator,
                   {"terminate", QT_TRANSLATE_NOOP("Menus", "Quit"), "Ctrl+Q"},
               });
    itemOf(menu, "terminate")->setMenuRole(QAction::QuitRole);
}

void makeEditMenu(QMenu* menu)
{
    fill(menu, {
                   {"undo", QT_TRANSLATE_NOOP("Menus", "Undo"), QKeySequence::Undo, "undo", true},
                   {"redo", QT_TRANSLATE_NOOP("Menus", "Redo"), QKeySequence::Redo, "redo", true},
                   kSeparator,
                   {"findParameter", QT_TRANSLATE_NOOP("Menus", "Find Parameter"), QKeySequence::Find, "search"},
                   {"unmappedOnlyItem", QT_TRANSLATE_NOOP("Menus", "Only Parameters Not Mapped Yet"), "Ctrl+Shift+M",
                    "unmapped"},
                   kSeparator,
               });
    itemOf(menu, "unmappedOnlyItem")->setCheckable(true);
    for (int pot = 1; pot <= 8; ++pot) {
        QAction* press = menu->addAction(QCoreApplication::translate("Menus", "Put on Pot %1").arg(pot));
        press->setObjectName(QStringLiteral("kvRotBtn%1_Pressed").arg(pot));
        press->setAutoRepeat(false);
        press->setShortcut(QKeySequence(QStringLiteral("Ctrl+%1").arg(pot)));
    }
    menu->addSeparator();
    auto* modes = new QActionGroup(menu);
    for (const Item& item :
         {Item{"modeInstrument", QT_TRANSLATE_NOOP("Menus", "Instrument Mode"), "Ctrl+Shift+I"},
          Item{"modeInsertEffect", QT_TRANSLATE_NOOP("Menus", "Insert/Effect Mode"), "Ctrl+Shift+E"}}) {
        QAction* mode = add(menu, item);
        mode->setCheckable(true);
        modes->addAction(mode);
    }
}

void makePageMenu(QMenu* menu)
{
    fill(menu,
         {
             {"firstPageButtonPressed", QT_TRANSLATE_NOOP("Menus", "First Page"), Qt::Key_Home, "page-first"},
             {"prevPageButtonPressed", QT_TRANSLATE_NOOP("Menus", "Previous Page"), Qt::Key_PageUp, "page-previous",
              true},
             {"nextPageButtonPressed", QT_TRANSLATE_NOOP("Menus", "Next Page"), Qt::Key_PageDown, "page-next", true},
             {"lastPageButtonPressed", QT_TRANSLATE_NOOP("Menus", "Last Page"), Qt::Key_End, "page-last"},
             kSeparator,
             {"kvMovePage_First", QT_TRANSLATE_NOOP("Menus", "Move Page to First"), "Ctrl+Home", "move-first"},
             {"kvMovePage_Prev", QT_TRANSLATE_NOOP("Menus", "Move Page to Previous"), "Ctrl+PgUp", "move-previous"},
             {"kvMovePage_Next", QT_TRANSLATE_NOOP("Menus", "Move Page to Next"), "Ctrl+PgDown", "move-next"},
             {"kvMovePage_Last", QT_TRANSLATE_NOOP("Menus", "Move Page to Last"), "Ctrl+End", "move-last"},
             kSeparator,
             {"newPageButtonPressed", QT_TRANSLATE_NOOP("Menus", "New Page"), QKeySequence::New, "page-new"},
             kSeparator,
             {"deletePageButtonPressed", QT_TRANSLATE_NOOP("Menus", "Delete Page"), "Ctrl+D", "page-delete"},
             {"clearAllPagesButtonPressed", QT_TRANSLATE_NOOP("Menus", "Clear All Pages"), "Ctrl+Shift+D", "clear-all"},
         });
}

void makeCommunityMenu(QMenu* menu)
{
    fill(menu, {
                   {"kvLoginToCloudAccount", QT_TRANSLATE_NOOP("Menus", "Account"), "Ctrl+L", "account"},
                   {"kvCommunityLibrary", QT_TRANSLATE_NOOP("Menus", "Share"), "Ctrl+U", "share"},
                   {"kvCommunityLibraryDownload", QT_TRANSLATE_NOOP("Menus", "Browse"), "Ctrl+B", "browse"},
               });
}

} // namespace

void makeMenus(QMainWindow& window)
{
    QMenuBar* bar = window.menuBar();
    bar->setObjectName(QStringLiteral("menuBar"));
    makeFileMenu(bar->addMenu(QCoreApplication::translate("Menus", "&File")));
    makeEditMenu(bar->addMenu(QCoreApplication::translate("Menus", "&Edit")));
    makePageMenu(bar->addMenu(QCoreApplication::translate("Menus", "&Page")));
    makeCommunityMenu(bar->addMenu(QCoreApplication::translate("Menus", "&Community")));
    fill(bar->addMenu(QCoreApplication::translate("Menus", "&Help")),
         {{"kvHelpMe", QT_TRANSLATE_NOOP("Menus", "Brief instructions on use"), QKeySequence::HelpContents, "help"}});
}

} // namespace interface
