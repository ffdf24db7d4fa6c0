#pragma once
// A list of records in columns with one selected row, tied to an array controller and a table view both ways. A row is
// chosen by a click, by moving to it with the keyboard, or by a click on the row that is chosen already.

#include "platform/controls/ArrayController.h"
#include "platform/controls/Controls.h"

#include <QTreeView>

#include <memory>

namespace platform::qt {

class RecordListView final : public QTreeView {
    Q_OBJECT

public:
    explicit RecordListView(QWidget* parent = nullptr);

    /// Ties the selection of this view, whose model shows the controller's rows, to the controller's.
    void follow(std::shared_ptr<ArrayController> controller, std::shared_ptr<TableView> table);

    /// What to do next, written into the room that the rows leave; empty: nothing.
    void setHint(const QString& hint);
    QString hint() const { return hint_; }
    /// Leaves what is typed to the window, instead of looking for a row that begins so.
    void leaveTypingToTheWindow() { leavesTyping_ = true; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void startDrag(Qt::DropActions actions) override;
    void dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight, const QList<int>& roles) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index, const QEvent* event) const override;
    void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;

private:
    std::int32_t selectedRow() const;
    void showSelection();

    std::shared_ptr<ArrayController> controller_;
    std::shared_ptr<TableView> table_;
    bool showingSelection_ = false;
    std::int32_t rowBeforePress_ = ArrayController::kNoSelection;
    QString hint_;
    bool leavesTyping_ = false;
    Connection selection_;
};

} // namespace platform::qt
