#pragma once
// The rows of an array controller for an item view: one column per record key, or of a text made of the record.

#include "platform/controls/ArrayController.h"

#include <QAbstractTableModel>
#include <QIcon>

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace platform::qt {

struct RecordColumn {
    QString title;
    std::string key;    ///< whose text a cell shows; empty: a text made of the record
    QString like = {};  ///< it is as wide as this text, or its title; empty: it has what room the others leave
    bool grows = false; ///< with the list, where that gives the roomy one more than can be read
};

class RecordTableModel final : public QAbstractTableModel {
    Q_OBJECT

public:
    /// `toolTipKey` names the text shown when the pointer rests on any cell of a row; empty: the cell's own text.
    RecordTableModel(std::shared_ptr<ArrayController> controller, std::vector<RecordColumn> columns,
                     std::string toolTipKey, QObject* parent = nullptr);

    /// Columns that follow the content: asked for now and whenever the content is another one.
    void setColumns(std::function<std::vector<RecordColumn>(const std::vector<Record>&)> columnsOf);

    /// What the columns without a key show.
    void setTextMaker(std::function<QString(const Record&)> textOf);
    bool isMadeText(int column) const { return columns_.at(static_cast<std::size_t>(column)).key.empty(); }
    /// Those texts are others than before though the records are not.
    void refreshMadeTexts();
    /// Lets a symbol in the first column mark rows. `markOf` answers what it means, for the tool tip and screen
    /// readers; nothing where there is none. Asked whenever a row is shown.
    void setMark(const QIcon& symbol, std::function<QString(const Record&)> markOf);
    /// Other rows are marked than before.
    void refreshMarks();
    /// Lets rows be dragged; what is dragged the view knows.
    void letRowsBeDragged() { areRowsDragged_ = true; }

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    /// Lets the list be searched while it sorts: by the texts under these keys. The selected row is always shown.
    void setSearchedKeys(std::vector<std::string> keys) { searchedKeys_ = std::move(keys); }
    /// Sorts by the column first, then by the others from the left; as a person sorts (case and digits).
    void sort(int column, Qt::SortOrder order) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

private:
    void update();
    QString textAt(const Record& record, int column) const;

    std::shared_ptr<ArrayController> controller_;
    std::vector<RecordColumn> columns_;
    std::function<std::vector<RecordColumn>(const std::vector<Record>&)> columnsOf_;
    std::uint64_t columnsRevision_ = 0;
    std::function<QString(const Record&)> textOf_;
    std::function<QString(const Record&)> markOf_;
    QIcon mark_;
    std::string toolTipKey_;
    std::vector<std::string> searchedKeys_;
    bool areRowsDragged_ = false;
    std::int32_t rows_ = 0;
    Connection arranged_;
};

} // namespace platform::qt
