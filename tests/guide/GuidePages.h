#pragma once
// The guide's pages as their Markdown has them: lines, tables, names in bold type, and names with a key behind them.

#include "tests/support/TemporaryFolder.h"

#include <QFile>
#include <QRegularExpression>
#include <QString>
#include <QStringList>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace test {

inline QString guidePage(const std::string& name)
{
    QFile file(QString::fromStdString(std::string(KV_GUIDE_DIR "/") + name));
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("there is no page " + name);
    return QString::fromUtf8(file.readAll());
}

inline std::vector<std::string> guidePages()
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(KV_GUIDE_DIR)) {
        if (entry.path().extension() == ".md")
            names.push_back(entry.path().filename().string());
    }
    return names;
}

/// The rows of all tables below a heading, a text a cell, without the header. Backticks stay.
inline std::vector<QStringList> tableBelow(const QString& page, const QString& heading)
{
    std::vector<QStringList> rows;
    bool isBelow = false;
    for (const QString& line : page.split(QLatin1Char('\n'))) {
        if (line.startsWith(QLatin1Char('#')))
            isBelow = line.mid(line.indexOf(QLatin1Char(' ')) + 1) == heading;
        else if (isBelow && line.startsWith(QLatin1String("| "))) {
            QStringList cells = line.mid(2, line.size() - 4).split(QLatin1String(" | "));
            rows.push_back(cells);
        }
    }
    if (rows.size() > 2)
        rows.erase(rows.begin(), rows.begin() + 2);
    return rows;
}

inline QStringList found(const QString& page, const QString& pattern)
{
    QStringList texts;
    auto matches = QRegularExpression(pattern).globalMatch(page);
    while (matches.hasNext())
        texts += matches.next().captured(1).simplified();
    return texts;
}

} // namespace test
