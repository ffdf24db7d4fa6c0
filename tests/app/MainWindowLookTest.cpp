#include "tests/support/Pictures.h"
#include "tests/support/WindowTest.h"

#include "platform/qt/ElidedLabel.h"
#include "platform/qt/Text.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QProxyStyle>
#include <QPushButton>
#include <QStyleFactory>
#include <QStyleOption>
#include <QTest>
#include <QTranslator>

namespace test {

using test::FixedLook;
using test::looksLike;
using test::pictureOf;

namespace {

const QSize kSmallest(1280, 800);

/// Texts as translators give them: other ones, and half as long again.
class Foreign final : public QTranslator {
public:
    bool isEmpty() const override { return false; }
    QString translate(const char*, const char* source, const char*, int) const override
    {
        const QString english = QString::fromUtf8(source);
        return QChar(0x27e6) + english + QString(english.size() / 2, QLatin1Char('~')) + QChar(0x27e7);
    }
};

/// About as large as a Mac's: buttons with much room beside their text, which nothing may take, other margins, no line
/// about a list.
class MacintoshLike final : public QProxyStyle {
public:
    MacintoshLike() : QProxyStyle(QStyleFactory::create(QStringLiteral("fusion"))) {}

    int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override
    {
        switch (metric) {
        case PM_LayoutLeftMargin:
        case PM_LayoutRightMargin:
        case PM_LayoutTopMargin:
        case PM_LayoutBottomMargin: return 20;
        case PM_LayoutHorizontalSpacing: return 12;
        case PM_LayoutVerticalSpacing: return 10;
        case PM_DefaultFrameWidth: return 1;
        case PM_ScrollBarExtent: return 15;
        case PM_SplitterWidth: return 1;
        case PM_HeaderMargin: return 5;
        case PM_ExclusiveIndicatorWidth:
        case PM_ExclusiveIndicatorHeight:
        case PM_IndicatorWidth:
        case PM_IndicatorHeight: return 18;
        case PM_FocusFrameHMargin:
        case PM_FocusFrameVMargin: return 4;
        default: return QProxyStyle::pixelMetric(metric, option, widget);
        }
    }

    QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& contents,
                           const QWidget* widget) const override
    {
        const QSize usual = QProxyStyle::sizeFromContents(type, option, contents, widget);
        switch (type) {
        case CT_PushButton: return {std::max(contents.width() + 2 * kBeside, 50), 32};
        case CT_CheckBox:
        case CT_RadioButton: return usual + QSize(4, 4);
        case CT_LineEdit: return {usual.width(), 28};
        case CT_HeaderSection: return {usual.width(), 28};
        default: return usual;
        }
    }

    QRect subElementRect(SubElement element, const QStyleOption* option, const QWidget* widget) const override
    {
        if (element == SE_PushButtonContents)
            return option->rect.adjusted(kBeside, 5, -kBeside, -5);
        return QProxyStyle::subElementRect(element, option, widget);
    }

private:
    static constexpr int kBeside = 15;
};

struct FromTheRight {
    FromTheRight() { QApplication::setLayoutDirection(Qt::RightToLeft); }
    ~FromTheRight() { QApplication::setLayoutDirection(Qt::LeftToRight); }
};

bool isForeign(const QString& text)
{
    return text.contains(QChar(0x27e6));
}

} // namespace

class MainWindowLookTest : public WindowTest {
protected:
    /// A plug-in half mapped, with an edit that is not saved.
    void editSynth(int slots = 60)
    {
        Texts order;
        for (int i = 1; i <= slots; ++i)
            order.push_back(i % 5 == 0 ? std::string("-1") : std::to_string(i) + " Oscillator " + std::to_string(i));
        writeDictionary(builtIn("Synth"), orderFile(order));
        writeDictionary(builtIn("Delay"), orderFile(numbered(3)));
        writeDictionary(thirdParty("Some Maker", "Filter"), orderFile(numbered(12)));
        launch();
        window()->resize(kSmallest);
        select("Synth");
        click("nextPageButtonPressed");
        chooseParameter("Oscillator 7");
        pressPot(2);
        // The path lies in a folder of another name each time.
        find<QLabel>("labPluginPlistLocation")->setText(QStringLiteral("/Library/Logic/Synth/CSParameterOrder.plist"));
        QApplication::processEvents();
    }
    QWidget* window() const { return find<>("cwinMainWindow"); }

    QStringList cutTexts() const { return cutTexts(*window()); }
    /// Visible widgets of a window whose text or symbol does not fit.
    static QStringList cutTexts(const QWidget& window)
    {
        QStringList cut;
        for (const QWidget* widget : window.findChildren<QWidget*>()) {
            const QSize needed = neededSize(*widget);
            if (widget->isVisible() && (widget->width() < needed.width() || widget->height() < needed.height()))
                cut += widget->objectName() + QLatin1Char(' ') + QLatin1String(widget->metaObject()->className());
        }
        return cut;
    }
    /// What may be shortened needs its own least size, what we draw ourselves none here.
    static QSize neededSize(const QWidget& widget)
    {
        if (const auto* button = qobject_cast<const QAbstractButton*>(&widget))
            return button->text().isEmpty() && !button->inherits("QPushButton") ? QSize() : button->sizeHint();
        if (const auto* header = qobject_cast<const QHeaderView*>(&widget))
            return {0, header->sizeHint().height()};
        if (const auto* label = qobject_cast<const QLabel*>(&widget))
            return label->text().isEmpty() ? QSize() : label->minimumSizeHint();
        return qobject_cast<const QLineEdit*>(&widget) ? widget.minimumSizeHint() : QSize();
    }
    int topOf(const QWidget* widget) const { return widget->mapTo(window(), QPoint()).y(); }
    void expectListsSideBySide() const
    {
        EXPECT_EQ(topOf(find<>("pluginTableView")), topOf(find<>("tablePlistOfSelectedPlugin")));
        std::vector<int> headings;
        for (const QLabel* label : window()->findChildren<QLabel*>()) {
            if (label->text() == QLatin1String("Plug-ins") || label->text() == QLatin1String("Plugin Parameters"))
                headings.push_back(topOf(label));
        }
        ASSERT_EQ(headings.size(), 2u);
        EXPECT_EQ(headings[0], headings[1]);
    }
    QStringList overlaps() const
    {
        QStringList found;
        const auto controls = window()->findChildren<QAbstractButton*>();
        for (qsizetype i = 0; i < controls.size(); ++i) {
            for (qsizetype j = i + 1; j < controls.size(); ++j) {
                const auto area = [this](const QWidget* w) { return QRect(w->mapTo(window(), QPoint()), w->size()); };
                const bool both = controls[i]->isVisible() && controls[j]->isVisible();
                if (both && area(controls[i]).intersects(area(controls[j])))
                    found += controls[i]->objectName() + QLatin1Char('/') + controls[j]->objectName();
            }
        }
        return found;
    }
};

TEST_F(MainWindowLookTest, LooksLikeItsPicturesInBothSchemes)
{
    {
        const FixedLook look(test::lightPalette());
        editSynth();
        EXPECT_TRUE(looksLike(pictureOf(*window()), "main-window-light"));
    }
    const FixedLook look(test::darkPalette());
    editSynth();
    EXPECT_TRUE(looksLike(pictureOf(*window()), "main-window-dark"));
}

TEST_F(MainWindowLookTest, LooksLikeItsPicturesOnScreensOfOtherSizes)
{
    struct Screen {
        const char* picture;
        QSize size;
        int fontPixels;
        int slots;
        bool isDark;
    };
    for (const auto& [picture, size, fontPixels, slots, isDark] :
         {Screen{"main-window-1024", {1024, 640}, 13, 60, false}, Screen{"main-window-150", {1440, 900}, 20, 60, true},
          Screen{"main-window-2560", {2560, 1440}, 13, 400, true}}) {
        const FixedLook look(isDark ? test::darkPalette() : test::lightPalette(), fontPixels);
        editSynth(slots);
        window()->resize(size);
        QApplication::processEvents();
        EXPECT_TRUE(looksLike(pictureOf(*window()), picture));
    }
}

TEST_F(MainWindowLookTest, LooksLikeItsPictureToThoseWhoReadFromTheRight)
{
    const FixedLook look(test::lightPalette());
    const FromTheRight direction;
    editSynth();
    EXPECT_TRUE(looksLike(pictureOf(*window()), "main-window-from-the-right"));
}

TEST_F(MainWindowLookTest, AMissingMarkIsSeenInThePicture)
{
    const FixedLook look(test::lightPalette());
    editSynth();
    click("undoButton");
    EXPECT_FALSE(test::comparePictures(pictureOf(*window()), test::keptPicture("main-window-light")).densest <
                 test::kToleratedDensity);
}

TEST_F(MainWindowLookTest, FitsASmallScreenWithRoomForTheLists)
{
    editSynth();
    EXPECT_LE(window()->minimumSizeHint().width(), kSmallest.width());
    EXPECT_LE(window()->minimumSizeHint().height(), kSmallest.height() - 100);
    EXPECT_EQ(window()->size(), kSmallest);
    EXPECT_GE(find<>("tablePlistOfSelectedPlugin")->height(), 180);
    expectListsSideBySide();
    EXPECT_EQ(cutTexts(), QStringList());
    EXPECT_EQ(overlaps(), QStringList());
}

TEST_F(MainWindowLookTest, WhatIsNotSavedIsToldWholeInTheSmallestWindow)
{
    const FixedLook look(test::lightPalette());
    editSynth();
    window()->resize(window()->minimumSizeHint());
    const auto* unsaved = find<platform::qt::ElidedLabel>("unsavedReadOut");
    for (const int pots : {1, 9, 17, 25, 33, 41, 49, 57, 65}) {
        QApplication::processEvents();
        EXPECT_EQ(text("unsavedReadOut"), "Unsaved pots: " + std::to_string(pots));
        EXPECT_FALSE(unsaved->isShortened()) << pots;
        click("newPageButtonPressed");
    }
    EXPECT_EQ(window()->size(), window()->minimumSizeHint());
}

TEST_F(MainWindowLookTest, NothingOverlapsWithLongNamesInAnyScript)
{
    const std::string names[] = {"Oscillator 1 Waveform Position Modulation Depth by the Second Envelope Generator (X)",
                                 "滤波器截止频率滤波器截止频率滤波器截止频率滤波器截止频率滤波器截止频率滤波器截止频率",
                                 "مستوى المرشح الرئيسي للصوت مستوى المرشح الرئيسي للصوت مستوى المرشح الرئيسي"};
    for (const std::string& name : names) {
        Texts order;
        for (int i = 1; i <= 9; ++i)
            order.push_back(std::to_string(i) + " " + name);
        writeDictionary(thirdParty(name.substr(0, 60), name), orderFile(order));
    }
    for (const QSize size : {kSmallest, QSize(2560, 1440)}) {
        launch();
        window()->resize(size);
        for (const std::string& name : names) {
            select(name);
            QApplication::processEvents();
            EXPECT_EQ(window()->size(), size) << name;
            EXPECT_EQ(cutTexts(), QStringList()) << name;
            EXPECT_EQ(overlaps(), QStringList()) << name;
            EXPECT_EQ(text("labKOScreen_Title"), name + " (" + name.substr(0, 60) + ")");
            EXPECT_EQ(toolTip("kvControl1"), name);
            auto* list = find<QAbstractItemView>("tablePlistOfSelectedPlugin");
            EXPECT_EQ(list->model()->index(1, 1).data(Qt::ToolTipRole).toString().toStdString(), name);
        }
    }
}

TEST_F(MainWindowLookTest, NothingIsCutUnderAStyleWithOtherMeasures)
{
    const FixedLook look(test::lightPalette()); // puts the style back as well
    QApplication::setStyle(new MacintoshLike);
    editSynth();
    EXPECT_LE(window()->minimumSizeHint().width(), kSmallest.width());
    EXPECT_LE(window()->minimumSizeHint().height(), kSmallest.height() - 100);
    EXPECT_EQ(window()->size(), kSmallest);
    EXPECT_EQ(cutTexts().join(QStringLiteral(", ")).toStdString(), "");
    EXPECT_EQ(overlaps(), QStringList());
    expectListsSideBySide();
    for (const char* name : {"cwinCloudWindow", "cwinUploadWindow", "cwinDownloadWindow"}) {
        find<>(name)->show();
        QApplication::processEvents();
        EXPECT_EQ(cutTexts(*find<>(name)).join(QStringLiteral(", ")).toStdString(), "") << name;
    }
    const auto* scan = find<>("btnRunCheck");
    EXPECT_GE(find<>("tablePlistOfSelectedPlugin")->mapTo(window(), QPoint()).x(),
              scan->mapTo(window(), QPoint()).x() + scan->width() + 4);
}

TEST_F(MainWindowLookTest, MirrorsForThoseWhoReadFromTheRight)
{
    const FromTheRight direction;
    editSynth();
    const auto left = [this](const char* name) { return find<>(name)->mapTo(window(), QPoint()).x(); };
    EXPECT_GT(left("pluginTableView"), left("tablePlistOfSelectedPlugin"));
    EXPECT_GT(left("firstPageButtonPressed"), left("deletePageButtonPressed"));
    EXPECT_EQ(overlaps(), QStringList());
    EXPECT_EQ(cutTexts(), QStringList());
}

TEST_F(MainWindowLookTest, EveryTextOfItsOwnIsTranslatedAndNoFixedOne)
{
    Foreign translator;
    QCoreApplication::installTranslator(&translator);
    editSynth();
    QStringList english;
    for (const char* name : {"cwinMainWindow", "cwinCloudWindow", "cwinUploadWindow", "cwinDownloadWindow"}) {
        for (const QWidget* widget : find<>(name)->findChildren<QWidget*>()) {
            const auto* button = qobject_cast<const QAbstractButton*>(widget);
            const bool isPot = widget->objectName().startsWith(QLatin1String("kvRotaryBtn"));
            if (button && !isPot && !button->text().isEmpty() && !isForeign(button->text()))
                english += button->objectName() + QStringLiteral(" title");
            if (button && !button->objectName().isEmpty() && !button->toolTip().isEmpty() &&
                !isForeign(button->toolTip()))
                english += button->objectName() + QStringLiteral(" tool tip");
            const auto* label = qobject_cast<const QLabel*>(widget);
            if (label && label->objectName().isEmpty() && !label->text().isEmpty() && !isForeign(label->text()))
                english += label->text();
        }
    }
    for (const QAction* item : window()->findChildren<QAction*>()) {
        if (!item->objectName().isEmpty() && item->menu() == nullptr && !item->text().isEmpty() &&
            !isForeign(item->text()) && !item->objectName().startsWith(QLatin1String("_q_")))
            english += item->objectName() + QStringLiteral(" item");
    }
    english.removeAll(QStringLiteral("kvOrvantaLogic Tool")); // the program's name
    EXPECT_EQ(english.join(QStringLiteral(", ")).toStdString(), "");
    for (const char* own : {"mappedReadOut", "unsavedReadOut"})
        EXPECT_TRUE(isForeign(find<QLabel>(own)->text())) << own;
    EXPECT_TRUE(isForeign(find<QAction>("undo")->text()));
    // What the system says itself stays as it is.
    EXPECT_EQ(text("lab_PageCurrentlyDisplayed"), "Page 2 of 8");
    EXPECT_EQ(text("labTotalPagesIndicator"), "8 Pages");
    EXPECT_EQ(text("mainTitle_Sub"), "Logic Pro Insert/Effect Mapper");
    EXPECT_EQ(text("labelHelperDisplay"), "Editing Synth in Insert/Effect Mode");
    EXPECT_EQ(text("labLoggedInAs"), "Not Logged In");
    EXPECT_EQ(overlaps(), QStringList());
    EXPECT_EQ(cutTexts(), QStringList());
    QCoreApplication::removeTranslator(&translator);
}

} // namespace test
