#pragma once
// What counts as typing a text, as against a command.

#include <QKeyEvent>
#include <QOperatingSystemVersion>

namespace platform::qt {

/// Held with a key they make another character of it: Option on a Mac, elsewhere Alt Gr, which comes as both.
constexpr Qt::KeyboardModifiers kAlternative = QOperatingSystemVersion::currentType() == QOperatingSystemVersion::MacOS
                                                   ? Qt::KeyboardModifiers(Qt::AltModifier)
                                                   : Qt::ControlModifier | Qt::AltModifier;

/// A key that puts a visible character into a text. A blank does not count: it presses buttons and begins no search.
inline bool isTyping(const QKeyEvent& event, Qt::KeyboardModifiers alternative = kAlternative)
{
    const auto commanding = event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    const QString text = event.text();
    return (!commanding || commanding == alternative) && !text.isEmpty() && text.front().isPrint() &&
           !text.front().isSpace();
}

} // namespace platform::qt
