#include "platform/qt/Typing.h"

#include <gtest/gtest.h>

#include <QKeyEvent>

namespace {

using platform::qt::isTyping;

constexpr Qt::KeyboardModifiers kAltGr = Qt::ControlModifier | Qt::AltModifier;
constexpr Qt::KeyboardModifiers kOption = Qt::AltModifier;

QKeyEvent pressed(int key, Qt::KeyboardModifiers modifiers, const QString& text)
{
    return {QEvent::KeyPress, key, modifiers, text};
}

TEST(TypingTest, AVisibleCharacterIsTyping)
{
    EXPECT_TRUE(isTyping(pressed(Qt::Key_A, Qt::NoModifier, QStringLiteral("a"))));
    EXPECT_TRUE(isTyping(pressed(Qt::Key_A, Qt::ShiftModifier, QStringLiteral("A"))));
    EXPECT_TRUE(isTyping(pressed(Qt::Key_unknown, Qt::NoModifier, QStringLiteral("\u6ee4"))));
}

TEST(TypingTest, KeysThatMakeNoCharacterAndTheBlankAreNot)
{
    EXPECT_FALSE(isTyping(pressed(Qt::Key_Space, Qt::NoModifier, QStringLiteral(" "))));
    EXPECT_FALSE(isTyping(pressed(Qt::Key_Space, kOption, QStringLiteral("\u00a0")), kOption));
    EXPECT_FALSE(isTyping(pressed(Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"))));
    EXPECT_FALSE(isTyping(pressed(Qt::Key_Shift, Qt::ShiftModifier, {})));
    EXPECT_FALSE(isTyping(pressed(Qt::Key_E, kOption, {}), kOption)); // an accent that waits for its letter
}

TEST(TypingTest, OptionMakesCharactersOnAMacAndAltGrElsewhere)
{
    struct Row {
        Qt::KeyboardModifiers modifiers;
        bool onAMac;
        bool elsewhere;
    };
    const Row rows[] = {
        {Qt::AltModifier, true, false},
        {Qt::AltModifier | Qt::ShiftModifier, true, false},
        {kAltGr, false, true}, // Command and Option: a shortcut
        {kAltGr | Qt::ShiftModifier, false, true},
        {Qt::ControlModifier, false, false},
        {Qt::MetaModifier, false, false},
        {Qt::MetaModifier | Qt::AltModifier, false, false},
        {kAltGr | Qt::MetaModifier, false, false},
    };
    for (const Row& row : rows) {
        for (const auto& [key, text] : {std::pair{Qt::Key_1, u"\u00a1"}, std::pair{Qt::Key_7, u"{"}}) {
            const QKeyEvent event = pressed(key, row.modifiers, QString::fromUtf16(text));
            EXPECT_EQ(isTyping(event, kOption), row.onAMac) << row.modifiers;
            EXPECT_EQ(isTyping(event, kAltGr), row.elsewhere) << row.modifiers;
        }
    }
}

} // namespace
