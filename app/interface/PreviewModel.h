#pragma once
// A mapping as a table: a row a page, a column a pot. Names that differ from another mapping are marked.

#include "platform/controls/Record.h"

#include <QAbstractTableModel>
#include <QIcon>

#include <cstdint>
#include <vector>

namespace interface {

class PreviewModel final : public QAbstractTableModel {
    Q_OBJECT

public:
    using QAbstractTableModel::QAbstractTableModel;

    void setEntries(std::vector<platform::Record> entries);
    /// The mapping that it is beside, and the positions in which the two differ, ascending.
    void setOther(std::vector<platform::Record> other, std::vector<std::int32_t> differing);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    std::vector<platform::Record> entries_;
    std::vector<platform::Record> other_;
    std::vector<std::int32_t> differing_;
};

} // namespace interface
