#include "app/interface/ComparisonView.h"

#include "app/ViewController.h"
#include "app/interface/Interface.h"
#include "app/interface/ShortName.h"
#include "app/interface/panel/FrontPanel.h"
#include "app/interface/panel/PageOverview.h"
#include "mapping/EditingState.h"
#include "mapping/ParameterOrder.h"
#include "panel/Pages.h"
#include "platform/qt/Text.h"

#include <QAccessible>
#include <QAction>
#include <QLabel>
#include <QLocale>
#include <QMenu>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <utility>

namespace interface {

namespace qt = platform::qt;
using mapping::ComparedWith;

namespace {

QString nameOf(ComparedWith side)
{
    switch (side) {
    case ComparedWith::previous: return ComparisonView::tr("the previous backup");
    case ComparedWith::original: return ComparisonView::tr("the original backup");
    case ComparedWith::downloaded: return ComparisonView::tr("the downloaded mapping");
    default: return ComparisonView::tr("the saved file");
    }
}

/// With the number, where the name alone would not tell the two apart.
QString parameterText(const panel::SlotContent& content, bool withNumber)
{
    if (content.name == mapping::kEmptyName)
        return ComparisonView::tr("empty");
    return shortName(qt::toQt(withNumber ? content.number + ' ' + content.name : content.name));
}

/// ", which has 2 pages more"
QString pagesText(std::int32_t more)
{
    if (more == 0)
        return {};
    if (std::abs(more) == 1)
        return more > 0 ? ComparisonView::tr(", which has 1 page more")
                        : ComparisonView::tr(", which has 1 page fewer");
    const QString text = more > 0 ? ComparisonView::tr(", which has %1 pages more") //
                                  : ComparisonView::tr(", which has %1 pages fewer");
    return text.arg(QLocale().toString(std::abs(more)));
}

QString hintText(const mapping::Comparison& found)
{
    const QString side = nameOf(found.side);
    const std::size_t pots = found.positions.size();
    QString text;
    if (pots == 0 && found.morePages == 0 && !found.otherMode)
        return ComparisonView::tr("Nothing differs from %1").arg(side);
    if (pots == 0)
        text = ComparisonView::tr("No pot differs from %1").arg(side);
    else if (pots == 1)
        text = ComparisonView::tr("1 pot differs from %1").arg(side);
    else
        text = ComparisonView::tr("%1 pots differ from %2").arg(QLocale().toString(pots), side);
    text += pagesText(found.morePages);
    if (found.otherMode)
        text += *found.otherMode != mapping::kModeInsertEffect ? ComparisonView::tr("; its mode is Instrument")
                                                               : ComparisonView::tr("; its mode is Insert/Effect");
    return text;
}

} // namespace

ComparisonView::ComparisonView(ViewController& controller, const Interface& loaded)
    : controller_(controller),
      panel_(loaded.find<FrontPanel>("frontPanel")),
      overview_(loaded.find<PageOverview>("pageOverview")),
      hint_(loaded.find<QLabel>("differenceHint")),
      choices_{{ComparedWith::nothing, loaded.find<QAction>("compareWithNothing")},
               {ComparedWith::saved, loaded.find<QAction>("compareWithSaved")},
               {ComparedWith::previous, loaded.find<QAction>("compareWithPrevious")},
               {ComparedWith::original, loaded.find<QAction>("compareWithOriginal")},
               {ComparedWith::downloaded, loaded.find<QAction>("compareWithDownloaded")}},
      next_(loaded.find<QAction>("nextDifference")),
      previous_(loaded.find<QAction>("previousDifference")),
      takePot_(loaded.find<QAction>("takePot")),
      takePage_(loaded.find<QAction>("takePage"))
{
    overview_->setDifferences([this](int page, int pot) { return differenceAt(panel::slotFor(page, pot - 1)); });
    connections_.push_back(controller_.editingChanged.connect([this] { refresh(); }));
    connections_.push_back(controller_.potChoice.onChange([this](const auto&) { enableWhatCanBeDone(); }));
    connections_.push_back(controller_.potGoneTo.connect([this](std::int32_t pot) { panel_->focusPot(pot + 1); }));
    // Files come and go without the program.
    for (QObject* place : next_->associatedObjects()) {
        if (auto* menu = qobject_cast<QMenu*>(place))
            QObject::connect(menu, &QMenu::aboutToShow, hint_, [this] { enableWhatCanBeDone(); });
    }
    refresh();
}

bool ComparisonView::differsAt(std::int32_t position) const
{
    return std::ranges::binary_search(controller_.comparison().positions, position);
}

QString ComparisonView::differenceAt(std::int32_t position) const
{
    if (!differsAt(position))
        return {};
    const panel::SlotContent here = panel::contentAt(mapping::plistBuild, position);
    const panel::SlotContent there = panel::contentAt(controller_.comparedEntries(), position);
    const bool withNumber = here.name == there.name;
    return tr("%1; in %2: %3")
        .arg(parameterText(here, withNumber), nameOf(controller_.comparison().side), parameterText(there, withNumber));
}

void ComparisonView::refresh()
{
    std::array<QString, mapping::kPotsPerPage> differences;
    for (std::int32_t pot = 0; pot < mapping::kPotsPerPage; ++pot)
        differences[static_cast<std::size_t>(pot)] = differenceAt(panel::slotFor(mapping::curPage, pot));
    panel_->setDifferences(differences);
    choices_.at(controller_.comparison().side)->setChecked(true);
    showHint();
    enableWhatCanBeDone();
}

void ComparisonView::showHint()
{
    QString text;
    if (controller_.unreadableSide() != ComparedWith::nothing)
        text = tr("Nothing is compared: %1 cannot be read").arg(nameOf(controller_.unreadableSide()));
    else if (controller_.comparison().side != ComparedWith::nothing)
        text = hintText(controller_.comparison());
    const auto sides = std::pair(controller_.comparison().side, controller_.unreadableSide());
    const bool isNew = std::exchange(toldSides_, sides) != sides && !text.isEmpty();
    hint_->setText(text);
    hint_->setVisible(!text.isEmpty());
    if (!isNew)
        return;
    QAccessibleEvent told(hint_, QAccessible::Alert);
    QAccessible::updateAccessibility(&told);
}

void ComparisonView::enableWhatCanBeDone()
{
    for (const auto& [side, item] : choices_)
        item->setEnabled(controller_.canCompareWith(side));
    const mapping::Comparison& found = controller_.comparison();
    const std::int32_t first = panel::firstSlotOf(mapping::curPage);
    const std::int32_t end = first + mapping::kPotsPerPage;
    const auto onPage = std::ranges::lower_bound(found.positions, first);
    takePage_->setEnabled(onPage != found.positions.end() && *onPage < end);
    const std::int32_t pot = controller_.potChoice.get().focusedPot;
    takePot_->setEnabled(pot != panel::PotChoice::kNone && differsAt(first + pot));
    // A pot that is gone to gets the focus, which it takes while a plug-in is chosen.
    for (QAction* item : {next_, previous_})
        item->setEnabled(controller_.isPluginBeingEdited() && !found.positions.empty() &&
                         found.positions.front() < panel::firstSlotOf(mapping::totalPages + 1));
}

} // namespace interface
