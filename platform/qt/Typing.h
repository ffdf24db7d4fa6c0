#pragma once
// What counts as typing a text, as against a command.

#include <QKeyEvent>

namespace platform::qt {

/// A key that puts a visible character into a text. A blank does not count: it presses buttons and begins no search.
inline bool isTyping(const QKeyEvent& event)
{
    const auto commanding = event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    // Alt Gr is Ctrl and Alt together on some systems, and makes characters.
    const bool alternative = commanding == (Qt::ControlModifier | Qt::AltModifier);
    const QString text = event.text();
    return (!commanding || alternative) && !text.isEmpty() && text.front().isPrint() && !text.front().isSpace();
}

} // namespace platform::qt
