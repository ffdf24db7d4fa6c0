#include "app/interface/panel/PageModel.h"

#include "app/interface/ShortName.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace interface {

void PageModel::setSource(std::function<QString(int page, int pot)> name, std::function<QString(int page)> title)
{
    beginResetModel();
    name_ = std::move(name);
    title_ = std::move(title);
    endResetModel();
}

void PageModel::setDifferences(std::function<QString(int page, int pot)> difference)
{
    difference_ = std::move(difference);
}

void PageModel::refresh(int pages, int shownPage, int leftOver)
{
    const int before = rowCount();
    const int now = pages + leftOver;
    const auto take = [&] {
        pages_ = pages;
        leftOver_ = leftOver;
    };
    shown_ = shownPage;
    if (now > before) {
        beginInsertRows({}, before, now - 1);
        take();
        endInsertRows();
    } else if (now < before) {
        beginRemoveRows({}, now, before - 1);
        take();
        endRemoveRows();
    } else {
        take();
    }
    if (now > 0 && before > 0)
        Q_EMIT dataChanged(index(0), index(std::min(now, before) - 1));
}

void PageModel::setHolding(std::vector<int> pages)
{
    if (pages == holding_)
        return;
    holding_ = std::move(pages);
    if (rowCount() > 0)
        Q_EMIT dataChanged(index(0), index(rowCount() - 1));
}

bool PageModel::holdsSelected(int page) const
{
    return std::binary_search(holding_.begin(), holding_.end(), page);
}

int PageModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : pages_ + leftOver_;
}

Qt::ItemFlags PageModel::flags(const QModelIndex& index) const
{
    return index.row() < pages_ ? QAbstractListModel::flags(index) | Qt::ItemIsDragEnabled : Qt::NoItemFlags;
}

QVariant PageModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    const int page = index.row() + 1;
    switch (role) {
    case Qt::DisplayRole: return QString::number(page);
    case Qt::AccessibleTextRole: return spokenText(page);
    case Qt::ToolTipRole: return namesText(page);
    case MappedPots: return mappedPots(page);
    case IsShown: return page == shown_;
    case HoldsSelected: return holdsSelected(page);
    case IsLeftOver: return page > pages_;
    case DifferingPots: return differingPots(page);
    case Title: return titleOf(page);
    default: return {};
    }
}

QString PageModel::nameAt(int page, int pot) const
{
    return name_ ? name_(page, pot) : QStringLiteral("-");
}

QString PageModel::titleOf(int page) const
{
    return title_ ? shortName(title_(page)) : QString();
}

unsigned PageModel::mappedPots(int page) const
{
    unsigned mapped = 0;
    for (int pot = 1; pot <= kPots; ++pot) {
        const QString name = nameAt(page, pot);
        if (!name.isEmpty() && name != QLatin1String("-"))
            mapped |= 1U << static_cast<unsigned>(pot - 1);
    }
    return mapped;
}

QString PageModel::differenceAt(int page, int pot) const
{
    return difference_ ? difference_(page, pot) : QString();
}

unsigned PageModel::differingPots(int page) const
{
    unsigned differing = 0;
    for (int pot = 1; pot <= kPots; ++pot)
        differing |= differenceAt(page, pot).isEmpty() ? 0U : 1U << static_cast<unsigned>(pot - 1);
    return differing;
}

QString PageModel::spokenText(int page) const
{
    const int mapped = std::popcount(mappedPots(page));
    const int differing = std::popcount(differingPots(page));
    QString difference;
    if (differing > 0)
        difference = differing == 1 ? tr(", 1 pot differs") : tr(", %1 pots differ").arg(differing);
    const QString number = QString::number(page);
    const QString title = titleOf(page);
    // All in one go, since a name may hold "%2" itself.
    const QString named = title.isEmpty() ? QString() : tr(", %1").arg(title);
    if (page > pages_)
        return tr("Page %1%2, left behind the last page, %3 of 8 pots mapped")
                   .arg(number, named, QString::number(mapped)) +
               difference;
    const QString text = tr("Page %1 of %2%3, %4 of 8 pots mapped");
    const QString shown = tr("Page %1 of %2%3, %4 of 8 pots mapped, shown");
    const QString spoken =
        (page == shown_ ? shown : text).arg(number, QString::number(pages_), named, QString::number(mapped)) +
        difference;
    return holdsSelected(page) ? spoken + tr(", holds the selected parameter") : spoken;
}

QString PageModel::namesText(int page) const
{
    QStringList lines;
    if (page > pages_)
        lines << tr("Left behind the last page; \u201cNew Page\u201d brings the first such page back");
    for (int pot = 1; pot <= kPots; ++pot) {
        const QString difference = differenceAt(page, pot);
        lines << QString::number(pot) + QStringLiteral("  ") +
                     (difference.isEmpty() ? shortName(nameAt(page, pot)) : difference);
    }
    if (page <= pages_ && pages_ > 1)
        lines << tr("Drag it between two others to move the page; the others keep their order");
    return lines.join(QLatin1Char('\n'));
}

} // namespace interface
