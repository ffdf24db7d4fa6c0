#include "platform/qt/RecordListView.h"

#include "platform/qt/Hover.h"
#include "platform/qt/Text.h"
#include "platform/qt/Typing.h"

#include <QAccessible>
#include <QApplication>
#include <QDrag>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QStyledItemDelegate>

#include <algorithm>
#include <iterator>
#include <utility>

namespace platform::qt {

namespace {

/// How long the keys rest on a row that is meant.
constexpr int kRestMs = 300;

Qt::KeyboardModifiers modifiersOf(const QKeyEvent& event)
{
    return event.modifiers() & ~Qt::KeypadModifier; // which the arrows of a Mac have, too
}

bool isPageKey(const QKeyEvent& event)
{
    return event.key() == Qt::Key_Home || event.key() == Qt::Key_End || event.key() == Qt::Key_PageUp ||
           event.key() == Qt::Key_PageDown;
}

/// Left and Right, too: while no row is selected they go to the first.
bool movesInList(const QKeyEvent& event)
{
    return event.key() == Qt::Key_Down || event.key() == Qt::Key_Up || event.key() == Qt::Key_Left ||
           event.key() == Qt::Key_Right || isPageKey(event);
}

/// Keys that a list with the focus takes for itself, whatever the window would do with them.
bool belongsToList(const QKeyEvent& event)
{
    if (modifiersOf(event) == Qt::ControlModifier)
        return event.key() == Qt::Key_Home || event.key() == Qt::Key_End;
    return modifiersOf(event) == Qt::NoModifier && isPageKey(event);
}

bool choosesRow(const QKeyEvent& event)
{
    const bool chooses = event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter || event.key() == Qt::Key_Space;
    return chooses && modifiersOf(event) == Qt::NoModifier;
}

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
        return line.isRightToLeft() || QGuiApplication::isRightToLeft() ? isolated(line) : line;
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
    if (!columns.empty())
        setUpColumns(columns);
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
    rest_.setObjectName(QStringLiteral("rest"));
    rest_.setSingleShot(true);
    rest_.setTimerType(Qt::PreciseTimer); // others may come early
    rest_.setInterval(kRestMs);
    connect(&rest_, &QTimer::timeout, this, &RecordListView::rested);
    selection_ = rows_->selectionChanged.connect([this] { showSelection(); });
}

void RecordListView::setUpColumns(const std::vector<RecordColumn>& columns)
{
    header()->setStretchLastSection(false);
    header()->setDefaultAlignment(Qt::AlignLeading | Qt::AlignVCenter);
    header()->setMinimumSectionSize(fontMetrics().height() * 2);
    const int margins = 2 * (style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, this) + 2);
    for (int column = 0; column < records_->columnCount(); ++column) {
        const RecordColumn& described = columns[static_cast<std::size_t>(column)];
        const int width =
            std::max(fontMetrics().horizontalAdvance(described.like) + margins, header()->sectionSizeHint(column));
        if (described.like.isEmpty()) {
            roomiestColumn_ = column;
            continue;
        }
        header()->resizeSection(column, width);
        if (described.grows) {
            growingColumn_ = column;
            wantedWidth_ = givenWidth_ = width;
        }
    }
    header()->setSectionResizeMode(roomiestColumn_, QHeaderView::Stretch);
}

void RecordListView::resizeEvent(QResizeEvent* event)
{
    QTreeView::resizeEvent(event);
    if (growingColumn_ >= 0 && header()->sectionSize(growingColumn_) == givenWidth_)
        spreadColumns();
}

void RecordListView::spreadColumns()
{
    constexpr int kReadable = 60; // letters
    int room = viewport()->width();
    for (int column = 0; column < records_->columnCount(); ++column) {
        if (column != growingColumn_ && column != roomiestColumn_)
            room -= header()->sectionSize(column);
    }
    const int narrow = std::min(wantedWidth_, room * 2 / 5);
    const int spare = room - narrow - kReadable * fontMetrics().averageCharWidth();
    givenWidth_ = std::max(narrow + std::max(0, spare / 2), header()->minimumSectionSize());
    header()->resizeSection(growingColumn_, givenWidth_);
}

void RecordListView::setDrag(const QString& mimeType, std::function<RowDrag()> dragOf)
{
    dragType_ = mimeType;
    dragOf_ = std::move(dragOf);
    records_->letRowsBeDragged();
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
    painter.setLayoutDirection(Qt::LayoutDirectionAuto); // the text's
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

void RecordListView::enterFromSearch()
{
    setFocus(Qt::ShortcutFocusReason);
    const int first = rows_->selectionIndex() == 0 && model()->rowCount() > 1 ? 1 : 0;
    if (!rows_->filterText.get().empty() && selectedRow() != first)
        selectionModel()->setCurrentIndex(model()->index(first, 0), QItemSelectionModel::NoUpdate);
}

void RecordListView::startDrag(Qt::DropActions actions)
{
    if (selectedRow() == ArrayController::kNoSelection || !dragOf_)
        return;
    const RowDrag dragged = dragOf_();
    auto* rows = new QMimeData;
    rows->setData(dragType_, dragged.data);
    auto* drag = new QDrag(this);
    drag->setMimeData(rows);
    drag->setPixmap(dragged.picture);
    const bool wasDropped = drag->exec(actions, Qt::CopyAction) != Qt::IgnoreAction;
    endHover(*viewport());
    Q_EMIT dragEnded(wasDropped);
}

void RecordListView::mousePressEvent(QMouseEvent* event)
{
    if (isDeliberate_ && event->button() != Qt::LeftButton)
        return;
    rest_.stop();
    rowBeforePress_ = rows_->selectedRows().size() > 1 ? ArrayController::kNoSelection : selectedRow();
    pressedRow_ = indexAt(event->position().toPoint()).row();
    const QScopedValueRollback guard(isOnlyMarking_, isDeliberate_);
    QTreeView::mousePressEvent(event);
}

void RecordListView::mouseDoubleClickEvent(QMouseEvent* event)
{
    // What the first click chose may have made room for a bar, so that another row lies under the pointer now.
    if (!isDeliberate_)
        QTreeView::mouseDoubleClickEvent(event);
}

void RecordListView::mouseMoveEvent(QMouseEvent* event)
{
    if (!isDeliberate_ || event->buttons() == Qt::NoButton) // else the mark would follow the pointer from row to row
        QTreeView::mouseMoveEvent(event);
}

void RecordListView::mouseReleaseEvent(QMouseEvent* event)
{
    if (isDeliberate_ && event->button() != Qt::LeftButton)
        return;
    {
        const QScopedValueRollback guard(isOnlyMarking_, isDeliberate_);
        QTreeView::mouseReleaseEvent(event);
    }
    if (event->button() != Qt::LeftButton)
        return;
    const std::int32_t pressed = std::exchange(pressedRow_, ArrayController::kNoSelection);
    const bool isClick =
        pressed != ArrayController::kNoSelection && indexAt(event->position().toPoint()).row() == pressed;
    if (isClick && (isDeliberate_ || pressed == rowBeforePress_))
        choose(pressed);
    else if (isDeliberate_)
        showSelection();
}

QItemSelectionModel::SelectionFlags RecordListView::selectionCommand(const QModelIndex& index,
                                                                     const QEvent* event) const
{
    using Model = QItemSelectionModel;
    if (!event) // nobody's click or key, whichever is held meanwhile
        return Model::ClearAndSelect | Model::Rows;
    auto command = QTreeView::selectionCommand(index, event);
    if (selectsSeveral() && event->type() == QEvent::KeyPress) {
        const auto& key = static_cast<const QKeyEvent&>(*event);
        if (choosesRow(key)) // Space as with Ctrl, since Command and Space are the system's on a Mac
            command = Model::Toggle | Model::Rows;
        else if (belongsToList(key))
            command = Model::ClearAndSelect | Model::Rows;
    }
    // A click with Ctrl, or beside the rows, would take the choice back and leave nothing chosen.
    const bool takesBack = command.testFlag(Model::Toggle) || command.testFlag(Model::Deselect);
    const auto isLast = [&] { return selectionModel()->isSelected(index) && selectedRows().size() == 1; };
    return !index.isValid() || (takesBack && (!selectsSeveral() || isLast())) ? Model::NoUpdate : command;
}

QModelIndex RecordListView::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers)
{
    // The cursor may stand on a row that is not selected, as Qt has it while none is; the first key goes to that row,
    // not past it. With Ctrl the cursor goes alone.
    const bool goesOn =
        (action == MoveDown || action == MoveNext || action == MovePageDown) && !(modifiers & Qt::ControlModifier);
    if (goesOn && !selectionModel()->isSelected(currentIndex()))
        return currentIndex().isValid() ? currentIndex() : model()->index(0, 0);
    return QTreeView::moveCursor(action, modifiers);
}

bool RecordListView::event(QEvent* event)
{
    if (event->type() == QEvent::ShortcutOverride && belongsToList(*static_cast<QKeyEvent*>(event))) {
        event->accept();
        return true;
    }
    return QTreeView::event(event);
}

void RecordListView::keyPressEvent(QKeyEvent* event)
{
    if (isTyping(*event) && leavesTyping_) {
        event->ignore();
        return;
    }
    if (!isDeliberate_) {
        moveByKey(event);
        return;
    }
    if (choosesRow(*event)) {
        if (!event->isAutoRepeat() && currentIndex().isValid())
            choose(currentIndex().row());
        return;
    }
    const QScopedValueRollback guard(isOnlyMarking_, true);
    moveByKey(event);
    if (!movesInList(*event))
        return;
    isKeyHeld_ = true;
    waitForRest();
}

void RecordListView::moveByKey(QKeyEvent* event)
{
    QTreeView::keyPressEvent(event);
    // The cursor was there already, so Qt moved nothing and selected nothing.
    const bool selects = movesInList(*event) && !(event->modifiers() & Qt::ControlModifier);
    if (selects && currentIndex().isValid() && !selectionModel()->isSelected(currentIndex()))
        selectionModel()->select(currentIndex(), QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

void RecordListView::keyReleaseEvent(QKeyEvent* event)
{
    QTreeView::keyReleaseEvent(event);
    if (!movesInList(*event) || event->isAutoRepeat())
        return;
    isKeyHeld_ = false;
    if (rest_.isActive())
        waitForRest();
}

void RecordListView::keyboardSearch(const QString& search)
{
    if (!isDeliberate_)
        QTreeView::keyboardSearch(search);
}

void RecordListView::focusOutEvent(QFocusEvent* event)
{
    QTreeView::focusOutEvent(event);
    isKeyHeld_ = false; // it is let go elsewhere
}

void RecordListView::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected)
{
    QTreeView::selectionChanged(selected, deselected);
    if (showingSelection_ || isOnlyMarking_)
        return;
    if (auto rows = selectedRows(); rows.size() == 1)
        choose(rows.front());
    else if (!rows.empty()) {
        // A screen reader adds a row without moving the cursor there.
        const bool isOne = selected.size() == 1 && selected.front().height() == 1;
        const bool isAside = isOne && !selected.contains(currentIndex());
        choose(std::move(rows), isAside ? selected.front().top() : currentIndex().row());
    }
}

void RecordListView::choose(std::int32_t row)
{
    rest_.stop();
    rows_->setSelectionIndex(row);
    table_->rowChosen.emit();
}

void RecordListView::choose(std::vector<std::int32_t> rows, std::int32_t current)
{
    rows_->setSelectedRows(std::move(rows), current);
    table_->rowChosen.emit();
}

void RecordListView::waitForRest()
{
    if (selectedRow() == rows_->selectionIndex())
        rest_.stop(); // back where they came from
    else
        rest_.start();
}

void RecordListView::rested()
{
    // What is being done acts on the row that is chosen, to its end.
    const bool isOpen = QApplication::activeModalWidget() || QApplication::activePopupWidget();
    if (isKeyHeld_ || isOpen || QGuiApplication::mouseButtons() != Qt::NoButton)
        rest_.start();
    else if (const std::int32_t row = selectedRow(); row != ArrayController::kNoSelection)
        choose(row);
}

std::vector<std::int32_t> RecordListView::selectedRows() const
{
    std::vector<std::int32_t> rows;
    if (!selectionModel())
        return rows;
    // Range by range: Qt would search all of them again for each row.
    for (const QItemSelectionRange& range : selectionModel()->selection()) {
        for (int row = range.top(); row <= range.bottom(); ++row)
            rows.push_back(row);
    }
    std::ranges::sort(rows);
    return rows;
}

std::int32_t RecordListView::selectedRow() const
{
    const QItemSelection ranges = selectionModel() ? selectionModel()->selection() : QItemSelection();
    return ranges.isEmpty() ? ArrayController::kNoSelection : ranges.front().top();
}

void RecordListView::showSelection()
{
    rest_.stop();
    pressedRow_ = ArrayController::kNoSelection; // it may be another one's place now
    const QScopedValueRollback guard(showingSelection_, true);
    const std::int32_t row = rows_->selectionIndex();
    if (row == ArrayController::kNoSelection) {
        selectionModel()->clear();
        return;
    }
    const bool isCursorThere = currentIndex().row() == row || selectsSeveral(); // where it goes without selecting
    if (isCursorThere && selectedRows() == rows_->selectedRows())
        return;
    const QModelIndex index = model()->index(row, 0);
    if (rows_->selectedRows().size() == 1)
        setCurrentIndex(index);
    else
        showSeveral();
    scrollTo(index);
}

void RecordListView::showSeveral()
{
    QItemSelection ranges;
    const std::vector<std::int32_t>& rows = rows_->selectedRows();
    for (auto first = rows.begin(); first != rows.end();) {
        const auto gap = std::adjacent_find(first, rows.end(), [](auto one, auto next) { return next > one + 1; });
        const auto end = gap == rows.end() ? gap : std::next(gap);
        ranges.emplace_back(model()->index(*first, 0), model()->index(*std::prev(end), model()->columnCount() - 1));
        first = end;
    }
    selectionModel()->setCurrentIndex(model()->index(rows_->selectionIndex(), 0), QItemSelectionModel::NoUpdate);
    setUpdatesEnabled(false); // or Qt would look up where each of the ranges stands, to paint less
    selectionModel()->select(ranges, QItemSelectionModel::ClearAndSelect);
    setUpdatesEnabled(true);
}

} // namespace platform::qt
