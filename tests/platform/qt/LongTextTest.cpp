#include "platform/qt/LongText.h"

#include "platform/qt/CompletionGate.h"
#include "platform/qt/SystemEffects.h"
#include "tests/support/LongTexts.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QCoreApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextOption>
#include <QTimer>

#include <algorithm>
#include <functional>
#include <string>

namespace platform::qt {

namespace {

using test::kMega;
using test::longTexts;
using test::repeated;

/// Without what breaks lines.
QString inOneLine(QString text)
{
    return text.remove(QRegularExpression(QStringLiteral("[\r\n\u2028\u2029\ufdd0\ufdd1]")));
}

// What makes a field slow is the length of its blocks and their number.

TEST(LongText, OfAnyKindIsWholeInFewBlocksThatAreShort)
{
    for (const auto& [name, text] : longTexts()) {
        SCOPED_TRACE(name);
        LongTextField field;
        field.setReadOnly(true);
        field.showText(text);
        EXPECT_EQ(inOneLine(field.toPlainText()), inOneLine(text));
        EXPECT_LE(field.blockCount(), kMega / 1000 + 1);
        for (QTextBlock block = field.document()->begin(); block.isValid(); block = block.next())
            ASSERT_LE(block.length(), 3201) << block.blockNumber();
    }
}

TEST(LongText, KeepsItsLines)
{
    QString text;
    for (int line = 0; line < 2000; ++line)
        text += QStringLiteral("line %1%2")
                    .arg(QString::number(line), line % 2 ? QStringLiteral("\n") : QStringLiteral("\r\n"));
    LongTextField field;
    field.setReadOnly(true);
    field.showText(text);
    EXPECT_EQ(field.toPlainText(), QString(text).replace(QLatin1String("\r\n"), QLatin1String("\n")));
}

TEST(LongText, IsBrokenBetweenWordsAndWhereNothingBelongsTogether)
{
    const auto pieces = [](const QString& text) { return inBlocks(text).split(QChar::ParagraphSeparator); };
    for (const QString& piece : pieces(repeated(QStringLiteral("nineteen letters it "), 20'000)))
        EXPECT_TRUE(piece.startsWith(QLatin1String("nineteen")) || piece.startsWith(QLatin1String("letters")) ||
                    piece.startsWith(QLatin1String("it")))
            << qPrintable(piece.left(20));
    for (const QString& piece : pieces(QLatin1Char('a') + repeated(QStringLiteral("😀"), 20'000)))
        EXPECT_FALSE(piece.front().isLowSurrogate());
    for (const QString& piece : pieces(QLatin1Char('a') + repeated(QStringLiteral("e\u0301\u0302"), 20'000)))
        EXPECT_FALSE(piece.front().isMark());
    for (const QString& piece : pieces(QStringLiteral("abcd") + repeated(QStringLiteral("👩\u200d👧x"), 20'000)))
        EXPECT_NE(piece.front(), QChar(0x200d));
}

/// What selecting it and copying gives.
QString copied(LongTextField& field, int from, int to)
{
    QTextCursor selection = field.textCursor();
    selection.setPosition(from);
    selection.setPosition(to, QTextCursor::KeepAnchor);
    field.setTextCursor(selection);
    field.copy();
    return QGuiApplication::clipboard()->text();
}

TEST(LongText, IsCopiedWithoutTheBreaksThatItGained)
{
    for (const auto& [name, text] : longTexts()) {
        SCOPED_TRACE(name);
        LongTextField field;
        field.setReadOnly(true);
        const QString part = text.left(20'000);
        field.showText(part);
        EXPECT_EQ(copied(field, 0, field.document()->characterCount() - 1), part);
    }
    LongTextField field;
    field.setReadOnly(true);
    field.showText(QString(1500, u'\u05d0') + QStringLiteral("\r\n") + QString(4000, QLatin1Char('b')));
    const QString shown = field.toPlainText();
    ASSERT_EQ(shown.indexOf(QLatin1Char('\n')), 1200) << "a break that it gained";
    const int end = static_cast<int>(shown.indexOf(QLatin1Char('b')));
    EXPECT_EQ(copied(field, 1199, 1202), QString(2, u'\u05d0'));
    EXPECT_EQ(copied(field, 1200, 1202), QString(1, u'\u05d0'));
    EXPECT_EQ(copied(field, end - 2, end + 1), QStringLiteral("\u05d0\r\nb"));
    EXPECT_EQ(copied(field, end - 1, end), QStringLiteral("\r\n"));
    field.showText(QStringLiteral("short"));
    EXPECT_EQ(copied(field, 1, 3), QStringLiteral("ho"));
}

TEST(LongText, BeginsBehindFourThousandCharacters)
{
    EXPECT_FALSE(isLong(QString(4000, QLatin1Char('x'))));
    EXPECT_TRUE(isLong(QString(4001, QLatin1Char('x'))));
    EXPECT_FALSE(isLong(QStringLiteral("😀").repeated(4000)));
    EXPECT_TRUE(isLong(QStringLiteral("😀").repeated(4001)));
}

TEST(LongText, AWordThatIsSlowToBreakIsOneOfManyLettersThatAreNotLatin)
{
    EXPECT_FALSE(hasSlowWord(QString(4000, QLatin1Char('x'))));
    EXPECT_FALSE(hasSlowWord(QStringLiteral("שלום ").repeated(800)));
    EXPECT_FALSE(hasSlowWord(QString(1000, QChar(0x5d0))));
    EXPECT_TRUE(hasSlowWord(QString(1001, QChar(0x5d0))));
    EXPECT_TRUE(hasSlowWord(QStringLiteral("a ") + QStringLiteral("😀").repeated(501)));
}

TEST(LongText, StaysAsItIsWhereItCanBeEditedOrIsShort)
{
    const QString text(50'000, QLatin1Char('x'));
    LongTextField field;
    field.showText(text);
    EXPECT_EQ(field.toPlainText(), text);
    field.setReadOnly(true);
    field.showText(text.left(4000));
    EXPECT_EQ(field.blockCount(), 1);
    const QString line = QStringLiteral("a word of Latin letters ").repeated(5000);
    field.showText(QStringLiteral("one\ntwo\n") + line + QStringLiteral("\nthree"));
    EXPECT_EQ(field.toPlainText(), QStringLiteral("one\ntwo\n") + line + QStringLiteral("\nthree"));
}

TEST(LongText, IsWrappedBetweenWordsUnlessOneIsEndless)
{
    LongTextField field;
    field.setReadOnly(true);
    field.showText(QString(100'000, QLatin1Char('x')));
    EXPECT_EQ(field.wordWrapMode(), QTextOption::WrapAnywhere);
    // What stands there is gone before it would be laid out between its words, which it has not.
    QObject::connect(&field, &QPlainTextEdit::textChanged, [&] {
        if (field.wordWrapMode() != QTextOption::WrapAnywhere) {
            EXPECT_LE(field.toPlainText().size(), 5);
        }
    });
    field.showText(QStringLiteral("short"));
    EXPECT_EQ(field.wordWrapMode(), QTextOption::WrapAtWordBoundaryOrAnywhere);
}

TEST(LongText, ThatIsPastedIsHeldUnchangedInFewBlocksAndWrappedAnywhereBeforeAnEndlessWordComesIn)
{
    for (const auto& [name, text] : longTexts()) {
        const QString part = text.left(10'000);
        QPlainTextEdit plain;
        plain.setLineWrapMode(QPlainTextEdit::NoWrap);
        plain.setPlainText(part);
        LongTextField field;
        field.setPlainText(QStringLiteral("before"));
        field.moveCursor(QTextCursor::End);
        QTextOption::WrapMode modeThen{};
        QObject::connect(&field, &QPlainTextEdit::textChanged, [&] { modeThen = field.wordWrapMode(); });
        QApplication::clipboard()->setText(part);
        field.paste();
        EXPECT_EQ(field.toPlainText(), QStringLiteral("before") + plain.toPlainText()) << name;
        EXPECT_LE(field.blockCount(), 11) << name;
        const bool isEndless = std::none_of(part.begin(), part.end(), [](QChar c) { return c.isSpace(); });
        if (isEndless) {
            EXPECT_EQ(modeThen, QTextOption::WrapAnywhere) << name;
        }
        field.undo();
        EXPECT_EQ(field.toPlainText(), QStringLiteral("before")) << name;
    }
}

class AlertTest : public testing::Test {
protected:
    /// Shows an alert, does something while it is open, and presses its first button if it still is then; what it
    /// returned.
    int show(const std::string& message, const std::string& informative,
             const std::function<void(QMessageBox&)>& whileOpen)
    {
        QTimer::singleShot(20, qApp, [&] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            ASSERT_TRUE(box && box->isVisible());
            whileOpen(*box);
            if (box->isVisible())
                box->buttons().front()->click();
        });
        return alerts_.runModal({message, informative, {"First", "Last"}, Alert::Style::warning});
    }
    static QPlainTextEdit* fieldOf(const QMessageBox& box)
    {
        const auto fields = box.findChildren<QPlainTextEdit*>();
        return fields.size() == 1 ? fields.front() : nullptr;
    }
    static void expectOnScreen(const QMessageBox& box)
    {
        EXPECT_TRUE(box.screen()->availableGeometry().size().expandedTo(box.size()) == box.screen()->availableSize())
            << box.width() << "x" << box.height();
    }

    CompletionGate gate_;
    MessageBoxAlerts alerts_{gate_};
};

TEST_F(AlertTest, ATextThatIsTooHighIsScrolledOneWayOnly)
{
    std::string text;
    for (int line = 0; line < 30; ++line)
        text += "A line of a text that is as wide as an alert, so that it has to be broken somewhere, is broken.\n";
    show("Help", text, [](const QMessageBox& box) {
        const auto* area = box.findChild<QScrollArea*>();
        ASSERT_TRUE(area);
        EXPECT_GT(area->verticalScrollBar()->maximum(), 0);
        EXPECT_EQ(area->horizontalScrollBar()->maximum(), 0);
        EXPECT_LE(area->widget()->width(), area->viewport()->width());
        expectOnScreen(box);
    });
}

TEST_F(AlertTest, ALongTextOfAnyKindIsWholeInAFieldOnTheScreen)
{
    for (const auto& [name, text] : longTexts()) {
        SCOPED_TRACE(name);
        show("Reply", text.toStdString(), [&, &whole = text](const QMessageBox& box) {
            const auto* field = fieldOf(box);
            ASSERT_TRUE(field);
            EXPECT_TRUE(field->isVisible() && field->isReadOnly());
            EXPECT_EQ(inOneLine(field->toPlainText()), inOneLine(whole));
            EXPECT_EQ(box.informativeText(), whole);
            EXPECT_FALSE(box.findChild<QLabel*>(QStringLiteral("qt_msgbox_informativelabel"))->isVisible());
            expectOnScreen(box);
        });
    }
}

TEST_F(AlertTest, ALongMessageIsShownSoToo)
{
    const std::string text(1'000'000, 'x');
    show(text, text, [&](const QMessageBox& box) {
        EXPECT_EQ(box.findChildren<QPlainTextEdit*>().size(), 2);
        EXPECT_EQ(box.text().toStdString(), text);
        expectOnScreen(box);
    });
}

TEST_F(AlertTest, UpToFourThousandCharactersAreALabelOnTheScreen)
{
    for (const auto& [name, text] : longTexts()) {
        SCOPED_TRACE(name);
        show("Reply", text.left(4000).toStdString(), [&](const QMessageBox& box) {
            EXPECT_EQ(fieldOf(box) != nullptr, hasSlowWord(box.informativeText()));
            const auto* label = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_informativelabel"));
            EXPECT_EQ(label->isVisible(), !fieldOf(box));
            expectOnScreen(box);
        });
    }
}

TEST_F(AlertTest, TheSystemShowsOnlyWhatFitsItsOwn)
{
    const auto isOurOwn = [&](const std::string& text) {
        bool isOurs = false;
        show("Reply", text,
             [&](const QMessageBox&) { isOurs = QCoreApplication::testAttribute(Qt::AA_DontUseNativeDialogs); });
        EXPECT_FALSE(QCoreApplication::testAttribute(Qt::AA_DontUseNativeDialogs)) << "afterwards";
        return isOurs;
    };
    EXPECT_FALSE(isOurOwn("Short, 1 < 2 & 3 > 2"));
    EXPECT_TRUE(isOurOwn("<b>bold</b>")) << "Qt would take the markup out";
    EXPECT_TRUE(isOurOwn(std::string(100'000, 'x')));
    EXPECT_TRUE(isOurOwn(std::string(300, '\n'))) << "higher than the screen";
    EXPECT_TRUE(isOurOwn(std::string(1000, 'x'))) << "wider than the alert";
}

TEST_F(AlertTest, ReturnAndEscapeWorkInTheField)
{
    const std::string text(100'000, 'x');
    const auto pressing = [&](Qt::Key key) {
        return show("Reply", text, [key](const QMessageBox& box) {
            auto* field = fieldOf(box);
            ASSERT_TRUE(field);
            field->setFocus();
            QTest::keyClick(field, key);
            EXPECT_FALSE(box.isVisible());
        });
    };
    EXPECT_EQ(pressing(Qt::Key_Return), Alerts::kFirstButton);
    EXPECT_EQ(pressing(Qt::Key_Enter), Alerts::kFirstButton);
    EXPECT_EQ(pressing(Qt::Key_Escape), Alerts::kFirstButton + 1);
}

TEST_F(AlertTest, TheFirstButtonHasTheFocusAndTabGoesToTheField)
{
    show("Reply", std::string(100'000, 'x'), [](QMessageBox& box) {
        EXPECT_EQ(box.focusWidget(), box.defaultButton());
        auto* field = fieldOf(box);
        for (int i = 0; i < 3 && box.focusWidget() != field; ++i)
            QTest::keyClick(box.focusWidget(), Qt::Key_Tab);
        EXPECT_EQ(box.focusWidget(), field);
        QTest::keyClick(field, Qt::Key_Tab);
        EXPECT_NE(box.focusWidget(), field);
    });
}

TEST_F(AlertTest, AScreenReaderCanReadTheField)
{
    const QString text = repeated(QStringLiteral("word "), 100'000);
    show("Reply", text.toStdString(), [&](const QMessageBox& box) {
        QAccessibleInterface* field = QAccessible::queryAccessibleInterface(fieldOf(box));
        ASSERT_TRUE(field && field->textInterface());
        EXPECT_FALSE(field->text(QAccessible::Name).isEmpty());
        EXPECT_EQ(inOneLine(field->textInterface()->text(0, field->textInterface()->characterCount())), text);
        EXPECT_TRUE(field->state().readOnly);
    });
}

} // namespace

} // namespace platform::qt
