// What the strip of pages takes, what it says beforehand, and how it moves under what is dragged.

#include "app/interface/panel/PageDrags.h"

#include "app/interface/panel/PageOverview.h"
#include "tests/support/Dragged.h"
#include "tests/support/Pictures.h"

#include <QDrag>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QToolTip>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

using test::comparePictures;
using test::Dragged;
using test::draggedPage;
using test::draggedParameters;
using test::draggedPot;
using test::pictureOf;

namespace interface {

class PageDragsTest : public testing::Test {
protected:
    PageDragsTest() { open(Qt::LeftToRight); }
    ~PageDragsTest() override { QToolTip::hideText(); }

    /// Five pages and two left over. Page 2 is full, page 4 empty, the others have room from pot 4 on.
    void open(Qt::LayoutDirection direction, int pages = 5)
    {
        strip_ = std::make_unique<PageOverview>();
        strip_->setLayoutDirection(direction);
        strip_->setSource([](int page, int pot) {
            const bool isMapped = page == 2 || (page != 4 && pot < 4);
            return isMapped ? QStringLiteral("Knob") : QStringLiteral("-");
        });
        strip_->drags().setEditState([this] { return state_; });
        strip_->resize(900, strip_->sizeHint().height());
        strip_->show();
        refresh(pages, 1, pages == 5 ? 2 : 0);
        QObject::connect(strip_.get(), &PageOverview::pageChosen, strip_.get(),
                         [this, pages](int page) { refresh(pages, page, pages == 5 ? 2 : 0); });
        parameters_ = std::make_unique<QSignalSpy>(&strip_->drags(), &PageDrags::parametersDropped);
        pots_ = std::make_unique<QSignalSpy>(&strip_->drags(), &PageDrags::potDropped);
        moved_ = std::make_unique<QSignalSpy>(&strip_->drags(), &PageDrags::pageDropped);
        chosen_ = std::make_unique<QSignalSpy>(strip_.get(), &PageOverview::pageChosen);
    }
    void refresh(int pages, int shown, int leftOver)
    {
        strip_->refresh(pages, shown, leftOver);
        QApplication::processEvents();
    }
    QWidget& viewport() const { return *strip_->viewport(); }
    QRect tile(int page) const { return strip_->visualRect(strip_->model()->index(page - 1, 0)); }
    QPoint on(int page) const { return tile(page).center(); }
    /// The half that comes first or last in the way of reading.
    QPoint firstHalf(int page) const { return on(page) - QPoint(strip_->isRightToLeft() ? -20 : 20, 0); }
    QPoint lastHalf(int page) const { return on(page) + QPoint(strip_->isRightToLeft() ? -20 : 20, 0); }
    bool isResting() const { return strip_->findChild<QTimer*>(QStringLiteral("dragRest"))->isActive(); }
    static std::string said() { return QToolTip::isVisible() ? QToolTip::text().toStdString() : std::string(); }
    qsizetype dropped() const { return parameters_->size() + pots_->size() + moved_->size(); }
    void rest(int ms = 600) { QTest::qWait(ms); }

    quint64 state_ = 7;
    std::unique_ptr<PageOverview> strip_;
    std::unique_ptr<QSignalSpy> parameters_, pots_, moved_, chosen_;
};

// Parameters and pots on a tile

TEST_F(PageDragsTest, AParameterIsDroppedOnAPageWithRoom)
{
    Dragged one(draggedParameters(1, 7));
    EXPECT_TRUE(one.enter(viewport(), on(3)));
    EXPECT_TRUE(one.move(viewport(), on(3)));
    EXPECT_EQ(said(), "Goes to pot 4 of page 3, its first empty one");
    EXPECT_TRUE(one.drop(viewport(), on(3)));
    EXPECT_EQ(parameters_->value(0), QVariantList{3});
    EXPECT_FALSE(isResting());
    Dragged several(draggedParameters(5, 7));
    several.enter(viewport(), on(4));
    EXPECT_EQ(said(), "Go to pot 1 of page 4, its first empty one, and those that follow");
    EXPECT_TRUE(several.drop(viewport(), on(4)));
    EXPECT_EQ(parameters_->value(1), QVariantList{4});
}

TEST_F(PageDragsTest, APotIsDroppedOnAPageWithRoom)
{
    Dragged pot(draggedPot(2, 8, 7));
    pot.enter(viewport(), on(5));
    EXPECT_EQ(said(), "Moves to pot 4 of page 5, its first empty one");
    EXPECT_TRUE(pot.dropOn(viewport(), on(5)));
    EXPECT_EQ(pots_->value(0), (QVariantList{2, 8, 5}));
}

TEST_F(PageDragsTest, WhatItSaysLiesInNobodysWay)
{
    Dragged pot(draggedPot(2, 8, 7));
    pot.enter(viewport(), tile(3).topLeft() + QPoint(8, 8));
    const QWidgetList all = QApplication::topLevelWidgets();
    const auto tip = std::find_if(all.begin(), all.end(), [](const QWidget* each) {
        return each->isVisible() && each->windowType() == Qt::ToolTip;
    });
    ASSERT_NE(tip, all.end());
    const QRect strip(viewport().mapToGlobal(QPoint()), viewport().size());
    EXPECT_GE((*tip)->y(), strip.bottom());
}

TEST_F(PageDragsTest, WhatHasNoPlaceIsRefusedAndSaysWhy)
{
    struct Case {
        DragData drag;
        int tile;
        const char* says;
    };
    const char* const full = "Page 2 is full. Rest here to show it, and drop on one of its pots";
    for (const Case& each :
         {Case{draggedParameters(1, 7), 2, full}, Case{draggedParameters(3, 7), 2, full},
          Case{draggedPot(1, 1, 7), 2, full},
          Case{draggedPot(1, 4, 7), 3, "Pot 4 of page 1 is empty: there is nothing to move"},
          Case{draggedParameters(0, 7), 3, "The blank entry clears a pot; a page it does not"},
          Case{draggedParameters(1, 7), 6, ""}, Case{draggedPot(1, 1, 7), 7, ""}, Case{draggedPage(1, 7), 7, ""}}) {
        Dragged dragged(each.drag);
        EXPECT_TRUE(dragged.enter(viewport(), on(each.tile))) << each.says; // or nobody would be told of moves
        EXPECT_FALSE(dragged.move(viewport(), on(each.tile))) << each.says;
        EXPECT_EQ(said(), each.says);
        EXPECT_FALSE(dragged.drop(viewport(), on(each.tile))) << each.says;
        QToolTip::hideText();
        ASSERT_TRUE(QTest::qWaitFor([] { return !QToolTip::isVisible(); }));
    }
    EXPECT_EQ(dropped(), 0);
}

TEST_F(PageDragsTest, WhatIsOfAnotherStateOrForeignIsNotEvenTaken)
{
    for (const DragData& drag : {draggedParameters(1, 6), draggedPot(1, 1, 8), draggedPage(1, 0)}) {
        Dragged dragged(drag);
        EXPECT_FALSE(dragged.enter(viewport(), on(4)));
        EXPECT_FALSE(dragged.dropOn(viewport(), on(4)));
    }
    Dragged text("text/plain", "Cutoff");
    EXPECT_FALSE(text.enter(viewport(), on(4)));
    Dragged pot(draggedPot(1, 1, 7));
    pot.enter(viewport(), on(4));
    EXPECT_TRUE(pot.move(viewport(), on(4)));
    state_ = 8;
    EXPECT_FALSE(pot.drop(viewport(), on(4)));
    EXPECT_EQ(dropped(), 0);
}

// Resting

TEST_F(PageDragsTest, WhatRestsOnATileShowsItsPage)
{
    for (const DragData& drag : {draggedParameters(1, 7), draggedPot(1, 1, 7)}) {
        chosen_->clear();
        Dragged dragged(drag);
        dragged.enter(viewport(), on(3));
        rest(300);
        dragged.move(viewport(), on(2)); // full, but its pots can be dropped on
        rest(300);
        EXPECT_TRUE(chosen_->isEmpty()) << "it moved on meanwhile";
        dragged.move(viewport(), on(2) + QPoint(3, 0));
        EXPECT_TRUE(isResting());
        rest(300);
        ASSERT_EQ(chosen_->size(), 1);
        EXPECT_EQ(chosen_->value(0), QVariantList{2});
        rest();
        dragged.move(viewport(), on(2));
        rest();
        EXPECT_EQ(chosen_->size(), 1) << "it is shown";
        dragged.enter(viewport(), on(3));
        Dragged::leave(viewport());
        EXPECT_FALSE(isResting());
        strip_->drags().end(true);
        refresh(5, 1, 2);
    }
}

TEST_F(PageDragsTest, NothingIsShownByATileOrOverThoseLeftOver)
{
    Dragged page(draggedPage(1, 7));
    page.enter(viewport(), on(4));
    EXPECT_FALSE(isResting());
    Dragged pot(draggedPot(1, 1, 7));
    pot.enter(viewport(), on(6));
    EXPECT_FALSE(isResting());
    pot.move(viewport(), on(3));
    EXPECT_TRUE(isResting());
    state_ = 8; // the pages are others now
    rest();
    EXPECT_TRUE(chosen_->isEmpty());
}

TEST_F(PageDragsTest, ADragThatIsGivenUpLeavesThePageThatWasShown)
{
    const QImage before = pictureOf(viewport());
    const auto restOn = [this](int page) {
        Dragged pot(draggedPot(1, 1, 7));
        pot.enter(viewport(), on(page));
        rest();
        EXPECT_EQ(strip_->currentIndex().row(), page - 1);
    };
    restOn(3);
    restOn(5);
    strip_->drags().end(false);
    EXPECT_EQ(strip_->currentIndex().row(), 0);
    EXPECT_EQ(pictureOf(viewport()), before);
    strip_->drags().end(false); // of another drag
    EXPECT_EQ(chosen_->size(), 3);
    restOn(3);
    Dragged::leave(viewport());
    strip_->drags().end(true); // dropped on a pot of that page
    EXPECT_EQ(strip_->currentIndex().row(), 2);
    restOn(4);
    state_ = 8; // another plug-in has been loaded
    strip_->drags().end(false);
    EXPECT_EQ(strip_->currentIndex().row(), 3);
}

TEST_F(PageDragsTest, TheTileIsMarkedWhileItWouldTakeIt)
{
    const QImage before = pictureOf(viewport());
    const auto change = [&](int page) {
        return comparePictures(pictureOf(viewport()).copy(tile(page)), before.copy(tile(page))).share;
    };
    Dragged one(draggedParameters(1, 7));
    one.enter(viewport(), on(3));
    EXPECT_GT(change(3), 0.02);
    one.move(viewport(), on(4));
    EXPECT_GT(change(4), 0.02);
    EXPECT_EQ(change(3), 0);
    one.move(viewport(), on(2));
    EXPECT_EQ(change(2), 0);
    EXPECT_EQ(change(4), 0);
    one.move(viewport(), on(4));
    Dragged::leave(viewport());
    EXPECT_EQ(pictureOf(viewport()), before);
}

// Tiles

TEST_F(PageDragsTest, ATileIsDroppedBetweenTwoAndSaysSo)
{
    struct Case {
        int page;
        int tile;
        bool isLastHalf;
        int before;
        const char* says;
    };
    const Case cases[] = {
        {3, 5, false, 5, "Moves page 3 between pages 4 and 5; the others keep their order"},
        {3, 4, true, 5, "Moves page 3 between pages 4 and 5; the others keep their order"},
        {3, 1, false, 1, "Moves page 3 before page 1; the others keep their order"},
        {3, 1, true, 2, "Moves page 3 between pages 1 and 2; the others keep their order"},
        {3, 5, true, 6, "Moves page 3 behind page 5; the others keep their order"},
        {3, 2, true, 0, "Page 3 stays where it is"},
        {3, 3, false, 0, "Page 3 stays where it is"},
        {3, 3, true, 0, "Page 3 stays where it is"},
        {3, 4, false, 0, "Page 3 stays where it is"},
        {3, 6, false, 0, ""},
    };
    for (const auto direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        open(direction);
        for (const Case& each : cases) {
            moved_->clear();
            Dragged page(draggedPage(each.page, 7));
            const QPoint at = each.isLastHalf ? lastHalf(each.tile) : firstHalf(each.tile);
            page.enter(viewport(), at);
            EXPECT_EQ(page.move(viewport(), at), each.before > 0) << each.says << each.tile;
            if (*each.says) {
                EXPECT_EQ(said(), each.says);
            }
            EXPECT_EQ(page.drop(viewport(), at), each.before > 0) << each.says;
            ASSERT_EQ(moved_->size(), each.before > 0 ? 1 : 0) << each.says;
            if (each.before > 0) {
                EXPECT_EQ(moved_->value(0), (QVariantList{each.page, each.before}));
            }
        }
    }
}

TEST_F(PageDragsTest, ATileIsDroppedBehindTheLastOne)
{
    refresh(3, 1, 0);
    const QPoint behind = QPoint(tile(3).right() + 60, on(3).y());
    EXPECT_TRUE(Dragged(draggedPage(1, 7)).dropOn(viewport(), behind));
    EXPECT_EQ(moved_->value(0), (QVariantList{1, 4}));
    refresh(3, 1, 2);
    EXPECT_FALSE(Dragged(draggedPage(1, 7)).dropOn(viewport(), QPoint(tile(5).right() + 60, on(3).y())));
}

TEST_F(PageDragsTest, AMarkStandsBetweenTheTiles)
{
    for (const auto direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        open(direction);
        const QImage before = pictureOf(viewport());
        Dragged page(draggedPage(1, 7));
        page.enter(viewport(), firstHalf(4));
        const QImage marked = pictureOf(viewport());
        const int gap = direction == Qt::LeftToRight ? tile(4).left() : tile(4).right();
        const auto share = [&](const QRect& place) {
            return comparePictures(marked.copy(place), before.copy(place)).share;
        };
        EXPECT_GT(share(QRect(gap - 4, tile(4).top(), 8, tile(4).height())), 0.2);
        EXPECT_EQ(share(QRect(on(4).x() - 30, tile(4).top(), 60, tile(4).height())), 0);
        page.move(viewport(), lastHalf(5));
        EXPECT_NE(pictureOf(viewport()), before);
        page.drop(viewport(), lastHalf(5));
        EXPECT_EQ(pictureOf(viewport()), before);
    }
}

TEST_F(PageDragsTest, ATilePulledAwayIsDragged)
{
    const auto pull = [this](int page, Qt::MouseButton button = Qt::LeftButton) {
        QTest::mousePress(&viewport(), button, {}, on(page));
        for (const int by : {QApplication::startDragDistance() + 2, QApplication::startDragDistance() + 4}) {
            const QPoint at = on(page) + QPoint(by, 0);
            QMouseEvent move(QEvent::MouseMove, at, viewport().mapToGlobal(at), Qt::NoButton, button, Qt::NoModifier);
            QApplication::sendEvent(&viewport(), &move);
        }
        const auto* drag = strip_->findChild<QDrag*>();
        const QByteArray content = drag ? drag->mimeData()->data(QString::fromLatin1(kPageDrag)) : QByteArray();
        EXPECT_TRUE(!drag || !drag->pixmap().isNull());
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QApplication::processEvents();
        QTest::mouseRelease(&viewport(), button, {}, on(page));
        return content;
    };
    EXPECT_EQ(pull(3), draggedPage(3, 7).content());
    EXPECT_EQ(strip_->currentIndex().row(), 2);
    EXPECT_EQ(pull(6), QByteArray()) << "it is left over";
    EXPECT_EQ(pull(4, Qt::RightButton), QByteArray());
    refresh(1, 1, 0);
    EXPECT_EQ(pull(1), QByteArray()) << "there is nowhere to go";
}

// Scrolling

TEST_F(PageDragsTest, TheStripScrollsAtItsEnds)
{
    for (const auto direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        open(direction, 40);
        QScrollBar* bar = strip_->horizontalScrollBar();
        const QPoint left(6, on(1).y());
        const QPoint right(viewport().width() - 6, on(1).y());
        const QPoint end = direction == Qt::LeftToRight ? right : left;
        const QPoint begin = direction == Qt::LeftToRight ? left : right;
        ASSERT_EQ(bar->value(), 0);
        Dragged page(draggedPage(1, 7));
        page.enter(viewport(), end);
        QTest::qWait(300);
        const int scrolled = bar->value();
        EXPECT_GT(scrolled, 24);
        page.move(viewport(), begin);
        QTest::qWait(100);
        EXPECT_LT(bar->value(), scrolled);
        page.move(viewport(), viewport().rect().center());
        const int still = bar->value();
        QTest::qWait(100);
        EXPECT_EQ(bar->value(), still);
        page.move(viewport(), end);
        Dragged::leave(viewport());
        QTest::qWait(100);
        EXPECT_EQ(bar->value(), still);
    }
}

TEST_F(PageDragsTest, InSeveralRowsAPageGoesWhereItIsHeld)
{
    for (const auto direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        open(direction, 40);
        strip_->setRows(3);
        strip_->resize(900, strip_->sizeHint().height());
        QApplication::processEvents();
        int last = 1; // of the first row
        while (tile(last + 1).top() == tile(1).top())
            ++last;
        ASSERT_LT(last, 20);
        const bool isMirrored = direction == Qt::RightToLeft;
        const QRect edge = tile(last);
        const QPoint behind = isMirrored ? QPoint(edge.left() - 2, edge.center().y()) //
                                         : QPoint(edge.right() + 2, edge.center().y());
        for (const QPoint& position : {behind, lastHalf(last)}) {
            const QImage before = pictureOf(viewport());
            Dragged dragged(draggedPage(2, 7));
            dragged.enter(viewport(), position);
            QApplication::processEvents();
            const QImage mark = pictureOf(viewport());
            const QRect end = isMirrored ? QRect(edge.left() - 2, edge.top(), 5, edge.height())
                                         : QRect(edge.right() - 2, edge.top(), 5, edge.height());
            EXPECT_GT(comparePictures(mark.copy(end), before.copy(end)).share, 0.3) << "the mark is in this row";
            moved_->clear();
            EXPECT_TRUE(dragged.drop(viewport(), position));
            ASSERT_EQ(moved_->size(), 1);
            EXPECT_EQ(moved_->takeFirst(), QVariantList({2, last + 1}));
        }
        // Scrolled up and down.
        Dragged dragged(draggedPage(1, 7));
        dragged.enter(viewport(), QPoint(viewport().width() / 2, viewport().height() - 6));
        QTest::qWait(200);
        EXPECT_GT(strip_->verticalScrollBar()->value(), 0);
        dragged.move(viewport(), QPoint(viewport().width() / 2, 6));
        QTest::qWait(400);
        EXPECT_EQ(strip_->verticalScrollBar()->value(), 0);
        Dragged::leave(viewport());
    }
}

TEST_F(PageDragsTest, WhatScrollsAwayUnderneathIsNoTargetAnyMore)
{
    open(Qt::LeftToRight, 40);
    const QPoint end(viewport().width() - 6, on(1).y());
    Dragged pot(draggedPot(1, 1, 7));
    pot.enter(viewport(), end);
    const std::string first = said();
    QTest::qWait(400);
    EXPECT_NE(said(), first);
    EXPECT_TRUE(chosen_->isEmpty()) << "no tile stayed long enough";
}

TEST_F(PageDragsTest, APageShownByRestingDoesNotMoveTheStripAway)
{
    open(Qt::LeftToRight, 40);
    const int last = strip_->indexAt(QPoint(viewport().width() - 40, on(1).y())).row() + 1;
    const QPoint at(viewport().width() - 40, on(1).y());
    Dragged pot(draggedPot(1, 1, 7));
    pot.enter(viewport(), at);
    rest(700);
    EXPECT_EQ(chosen_->value(0), QVariantList{last});
    EXPECT_EQ(strip_->horizontalScrollBar()->value(), 0);
    rest(700);
    EXPECT_EQ(chosen_->size(), 1);
}

} // namespace interface
