#include "platform/qt/RecordTableModel.h"

#include "platform/qt/RecordSort.h"
#include "platform/qt/Text.h"

#include <algorithm>
#include <utility>

namespace platform::qt {

RecordTableModel::RecordTableModel(std::shared_ptr<ArrayController> controller, std::vector<RecordColumn> columns,
                                   std::string toolTipKey, QObject* parent)
    : QAbstractTableModel(parent),
      controller_(std::move(controller)),
      columns_(std::move(columns)),
      toolTipKey_(std::move(toolTipKey)),
      rows_(controller_->arrangedCount())
{
    arranged_ = controller_->arrangedChanged.connect([this] {
        beginResetModel();
        update();
        endResetModel();
    });
}

void RecordTableModel::setColumns(std::function<std::vector<RecordColumn>(const std::vector<Record>&)> columnsOf)
{
    beginResetModel();
    columnsOf_ = std::move(columnsOf);
    columnsRevision_ = controller_->contentRevision();
    columns_ = columnsOf_(controller_->content());
    endResetModel();
}

void RecordTableModel::update()
{
    rows_ = controller_->arrangedCount();
    if (columnsOf_ && std::exchange(columnsRevision_, controller_->contentRevision()) != controller_->contentRevision())
        columns_ = columnsOf_(controller_->content());
}

int RecordTableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : rows_;
}

int RecordTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(columns_.size());
}

QVariant RecordTableModel::data(const QModelIndex& index, int role) const
{
    const Record* record = controller_->arrangedObject(index.row());
    if (!record)
        return {};
    const bool canBeMarked = markOf_ && (index.column() == 0 || role == Qt::ToolTipRole);
    switch (role) {
    case Qt::DisplayRole: return textAt(*record, index.column());
    case Qt::ToolTipRole:
    case Qt::AccessibleTextRole: {
        const bool isTip = role == Qt::ToolTipRole;
        const QString mark = canBeMarked ? markOf_(*record) : QString();
        const QString text =
            isTip && !toolTipKey_.empty() ? toQt(record->text(toolTipKey_)) : textAt(*record, index.column());
        return mark.isEmpty() ? text : text + (isTip ? QStringLiteral("\n") : QStringLiteral(", ")) + mark;
    }
    case Qt::DecorationRole: return canBeMarked && !markOf_(*record).isEmpty() ? QVariant(mark_) : QVariant();
    default: return {};
    }
}

QString RecordTableModel::textAt(const Record& record, int column) const
{
    const std::string& key = columns_.at(static_cast<std::size_t>(column)).key;
    if (!key.empty())
        return toQt(record.text(key));
    return textOf_ ? textOf_(record) : QString();
}

QVariant RecordTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 || section >= columnCount())
        return {};
    return columns_[static_cast<std::size_t>(section)].title;
}

void RecordTableModel::sort(int column, Qt::SortOrder order)
{
    if (column < 0 || column >= columnCount())
        return;
    std::vector<std::string> keys;
    for (const RecordColumn& each : columns_)
        keys.push_back(each.key); // no list that sorts has a column without one
    std::rotate(keys.begin(), keys.begin() + column, keys.begin() + column + 1);
    auto sorted = sortedBy(std::move(keys), order);
    if (searchedKeys_.empty()) {
        controller_->setArrangement(std::move(sorted));
        return;
    }
    const auto isSelected = [](const ArrayController& list, std::size_t row) {
        return &list.content()[row] == list.selection();
    };
    controller_->setArrangement(searching({searchedKeys_, std::move(sorted), {}, isSelected}));
}

void RecordTableModel::setTextMaker(std::function<QString(const Record&)> textOf)
{
    textOf_ = std::move(textOf);
    refreshMadeTexts();
}

void RecordTableModel::refreshMadeTexts()
{
    for (int column = 0; column < columnCount(); ++column) {
        if (rows_ > 0 && columns_[static_cast<std::size_t>(column)].key.empty())
            Q_EMIT dataChanged(index(0, column), index(rows_ - 1, column), {Qt::DisplayRole, Qt::ToolTipRole});
    }
}

void RecordTableModel::setMark(const QIcon& symbol, std::function<QString(const Record&)> markOf)
{
    mark_ = symbol;
    markOf_ = std::move(markOf);
    refreshMarks();
}

void RecordTableModel::refreshMarks()
{
    if (rows_ > 0)
        Q_EMIT dataChanged(index(0, 0), index(rows_ - 1, 0),
                           {Qt::DecorationRole, Qt::ToolTipRole, Qt::AccessibleTextRole});
}

Qt::ItemFlags RecordTableModel::flags(const QModelIndex& index) const
{
    const Qt::ItemFlags flags = QAbstractTableModel::flags(index);
    return areRowsDragged_ && index.isValid() ? flags | Qt::ItemIsDragEnabled : flags;
}

} // namespace platform::qt
