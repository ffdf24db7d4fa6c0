#pragma once
// A strip of all pages: a tile each with the page's number, what its parameters begin with, and eight cells, filled
// where a parameter stands. The shown page is marked. In one row, or in several where there is room. Names are asked
// for by tiles on screen only, so that it stays quick with thousands of pages.

#include <QListView>

#include <functional>
#include <vector>

namespace interface {

class PageDrags;
class PageModel;

class PageOverview final : public QListView {
    Q_OBJECT

public:
    /// The name on a pot (1 to 8) of a page (from 1); "-" when it is empty.
    using Source = std::function<QString(int page, int pot)>;

    explicit PageOverview(QWidget* parent = nullptr);

    /// Of each page what its parameters begin with, too.
    void setSource(Source name, std::function<QString(int page)> title = {});
    /// What a pot that differs from the other side of a comparison holds on either; empty where they are the same.
    void setDifferences(Source difference);
    /// Shows so many pages as they are now, one of them marked and in sight, and dimmed those left over behind them.
    /// 0 pages: a hint instead.
    void refresh(int pages, int shownPage, int leftOver = 0);

    PageDrags& drags() const { return *drags_; }
    /// Rings the pages (from 1, ascending) on which the selected parameter stands.
    void ringPages(std::vector<int> pages);

    /// How many rows of tiles lie in such a room: one at least, no more than there are pages for.
    int rowsWithin(const QSize& room) const;
    /// One row is scrolled sideways, several up and down.
    void setRows(int rows);

    void scrollTo(const QModelIndex& index, ScrollHint hint = EnsureVisible) override;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    /// The user wants to see another page, from 1.
    void pageChosen(int page);

protected:
    void startDrag(Qt::DropActions actions) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    void dataChanged(const QModelIndex& first, const QModelIndex& last, const QList<int>& roles) override;
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index, const QEvent* event) const override;
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    void keyPressEvent(QKeyEvent* event) override;
    void changeEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    PageModel* model_;
    PageDrags* drags_ = nullptr;
    int rows_ = 1;
    bool isRefreshing_ = false;
};

} // namespace interface
