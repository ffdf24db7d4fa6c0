#include "platform/qt/SystemEffects.h"

#include <QFile>
#include <QProcess>

namespace platform::qt {

void DesktopWorkspace::revealFile(const std::filesystem::path& path)
{
    const QString file = QFile::decodeName(QByteArray::fromStdString(path.native()));
    QProcess::startDetached(QStringLiteral("/usr/bin/open"), {QStringLiteral("-R"), file});
}

} // namespace platform::qt
