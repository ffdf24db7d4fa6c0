// What the tiles of pages are called, as it is drawn and told.

#include "tests/support/Pictures.h"
#include "tests/support/WindowTest.h"

#include "app/interface/panel/PageModel.h"

#include <QAbstractItemView>
#include <QAction>

#include <string>
#include <vector>

namespace test {

using interface::PageModel;

class TileTitlesTest : public WindowTest {
protected:
    void load(const Texts& order)
    {
        writeDictionary(builtIn("Synth"), orderFile(order));
        launch();
        select("Synth");
        QApplication::processEvents();
    }
    QAbstractItemView* strip() const { return find<QAbstractItemView>("pageOverview"); }
    QModelIndex page(int number) const { return strip()->model()->index(number - 1, 0); }
    std::string title(int number) const { return page(number).data(PageModel::Title).toString().toStdString(); }
    std::string spoken(int number) const { return page(number).data(Qt::AccessibleTextRole).toString().toStdString(); }
    /// The tile's inside, without frame and rings.
    QImage picture(int number) const
    {
        const QRect tile = strip()->visualRect(page(number)).adjusted(9, 9, -9, -9);
        return pictureOf(*strip()->viewport()).copy(tile);
    }
    /// Columns of a picture from the left with anything drawn in its upper half.
    static std::vector<int> drawnColumns(const QImage& picture)
    {
        std::vector<int> columns;
        for (int x = 0; x < picture.width(); ++x) {
            for (int y = 0; y < picture.height() / 2; ++y) {
                if (qAbs(qGray(picture.pixel(x, y)) - qGray(picture.pixel(0, picture.height() / 2))) > 90) {
                    columns.push_back(x);
                    break;
                }
            }
        }
        return columns;
    }
};

TEST_F(TileTitlesTest, TellWhatThePagesParametersBeginWith)
{
    Texts order(24, "-1");
    order[0] = "1 Osc 1 Level";
    order[5] = "2 Osc 1 Pan";
    order[8] = "3 Filter %1 %2";
    load(order);
    EXPECT_EQ(title(1), "Osc 1");
    EXPECT_EQ(title(2), "Filter %1 %2");
    EXPECT_EQ(title(3), "");
    EXPECT_EQ(spoken(1), "Page 1 of 3, Osc 1, 2 of 8 pots mapped, shown");
    EXPECT_EQ(spoken(2), "Page 2 of 3, Filter %1 %2, 1 of 8 pots mapped");
    EXPECT_EQ(spoken(3), "Page 3 of 3, 0 of 8 pots mapped");
    chooseParameter("Osc 1 Pan");
    pressPot(1);
    EXPECT_EQ(title(1), "Osc 1 Pan");
    find<QAction>("undo")->trigger();
    EXPECT_EQ(title(1), "Osc 1");
    click("clearAllPagesButtonPressed");
    EXPECT_EQ(title(1), "");
    EXPECT_EQ(title(2), "Filter %1 %2") << "it is left over";
    EXPECT_EQ(spoken(2), "Page 2, Filter %1 %2, left behind the last page, 1 of 8 pots mapped");
}

TEST_F(TileTitlesTest, AreShortenedToTheTileInEitherDirection)
{
    Texts order(24, "-1");
    order[0] = "3 Io";
    order[8] = "1 Wide Wide Wide Wide Wide Wide Wide";
    order[16] = "2 " + std::string(100'000, 'W');
    for (const auto direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        for (const int pixels : {9, 13, 20}) {
            const FixedLook look(lightPalette());
            QFont font = QApplication::font();
            font.setPixelSize(pixels);
            QApplication::setFont(font);
            QApplication::setLayoutDirection(direction);
            load(order);
            for (const int number : {2, 3}) {
                const QImage tile = picture(number);
                const auto drawn = drawnColumns(tile);
                // The number at the side where reading begins, the title up to the other, and nothing beyond.
                ASSERT_GT(drawn.size(), 8u) << pixels;
                const int beginning = direction == Qt::LeftToRight ? drawn.front() : tile.width() - 1 - drawn.back();
                EXPECT_LE(beginning, 5) << pixels;
                const auto whole = pictureOf(*strip()->viewport());
                const QRect area = strip()->visualRect(page(number));
                for (int y = area.top() + 6; y < area.center().y(); ++y) {
                    for (const int x : {area.left() + 7, area.right() - 7})
                        EXPECT_LT(qAbs(qGray(whole.pixel(x, y)) - qGray(whole.pixel(x, area.center().y()))), 90);
                }
            }
            EXPECT_NE(picture(2), picture(3));
            const QImage brief = picture(1); // with an arrow
            const auto drawn = drawnColumns(brief);
            ASSERT_FALSE(drawn.empty());
            const int atLeft = drawn.front();
            const int atRight = brief.width() - 1 - drawn.back();
            const bool isMirrored = direction == Qt::RightToLeft;
            EXPECT_GT(isMirrored ? atLeft : atRight, (isMirrored ? atRight : atLeft) + 10) << pixels;
        }
    }
    QApplication::setLayoutDirection(Qt::LeftToRight);
}

} // namespace test
