#include "app/interface/panel/PageOverview.h"

#include "app/interface/panel/DifferenceBadge.h"
#include "app/interface/panel/PageDrags.h"
#include "app/interface/panel/PageModel.h"
#include "app/interface/panel/PanelColours.h"
#include "platform/qt/Text.h"

#include <QKeyEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QStyle>
#include <QStyledItemDelegate>

#include <algorithm>
#include <utility>

namespace interface {

namespace {

constexpr int kCell = 7;
constexpr int kCellGap = 4;
constexpr int kTilePadding = 8;
constexpr int kTileGap = 3;
constexpr int kTitle = 14; ///< so much of number and title is seen, in letters
constexpr double kBadge = 6;
constexpr double kDimmed = 0.45; ///< a page that is left over

QSize tileSize(const QFontMetrics& metrics)
{
    const int cells = PageModel::kPots * kCell + (PageModel::kPots - 1) * kCellGap;
    const int content = std::max(cells, kTitle * metrics.averageCharWidth());
    return {content + 2 * kTilePadding + 2 * kTileGap, metrics.height() + kCell + 16 + 2 * kTileGap};
}

void drawCells(QPainter& painter, const QPointF& from, unsigned mapped, const PanelColours& colours)
{
    for (int pot = 0; pot < PageModel::kPots; ++pot) {
        const QRectF cell(from.x() + pot * (kCell + kCellGap), from.y(), kCell, kCell);
        const bool isMapped = (mapped >> static_cast<unsigned>(pot)) & 1U;
        painter.setPen(QPen(isMapped ? colours.cellEdge : colours.tileEdge, 1));
        painter.setBrush(isMapped ? QBrush(colours.cell) : QBrush(Qt::NoBrush));
        painter.drawEllipse(cell.adjusted(0.5, 0.5, -0.5, -0.5));
    }
}

class TileDelegate final : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const override
    {
        return tileSize(option.fontMetrics);
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        const PanelColours& colours = panelColours(option.palette);
        const bool isShown = index.data(PageModel::IsShown).toBool();
        const QRectF tile =
            QRectF(option.rect).adjusted(kTileGap + 0.5, kTileGap + 0.5, -kTileGap - 0.5, -kTileGap - 0.5);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        if (index.data(PageModel::IsLeftOver).toBool())
            painter->setOpacity(kDimmed);
        drawTile(*painter, tile, option, isShown, colours);
        if (index.data(PageModel::HoldsSelected).toBool()) {
            painter->setBrush(Qt::NoBrush);
            painter->setPen(QPen(colours.where, 2));
            painter->drawRoundedRect(tile.adjusted(3, 3, -3, -3), 3, 3); // inside, apart from frame and focus
        }
        drawTexts(*painter, tile, option, index, isShown, colours);
        const double cells = PageModel::kPots * kCell + (PageModel::kPots - 1) * kCellGap;
        drawCells(*painter, {tile.center().x() - cells / 2, tile.bottom() - kCell - 6},
                  index.data(PageModel::MappedPots).toUInt(), colours);
        if (index.data(PageModel::DifferingPots).toUInt() != 0)
            drawDifferenceBadge(*painter, tile.topRight() + QPointF(-kBadge - 3, kBadge + 3), kBadge, colours);
        painter->restore();
    }

private:
    static void drawTile(QPainter& painter, const QRectF& tile, const QStyleOptionViewItem& option, bool isShown,
                         const PanelColours& colours)
    {
        const bool isHovered = option.state & QStyle::State_MouseOver;
        QLinearGradient metal(tile.topLeft(), tile.bottomLeft());
        metal.setColorAt(0, isHovered ? colours.tileHover : colours.tile);
        metal.setColorAt(1, isShown ? colours.tileShown : colours.tile);
        painter.setBrush(metal);
        painter.setPen(isShown ? QPen(colours.tileText, 2) : QPen(colours.tileFrame, 1));
        painter.drawRoundedRect(tile, 4, 4);
        const bool hasFocus = option.state & QStyle::State_HasFocus;
        if (!hasFocus)
            return;
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(colours.focus, 2));
        painter.drawRoundedRect(tile.adjusted(-2.5, -2.5, 2.5, 2.5), 6, 6);
    }

    /// The number, and beside it as much of the title as there is room for.
    static void drawTexts(QPainter& painter, const QRectF& tile, const QStyleOptionViewItem& option,
                          const QModelIndex& index, bool isShown, const PanelColours& colours)
    {
        QFont font = option.font;
        font.setBold(isShown);
        const QFontMetrics metrics(font);
        const int textHeight = option.fontMetrics.height();
        const QRect within = tile.toAlignedRect();
        QRect room(within.left() + kTilePadding, within.top() + 3, within.width() - 2 * kTilePadding, textHeight);
        if (index.data(PageModel::DifferingPots).toUInt() != 0)
            room.setWidth(room.width() - static_cast<int>(2 * kBadge));
        /// Cuts what is so wide off the begin of the room.
        const auto take = [&](int width) {
            const QRect taken(room.topLeft(), QSize(std::min(width, room.width()), room.height()));
            room.setLeft(taken.right() + 1);
            return QStyle::visualRect(option.direction, within, taken);
        };
        if (isShown) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(colours.tileText);
            drawArrow(painter, take(textHeight * 5 / 9), option.direction);
        }
        painter.setFont(font);
        painter.setPen(colours.tileText);
        painter.setLayoutDirection(option.direction);
        const auto draw = [&painter](const QRect& area, const QString& text) {
            painter.drawText(area, Qt::AlignLeading | Qt::AlignVCenter | Qt::TextSingleLine, text);
        };
        const QString number = index.data().toString();
        draw(take(metrics.horizontalAdvance(number)), number);
        take(metrics.horizontalAdvance(QLatin1Char(' ')) + 2);
        const QString title = metrics.elidedText(index.data(PageModel::Title).toString(), Qt::ElideRight, room.width());
        draw(take(room.width()), platform::qt::isolated(title));
    }

    /// Points at the number that follows.
    static void drawArrow(QPainter& painter, const QRectF& room, Qt::LayoutDirection direction)
    {
        const double reach = room.width() * 0.45;
        const bool isForward = direction == Qt::LeftToRight;
        const double along = isForward ? reach * 1.4 : -reach * 1.4;
        const QPointF tip((isForward ? room.left() : room.right()) + along, room.center().y());
        painter.drawPolygon(QPolygonF{tip, tip + QPointF(-along, -reach), tip + QPointF(-along, reach)});
    }
};

} // namespace

PageOverview::PageOverview(QWidget* parent) : QListView(parent), model_(new PageModel(this))
{
    setObjectName(QStringLiteral("pageOverview"));
    setAccessibleName(tr("Pages"));
    setFlow(QListView::LeftToRight);
    setWrapping(false);
    setResizeMode(QListView::Adjust);
    setUniformItemSizes(true);
    setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFrameShape(QFrame::NoFrame);
    viewport()->setBackgroundRole(QPalette::Window); // the tiles lie on the window like the panel
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setMouseTracking(true);
    viewport()->setAttribute(Qt::WA_Hover);
    setModel(model_);
    setItemDelegate(new TileDelegate(this));
    drags_ = new PageDrags(*this, *model_);
    connect(drags_, &PageDrags::pageWanted, this, &PageOverview::pageChosen);
    refresh(0, 0);
}

void PageOverview::setSource(Source name, std::function<QString(int page)> title)
{
    const QScopedValueRollback guard(isRefreshing_, true);
    model_->setSource(std::move(name), std::move(title));
}

void PageOverview::setDifferences(Source difference)
{
    model_->setDifferences(std::move(difference));
}

void PageOverview::refresh(int pages, int shownPage, int leftOver)
{
    const QScopedValueRollback guard(isRefreshing_, true);
    const bool hadPages = model_->rowCount() > 0;
    const bool isOtherCount = model_->rowCount() != pages + leftOver;
    model_->refresh(pages, shownPage, leftOver);
    if (hadPages != (pages > 0) || accessibleDescription().isEmpty() != (pages > 0))
        setAccessibleDescription(pages > 0 ? QString() : tr("Choose a plug-in to see its pages here."));
    const QModelIndex shown = model_->index(shownPage - 1);
    if (shown != currentIndex())
        setCurrentIndex(shown);
    // Qt would lay out when events are next handled, and an alert that comes up before shows an empty strip.
    if (isOtherCount) {
        doItemsLayout();
        updateGeometry(); // it may be another number of rows
    }
}

void PageOverview::ringPages(std::vector<int> pages)
{
    model_->setHolding(std::move(pages));
}

QSize PageOverview::sizeHint() const
{
    const QSize tile = tileSize(fontMetrics());
    return {10 * tile.width(), rows_ > 1 ? rows_ * tile.height() + 2 * frameWidth() : minimumSizeHint().height()};
}

QSize PageOverview::minimumSizeHint() const
{
    const QSize tile = tileSize(fontMetrics());
    const int bar = style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, horizontalScrollBar());
    return {3 * tile.width(), tile.height() + bar + 2 * frameWidth()};
}

int PageOverview::rowsWithin(const QSize& room) const
{
    const QSize tile = tileSize(fontMetrics());
    const int perRow = std::max(1, room.width() / tile.width());
    const int needed = (model_->rowCount() + perRow - 1) / perRow;
    return std::clamp(room.height() / tile.height(), 1, std::max(1, needed));
}

void PageOverview::setRows(int rows)
{
    if (rows == rows_)
        return;
    rows_ = rows;
    setWrapping(rows > 1);
    setVerticalScrollBarPolicy(rows > 1 ? Qt::ScrollBarAsNeeded : Qt::ScrollBarAlwaysOff);
    setHorizontalScrollBarPolicy(rows > 1 ? Qt::ScrollBarAlwaysOff : Qt::ScrollBarAsNeeded);
    updateGeometry();
}

void PageOverview::scrollTo(const QModelIndex& index, ScrollHint hint)
{
    if (drags_ && drags_->isOver()) // what is dragged would lie on another tile
        return;
    for (const int row : {index.row() + 1, index.row() - 1}) { // its neighbours stay in sight, ready to be clicked
        if (const QModelIndex beside = model_->index(row); beside.isValid())
            QListView::scrollTo(beside, hint);
    }
    QListView::scrollTo(index, hint);
}

void PageOverview::startDrag(Qt::DropActions)
{
    drags_->dragPage();
}

void PageOverview::currentChanged(const QModelIndex& current, const QModelIndex& previous)
{
    QListView::currentChanged(current, previous);
    if (!isRefreshing_ && current.isValid())
        Q_EMIT pageChosen(current.row() + 1);
}

void PageOverview::dataChanged(const QModelIndex&, const QModelIndex&, const QList<int>&)
{
    // No tile changes its size, so nothing is laid out anew; what is in sight is asked for again.
    viewport()->update();
}

QItemSelectionModel::SelectionFlags PageOverview::selectionCommand(const QModelIndex& index, const QEvent*) const
{
    // Whatever key is held, one page is shown.
    return index.isValid() ? QItemSelectionModel::ClearAndSelect : QItemSelectionModel::NoUpdate;
}

QModelIndex PageOverview::moveCursor(CursorAction action, Qt::KeyboardModifiers)
{
    // By where the tiles lie; the list view itself goes the wrong way where they run from the right.
    const int towardsLeft = isRightToLeft() ? 1 : -1;
    const int last = model_->pages() - 1;
    const auto clamped = [this, last](int row) { return model_->index(std::clamp(row, 0, std::max(last, 0))); };
    const int perRow = std::max(1, viewport()->width() / tileSize(fontMetrics()).width());
    const auto inColumn = [this, last](int step) {
        const int row = currentIndex().row() + step;
        return row >= 0 && row <= last ? model_->index(row) : currentIndex();
    };
    switch (action) {
    case MoveLeft: return clamped(currentIndex().row() + towardsLeft);
    case MoveRight: return clamped(currentIndex().row() - towardsLeft);
    case MoveUp: return inColumn(-perRow);
    case MoveDown: return inColumn(perRow);
    case MoveHome: return clamped(0);
    case MoveEnd: return clamped(last);
    default: return currentIndex();
    }
}

void PageOverview::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
        if (rows_ == 1) {
            event->ignore();
            return;
        }
        [[fallthrough]];
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Home:
    case Qt::Key_End: QListView::keyPressEvent(event); return;
    default: event->ignore(); // digits, words and Page Up mean the panel and the search, not a tile
    }
}

void PageOverview::changeEvent(QEvent* event)
{
    QListView::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        viewport()->update();
    else if (event->type() == QEvent::FontChange)
        updateGeometry();
}

void PageOverview::resizeEvent(QResizeEvent* event)
{
    QListView::resizeEvent(event);
    if (currentIndex().isValid())
        scrollTo(currentIndex());
}

void PageOverview::paintEvent(QPaintEvent* event)
{
    QListView::paintEvent(event);
    QPainter painter(viewport());
    if (model_->rowCount() > 0) {
        drags_->paint(painter);
        return;
    }
    painter.setLayoutDirection(Qt::LayoutDirectionAuto); // the text's
    painter.setPen(palette().color(QPalette::Active, QPalette::WindowText));
    const QString hint = painter.fontMetrics().elidedText(accessibleDescription(), Qt::ElideRight, viewport()->width());
    painter.drawText(viewport()->rect(), Qt::AlignCenter, hint);
}

} // namespace interface
