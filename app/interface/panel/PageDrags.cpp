#include "app/interface/panel/PageDrags.h"

#include "app/interface/panel/PageModel.h"
#include "app/interface/panel/PanelColours.h"
#include "platform/qt/Hover.h"

#include <QDrag>
#include <QDragEnterEvent>
#include <QListView>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QToolTip>

#include <algorithm>
#include <bit>
#include <utility>

namespace interface {

namespace {

/// How long something rests on a tile that is to be shown.
constexpr int kRestMs = 500;
/// The strip is moved by so much in this time, while something is held so near its ends.
constexpr int kScrollMs = 25;
constexpr int kScrollStep = 12;
constexpr int kScrollMargin = 24;

constexpr double kMarkWidth = 3;

/// 1 to 8, or 9 where all are mapped.
int firstEmptyPot(unsigned mappedPots)
{
    return std::countr_one(mappedPots) + 1;
}

} // namespace

PageDrags::PageDrags(QListView& strip, const PageModel& pages) : QObject(&strip), strip_(strip), pages_(pages)
{
    rest_.setObjectName(QStringLiteral("dragRest"));
    rest_.setSingleShot(true);
    rest_.setTimerType(Qt::PreciseTimer); // others may come early
    rest_.setInterval(kRestMs);
    connect(&rest_, &QTimer::timeout, this, &PageDrags::rested);
    scroll_.setInterval(kScrollMs);
    connect(&scroll_, &QTimer::timeout, this, &PageDrags::scroll);
    strip.setAcceptDrops(true);
    strip.setDragEnabled(true);
    strip.viewport()->installEventFilter(this);
}

bool PageDrags::eventFilter(QObject*, QEvent* event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress: {
        const auto& press = static_cast<const QMouseEvent&>(*event);
        pressedPage_ = press.button() == Qt::LeftButton ? countedPageAt(press.position().toPoint()) : 0;
        return false;
    }
    case QEvent::DragEnter: // taken wherever it enters, since moves are told only to who took it
        event->setAccepted(dragOver(static_cast<const QDropEvent&>(*event)));
        return true;
    case QEvent::DragMove:
        event->setAccepted(dragOver(static_cast<const QDropEvent&>(*event)) && target_.isThere());
        return true;
    case QEvent::DragLeave: leave(); return true;
    case QEvent::Drop: drop(static_cast<QDropEvent&>(*event)); return true;
    default: return false;
    }
}

void PageDrags::dragPage()
{
    const int page = std::exchange(pressedPage_, 0);
    if (page == 0 || pages_.pages() < 2)
        return;
    auto* drag = new QDrag(&strip_);
    drag->setMimeData(DragData{.kind = DragData::Kind::page, .state = state_(), .page = page}.toMime());
    drag->setPixmap(strip_.viewport()->grab(strip_.visualRect(pages_.index(page - 1))));
    const bool wasDropped = drag->exec(Qt::MoveAction) != Qt::IgnoreAction;
    platform::qt::endHover(*strip_.viewport());
    end(wasDropped);
}

void PageDrags::end(bool wasDropped)
{
    leave();
    const int shownBefore = std::exchange(shownBefore_, 0);
    if (shownBefore > 0 && !wasDropped && shownState_ == state_())
        Q_EMIT pageWanted(shownBefore);
}

bool PageDrags::dragOver(const QDropEvent& event)
{
    drag_ = DragData::of(*event.mimeData(), state_());
    position_ = event.position().toPoint();
    isOver_ = drag_.kind != DragData::Kind::nothing;
    follow();
    return isOver_;
}

void PageDrags::drop(QDropEvent& event)
{
    dragOver(event);
    const DragData drag = drag_;
    const Target target = target_;
    leave();
    event.setAccepted(target.isThere());
    if (!target.isThere())
        return;
    shownBefore_ = 0;
    switch (drag.kind) {
    case DragData::Kind::parameters: Q_EMIT parametersDropped(target.tile); return;
    case DragData::Kind::pot: Q_EMIT potDropped(drag.page, drag.pot, target.tile); return;
    default: Q_EMIT pageDropped(drag.page, target.before);
    }
}

void PageDrags::leave()
{
    isOver_ = false;
    drag_ = {};
    follow();
}

/// Brings mark, text and timers to where the drag is.
void PageDrags::follow()
{
    if (const Target now = isOver_ ? targetOf(drag_, position_) : Target(); !(now == target_)) {
        target_ = now;
        // Below the strip, since what lies under the pointer, even this, would be dropped on.
        const QPoint below(position_.x(), strip_.viewport()->height());
        QToolTip::showText(strip_.viewport()->mapToGlobal(below), target_.text, strip_.viewport());
        strip_.viewport()->update();
    }
    const int page = isOver_ && drag_.kind != DragData::Kind::page ? countedPageAt(position_) : 0;
    if (page != std::exchange(restedOn_, page)) {
        if (page > 0 && !pages_.index(page - 1).data(PageModel::IsShown).toBool())
            rest_.start();
        else
            rest_.stop();
    }
    const QSize size = strip_.viewport()->size();
    const int along = strip_.isWrapping() ? position_.y() : position_.x();
    const int length = strip_.isWrapping() ? size.height() : size.width();
    const bool isAtEnd = along < kScrollMargin || along >= length - kScrollMargin;
    if (!isOver_ || !isAtEnd)
        scroll_.stop();
    else if (!scroll_.isActive())
        scroll_.start();
}

void PageDrags::rested()
{
    if (drag_.state != state_())
        return;
    if (shownBefore_ == 0)
        shownBefore_ = strip_.currentIndex().row() + 1;
    shownState_ = drag_.state;
    Q_EMIT pageWanted(restedOn_);
}

void PageDrags::scroll()
{
    QScrollBar& bar = strip_.isWrapping() ? *strip_.verticalScrollBar() : *strip_.horizontalScrollBar();
    const bool isTowardsEnd = strip_.isWrapping() ? position_.y() >= kScrollMargin
                                                  : (position_.x() >= kScrollMargin) != strip_.isRightToLeft();
    bar.setValue(bar.value() + (isTowardsEnd ? kScrollStep : -kScrollStep));
    follow();
}

int PageDrags::countedPageAt(const QPoint& position) const
{
    const QModelIndex tile = strip_.indexAt(position);
    return tile.row() < pages_.pages() ? tile.row() + 1 : 0;
}

PageDrags::Target PageDrags::targetOf(const DragData& drag, const QPoint& position) const
{
    if (drag.state != state_())
        return {};
    if (drag.kind == DragData::Kind::page)
        return gapTarget(drag.page, position);
    const int page = countedPageAt(position);
    return page > 0 ? tileTarget(drag, page) : Target();
}

PageDrags::Target PageDrags::tileTarget(const DragData& drag, int page) const
{
    const auto mappedPots = [this](int of) { return pages_.index(of - 1).data(PageModel::MappedPots).toUInt(); };
    const int pot = firstEmptyPot(mappedPots(page));
    const bool isPot = drag.kind == DragData::Kind::pot;
    if (isPot && !(mappedPots(drag.page) >> static_cast<unsigned>(drag.pot - 1) & 1U))
        return {.text = tr("Pot %1 of page %2 is empty: there is nothing to move").arg(drag.pot).arg(drag.page)};
    if (!isPot && drag.parameters == 0)
        return {.text = tr("The blank entry clears a pot; a page it does not")};
    if (pot > PageModel::kPots)
        return {.text = tr("Page %1 is full. Rest here to show it, and drop on one of its pots").arg(page)};
    QString text = tr("Goes to pot %1 of page %2, its first empty one");
    if (isPot)
        text = tr("Moves to pot %1 of page %2, its first empty one");
    else if (drag.parameters > 1)
        text = tr("Go to pot %1 of page %2, its first empty one, and those that follow");
    return {.tile = page, .text = text.arg(pot).arg(page)};
}

PageDrags::Target PageDrags::gapTarget(int page, const QPoint& position) const
{
    // Dropped on a tile it goes to the nearer side of that.
    const int pages = pages_.pages();
    int before = 0;
    // What a row of several leaves at its end is less than a tile.
    const int oneTile = strip_.visualRect(pages_.index(0)).width();
    const QPoint inRow = position + QPoint(strip_.isRightToLeft() ? oneTile : -oneTile, 0);
    if (const int tile = countedPageAt(position); tile > 0) {
        const bool isRightHalf = position.x() > strip_.visualRect(pages_.index(tile - 1)).center().x();
        before = isRightHalf != strip_.isRightToLeft() ? tile + 1 : tile;
    } else if (const int atEnd = countedPageAt(inRow); atEnd > 0 && !strip_.indexAt(position).isValid()) {
        before = atEnd + 1;
    } else if (!strip_.indexAt(position).isValid() && pages_.rowCount() == pages) {
        before = pages + 1; // in the room behind the last
    }
    if (before == 0)
        return {};
    if (before == page || before == page + 1)
        return {.text = tr("Page %1 stays where it is").arg(page)};
    QString text;
    if (before == 1)
        text = tr("Moves page %1 before page %2; the others keep their order").arg(page).arg(before);
    else if (before > pages)
        text = tr("Moves page %1 behind page %2; the others keep their order").arg(page).arg(pages);
    else
        text = tr("Moves page %1 between pages %2 and %3; the others keep their order")
                   .arg(page)
                   .arg(before - 1)
                   .arg(before);
    return {.before = before, .text = text};
}

void PageDrags::paint(QPainter& painter) const
{
    if (!target_.isThere())
        return;
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor colour = panelColours(strip_.palette()).focus;
    const auto tile = [this](int page) { return QRectF(strip_.visualRect(pages_.index(page - 1))); };
    if (target_.tile > 0) {
        painter.setPen(QPen(colour, kMarkWidth));
        painter.setBrush(Qt::NoBrush);
        const double half = kMarkWidth / 2;
        painter.drawRoundedRect(tile(target_.tile).adjusted(half, half, -half, -half), 6, 6);
        return;
    }
    // In the pointer's row, where the next tile may not be.
    const bool isBehind = countedPageAt(position_) != target_.before;
    const QRectF beside = tile(isBehind ? target_.before - 1 : target_.before);
    const double edge = isBehind != strip_.isRightToLeft() ? beside.right() : beside.left();
    const double x = std::clamp(edge, kMarkWidth, strip_.viewport()->width() - kMarkWidth);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colour);
    painter.drawRect(QRectF(x - kMarkWidth / 2, beside.top(), kMarkWidth, beside.height()));
    for (const double end : {beside.top(), beside.bottom()}) // told by more than a line
        painter.drawEllipse(QPointF(x, end == beside.top() ? end + kMarkWidth : end - kMarkWidth), kMarkWidth,
                            kMarkWidth);
}

} // namespace interface
