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

} // namespace platform::qt
