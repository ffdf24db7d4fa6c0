#pragma once
// The pages of the mapping for the overview. Holds no names: it asks for them when a page is looked at.

#include "mapping/ParameterOrder.h"

#include <QAbstractListModel>

#include <functional>
#include <vector>

namespace interface {

class PageModel final : public QAbstractListModel {
    Q_OBJECT

public:
    enum Role {
        /// A bit for each pot that has a parameter, pot 1 the lowest.
        MappedPots = Qt::UserRole,
        /// Whether the panel shows this page.
        IsShown,
        /// Whether the selected parameter stands on it.
        HoldsSelected,
        /// Whether it lies behind the last page, where it is kept but can be neither shown nor edited.
        IsLeftOver,
        /// A bit for each pot that differs from the other side of a comparison.
        DifferingPots,
        /// What its parameters begin with; empty where none stands on it.
        Title,
    };
    static constexpr int kPots = mapping::kPotsPerPage;

    using QAbstractListModel::QAbstractListModel;

    void setSource(std::function<QString(int page, int pot)> name, std::function<QString(int page)> title = {});
    /// What a pot that differs from the other side of a comparison holds on either; empty where they are the same.
    void setDifferences(std::function<QString(int page, int pot)> difference);
    /// Rows are pages, then those left over behind them; names may have changed everywhere.
    void refresh(int pages, int shownPage, int leftOver);
    /// The pages on which the selected parameter stands, ascending.
    void setHolding(std::vector<int> pages);
    /// Without those left over.
    int pages() const { return pages_; }

    int rowCount(const QModelIndex& parent = {}) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QVariant data(const QModelIndex& index, int role) const override;

private:
    QString nameAt(int page, int pot) const;
    QString titleOf(int page) const;
    unsigned mappedPots(int page) const;
    QString differenceAt(int page, int pot) const;
    unsigned differingPots(int page) const;
    QString spokenText(int page) const;
    QString namesText(int page) const;
    bool holdsSelected(int page) const;

    std::function<QString(int page, int pot)> name_;
    std::function<QString(int page)> title_;
    std::function<QString(int page, int pot)> difference_;
    int pages_ = 0;
    int leftOver_ = 0;
    int shown_ = 0;
    std::vector<int> holding_;
};

} // namespace interface
