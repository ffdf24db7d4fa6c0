// What drags look like: the chip at the pointer, and what is left behind where they began.

#include "tests/support/WindowTest.h"

#include "app/interface/DragPicture.h"
#include "platform/controls/ArrayController.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QDrag>
#include <QHoverEvent>
#include <QMouseEvent>
#include <QTest>

namespace test {

class DragLooksTest : public WindowTest {
protected:
    void load()
    {
        writeDictionary(builtIn("Synth"), orderFile(numbered(24)));
        launch();
        select("Synth");
        click("nextPageButtonPressed");
    }
    platform::ArrayController& rows() { return *controller().arrayControllerPlistSelected(); }
    static void hover(QWidget& widget, QPoint at)
    {
        QHoverEvent over(QEvent::HoverEnter, QPointF(at), QPointF(widget.mapToGlobal(at)), QPointF(-1, -1));
        QApplication::sendEvent(&widget, &over);
    }
    /// Presses there and pulls until it is dragged, for nobody to take it, which also swallows that the button is let
    /// go. What hung at the pointer.
    static QImage pull(QWidget& widget, QPoint at, const QObject& owner)
    {
        QTest::mousePress(&widget, Qt::LeftButton, {}, at);
        for (const int by : {2, 4}) {
            const QPoint away = at + QPoint(QApplication::startDragDistance() + by, 0);
            QMouseEvent move(QEvent::MouseMove, away, widget.mapToGlobal(away), Qt::NoButton, Qt::LeftButton,
                             Qt::NoModifier);
            QApplication::sendEvent(&widget, &move);
        }
        const auto* drag = owner.findChild<QDrag*>();
        const QImage picture = drag ? drag->pixmap().toImage() : QImage();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return picture;
    }
    QAbstractItemView* list(const char* name) const { return find<QAbstractItemView>(name); }
    QImage pullRow(int row)
    {
        auto* parameters = list("tablePlistOfSelectedPlugin");
        const QPoint at = parameters->visualRect(parameters->model()->index(row, 1)).center();
        const QImage picture = pull(*parameters->viewport(), at, *parameters);
        QTest::mouseRelease(parameters->viewport(), Qt::LeftButton, {}, at);
        return picture;
    }
    QImage chip(const char* text) const
    {
        return interface::dragPicture(QString::fromUtf8(text), list("tablePlistOfSelectedPlugin")).toImage();
    }
};

TEST_F(DragLooksTest, ParametersAndPotsHangAtThePointerAsTheSameChip)
{
    load();
    const QImage knob = chip("Knob 9");
    ASSERT_FALSE(knob.isNull());
    EXPECT_NE(knob, chip("Knob 2"));
    EXPECT_EQ(pullRow(9), knob);
    QWidget* pot = find<>("kvRotaryBtn1"); // page 2
    EXPECT_EQ(pull(*pot, pot->rect().center(), *pot), knob);
    EXPECT_EQ(pullRow(0), chip("Clears a pot"));
    rows().setSelectedRows({1, 2, 5}, 2);
    EXPECT_EQ(pullRow(5), chip("3 parameters"));
    rows().setSelectedRows({0, 2}, 2);
    EXPECT_EQ(pullRow(2), chip("1 parameter"));
}

TEST_F(DragLooksTest, NothingLooksHoveredOnceADragHasEnded)
{
    load();
    rows().setSelectionIndex(12);
    auto* parameters = list("tablePlistOfSelectedPlugin");
    auto* strip = list("pageOverview");
    struct From {
        const char* name;
        QWidget* widget;
        QPoint at;
        const QObject* owner;
    };
    QWidget* pot = find<>("kvRotaryBtn3");
    for (const From& from : {
             From{"pot", pot, pot->rect().center(), pot},
             From{"page", strip->viewport(), strip->visualRect(strip->model()->index(1, 0)).center(), strip},
             From{"parameter", parameters->viewport(),
                  parameters->visualRect(parameters->model()->index(12, 1)).center(), parameters},
         }) {
        for (QWidget* other : {static_cast<QWidget*>(parameters), static_cast<QWidget*>(strip), pot})
            other->clearFocus();
        from.widget->setFocus();
        const auto picture = [&] {
            QApplication::processEvents();
            return from.widget->grab().toImage();
        };
        const QImage before = picture();
        hover(*from.widget, from.at);
        const bool isRow = from.widget == parameters->viewport(); // the selected one looks the same
        EXPECT_TRUE(isRow || picture() != before) << from.name;
        pull(*from.widget, from.at, *from.owner);
        EXPECT_TRUE(picture() == before) << from.name;
        QTest::mouseRelease(from.widget, Qt::LeftButton, {}, from.at);
    }
}

} // namespace test
