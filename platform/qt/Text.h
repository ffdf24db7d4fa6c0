#pragma once
// Text between our UTF-8 and Qt's UTF-16. Bytes that are no UTF-8 are shown as replacement characters.

#include <QString>

#include <string>
#include <string_view>

namespace platform::qt {

inline QString toQt(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

inline std::string fromQt(const QString& text)
{
    return text.toStdString();
}

/// The text runs by itself in whichever direction it begins, whatever it is shown in. For painting only.
inline QString isolated(const QString& text)
{
    constexpr QChar kFirstStrongIsolate(0x2068), kPopIsolate(0x2069);
    return text.isEmpty() ? text : kFirstStrongIsolate + text + kPopIsolate;
}

} // namespace platform::qt
