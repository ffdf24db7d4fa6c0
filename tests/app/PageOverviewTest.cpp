#include "app/interface/panel/PageOverview.h"

#include "tests/support/Pictures.h"

#include <QAccessible>
#include <QApplication>
#include <QFontInfo>
#include <QSignalSpy>
#include <QTest>

#include <memory>
#include <set>
#include <utility>

using test::comparePictures;
using test::looksLike;
using test::pictureOf;

namespace interface {

class PageOverviewTest : public testing::Test {
protected:
    static constexpr int kManyPages = 1250;

    PageOverviewTest() { open(test::lightPalette()); }

    void open(const QPalette& palette)
    {
        overview_.reset();
        look_.reset();
        look_.emplace(palette);
        overview_ = std::make_unique<PageOverview>();
        overview_->setSource([this](int page, int pot) {
            asked_.insert(page);
            return nameAt(page, pot);
        });
        overview_->resize(700, overview_->sizeHint().height());
        overview_->show();
        overview_->activateWindow();
        settle();
    }

    /// Two pots of three have a parameter, differently on each page.
    QString nameAt(int page, int pot) const
    {
        return (page + pot) % 3 == 0 || page == emptied_ ? QStringLiteral("-")
                                                         : QStringLiteral("Knob %1.%2").arg(page).arg(pot);
    }
    static void settle() { QApplication::processEvents(); }
    void refresh(int pages, int shown)
    {
        overview_->refresh(pages, shown);
        settle();
    }
    QModelIndex page(int number) const { return overview_->model()->index(number - 1, 0); }
    QRect tile(int number) const { return overview_->visualRect(page(number)); }
    /// All of it but the gap round it.
    bool isInSight(int number) const
    {
        return overview_->viewport()->rect().contains(tile(number).adjusted(3, 3, -3, -3));
    }
    void click(int number) { QTest::mouseClick(overview_->viewport(), Qt::LeftButton, {}, tile(number).center()); }
    std::string spoken(int number) const { return page(number).data(Qt::AccessibleTextRole).toString().toStdString(); }
    QImage pictureOfTile(int number) const { return pictureOf(*overview_->viewport()).copy(tile(number)); }

    std::optional<test::FixedLook> look_;
    std::unique_ptr<PageOverview> overview_;
    std::set<int> asked_;
    int emptied_ = 0;
};

TEST_F(PageOverviewTest, InSeveralRowsUpAndDownGoFromRowToRow)
{
    QSignalSpy chosen(overview_.get(), &PageOverview::pageChosen);
    refresh(40, 2);
    QTest::keyClick(overview_.get(), Qt::Key_Down);
    EXPECT_TRUE(chosen.isEmpty()) << "there is one row";
    const int perRow = overview_->viewport()->width() / tile(1).width();
    EXPECT_EQ(overview_->rowsWithin({700, 10'000}), (40 + perRow - 1) / perRow);
    EXPECT_EQ(overview_->rowsWithin({700, 2 * tile(1).height() + 20}), 2);
    EXPECT_EQ(overview_->rowsWithin({700, 0}), 1);
    overview_->setRows(3);
    overview_->resize(700, overview_->sizeHint().height());
    settle();
    EXPECT_EQ(tile(perRow + 1).left(), tile(1).left());
    EXPECT_TRUE(isInSight(3 * perRow));
    const std::pair<Qt::Key, int> steps[] = {{Qt::Key_Up, 2},
                                             {Qt::Key_Down, 2 + perRow},
                                             {Qt::Key_Down, 2 + 2 * perRow},
                                             {Qt::Key_Right, 3 + 2 * perRow},
                                             {Qt::Key_Up, 3 + perRow}};
    for (const auto& [key, page] : steps) {
        QTest::keyClick(overview_.get(), key);
        EXPECT_EQ(overview_->currentIndex().row() + 1, page);
    }
    overview_->setRows(1);
    settle();
    EXPECT_EQ(tile(40).top(), tile(1).top());
}

TEST_F(PageOverviewTest, LooksAsItShouldInBothSchemes)
{
    if (QFontInfo(QApplication::font()).family() != QLatin1String("DejaVu Sans"))
        GTEST_SKIP() << "the pictures are of DejaVu Sans";
    refresh(40, 4);
    EXPECT_TRUE(looksLike(pictureOf(*overview_), "overview-light"));
    open(test::darkPalette());
    refresh(40, 4);
    EXPECT_TRUE(looksLike(pictureOf(*overview_), "overview-dark"));
}

TEST_F(PageOverviewTest, HasATileForEveryPage)
{
    for (const int pages : {1, 5, 40, 3, kManyPages, 2}) {
        refresh(pages, 1);
        EXPECT_EQ(overview_->model()->rowCount(), pages);
    }
    EXPECT_EQ(page(2).data().toString(), QStringLiteral("2"));
}

TEST_F(PageOverviewTest, WithoutPagesItSaysWhatToDo)
{
    refresh(0, 0);
    EXPECT_FALSE(overview_->accessibleDescription().isEmpty());
    const QImage hint = pictureOf(*overview_);
    refresh(1, 1);
    EXPECT_TRUE(overview_->accessibleDescription().isEmpty());
    refresh(0, 0);
    EXPECT_EQ(pictureOf(*overview_), hint);
    QImage blank(hint.size(), hint.format());
    blank.fill(overview_->palette().color(QPalette::Window));
    EXPECT_NE(hint, blank);
}

TEST_F(PageOverviewTest, AClickChoosesAPage)
{
    refresh(5, 1);
    QSignalSpy chosen(overview_.get(), &PageOverview::pageChosen);
    click(3);
    ASSERT_EQ(chosen.size(), 1);
    EXPECT_EQ(chosen.takeFirst().at(0).toInt(), 3);
    QTest::mouseClick(overview_->viewport(), Qt::LeftButton, Qt::ControlModifier, tile(2).center());
    ASSERT_EQ(chosen.size(), 1);
    EXPECT_EQ(chosen.takeFirst().at(0).toInt(), 2);
    QTest::mouseClick(overview_->viewport(), Qt::LeftButton, Qt::ControlModifier, tile(2).center());
    EXPECT_TRUE(chosen.isEmpty());
    EXPECT_TRUE(overview_->selectionModel()->isSelected(page(2)));
}

TEST_F(PageOverviewTest, ArrowsHomeAndEndChooseAPage)
{
    refresh(5, 2);
    overview_->setFocus();
    QSignalSpy chosen(overview_.get(), &PageOverview::pageChosen);
    const std::pair<Qt::Key, int> keys[] = {{Qt::Key_Right, 3}, {Qt::Key_Left, 2}, {Qt::Key_End, 5}, {Qt::Key_Home, 1}};
    for (const auto& [key, expected] : keys) {
        QTest::keyClick(overview_.get(), key);
        ASSERT_EQ(chosen.size(), 1);
        EXPECT_EQ(chosen.takeFirst().at(0).toInt(), expected);
    }
    QTest::keyClick(overview_.get(), Qt::Key_Left);
    EXPECT_TRUE(chosen.isEmpty());
}

TEST_F(PageOverviewTest, LeavesOtherKeysToTheWindow)
{
    refresh(5, 2);
    QSignalSpy chosen(overview_.get(), &PageOverview::pageChosen);
    const std::pair<Qt::Key, const char*> keys[] = {{Qt::Key_1, "1"},     {Qt::Key_A, "a"},     {Qt::Key_PageDown, ""},
                                                    {Qt::Key_PageUp, ""}, {Qt::Key_Space, " "}, {Qt::Key_Return, "\r"}};
    for (const auto& [key, text] : keys) {
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, QString::fromLatin1(text));
        QApplication::sendEvent(overview_.get(), &press);
        EXPECT_FALSE(press.isAccepted()) << key;
    }
    EXPECT_TRUE(chosen.isEmpty());
}

TEST_F(PageOverviewTest, RefreshingChoosesNothing)
{
    QSignalSpy chosen(overview_.get(), &PageOverview::pageChosen);
    for (const auto& [pages, shown] : {std::pair{5, 1}, {5, 4}, {2, 2}, {1, 1}, {0, 0}, {9, 9}})
        refresh(pages, shown);
    overview_->setSource([](int, int) { return QStringLiteral("-"); });
    EXPECT_TRUE(chosen.isEmpty());
}

TEST_F(PageOverviewTest, CellsFollowTheNames)
{
    refresh(5, 1);
    const QImage before = pictureOfTile(3);
    emptied_ = 3;
    asked_.clear();
    refresh(5, 1);
    EXPECT_EQ(asked_.count(3), 1U) << "drawn anew without being told to";
    EXPECT_GT(comparePictures(pictureOfTile(3), before).share, 0.01);
}

TEST_F(PageOverviewTest, TheShownPageIsMarkedByMoreThanColour)
{
    const auto grey = [this] { return pictureOfTile(1).convertToFormat(QImage::Format_Grayscale8); };
    for (const auto& palette : {test::lightPalette(), test::darkPalette()}) {
        open(palette);
        refresh(5, 1);
        const QImage shown = grey();
        refresh(5, 2);
        EXPECT_GT(comparePictures(grey(), shown).share, 0.02);
    }
}

TEST_F(PageOverviewTest, PagesWithTheSelectedParameterAreRingedByMoreThanColour)
{
    const auto grey = [this] { return pictureOfTile(2).convertToFormat(QImage::Format_Grayscale8); };
    for (const auto& palette : {test::lightPalette(), test::darkPalette()}) {
        open(palette);
        refresh(5, 1);
        const QImage plain = grey();
        overview_->ringPages({2, 4});
        settle();
        const QImage ringed = grey();
        EXPECT_GT(comparePictures(ringed, plain).share, 0.02);
        refresh(5, 2);
        const QImage both = grey();
        EXPECT_GT(comparePictures(both, ringed).share, 0.02);
        overview_->ringPages({});
        settle();
        const QImage shown = grey();
        EXPECT_GT(comparePictures(shown, both).share, 0.02);
        EXPECT_GT(comparePictures(shown, ringed).share, 0.02);
    }
    overview_->ringPages({4});
    EXPECT_EQ(spoken(4), "Page 4 of 5, 5 of 8 pots mapped, holds the selected parameter");
    EXPECT_EQ(spoken(5), "Page 5 of 5, 5 of 8 pots mapped");
}

TEST_F(PageOverviewTest, TheFocusIsVisible)
{
    refresh(5, 1);
    QWidget elsewhere;
    overview_->clearFocus();
    const QImage before = pictureOfTile(1);
    overview_->setFocus();
    settle();
    EXPECT_GT(comparePictures(pictureOfTile(1), before).share, 0.02);
}

TEST_F(PageOverviewTest, SaysWhatATileHolds)
{
    refresh(40, 4);
    EXPECT_EQ(spoken(3), "Page 3 of 40, 6 of 8 pots mapped");
    EXPECT_EQ(spoken(4), "Page 4 of 40, 5 of 8 pots mapped, shown");
    EXPECT_EQ(page(3).data(Qt::ToolTipRole).toString().toStdString(),
              "1  Knob 3.1\n2  Knob 3.2\n3  -\n4  Knob 3.4\n5  Knob 3.5\n6  -\n7  Knob 3.7\n8  Knob 3.8\n"
              "Drag it between two others to move the page; the others keep their order");
    QAccessibleInterface* list = QAccessible::queryAccessibleInterface(overview_.get());
    ASSERT_TRUE(list);
    EXPECT_EQ(list->text(QAccessible::Name), QStringLiteral("Pages"));
    ASSERT_EQ(list->childCount(), 40);
    EXPECT_EQ(list->child(2)->text(QAccessible::Name).toStdString(), spoken(3));
    EXPECT_TRUE(list->child(3)->state().selected);
}

TEST_F(PageOverviewTest, PagesLeftOverAreDimmedAndCannotBeChosen)
{
    for (const auto& palette : {test::lightPalette(), test::darkPalette()}) {
        open(palette);
        refresh(5, 1);
        const QImage page = pictureOfTile(3);
        overview_->refresh(2, 1, 3);
        settle();
        EXPECT_GT(comparePictures(pictureOfTile(3), page).share, 0.03);
    }
    EXPECT_EQ(spoken(2), "Page 2 of 2, 5 of 8 pots mapped");
    EXPECT_EQ(spoken(3), "Page 3, left behind the last page, 6 of 8 pots mapped");
    EXPECT_TRUE(page(3).data(Qt::ToolTipRole).toString().startsWith(QLatin1String("Left behind the last page")));
    EXPECT_TRUE(page(3).data(Qt::ToolTipRole).toString().endsWith(QLatin1String("8  Knob 3.8")));
    QSignalSpy chosen(overview_.get(), &PageOverview::pageChosen);
    click(4);
    overview_->setFocus();
    QTest::keyClick(overview_.get(), Qt::Key_End);
    ASSERT_EQ(chosen.size(), 1);
    EXPECT_EQ(chosen.takeFirst().at(0).toInt(), 2);
    QTest::keyClick(overview_.get(), Qt::Key_Right);
    EXPECT_TRUE(chosen.isEmpty());
    refresh(5, 5);
    EXPECT_EQ(overview_->currentIndex(), page(5));
}

TEST_F(PageOverviewTest, AToolTipStaysReadableWithEndlessNames)
{
    overview_->setSource([](int, int) { return QString(100000, QLatin1Char('W')); });
    refresh(1, 1);
    EXPECT_LT(page(1).data(Qt::ToolTipRole).toString().size(), 1000);
}

TEST_F(PageOverviewTest, BringsTheShownPageIntoSightWithItsNeighbours)
{
    for (const int shown : {1, 600, 601, kManyPages, 2, kManyPages - 1}) {
        refresh(kManyPages, shown);
        EXPECT_TRUE(isInSight(shown)) << shown;
        EXPECT_TRUE(shown == 1 || isInSight(shown - 1)) << shown;
        EXPECT_TRUE(shown == kManyPages || isInSight(shown + 1)) << shown;
    }
    refresh(kManyPages, 600);
    overview_->resize(400, overview_->height());
    settle();
    EXPECT_TRUE(isInSight(600));
}

TEST_F(PageOverviewTest, AsksForNothingOutOfSight)
{
    for (const int pages : {kManyPages, kManyPages, kManyPages + 1}) {
        asked_.clear();
        refresh(pages, 600);
        overview_->viewport()->repaint();
        EXPECT_FALSE(asked_.empty());
        EXPECT_LE(asked_.size(), 12U);
        for (const int number : asked_)
            EXPECT_LT(std::abs(number - 600), 12);
    }
}

TEST_F(PageOverviewTest, RunsFromTheRightWhereThatIsTheWayToRead)
{
    overview_->setLayoutDirection(Qt::RightToLeft);
    refresh(5, 2);
    EXPECT_GT(tile(1).x(), tile(2).x());
    EXPECT_TRUE(isInSight(1));
    overview_->setFocus();
    QSignalSpy chosen(overview_.get(), &PageOverview::pageChosen);
    QTest::keyClick(overview_.get(), Qt::Key_Left);
    EXPECT_EQ(chosen.value(0).value(0).toInt(), 3);
}

} // namespace interface
