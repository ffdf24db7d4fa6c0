#include "tests/support/Pictures.h"
#include "tests/support/WindowTest.h"

#include "platform/qt/Text.h"

#include <QAction>
#include <QCheckBox>
#include <QLabel>
#include <QMenuBar>
#include <QPushButton>
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

bool isForeign(const QString& text)
{
    return text.contains(QChar(0x27e6));
}

} // namespace

class MainWindowLookTest : public WindowTest {
protected:
    /// A plug-in half mapped, with an edit that is not saved.
    void editSynth()
    {
        Texts order;
        for (int i = 1; i <= 60; ++i)
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

    /// Visible widgets of the window with a text of their own that does not fit.
    QStringList cutTexts() const
    {
        QStringList cut;
        for (QAbstractButton* button : window()->findChildren<QAbstractButton*>()) {
            if (button->isVisible() && !button->text().isEmpty() && button->width() < button->sizeHint().width())
                cut += button->objectName();
        }
        return cut;
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
    EXPECT_EQ(cutTexts(), QStringList());
    EXPECT_EQ(overlaps(), QStringList());
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

TEST_F(MainWindowLookTest, MirrorsForThoseWhoReadFromTheRight)
{
    QApplication::setLayoutDirection(Qt::RightToLeft);
    editSynth();
    const auto left = [this](const char* name) { return find<>(name)->mapTo(window(), QPoint()).x(); };
    EXPECT_GT(left("pluginTableView"), left("tablePlistOfSelectedPlugin"));
    EXPECT_GT(left("firstPageButtonPressed"), left("deletePageButtonPressed"));
    EXPECT_EQ(overlaps(), QStringList());
    EXPECT_EQ(cutTexts(), QStringList());
    QApplication::setLayoutDirection(Qt::LeftToRight);
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
