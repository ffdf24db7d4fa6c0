#include "app/interface/PotDrawing.h"

#include "app/interface/Fonts.h"

#include <gtest/gtest.h>

#include <QFontInfo>
#include <QImage>
#include <QPainter>
#include <QPalette>
#include <QPixmapCache>

#include <cmath>

namespace interface {

namespace {

const QSizeF kSize(122, 122);
constexpr double kScale = 2;

QImage drawn(const PotLook& look, const QSizeF& size = kSize)
{
    QImage image((size * kScale).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(kScale);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    drawPot(painter, QRectF(QPointF(), size), look, panelColours(QPalette()), QFont());
    return image;
}

void begin(const PotLook& look, const QSizeF& size = kSize)
{
    QPixmapCache::clear();
    beginPot(size, kScale, look, panelColours(QPalette()));
}

class PotDrawingTest : public testing::Test {
protected:
    PotDrawingTest()
    {
        QPixmapCache::clear();
        mapped_.isMapped = true;
        faint_.isEnabled = false;
    }

    PotLook plain_, mapped_, faint_;
};

} // namespace

TEST_F(PotDrawingTest, LooksTheSameHoweverItWasBegun)
{
    for (const PotLook& look : {plain_, mapped_, faint_}) {
        QPixmapCache::clear();
        const QImage image = drawn(look);
        EXPECT_EQ(drawn(look), image) << "from the cache";
        begin(look);
        EXPECT_EQ(drawn(look), image) << "begun";
        begin(look);
        begin(look);
        EXPECT_EQ(drawn(look), image) << "begun twice";
        for (const PotLook& other : {plain_, mapped_, faint_}) {
            begin(other);
            EXPECT_EQ(drawn(look), image) << "another one begun";
        }
        begin(look, QSizeF(80, 80));
        EXPECT_EQ(drawn(look), image) << "begun smaller";
    }
    EXPECT_NE(drawn(plain_), drawn(mapped_));
    EXPECT_NE(drawn(plain_), drawn(faint_));
}

TEST_F(PotDrawingTest, NothingIsBegunForAPotWithoutRoom)
{
    begin(plain_, QSizeF(0, 0));
    EXPECT_FALSE(drawn(plain_).isNull());
}

TEST(NumberFont, IsAsHighAsAskedForWhateverTheDesktopsFont)
{
    for (const int pixels : {7, 12, 16, 30}) {
        QFont font;
        font.setPixelSize(pixels);
        for (const double wanted : {9.0, 11.6, 14.0}) {
            const EnlargedFont number = numberFont(font, wanted);
            EXPECT_NEAR(number.factor * QFontInfo(number.font).pixelSize(), wanted, wanted * 0.14) << pixels;
        }
    }
    QFont font;
    font.setPixelSize(12);
    EXPECT_EQ(numberFont(font, 11.6).factor, 1);
}

} // namespace interface
