// Every text in the main window and the others stands out from what lies behind it, measured on what is drawn.

#include "app/interface/DragPicture.h"
#include "mapping/Drafts.h"
#include "platform/qt/ReadableColours.h"
#include "platform/qt/Text.h"
#include "tests/support/WindowTest.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QAction>
#include <QHeaderView>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QStyle>
#include <QStyleFactory>
#include <QTest>
#include <QToolTip>
#include <QTreeView>

#include <ctime>
#include <memory>
#include <unordered_map>

namespace test {

namespace {

using platform::qt::contrast;
using platform::qt::fromQt;
using platform::qt::kReadableContrast;
using platform::qt::withReadableTexts;

/// Strokes of letters are wider than their soft edges then.
constexpr int kScale = 3;

QPalette usualPalette()
{
    return std::unique_ptr<QStyle>(QStyleFactory::create(QStringLiteral("Fusion")))->standardPalette();
}

/// As desktops with a dark scheme have it.
QPalette darkPalette()
{
    QPalette palette(QColor(0x32, 0x32, 0x32));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::HighlightedText})
        palette.setColor(role, QColor(0xf0, 0xf0, 0xf0));
    palette.setColor(QPalette::Base, QColor(0x24, 0x24, 0x24));
    palette.setColor(QPalette::AlternateBase, QColor(0x2b, 0x2b, 0x2b));
    palette.setColor(QPalette::Highlight, QColor(0x30, 0x8c, 0xc6));
    palette.setColor(QPalette::PlaceholderText, QColor(0xf0, 0xf0, 0xf0, 0x80));
    return palette;
}

} // namespace

class ContrastTest : public WindowTest, public testing::WithParamInterface<bool> {
protected:
    ContrastTest()
    {
        QApplication::setStyle(QStringLiteral("Fusion"));
        QApplication::setPalette(GetParam() ? darkPalette() : usualPalette());
    }
    ~ContrastTest() override { QApplication::setPalette(QPalette()); }

    void draw(const char* window)
    {
        auto* widget = find<QWidget>(window);
        QApplication::processEvents();
        picture_ = QImage(widget->size() * kScale, QImage::Format_RGB32);
        picture_.setDevicePixelRatio(kScale);
        widget->render(&picture_);
        window_ = widget;
    }

    /// The commonest colour of a part of a widget against the one that stands out the most from it.
    double contrastIn(const QWidget* widget, const QRect& part) const
    {
        const QRect area(widget->mapTo(window_, part.topLeft()) * kScale, part.size() * kScale);
        std::unordered_map<QRgb, int> count;
        for (int y = area.top(); y <= area.bottom(); ++y) {
            for (int x = area.left(); x <= area.right(); ++x) {
                if (picture_.valid(x, y))
                    ++count[picture_.pixel(x, y)];
            }
        }
        const auto isRarer = [](const auto& one, const auto& other) { return one.second < other.second; };
        const QColor background(std::max_element(count.begin(), count.end(), isRarer)->first);
        double most = 1;
        for (const auto& [colour, times] : count)
            most = std::max(most, contrast(QColor(colour), background));
        return most;
    }

    void expectReadable(const QWidget* widget, const QRect& part, const std::string& text) const
    {
        EXPECT_GE(contrastIn(widget, part), kReadableContrast)
            << "\"" << text << "\" in " << fromQt(widget->objectName());
    }

    /// What is disabled may be faint.
    template <typename T>
    int expectTextsReadable() const
    {
        int texts = 0;
        for (const T* widget : window_->findChildren<T*>()) {
            const QString text = widget->text();
            if (text.isEmpty() || !widget->isVisible() || !widget->isEnabled())
                continue;
            ++texts;
            // Without the frame, which is no text.
            expectReadable(widget, widget->rect().adjusted(4, 4, -4, -4), fromQt(text));
        }
        return texts;
    }

    void expectRowReadable(const char* list, int row) const
    {
        const auto* view = find<QAbstractItemView>(list);
        const QModelIndex index = view->model()->index(row, 1);
        expectReadable(view->viewport(), view->visualRect(index).adjusted(2, 2, -2, -2),
                       fromQt(index.data().toString()));
    }

    QImage picture_;
    const QWidget* window_ = nullptr;
};

TEST_P(ContrastTest, WithoutAPlugin)
{
    launch();
    draw("cwinMainWindow");
    EXPECT_GT(expectTextsReadable<QLabel>(), 5);
    EXPECT_GT(expectTextsReadable<QAbstractButton>(), 3);
    // What to do next, and what the field is for.
    const QWidget* list = find<QAbstractItemView>("pluginTableView")->viewport();
    expectReadable(list, list->rect(), "what to do next");
    const auto* search = find<QLineEdit>("parameterSearch");
    expectReadable(search, QRect(8, 5, search->width() / 2, search->height() - 10), "what the field is for");
}

TEST_P(ContrastTest, WithAnEditedPlugin)
{
    writeDictionary(builtIn("Lead"), orderFile(numbered(12)));
    launch();
    select("Lead");
    chooseParameter("Knob 5");
    pressPot(1);
    for (const bool isActive : {true, false}) {
        if (isActive)
            find<QWidget>("cwinMainWindow")->activateWindow();
        else
            find<QWidget>("cwinCloudWindow")->show();
        draw("cwinMainWindow");
        EXPECT_GT(expectTextsReadable<QLabel>(), 14);
        EXPECT_GT(expectTextsReadable<QAbstractButton>(), 12);
        for (int row = 1; row < 8; ++row) // plain and striped, and the selected one
            expectRowReadable("tablePlistOfSelectedPlugin", row);
        expectRowReadable("pluginTableView", 0);
        const QHeaderView* header = find<QTreeView>("tablePlistOfSelectedPlugin")->header();
        expectReadable(header->viewport(), {QPoint(3, 3), QSize(header->sectionSize(0) - 6, header->height() - 6)},
                       "Number");
    }
}

TEST_P(ContrastTest, BarsHintsAndTheFieldForPages)
{
    const Path file = builtIn("Lead");
    writeDictionary(file, orderFile(numbered(24)));
    Texts draft = numbered(24);
    draft[0] = "-1";
    mapping::Drafts(draftsBelow(home_.path())).keep({file.native(), draft, 3, 1, 0, std::time(nullptr)});
    launch();
    select("Lead");
    click("clearAllPagesButtonPressed"); // leaves two pages behind
    find<QAction>("compareWithSaved")->trigger();
    typeInto("pluginSearch", "lead");
    find<QAction>("goToPage")->trigger(); // last, since it goes with the focus
    typeInto("goToPageField", "99");
    QTest::keyClick(find<>("goToPageField"), Qt::Key_Return);
    draw("cwinMainWindow");
    for (const char* shown : {"draftBar", "leftoverHint", "differenceHint", "goToPagePopup", "pluginReadOut"})
        EXPECT_TRUE(find<>(shown)->isVisible()) << shown;
    EXPECT_GT(expectTextsReadable<QLabel>(), 18);
    EXPECT_GT(expectTextsReadable<QAbstractButton>(), 16);
    EXPECT_EQ(expectTextsReadable<QLineEdit>(), 2);
}

TEST_P(ContrastTest, TilesOfPages)
{
    Texts order = numbered(24);
    order[9] = "-1";
    writeDictionary(builtIn("Lead"), orderFile(order));
    launch();
    select("Lead");
    chooseParameter("Knob 5");
    draw("cwinMainWindow");
    const auto* strip = find<QAbstractItemView>("pageOverview");
    for (int row = 0; row < 3; ++row) {
        const QRect tile = strip->visualRect(strip->model()->index(row, 0)).adjusted(9, 6, -9, 0);
        // The number and the title each for itself, without frame, rings and cells.
        const int height = strip->fontMetrics().height();
        for (const QRect& part : {QRect(tile.left(), tile.top(), 2 * height / 3, height),
                                  QRect(tile.left() + 2 * height, tile.top(), 2 * height, height)})
            expectReadable(strip->viewport(), part, "tile " + std::to_string(row + 1));
    }
}

TEST_P(ContrastTest, ContextMenus)
{
    writeDictionary(builtIn("Lead"), orderFile(numbered(24)));
    launch();
    select("Lead");
    chooseParameter("Knob 5");
    find<>("kvRotaryBtn3")->setFocus();
    for (const char* name : {"potMenu", "tileMenu", "parameterMenu"}) {
        auto* menu = find<QMenu>(name);
        menu->popup(QPoint(10, 10));
        draw(name);
        int items = 0;
        for (QAction* item : menu->actions()) {
            if (item->isSeparator() || !item->isEnabled())
                continue;
            ++items;
            expectReadable(menu, menu->actionGeometry(item).adjusted(2, 2, -2, -2), fromQt(item->text()));
        }
        EXPECT_GT(items, 3) << name;
        auto* read = QAccessible::queryAccessibleInterface(menu);
        EXPECT_NE(read->text(QAccessible::Name), QString()) << name;
        ASSERT_EQ(read->childCount(), menu->actions().size()) << name;
        for (int child = 0; child < read->childCount(); ++child) {
            const bool isLine = menu->actions().at(child)->isSeparator();
            EXPECT_TRUE(isLine || !read->child(child)->text(QAccessible::Name).isEmpty()) << name << " " << child;
        }
        menu->hide();
    }
}

TEST_P(ContrastTest, WhatHangsAtThePointer)
{
    launch();
    const QWidget* list = find<>("tablePlistOfSelectedPlugin");
    picture_ = interface::dragPicture(QStringLiteral("Filter Cutoff"), list).toImage();
    picture_ = picture_.scaled(picture_.size() * kScale, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    window_ = list;
    EXPECT_GE(contrastIn(list, QRect(4, 4, picture_.width() / kScale - 8, picture_.height() / kScale - 8)),
              kReadableContrast);
}

TEST_P(ContrastTest, CommunityWindows)
{
    writeDictionary(builtIn("Lead"), orderFile(numbered(12)));
    launch();
    select("Lead"); // else the Load button is off
    for (const char* window : {"cwinCloudWindow", "cwinUploadWindow", "cwinDownloadWindow"}) {
        find<QWidget>(window)->show();
        draw(window);
        EXPECT_GT(expectTextsReadable<QLabel>(), 0);
        EXPECT_GT(expectTextsReadable<QAbstractButton>(), 0);
    }
}

TEST_P(ContrastTest, ToolTips)
{
    const QPalette palette = QToolTip::palette();
    EXPECT_GE(contrast(palette.color(QPalette::ToolTipText), palette.color(QPalette::ToolTipBase)), kReadableContrast);
}

INSTANTIATE_TEST_SUITE_P(Schemes, ContrastTest, testing::Bool(),
                         [](const auto& scheme) { return scheme.param ? "Dark" : "Light"; });

TEST(ReadableColours, ContrastIsThatOfTheGuidelines)
{
    EXPECT_NEAR(contrast(Qt::black, Qt::white), 21, 0.001);
    EXPECT_NEAR(contrast(Qt::white, Qt::white), 1, 0.001);
    EXPECT_NEAR(contrast(QColor(0x77, 0x77, 0x77), Qt::white), 4.48, 0.01);
    EXPECT_NEAR(contrast(Qt::white, QColor(0x30, 0x8c, 0xc6)), 3.69, 0.01);
}

TEST(ReadableColours, OnlyWhatIsFaintIsMended)
{
    const QPalette mended = withReadableTexts(usualPalette());
    EXPECT_EQ(withReadableTexts(mended), mended);
    for (int role = 0; role < QPalette::NColorRoles; ++role) {
        const auto each = static_cast<QPalette::ColorRole>(role);
        const bool isFaint = each == QPalette::Highlight || each == QPalette::PlaceholderText;
        EXPECT_EQ(mended.color(QPalette::Active, each) != usualPalette().color(QPalette::Active, each), isFaint)
            << role;
        EXPECT_EQ(mended.color(QPalette::Disabled, each), usualPalette().color(QPalette::Disabled, each)) << role;
    }
    EXPECT_GE(contrast(mended.color(QPalette::Highlight), mended.color(QPalette::HighlightedText)), kReadableContrast);
}

} // namespace test
