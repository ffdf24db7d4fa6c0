#pragma once
// A list of records in columns with one selected row, tied to the array controller and the table view that it has, both
// ways. A row is chosen by moving to it with mouse or keyboard, or by a click on the row that is chosen already; in a
// list that is told so, only when somebody means it. Another that is told so has several rows selected.

#include "platform/controls/ArrayController.h"
#include "platform/controls/Controls.h"
#include "platform/qt/RecordTableModel.h"

#include <QByteArray>
#include <QPixmap>
#include <QString>
#include <QTimer>
#include <QTreeView>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace platform::qt {

/// The selected rows while they are dragged.
struct RowDrag {
    QByteArray data;
    QPixmap picture; ///< what hangs at the pointer
};

class RecordListView final : public QTreeView {
    Q_OBJECT

public:
    /// `toolTipKey` is the model's.
    explicit RecordListView(std::vector<RecordColumn> columns, std::string toolTipKey = {}, QWidget* parent = nullptr);

    const std::shared_ptr<ArrayController>& rows() const { return rows_; }
    const std::shared_ptr<TableView>& table() const { return table_; }
    RecordTableModel& records() const { return *records_; }

    /// What to do next, written into the room that the rows leave; empty: nothing.
    void setHint(const QString& hint);
    QString hint() const { return hint_; }
    /// Lets rows be dragged, under this type. `dragOf` is asked whenever a drag begins.
    void setDrag(const QString& mimeType, std::function<RowDrag()> dragOf);
    /// Lets several rows be selected, by the platform's keys and clicks. Some row always stays selected.
    void selectSeveral() { setSelectionMode(QAbstractItemView::ExtendedSelection); }
    /// Leaves what is typed to the window, instead of looking for a row that begins so.
    void leaveTypingToTheWindow() { leavesTyping_ = true; }
    /// A row is chosen when the left button is let go where it was pressed, by Return or Space, or when the keys that
    /// move have rested on it. Until then it is only marked, the array controller keeps the row chosen before, and
    /// whatever rearranges the rows marks that one again.
    void chooseDeliberately() { isDeliberate_ = true; }

    /// Takes the focus, for somebody who comes from the field that narrows the list: the keys begin at the first row
    /// that is not selected already. Chooses nothing.
    void enterFromSearch();

Q_SIGNALS:
    /// Rows were dragged, and were dropped somewhere or the drag was given up.
    void dragEnded(bool wasDropped);

protected:
    bool event(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void startDrag(Qt::DropActions actions) override;
    void dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight, const QList<int>& roles) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void keyboardSearch(const QString& search) override;
    void focusOutEvent(QFocusEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index, const QEvent* event) const override;
    void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;

private:
    bool selectsSeveral() const { return selectionMode() == QAbstractItemView::ExtendedSelection; }
    std::vector<std::int32_t> selectedRows() const;
    std::int32_t selectedRow() const;
    void showSelection();
    void showSeveral();
    void setUpColumns(const std::vector<RecordColumn>& columns);
    void spreadColumns();
    void moveByKey(QKeyEvent* event);
    void choose(std::int32_t row);
    void choose(std::vector<std::int32_t> rows, std::int32_t current);
    void waitForRest();
    void rested();

    std::shared_ptr<ArrayController> rows_ = std::make_shared<ArrayController>();
    std::shared_ptr<TableView> table_ = std::make_shared<TableView>();
    RecordTableModel* records_;
    int roomiestColumn_ = 0; ///< has what room the others leave
    int growingColumn_ = -1; ///< none
    int wantedWidth_ = 0;    ///< of the growing one
    int givenWidth_ = 0;     ///< to the growing one; somebody may have given it another
    bool showingSelection_ = false;
    bool isDeliberate_ = false;
    bool isOnlyMarking_ = false; ///< the row that is selected just now is not chosen yet
    bool isKeyHeld_ = false;     ///< its repeats may be still to come
    QTimer rest_{this};
    std::int32_t rowBeforePress_ = ArrayController::kNoSelection;
    std::int32_t pressedRow_ = ArrayController::kNoSelection;
    QString hint_;
    QString dragType_;
    std::function<RowDrag()> dragOf_;
    bool leavesTyping_ = false;
    Connection selection_;
};

} // namespace platform::qt
