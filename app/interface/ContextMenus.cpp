#include "app/interface/ContextMenus.h"

#include "app/interface/Interface.h"
#include "app/interface/panel/FrontPanel.h"
#include "app/interface/panel/Pot.h"

#include <QAbstractItemView>
#include <QContextMenuEvent>
#include <QMenu>

#include <utility>

namespace interface {

ContextMenus::ContextMenus(const Interface& loaded, std::function<void(const QWidget*)> mean)
    : mean_(std::move(mean)),
      panel_(loaded.find<FrontPanel>("frontPanel")),
      tiles_(loaded.find<QAbstractItemView>("pageOverview")),
      parameters_(loaded.find<QAbstractItemView>("tablePlistOfSelectedPlugin")),
      potMenu_(loaded.find<QMenu>("potMenu")),
      tileMenu_(loaded.find<QMenu>("tileMenu")),
      parameterMenu_(loaded.find<QMenu>("parameterMenu"))
{
    for (Pot* pot : panel_->findChildren<Pot*>())
        pot->installEventFilter(this);
    for (QAbstractItemView* list : {tiles_, parameters_}) {
        list->installEventFilter(this);             // by key
        list->viewport()->installEventFilter(this); // by mouse
    }
}

bool ContextMenus::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::ContextMenu)
        return false;
    const auto& wanted = *static_cast<QContextMenuEvent*>(event);
    const bool isByKey = wanted.reason() == QContextMenuEvent::Keyboard;
    if (auto* pot = qobject_cast<Pot*>(watched)) {
        showForPot(*pot, isByKey ? pot->mapToGlobal(pot->rect().center()) : wanted.globalPos());
        return true;
    }
    for (QAbstractItemView* list : {tiles_, parameters_}) {
        if (isByKey && watched == list) {
            const QModelIndex row = list->currentIndex();
            return showForRow(*list, row, list->viewport()->mapToGlobal(list->visualRect(row).center()));
        }
        if (!isByKey && watched == list->viewport())
            return showForRow(*list, list->indexAt(wanted.pos()), wanted.globalPos());
    }
    return false;
}

void ContextMenus::showForPot(Pot& pot, const QPoint& at)
{
    pot.setFocus(Qt::MouseFocusReason);
    panel_->mean(pot);
    mean_(&pot);
    potMenu_->popup(at);
}

bool ContextMenus::showForRow(QAbstractItemView& list, const QModelIndex& row, const QPoint& at)
{
    if (!row.isValid() || !(row.flags() & Qt::ItemIsEnabled))
        return false;
    list.setFocus(Qt::MouseFocusReason);
    if (!list.selectionModel()->isRowSelected(row.row()))
        list.setCurrentIndex(row);
    mean_(&list);
    (&list == tiles_ ? tileMenu_ : parameterMenu_)->popup(at);
    return true;
}

} // namespace interface
