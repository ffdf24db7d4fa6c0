#include "platform/qt/RecordListView.h"

#include "platform/qt/Typing.h"

#include <QAccessible>
#include <QDrag>
#include <QHeaderView>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QStyledItemDelegate>

#include <utility>

namespace platform::qt {

namespace {

/// Draws the beginning of each text on one line, so that a long text of several lines neither makes rows high nor takes
/// long to lay out.
class OneLineDelegate final : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QString displayText(const QVariant& value, const QLocale&) const override
    {
        QString line = value.toString().left(kMostDrawn);
        for (QChar& character : line) {
            if (character.isSpace())
                character = QLatin1Char(' ');
        }
        return line;
    }

    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override
    {
        QStyledItemDelegate::initStyleOption(option, index);
        option->decorationPosition = QStyleOptionViewItem::Right; // texts stay in line
    }

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        return QStyledItemDelegate::sizeHint(option, index) + QSize(0, kAirBetweenRows);
    }

private:
    static constexpr int kAirBetweenRows = 5;
    static constexpr qsizetype kMostDrawn = 512;
};

} // namespace

RecordListView::RecordListView(std::vector<RecordColumn> columns, std::string toolTipKey, QWidget* parent)
    : QTreeView(parent), records_(new RecordTableModel(rows_, columns, std::move(toolTipKey), this))
{
    setModel(records_);
    for (int column = 0; column < records_->columnCount(); ++column) {
        if (const int width = columns[static_cast<std::size_t>(column)].width; width > 0)
            header()->resizeSection(column, width);
        else
            roomiestColumn_ = column;
    }
    if (!columns.empty()) {
        header()->setStretchLastSection(false);
        header()->setSectionResizeMode(roomiestColumn_, QHeaderView::Stretch);
    }
    setItemDelegate(new OneLineDelegate(this));
    const int symbol = fontMetrics().height() - 2; // a row is no higher with one
    setIconSize({symbol, symbol});
    setRootIsDecorated(false);
    setItemsExpandable(false);
    setUniformRowHeights(true);
    setAllColumnsShowFocus(true);
    setAlternatingRowColors(true);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    connect(this, &QTreeView::clicked, this, [this](const QModelIndex& index) {
        if (index.row() == rowBeforePress_)
            table_->rowChosen.emit();
    });
    selection_ = rows_->selectionChanged.connect([this] { showSelection(); });
}

void RecordListView::setDragType(const QString& mimeType)
{
    records_->setDragType(mimeType);
    setDragEnabled(true);
}

void RecordListView::setHint(const QString& hint)
{
    if (hint == hint_)
        return;
    hint_ = hint;
    setAccessibleDescription(hint);
    viewport()->update();
}

void RecordListView::paintEvent(QPaintEvent* event)
{
    QTreeView::paintEvent(event);
    if (hint_.isEmpty())
        return;
    const int margin = fontMetrics().height();
    const QModelIndex last = model()->index(model()->rowCount() - 1, 0);
    const int top = last.isValid() ? visualRect(last).bottom() : 0;
    const QRect room = viewport()->rect().adjusted(margin, top + margin / 2, -margin, -margin / 2);
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::Text));
    painter.drawText(room, Qt::AlignCenter | Qt::TextWordWrap, hint_);
}

void RecordListView::dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight, const QList<int>& roles)
{
    // To paint less, Qt looks up where each row of the range stands: dearer than painting, with ten thousand of them.
    if (topLeft.row() == bottomRight.row() || QAccessible::isActive())
        QTreeView::dataChanged(topLeft, bottomRight, roles);
    else
        viewport()->update();
}

void RecordListView::startDrag(Qt::DropActions actions)
{
    const QModelIndexList rows = selectionModel()->selectedRows();
    QMimeData* row = rows.isEmpty() ? nullptr : model()->mimeData(rows);
    if (!row)
        return;
    auto* drag = new QDrag(this);
    drag->setMimeData(row);
    drag->setPixmap(viewport()->grab(visualRect(rows.front().siblingAtColumn(roomiestColumn_))));
    drag->exec(actions, Qt::CopyAction);
}

void RecordListView::mousePressEvent(QMouseEvent* event)
{
    rowBeforePress_ = selectedRow();
    QTreeView::mousePressEvent(event);
}

QItemSelectionModel::SelectionFlags RecordListView::selectionCommand(const QModelIndex& index,
                                                                     const QEvent* event) const
{
    const auto command = QTreeView::selectionCommand(index, event);
    // A click with Ctrl, or beside the rows, would take the choice back and leave nothing chosen.
    if (!index.isValid() || command.testFlag(QItemSelectionModel::Toggle) ||
        command.testFlag(QItemSelectionModel::Deselect))
        return QItemSelectionModel::NoUpdate;
    return command;
}

QModelIndex RecordListView::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers)
{
    // While nothing is selected Qt has the cursor on the first row already; the first key goes to it, not past it.
    const bool goesOn = action == MoveDown || action == MoveNext || action == MovePageDown;
    if (goesOn && selectedRow() == ArrayController::kNoSelection)
        return model()->index(0, 0);
    return QTreeView::moveCursor(action, modifiers);
}

void RecordListView::keyPressEvent(QKeyEvent* event)
{
    if (leavesTyping_ && isTyping(*event)) {
        event->ignore();
        return;
    }
    QTreeView::keyPressEvent(event);
    // The cursor was there already, so Qt moved nothing and selected nothing.
    const bool moves = event->key() == Qt::Key_Down || event->key() == Qt::Key_Up || event->key() == Qt::Key_Home ||
                       event->key() == Qt::Key_End || event->key() == Qt::Key_PageDown ||
                       event->key() == Qt::Key_PageUp;
    if (moves && selectedRow() == ArrayController::kNoSelection && currentIndex().isValid())
        selectionModel()->select(currentIndex(), QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

void RecordListView::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected)
{
    QTreeView::selectionChanged(selected, deselected);
    const std::int32_t row = selectedRow();
    if (showingSelection_ || row == ArrayController::kNoSelection)
        return;
    rows_->setSelectionIndex(row);
    table_->rowChosen.emit();
}

std::int32_t RecordListView::selectedRow() const
{
    const QModelIndexList rows = selectionModel() ? selectionModel()->selectedRows() : QModelIndexList();
    return rows.isEmpty() ? ArrayController::kNoSelection : rows.front().row();
}

void RecordListView::showSelection()
{
    const QScopedValueRollback guard(showingSelection_, true);
    const std::int32_t row = rows_->selectionIndex();
    if (row == ArrayController::kNoSelection) {
        selectionModel()->clear();
        return;
    }
    if (row == selectedRow() && currentIndex().row() == row)
        return;
    const QModelIndex index = model()->index(row, 0);
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    scrollTo(index);
}

} // namespace platform::qt
