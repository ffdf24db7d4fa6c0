#include "app/interface/panel/PotDrawing.h"

#include "app/interface/Fonts.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QFontInfo>
#include <QImage>
#include <QPainter>
#include <QPalette>
#include <QPixmapCache>
#include <QSemaphore>
#include <QThreadPool>

#include <cmath>

namespace interface {

namespace {

int warnings = 0; ///< of Qt

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

TEST_F(PotDrawingTest, WhatWasBegunIsThereWhenItIsDrawn)
{
    QThreadPool& threads = *QThreadPool::globalInstance();
    const int most = threads.maxThreadCount();
    threads.setMaxThreadCount(1);
    begin(plain_);
    threads.waitForDone();
    QSemaphore end;
    threads.start([&end] { end.tryAcquire(1, 3000); }); // the only thread has something else to do
    QElapsedTimer timer;
    timer.start();
    drawn(plain_);
    EXPECT_LT(timer.elapsed(), 2000);
    end.release();
    threads.waitForDone();
    threads.setMaxThreadCount(most);
}

TEST_F(PotDrawingTest, NothingIsBegunForAPotWithoutRoom)
{
    warnings = 0;
    const auto before =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) { ++warnings; });
    begin(plain_, QSizeF(0, 0));
    QThreadPool::globalInstance()->waitForDone();
    qInstallMessageHandler(before);
    EXPECT_EQ(warnings, 0);
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
