#include "app/interface/panel/FrontPanel.h"

#include "app/interface/DragData.h"
#include "app/interface/panel/PanelColours.h"
#include "app/interface/panel/Pot.h"
#include "platform/qt/ElidedLabel.h"
#include "platform/qt/ReadableColours.h"
#include "tests/support/Dragged.h"
#include "tests/support/Pictures.h"

#include <QAccessible>
#include <QApplication>
#include <QDrag>
#include <QFontInfo>
#include <QMimeData>
#include <QPixmapCache>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>
#include <QWindow>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <utility>

using platform::qt::contrast;
using platform::qt::ElidedLabel;
using test::comparePictures;
using test::Dragged;
using test::draggedPage;
using test::draggedParameters;
using test::draggedPot;
using test::looksLike;
using test::pictureOf;

namespace interface {

namespace {

constexpr int kPots = 8;
const QSize kSize(900, 230);

const QString kEighty =
    QStringLiteral("Oscillator 1 Waveform Position Modulation Depth by the Second Envelope Generator");
const QString kChinese = QStringLiteral(
    "滤波器截止频率滤波器截止频率滤波器截止频率滤波器截止频率滤波器截止频率滤波器截止频率滤波器截止频率");
const QString kArabic =
    QStringLiteral("مستوى المرشح الرئيسي للصوت مستوى المرشح الرئيسي للصوت مستوى المرشح الرئيسي للصوت");
const QString kOneWord = QString(80, QLatin1Char('W'));

std::string spoken(QWidget* widget)
{
    return QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name).toStdString();
}

} // namespace

class FrontPanelTest : public testing::Test {
protected:
    FrontPanelTest() { open(test::lightPalette()); }

    void open(const QPalette& palette)
    {
        panel_.reset();
        look_.reset();
        look_.emplace(palette);
        panel_ = std::make_unique<FrontPanel>();
        panel_->resize(kSize);
        panel_->show();
        panel_->activateWindow();
        QApplication::processEvents();
    }

    Pot* pot(int number) const { return panel_->findChild<Pot*>(QStringLiteral("kvRotaryBtn%1").arg(number)); }
    ElidedLabel* label(int number) const
    {
        return panel_->findChild<ElidedLabel*>(QStringLiteral("kvControl%1").arg(number));
    }
    void setText(const char* name, const char* text)
    {
        panel_->findChild<QLabel*>(QString::fromLatin1(name))->setText(QString::fromUtf8(text));
    }
    void showNames(const QStringList& names)
    {
        for (int i = 0; i < names.size(); ++i)
            label(i + 1)->setText(names[i]);
        QApplication::processEvents();
    }
    /// A page as it is being edited: mapped and empty pots, one with the focus, two that cannot be used.
    void showExample()
    {
        setText("labKOScreen_Title", "Aurora Poly Synthesizer");
        setText("lab_PageCurrentlyDisplayed", "Page 2 of 5");
        setText("labTotalPagesIndicator", "5 Pages");
        showNames({QStringLiteral("Filter Cutoff"), QStringLiteral("Resonance"), QStringLiteral("-"), kEighty,
                   QStringLiteral("Pan"), QStringLiteral("-"), QStringLiteral("Env 1 Attack"), QStringLiteral("-")});
        pot(2)->setFocus();
        pot(7)->setEnabled(false);
        pot(8)->setEnabled(false);
        QApplication::processEvents();
    }
    QImage pictureOfPot(int number) const { return pictureOf(*panel_).copy(pot(number)->geometry()); }
    int spacing() const { return label(1)->fontMetrics().lineSpacing(); }
    QPoint middleOf(int number) const { return pot(number)->geometry().center(); }

    std::optional<test::FixedLook> look_;
    std::unique_ptr<FrontPanel> panel_;
};

// How it looks

TEST_F(FrontPanelTest, LooksAsItShouldInBothSchemes)
{
    if (QFontInfo(QApplication::font()).family() != QLatin1String("DejaVu Sans"))
        GTEST_SKIP() << "the pictures are of DejaVu Sans";
    const std::pair<const char*, QPalette> schemes[] = {{"light", test::lightPalette()}, {"dark", test::darkPalette()}};
    for (const auto& [scheme, palette] : schemes) {
        open(palette);
        for (int number = 1; number <= kPots; ++number)
            pot(number)->setEnabled(false);
        EXPECT_TRUE(looksLike(pictureOf(*panel_), std::string("panel-start-") + scheme));
        open(palette);
        showExample();
        EXPECT_TRUE(looksLike(pictureOf(*panel_), std::string("panel-page-") + scheme));
    }
}

TEST_F(FrontPanelTest, NothingShinesThroughItAtAnySizeAndScale)
{
    const QColor behind(255, 0, 255);
    for (const double scale : {1.0, 1.1, 1.25, 1.5, 1.75, 2.0}) {
        for (int width = 900; width < 1300; width += 57) {
            panel_->resize(width, 230 + (width - 900) / 2);
            QImage image((QSizeF(panel_->size()) * scale).toSize(), QImage::Format_RGB32);
            image.setDevicePixelRatio(scale);
            image.fill(behind);
            panel_->render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
            int seen = 0;
            for (int y = qCeil(2 * scale); y < image.height() - 3 * scale; ++y) {
                const bool isNearCorners = y < 14 * scale || y > image.height() - 14 * scale;
                const double margin = scale * (isNearCorners ? 14 : 2);
                for (int x = qCeil(margin); x < image.width() - margin; ++x) {
                    const QRgb colour = image.pixel(x, y);
                    seen += qRed(colour) > qGreen(colour) + 60 && qBlue(colour) > qGreen(colour) + 60 ? 1 : 0;
                }
            }
            EXPECT_EQ(seen, 0) << scale << " " << width;
        }
    }
}

TEST_F(FrontPanelTest, KeepsNothingOfHowItLookedBefore)
{
    pot(1)->clearFocus();
    double scale = 1;
    const std::pair<const char*, std::function<void()>> changes[] = {
        {"opened", [] {}},
        {"larger", [this] { panel_->resize(1300, 320); }},
        {"on another screen", [&scale] { scale = 2; }},
        {"dark", [] { QApplication::setPalette(test::darkPalette()); }},
        {"with small letters",
         [this] {
             QFont font = panel_->font();
             font.setPixelSize(9);
             panel_->setFont(font);
         }},
    };
    for (const auto& [name, change] : changes) {
        change();
        QApplication::processEvents();
        const QImage picture = pictureOf(*panel_, scale);
        QPixmapCache::clear();
        FrontPanel fresh;
        fresh.setFont(panel_->font());
        fresh.resize(panel_->size());
        EXPECT_EQ(picture, pictureOf(fresh, scale)) << name;
    }
}

TEST_F(FrontPanelTest, CanBeOfAnySize)
{
    for (const QSize size : {QSize(1, 1), QSize(20, 60), QSize(28, 60), QSize(3000, 40), QSize(60, 2000)}) {
        panel_->resize(size);
        EXPECT_EQ(pictureOf(*panel_).size(), size);
    }
}

TEST_F(FrontPanelTest, WhatIsPrintedOnItStandsAsOnTheHardwareInEveryLanguage)
{
    const QRect printed(20, 2, 240, 50);
    const QImage before = pictureOf(*panel_).copy(printed);
    QApplication::setLayoutDirection(Qt::RightToLeft);
    open(test::lightPalette());
    const QImage after = panel_->screen()->grabWindow(panel_->winId()).toImage();
    QApplication::setLayoutDirection(Qt::LeftToRight);
    EXPECT_EQ(after.convertToFormat(before.format()).copy(printed), before);
}

TEST_F(FrontPanelTest, ThePictureShowsAPotThatIsThreePixelsOff)
{
    showExample();
    const QImage before = pictureOf(*panel_);
    EXPECT_EQ(comparePictures(pictureOf(*panel_), before).share, 0);
    pot(4)->move(pot(4)->pos() + QPoint(3, 0));
    EXPECT_GT(comparePictures(pictureOf(*panel_), before).densest, test::kToleratedDensity);
}

TEST_F(FrontPanelTest, ThePictureForgivesLettersDrawnAnotherWay)
{
    showExample();
    const QImage before = pictureOf(*panel_);
    QFont hinted = QApplication::font();
    hinted.setHintingPreference(QFont::PreferVerticalHinting);
    QApplication::setFont(hinted);
    QApplication::processEvents();
    const QImage after = pictureOf(*panel_);
    EXPECT_NE(after, before);
    EXPECT_LE(comparePictures(after, before).densest, test::kToleratedDensity);
}

TEST_F(FrontPanelTest, EveryStateOfAPotLooksDifferent)
{
    QWidget elsewhere;
    const std::vector<std::pair<std::string, std::function<void()>>> states = {
        {"empty", [] {}},
        {"mapped",
         [this] {
             showNames({{}, {}, QStringLiteral("Cutoff")});
         }},
        {"hovered", [this] { QTest::mouseMove(panel_->windowHandle(), middleOf(3)); }},
        {"pressed", [this] { pot(3)->setDown(true); }},
        {"focused", [this] { pot(3)->setFocus(); }},
        {"with the selected parameter", [this] { panel_->ringPots(1U << 2); }},
        {"different",
         [this] {
             std::array<QString, kPots> differences;
             differences[2] = QStringLiteral("Cutoff; in the saved file: empty");
             panel_->setDifferences(differences);
         }},
        {"chosen",
         [this] {
             for (const int number : {2, 3})
                 QTest::mouseClick(pot(number), Qt::LeftButton, Qt::ControlModifier);
             panel_->setFocus();
         }},
        {"disabled", [this] { pot(3)->setEnabled(false); }},
        {"drop target",
         [this] {
             Dragged parameter(draggedParameters(1));
             parameter.enter(*pot(3), pot(3)->rect().center());
         }},
    };
    for (const auto& palette : {test::lightPalette(), test::darkPalette()}) {
        std::vector<std::pair<std::string, QImage>> seen;
        for (const auto& [name, enter] : states) {
            open(palette);
            QTest::mouseMove(panel_->windowHandle(), QPoint(2, 2));
            enter();
            QApplication::processEvents();
            // Without colours, since not everybody sees them.
            const QImage picture = pictureOfPot(3).convertToFormat(QImage::Format_Grayscale8);
            for (const auto& [otherName, other] : seen)
                EXPECT_GT(comparePictures(picture, other).share, 0.005) << name << " and " << otherName;
            seen.emplace_back(name, picture);
        }
    }
}

TEST_F(FrontPanelTest, MappedPotsAreNotToldByColourAlone)
{
    const QImage empty = pictureOfPot(3).convertToFormat(QImage::Format_Grayscale8);
    showNames({{}, {}, QStringLiteral("Cutoff")});
    const QImage mapped = pictureOfPot(3).convertToFormat(QImage::Format_Grayscale8);
    EXPECT_GT(comparePictures(mapped, empty).share, 0.02);
    EXPECT_EQ(label(4)->shownLines(), QStringList(QStringLiteral("-")));
}

TEST_F(FrontPanelTest, APotsPointerSaysNothingAndItsRingAndCapWhetherItIsMapped)
{
    for (const auto& palette : {test::lightPalette(), test::darkPalette()}) {
        open(palette);
        pot(1)->clearFocus();
        const auto colourAt = [this](int number, double radius, double degrees) {
            const QImage picture = pictureOf(*pot(number), 3);
            const double angle = degrees * 3.14159265358979 / 180;
            const double half = std::min(picture.width(), picture.height()) / 2.0;
            return picture.pixelColor(static_cast<int>(picture.width() / 2.0 + std::sin(angle) * radius * half),
                                      static_cast<int>(picture.height() / 2.0 - std::cos(angle) * radius * half));
        };
        showNames({{}, QStringLiteral("Cutoff")});
        for (const double degrees : {0, 45, 90, 135, 180, 225, 270, 315}) {
            // Lit or out all the way round, and told apart without colours.
            EXPECT_GE(contrast(colourAt(2, 0.745, degrees), colourAt(1, 0.745, degrees)), 3) << degrees;
            for (const int number : {1, 2}) {
                const bool isPointer = contrast(colourAt(number, 0.45, degrees), Qt::white) < 1.2;
                EXPECT_EQ(isPointer, degrees == 0) << number << " " << degrees;
            }
        }
        double brighter = 1e9;
        for (int degrees = 30; degrees <= 330; degrees += 15)
            brighter = std::min(brighter, contrast(colourAt(2, 0.4, degrees), Qt::black) /
                                              contrast(colourAt(1, 0.4, degrees), Qt::black));
        EXPECT_GE(brighter, 1.2) << "the cap";
    }
}

TEST_F(FrontPanelTest, FollowsTheDesktopFromLightToDark)
{
    const QImage light = pictureOf(*panel_);
    QApplication::setPalette(test::darkPalette());
    QApplication::processEvents();
    EXPECT_GT(comparePictures(pictureOf(*panel_), light).share, 0.3);
}

TEST_F(FrontPanelTest, IsDrawnForTheScreensDensity)
{
    const QImage fine = pictureOf(*panel_, 2);
    const int third = pot(3)->width() / 3;
    const QRect cap = pot(3)->geometry().adjusted(third, third, -third, -third);
    for (const QRect& part : {cap, QRect(20, 10, 240, 40)}) {
        // Of a picture blown up, each point is four pixels of one colour.
        int points = 0;
        for (int y = 2 * part.top(); y < 2 * part.bottom(); y += 2)
            for (int x = 2 * part.left(); x < 2 * part.right(); x += 2)
                points += fine.pixel(x, y) != fine.pixel(x + 1, y) || fine.pixel(x, y) != fine.pixel(x, y + 1) ? 1 : 0;
        EXPECT_GT(points, part.width() * part.height() / 20);
    }
}

TEST_F(FrontPanelTest, EveryPotBearsItsNumber)
{
    pot(1)->clearFocus();
    for (int number = 2; number <= kPots; ++number)
        for (int other = 1; other < number; ++other)
            EXPECT_NE(pictureOf(*pot(number)), pictureOf(*pot(other))) << number << " " << other;
}

TEST_F(FrontPanelTest, ContrastIsSufficientInBothSchemes)
{
    for (const auto& palette : {test::lightPalette(), test::darkPalette()}) {
        const PanelColours& c = panelColours(palette);
        const QColor faces[] = {c.faceTop, c.faceMiddle, c.faceBottom};
        for (const QColor& face : faces) {
            EXPECT_GE(contrast(c.legend, face), 4.5);
            EXPECT_GE(contrast(c.legendOff, face), 4.5);
            EXPECT_GE(contrast(c.focus, face), 3);
            EXPECT_GE(contrast(c.target, face), 3);
        }
        for (const QColor& screen : {c.screenTop, c.screenBottom}) {
            EXPECT_GE(contrast(c.screenText, screen), 4.5);
            EXPECT_GE(contrast(c.screenTextOff, screen), 4.5);
        }
        EXPECT_GE(contrast(c.lit, c.groove), 3);
        for (const QColor& skirt : {c.skirtLight, c.skirtDark})
            EXPECT_GE(contrast(c.whereOnPot, skirt), 3);
        for (const QColor& cap : {c.capLight, c.capMiddle, c.capDark})
            EXPECT_GE(contrast(c.pointer, cap), 3);
        for (const QColor& tile : {c.tile, c.tileHover, c.tileShown}) {
            EXPECT_GE(contrast(c.tileText, tile), 4.5);
            EXPECT_GE(contrast(c.tileEdge, tile), 3);
            EXPECT_GE(contrast(c.cellEdge, tile), 3);
            EXPECT_GE(contrast(c.where, tile), 3);
        }
        EXPECT_GE(contrast(c.focus, palette.color(QPalette::Window)), 3);
    }
}

// Sizes and names

TEST_F(FrontPanelTest, NothingOverlapsOrIsCutAtAnySizeOfPanelAndFont)
{
    showExample();
    for (const int pixels : {9, 13, 18, 26}) {
        QFont font = QApplication::font();
        font.setPixelSize(pixels);
        panel_->setFont(font);
        for (const QSize& size : {panel_->minimumSizeHint(), panel_->sizeHint(), QSize(2400, 400)}) {
            panel_->resize(size.expandedTo(panel_->minimumSizeHint()));
            QApplication::processEvents();
            const auto children = panel_->findChildren<QWidget*>();
            for (int i = 0; i < children.size(); ++i) {
                const QRect place = children[i]->geometry();
                EXPECT_TRUE(panel_->rect().contains(place)) << children[i]->objectName().toStdString();
                for (int j = 0; j < i; ++j)
                    EXPECT_FALSE(place.intersects(children[j]->geometry()))
                        << children[i]->objectName().toStdString() << " over "
                        << children[j]->objectName().toStdString() << " at " << pixels << ", " << panel_->width();
            }
            EXPECT_GE(pot(1)->width(), 62);
            EXPECT_GE(label(1)->fontInfo().pixelSize(), std::min(pixels, 10)) << "letters can be read";
            EXPECT_GE(label(1)->height(), 2 * label(1)->fontMetrics().lineSpacing());
        }
    }
}

TEST_F(FrontPanelTest, PotsGrowWithThePanel)
{
    int before = 0;
    for (const QSize& size : {panel_->minimumSizeHint(), QSize(900, 220), QSize(1180, 240), QSize(2400, 320)}) {
        panel_->resize(size);
        EXPECT_GT(pot(1)->width(), before);
        before = pot(1)->width();
    }
    EXPECT_LE(panel_->sizeHint().height(), 260);
}

TEST_F(FrontPanelTest, LongNamesAreShortenedToWhatFits)
{
    for (const QString& name : {kEighty, kChinese, kArabic, kOneWord, kOneWord.repeated(100)}) {
        for (const int width : {panel_->minimumSizeHint().width(), 1180}) {
            panel_->resize(width, kSize.height());
            showNames({name});
            const QStringList lines = label(1)->shownLines();
            ASSERT_EQ(lines.size(), 2);
            for (const QString& line : lines)
                EXPECT_LE(label(1)->fontMetrics().horizontalAdvance(line), label(1)->width()) << line.toStdString();
            EXPECT_TRUE(lines[1].endsWith(QChar(0x2026))) << lines[1].toStdString();
            EXPECT_TRUE(label(1)->isShortened());
            EXPECT_EQ(label(1)->text(), name);
        }
    }
}

TEST_F(FrontPanelTest, NamesThatFitStayWhole)
{
    const std::pair<const char*, QStringList> names[] = {
        {"Cutoff", {QStringLiteral("Cutoff")}},
        {"Filter 1 Cutoff Frequency", {QStringLiteral("Filter 1 Cutoff"), QStringLiteral("Frequency")}},
        {"<b>A & B</b>", {QStringLiteral("<b>A & B</b>")}},
        {"A\nB", {QStringLiteral("A B")}},
        {"", {}},
    };
    panel_->resize(1180, 240);
    for (const auto& [name, lines] : names) {
        showNames({QString::fromUtf8(name)});
        EXPECT_EQ(label(1)->shownLines(), lines) << name;
        EXPECT_FALSE(label(1)->isShortened());
    }
}

TEST_F(FrontPanelTest, ANameRunsTheWayItIsReadEvenWhereItsSecondLineIsForeign)
{
    panel_->resize(1180, 240);
    const QString second = QStringLiteral("Resonance ابجد");
    const auto band = [this](int top) { return pictureOf(*label(1)).copy(0, top, label(1)->width(), spacing()); };
    showNames({QStringLiteral("مستوى المرشح ") + second});
    ASSERT_EQ(label(1)->shownLines().value(1), second);
    const QImage asPartOfAnArabicName = band(label(1)->height() / 2);
    showNames({second});
    const QImage byItself = band((label(1)->height() - spacing()) / 2);
    EXPECT_GT(comparePictures(asPartOfAnArabicName, byItself).share, 0.03);
}

// What a screen reader says

TEST_F(FrontPanelTest, PotsAreButtonsWithANameThatFollowsLabelAndPage)
{
    EXPECT_EQ(spoken(pot(3)), "Pot 3");
    panel_->setShownPage(2, 5);
    EXPECT_EQ(spoken(pot(3)), "Pot 3, empty, page 2 of 5");
    showNames({{}, {}, QStringLiteral("Filter Cutoff")});
    EXPECT_EQ(spoken(pot(3)), "Pot 3, Filter Cutoff, page 2 of 5");
    showNames({{}, {}, QStringLiteral("100 %4 %2 <b>")});
    EXPECT_EQ(spoken(pot(3)), "Pot 3, 100 %4 %2 <b>, page 2 of 5");
    showNames({{}, {}, QStringLiteral("-")});
    panel_->setShownPage(1, 1);
    EXPECT_EQ(spoken(pot(3)), "Pot 3, empty, page 1 of 1");
    EXPECT_EQ(QAccessible::queryAccessibleInterface(pot(3))->role(), QAccessible::Button);
}

TEST_F(FrontPanelTest, NamesFollowLabelsThatChangedOutOfSight)
{
    panel_->setShownPage(1, 1);
    panel_->hide();
    label(1)->setText(QStringLiteral("Pan"));
    QApplication::processEvents();
    panel_->show();
    EXPECT_EQ(spoken(pot(1)), "Pot 1, Pan, page 1 of 1");
    EXPECT_TRUE(pot(1)->isMapped());
    FrontPanel another;
    another.findChild<QLabel*>(QStringLiteral("kvControl1"))->setText(QStringLiteral("Pan"));
    another.show();
    EXPECT_TRUE(another.findChild<Pot*>(QStringLiteral("kvRotaryBtn1"))->isMapped());
}

// Mouse and keyboard

TEST_F(FrontPanelTest, APotIsPressedInsideItsCircleOnly)
{
    QSignalSpy clicked(pot(3), &QPushButton::clicked);
    QTest::mouseClick(pot(3), Qt::LeftButton, {}, pot(3)->rect().center());
    EXPECT_EQ(clicked.size(), 1);
    QTest::mouseClick(pot(3), Qt::LeftButton, {}, QPoint(2, 2));
    EXPECT_EQ(clicked.size(), 1);
}

TEST_F(FrontPanelTest, SpaceAndEnterPressTheFocusedPot)
{
    QSignalSpy clicked(pot(3), &QPushButton::clicked);
    pot(3)->setFocus();
    int expected = 0;
    for (const auto key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter}) {
        QTest::keyClick(pot(3), key);
        EXPECT_EQ(clicked.size(), ++expected);
    }
    QKeyEvent held(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"), true);
    QApplication::sendEvent(pot(3), &held);
    EXPECT_EQ(clicked.size(), expected);
}

TEST_F(FrontPanelTest, LeftAndRightMoveFromPotToPotInEveryLanguage)
{
    for (const auto direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        panel_->setLayoutDirection(direction);
        pot(7)->setFocus();
        QTest::keyClick(pot(7), Qt::Key_Right);
        EXPECT_TRUE(pot(8)->hasFocus());
        QTest::keyClick(pot(8), Qt::Key_Right);
        EXPECT_TRUE(pot(8)->hasFocus());
        pot(2)->setFocus();
        QTest::keyClick(pot(2), Qt::Key_Left);
        EXPECT_TRUE(pot(1)->hasFocus());
        QTest::keyClick(pot(1), Qt::Key_Left);
        EXPECT_TRUE(pot(1)->hasFocus());
        EXPECT_LT(pot(1)->x(), pot(8)->x());
    }
}

TEST_F(FrontPanelTest, TabGoesThroughThePotsInOrder)
{
    pot(1)->setFocus();
    for (int number = 2; number <= kPots; ++number) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        EXPECT_EQ(QApplication::focusWidget(), pot(number));
    }
}

// Drag and drop

TEST_F(FrontPanelTest, ParametersAreDroppedOnPotsAndOnTheirLabels)
{
    QSignalSpy dropped(panel_.get(), &FrontPanel::parametersDropped);
    for (int number = 1; number <= kPots; ++number) {
        for (QWidget* onto : {static_cast<QWidget*>(pot(number)), static_cast<QWidget*>(label(number))}) {
            EXPECT_TRUE(Dragged(draggedParameters(1)).dropOn(*onto));
            ASSERT_EQ(dropped.size(), 1) << number;
            EXPECT_EQ(dropped.takeFirst().at(0).toInt(), number);
        }
    }
}

TEST_F(FrontPanelTest, PotsAreDroppedOnOtherPots)
{
    QSignalSpy dropped(panel_.get(), &FrontPanel::potDropped);
    EXPECT_TRUE(Dragged(draggedPot(1, 3)).dropOn(*pot(8)));
    EXPECT_TRUE(Dragged(draggedPot(1, 8)).dropOn(*label(1)));
    EXPECT_EQ(dropped.size(), 2);
    EXPECT_EQ(dropped.value(0), QVariantList({1, 3, 8}));
    EXPECT_EQ(dropped.value(1), QVariantList({1, 8, 1}));
}

TEST_F(FrontPanelTest, APotDroppedOnItselfIsPressedOnce)
{
    panel_->setShownPage(1, 2);
    QSignalSpy exchanged(panel_.get(), &FrontPanel::potDropped);
    QSignalSpy clicked(pot(4), &QPushButton::clicked);
    EXPECT_TRUE(Dragged(draggedPot(1, 4)).dropOn(*pot(4)));
    EXPECT_EQ(clicked.size(), 1);
    EXPECT_TRUE(Dragged(draggedPot(1, 4)).dropOn(*label(4)));
    EXPECT_EQ(clicked.size(), 2);
    EXPECT_FALSE(pot(4)->isDown());
    EXPECT_TRUE(exchanged.isEmpty());
    panel_->setShownPage(2, 2); // where it is another one
    EXPECT_TRUE(Dragged(draggedPot(1, 4)).dropOn(*pot(4)));
    EXPECT_EQ(clicked.size(), 2);
    EXPECT_EQ(exchanged.value(0), QVariantList({1, 4, 4}));
}

TEST_F(FrontPanelTest, WhatDoesNotBelongOnAPotIsRefused)
{
    QSignalSpy parameters(panel_.get(), &FrontPanel::parametersDropped);
    QSignalSpy pots(panel_.get(), &FrontPanel::potDropped);
    const std::pair<const char*, const char*> others[] = {
        {kPotDrag, "0"}, {kPotDrag, "9"}, {kPotDrag, "x"}, {"text/plain", "Cutoff"}};
    for (const auto& [type, content] : others)
        EXPECT_FALSE(Dragged(type, content).dropOn(*pot(4))) << type << " " << content;
    for (const DragData& other : {draggedPot(1, 0), draggedPot(1, 9), draggedPot(0, 1), draggedPage(1),
                                  draggedPot(1, 1, 1), draggedParameters(1, 1)})
        EXPECT_FALSE(Dragged(other).dropOn(*pot(4)));
    pot(4)->setEnabled(false);
    EXPECT_FALSE(Dragged(draggedParameters(1)).dropOn(*pot(4)));
    EXPECT_FALSE(Dragged(draggedParameters(1)).dropOn(*label(4)));
    EXPECT_FALSE(Dragged(draggedPot(1, 1)).dropOn(*pot(4)));
    Dragged besides(draggedParameters(1));
    besides.enter(*panel_, QPoint(60, 20));
    EXPECT_FALSE(besides.drop(*panel_, QPoint(60, 20)));
    EXPECT_EQ(parameters.size() + pots.size(), 0);
}

TEST_F(FrontPanelTest, TheMarkFollowsWhatIsDraggedAndGoesWithIt)
{
    const QImage before = pictureOf(*panel_);
    const auto marks = [&](int number) { // on the pot and on its field
        const QImage now = pictureOf(*panel_);
        int marked = 0;
        for (const QRect& place : {pot(number)->geometry(), label(number)->geometry()})
            marked += comparePictures(now.copy(place), before.copy(place)).share > 0.005 ? 1 : 0;
        return marked;
    };
    Dragged parameter(draggedParameters(1));
    EXPECT_TRUE(parameter.enter(*panel_, middleOf(2)));
    EXPECT_EQ(marks(2), 2);
    EXPECT_TRUE(parameter.move(*panel_, middleOf(3)));
    EXPECT_EQ(marks(2), 0);
    EXPECT_EQ(marks(3), 2);
    QDragLeaveEvent leave;
    QApplication::sendEvent(panel_.get(), &leave);
    EXPECT_EQ(pictureOf(*panel_), before);
}

TEST_F(FrontPanelTest, APotPulledAwayIsDraggedAndNotPressed)
{
    panel_->setShownPage(2, 5);
    QSignalSpy clicked(pot(3), &QPushButton::clicked);
    QSignalSpy ended(panel_.get(), &FrontPanel::dragEnded);
    const QPoint middle = pot(3)->rect().center();
    const QPoint away = middle + QPoint(QApplication::startDragDistance() + 2, 0);
    QTest::mousePress(pot(3), Qt::LeftButton, {}, middle);
    // Sent right to the pot, since the drag is gone with the next turn of the event loop.
    QMouseEvent pull(QEvent::MouseMove, away, pot(3)->mapToGlobal(away), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(pot(3), &pull);
    const auto* drag = pot(3)->findChild<QDrag*>();
    ASSERT_TRUE(drag);
    EXPECT_EQ(drag->mimeData()->data(QString::fromLatin1(kPotDrag)), draggedPot(2, 3).content());
    EXPECT_EQ(ended.value(0), QVariantList{false}); // nobody took it
    EXPECT_FALSE(drag->pixmap().isNull());
    EXPECT_FALSE(pot(3)->isDown());
    QApplication::sendEvent(pot(3), &pull);
    EXPECT_FALSE(pot(3)->isDown());
    EXPECT_EQ(pot(3)->findChildren<QDrag*>().size(), 1);
    QTest::mouseRelease(pot(3), Qt::LeftButton, {}, middle);
    EXPECT_EQ(clicked.size(), 0);
    QTest::mouseClick(pot(3), Qt::LeftButton);
    EXPECT_EQ(clicked.size(), 1);
}

TEST_F(FrontPanelTest, APressMaySlideByTheDragDistanceAndOverTheEdge)
{
    QSignalSpy clicked(pot(3), &QPushButton::clicked);
    const QPoint atEdge = pot(3)->rect().center() + QPoint(std::min(pot(3)->width(), pot(3)->height()) / 2 - 2, 0);
    const QPoint slid = atEdge + QPoint(QApplication::startDragDistance(), 0);
    const auto send = [&](QEvent::Type type, QPoint at) {
        const bool isMove = type == QEvent::MouseMove;
        QMouseEvent event(type, at, pot(3)->mapToGlobal(at), isMove ? Qt::NoButton : Qt::LeftButton,
                          type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(pot(3), &event);
    };
    send(QEvent::MouseButtonPress, atEdge);
    send(QEvent::MouseMove, slid);
    EXPECT_TRUE(pot(3)->isDown());
    send(QEvent::MouseButtonRelease, slid);
    EXPECT_EQ(clicked.size(), 1);
    EXPECT_TRUE(pot(3)->findChildren<QDrag*>().isEmpty());
    // Beyond that nothing is pressed outside the circle, and a press that begins there is none.
    send(QEvent::MouseButtonPress, atEdge);
    send(QEvent::MouseButtonRelease, slid + QPoint(1, 0));
    send(QEvent::MouseButtonPress, slid);
    send(QEvent::MouseButtonRelease, slid);
    EXPECT_EQ(clicked.size(), 1);
}

TEST_F(FrontPanelTest, AHandThatTremblesStillPresses)
{
    QSignalSpy clicked(pot(3), &QPushButton::clicked);
    QTest::mousePress(pot(3), Qt::LeftButton, {}, pot(3)->rect().center());
    QTest::mouseMove(pot(3), pot(3)->rect().center() + QPoint(2, 1));
    QTest::mouseRelease(pot(3), Qt::LeftButton, {}, pot(3)->rect().center() + QPoint(2, 1));
    EXPECT_EQ(clicked.size(), 1);
}

} // namespace interface
