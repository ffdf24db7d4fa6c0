#include "app/interface/Menus.h"

#include "app/interface/Actions.h"
#include "platform/qt/SymbolIcon.h"

#include <QActionGroup>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>

#include <map>
#include <utility>

namespace interface {

namespace {

/// A menu for a place with the items that are made already, and lines where the menu bar has some.
void makeContextMenu(QMainWindow& window, const char* name, const QString& title, Places place)
{
    auto* menu = new QMenu(title, &window);
    menu->setObjectName(QLatin1String(name));
    menu->setAccessibleName(title);
    menu->setToolTipsVisible(true);
    bool beginsSection = false;
    const Action* above = nullptr;
    for (const Action& action : Action::all()) {
        beginsSection |= action.beginsSection;
        if (!(action.contexts & place))
            continue;
        if (above && (beginsSection || above->menu != action.menu))
            menu->addSeparator();
        menu->addAction(window.findChild<QAction*>(QLatin1String(action.name)));
        beginsSection = false;
        above = &action;
    }
}

} // namespace

void makeMenus(QMainWindow& window, bool hasWindowMenu)
{
    QMenuBar* bar = window.menuBar();
    bar->setObjectName(QStringLiteral("menuBar"));
    const std::map<Menu, QMenu*> menus = {
        {Menu::none, nullptr},
        {Menu::file, bar->addMenu(QObject::tr("&File"))},
        {Menu::edit, bar->addMenu(QObject::tr("&Edit"))},
        {Menu::page, bar->addMenu(QObject::tr("&Page"))},
        {Menu::compare, bar->addMenu(QObject::tr("C&ompare"))},
        {Menu::community, bar->addMenu(QObject::tr("&Community"))},
        {Menu::window, bar->addMenu(QObject::tr("&Window"))},
        {Menu::help, bar->addMenu(QObject::tr("&Help"))},
    };
    menus.at(Menu::window)->menuAction()->setVisible(hasWindowMenu);
    for (const auto& [place, menu] : menus) {
        if (menu)
            menu->setToolTipsVisible(true);
    }
    const QMenu* former = nullptr;
    QActionGroup* choices = nullptr;
    for (const Action& action : Action::all()) {
        QMenu* menu = menus.at(action.menu);
        auto* item = new QAction(action.translated(action.text), menu ? static_cast<QObject*>(menu) : &window);
        item->setObjectName(QString::fromLatin1(action.name));
        item->setShortcuts(action.keys.sequences);
        item->setAutoRepeat(action.repeats);
        item->setCheckable(action.mark != Mark::none);
        item->setMenuRole(action.role);
        if (action.toolTip)
            item->setToolTip(action.translated(action.toolTip));
        if (action.symbol)
            item->setIcon(platform::qt::symbolIcon(QString::fromLatin1(action.symbol)));
        if (action.beginsSection)
            menu->addSeparator();
        const bool isOtherMenu = std::exchange(former, menu) != menu;
        if (action.beginsSection || isOtherMenu)
            choices = new QActionGroup(item->parent());
        if (action.mark == Mark::choice)
            choices->addAction(item);
        if (menu)
            menu->addAction(item);
    }
    makeContextMenu(window, "potMenu", QObject::tr("Pot"), kOnPots);
    makeContextMenu(window, "tileMenu", QObject::tr("Page"), kOnTiles);
    makeContextMenu(window, "parameterMenu", QObject::tr("Parameter"), kOnParameters);
}

} // namespace interface
