#include "app/interface/PreviewModel.h"

#include "app/interface/ShortName.h"
#include "app/interface/panel/DifferenceBadge.h"
#include "mapping/Comparison.h"
#include "mapping/ParameterOrder.h"
#include "platform/qt/Text.h"

#include <QApplication>
#include <QPainter>
#include <QPalette>
#include <QPixmap>

#include <algorithm>
#include <utility>

namespace interface {

namespace qt = platform::qt;

namespace {

/// No cell shows more, and no tip that can be read.
constexpr qsizetype kLongestName = 200;

QString nameIn(const std::vector<platform::Record>& entries, std::int32_t position)
{
    return shortName(qt::toQt(mapping::nameAt(entries, position)), kLongestName);
}

QIcon badge()
{
    constexpr int kSide = 14;
    constexpr int kScale = 3; // sharp on every screen
    QPixmap picture(kSide * kScale, kSide * kScale);
    picture.setDevicePixelRatio(kScale);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    drawDifferenceBadge(painter, {kSide / 2.0, kSide / 2.0}, kSide / 2.0 - 1, panelColours(QApplication::palette()));
    return picture;
}

} // namespace

void PreviewModel::setEntries(std::vector<platform::Record> entries)
{
    beginResetModel();
    entries_ = std::move(entries);
    differing_.clear();
    endResetModel();
}

void PreviewModel::setOther(std::vector<platform::Record> other, std::vector<std::int32_t> differing)
{
    other_ = std::move(other);
    differing_ = std::move(differing);
    if (rowCount() > 0)
        Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
}

int PreviewModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : mapping::pagesFilledBy(entries_.size());
}

int PreviewModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : mapping::kPotsPerPage;
}

QVariant PreviewModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    const std::int32_t position = index.row() * mapping::kPotsPerPage + index.column();
    const auto name = [&] { return nameIn(entries_, position); };
    const auto differs = [&] { return std::ranges::binary_search(differing_, position); };
    switch (role) {
    case Qt::DisplayRole: return name().replace(QLatin1Char('\n'), QLatin1Char(' '));
    case Qt::DecorationRole: return differs() ? QVariant(badge()) : QVariant();
    case Qt::AccessibleTextRole: return differs() ? tr("%1, differs").arg(name()) : name();
    case Qt::ToolTipRole:
        return differs() ? tr("%1; in the mapping being edited: %2").arg(name(), nameIn(other_, position)) : name();
    default: return {};
    }
}

QVariant PreviewModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole)
        return {};
    return (orientation == Qt::Horizontal ? tr("Pot %1") : tr("Page %1")).arg(section + 1);
}

} // namespace interface
