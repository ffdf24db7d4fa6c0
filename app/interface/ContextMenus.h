#pragma once
// The context menus of the main window: on pots, on the tiles of pages and on the rows of the parameter list, by mouse
// and by key. What a menu is opened on is what its items mean: a pot gets the focus without being pressed, a page is
// shown, a parameter is selected.

#include <QObject>

#include <functional>

class QAbstractItemView;
class QMenu;
class QModelIndex;
class QPoint;
class QWidget;

namespace interface {

class FrontPanel;
class Interface;
class Pot;

class ContextMenus final : public QObject {
    Q_OBJECT

public:
    /// `mean` is told on what a menu is about to open, also where the window is not in front, so that nothing gets the
    /// focus.
    ContextMenus(const Interface& loaded, std::function<void(const QWidget*)> mean);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void showForPot(Pot& pot, const QPoint& at);
    bool showForRow(QAbstractItemView& list, const QModelIndex& row, const QPoint& at);

    std::function<void(const QWidget*)> mean_;
    FrontPanel* panel_;
    QAbstractItemView* tiles_;
    QAbstractItemView* parameters_;
    QMenu* potMenu_;
    QMenu* tileMenu_;
    QMenu* parameterMenu_;
};

} // namespace interface
