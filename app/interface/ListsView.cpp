#include "app/interface/ListsView.h"

#include "app/ViewController.h"
#include "app/interface/DragData.h"
#include "app/interface/DragPicture.h"
#include "app/interface/Interface.h"
#include "app/interface/SearchField.h"
#include "app/interface/panel/FrontPanel.h"
#include "app/interface/panel/PageDrags.h"
#include "app/interface/panel/PageOverview.h"
#include "mapping/EditingState.h"
#include "mapping/ParameterOrder.h"
#include "panel/Pages.h"
#include "platform/qt/RecordListView.h"
#include "platform/qt/RecordSort.h"
#include "platform/qt/Text.h"
#include "plugins/PluginScan.h"

#include <QAction>
#include <QCheckBox>
#include <QLabel>
#include <QLocale>
#include <QStringList>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

namespace interface {

namespace qt = platform::qt;

namespace {

/// No cell shows more.
constexpr std::size_t kMostPotsTold = 40;

/// Whether what a search finds depends on where parameters stand.
bool findsPots(const std::string& filterText)
{
    const QStringList words = qt::searchWords(filterText);
    return std::any_of(words.begin(), words.end(),
                       [](const QString& word) { return mapping::potsMeant(qt::fromQt(word)).has_value(); });
}

QString potsOf(const platform::Record& parameter, const mapping::MappedPots& pots)
{
    if (mapping::isEmptyEntry(parameter))
        return QObject::tr("clears a pot");
    auto positions = pots.positionsOf(parameter);
    const bool isCut = positions.size() > kMostPotsTold;
    positions.resize(std::min(positions.size(), kMostPotsTold));
    return qt::toQt(mapping::potsText(positions)) + (isCut ? QStringLiteral(", \u2026") : QString());
}

} // namespace

ListsView::ListsView(ViewController& controller, const Interface& loaded)
    : controller_(controller),
      panel_(loaded.find<FrontPanel>("frontPanel")),
      overview_(loaded.find<PageOverview>("pageOverview")),
      pluginSearch_(loaded.find<SearchField>("pluginSearch")),
      search_(loaded.find<SearchField>("parameterSearch")),
      plugins_(loaded.find<qt::RecordListView>("pluginTableView")),
      parameters_(loaded.find<qt::RecordListView>("tablePlistOfSelectedPlugin")),
      shared_(loaded.find<qt::RecordListView>("cwinPlistAvailable")),
      foundPlugins_(loaded.find<QLabel>("pluginReadOut")),
      mapped_(loaded.find<QLabel>("mappedReadOut")),
      unmappedOnly_(loaded.find<QCheckBox>("unmappedOnly"))
{
    letThingsBeDragged();
    parameters_->records().setTextMaker(
        [&controller](const platform::Record& parameter) { return potsOf(parameter, controller.mappedPots()); });
    arrangeParameters();
    connect(unmappedOnly_, &QCheckBox::toggled, this,
            [rows = controller_.arrayControllerPlistSelected()] { rows->rearrange(); });
    connect(loaded.find<QAction>("findInList"), &QAction::triggered, this, &ListsView::findInList);
    connect(parameters_, &QAbstractItemView::doubleClicked, this,
            [this, show = loaded.find<QAction>("showOnPanel")](const QModelIndex& cell) {
                if (parameters_->records().isMadeText(cell.column()))
                    show->trigger();
            });

    connections_.push_back(controller_.editingChanged.connect([this] { refresh(); }));
    const auto parameters = controller_.arrayControllerPlistSelected();
    for (const auto& rows : {controller_.myArrayController(), parameters, controller_.arrayController_downloadList()})
        connections_.push_back(rows->arrangedChanged.connect([this] { showHints(); }));
    connections_.push_back(controller_.myArrayController()->arrangedChanged.connect([this] { showFoundPlugins(); }));
    connections_.push_back(parameters->selectionChanged.connect([this] { showWhere(); }));
    showFoundPlugins();
    refresh();
}

void ListsView::refresh()
{
    if (std::exchange(historyRevision_, controller_.historyRevision()) != controller_.historyRevision()) {
        for (SearchField* search : {pluginSearch_, search_})
            search->giveUpUndo();
    }
    const auto parameters = controller_.arrayControllerPlistSelected();
    if (unmappedOnly_->isChecked() || findsPots(parameters->filterText.get()))
        parameters->rearrange();
    showWhere();
    showMapped();
    showHints();
}

void ListsView::letThingsBeDragged()
{
    const auto parameters = controller_.arrayControllerPlistSelected();
    const EditState state = [this, parameters] {
        return controller_.historyRevision() + parameters->contentRevision(); // neither ever goes back
    };
    panel_->setEditState(state);
    overview_->drags().setEditState(state);
    parameters_->setDrag(QString::fromLatin1(kParameterDrag), [this, parameters, state] {
        const auto rows = parameters->selectedObjects();
        const auto blanks = std::count_if(rows.begin(), rows.end(),
                                          [](const platform::Record* row) { return mapping::isEmptyEntry(*row); });
        const int count = static_cast<int>(static_cast<std::ptrdiff_t>(rows.size()) - blanks);
        const DragData drag{.kind = DragData::Kind::parameters, .state = state(), .parameters = count};
        QString caption = tr("%1 parameters").arg(QLocale().toString(count));
        if (rows.size() == 1)
            caption = count == 1 ? qt::toQt(rows.front()->text(mapping::kParameter)) : tr("Clears a pot");
        else if (count == 1)
            caption = tr("1 parameter");
        return qt::RowDrag{drag.content(), dragPicture(caption, parameters_)};
    });
}

void ListsView::arrangeParameters()
{
    using Rows = std::vector<const platform::Record*>;
    const auto selected = std::make_shared<Rows>(); // by address, while the rows are arranged
    const auto isSelected = [selected](const platform::Record& parameter) {
        return std::ranges::binary_search(*selected, &parameter, std::less());
    };
    qt::Search search{{mapping::kParamNum, mapping::kParameter}};
    search.findsToo = [this](const QString& word) -> std::function<bool(const platform::Record&)> {
        const auto pots = mapping::potsMeant(qt::fromQt(word));
        if (!pots)
            return nullptr;
        std::vector<panel::SlotContent> there;
        for (const platform::Record& entry : controller_.mappedPots().entriesOn(*pots))
            there.push_back(panel::contentOf(entry));
        return [there = std::move(there)](const platform::Record& parameter) {
            const std::string_view number = parameter.text(mapping::kParamNum);
            return std::any_of(there.begin(), there.end(), [&](const panel::SlotContent& slot) {
                return slot.number == number && slot.name == parameter.text(mapping::kParameter);
            });
        };
    };
    // Above the parameters stands the blank entry. And while an edit changes what is on the pots that are searched, the
    // selected rows stay: the next press, or filling, goes on from them.
    search.stays = [this, isSelected](const platform::ArrayController& list, std::size_t row) {
        return row == 0 || (list.filterText.get() == searched_ && isSelected(list.content()[row]));
    };
    const auto arranged = [this, selected, isSelected,
                           found = qt::searching(std::move(search))](const platform::ArrayController& list) {
        *selected = list.selectedObjects();
        std::ranges::sort(*selected, std::less());
        auto rows = found(list);
        searched_ = list.filterText.get();
        // They stay although they were mapped just now, for the same reason.
        const auto isMapped = [&](std::size_t row) {
            const platform::Record& parameter = list.content()[row];
            return !isSelected(parameter) && controller_.mappedPots().isOnPot(parameter);
        };
        if (unmappedOnly_->isChecked())
            std::erase_if(rows, isMapped);
        selected->clear();
        return rows;
    };
    controller_.arrayControllerPlistSelected()->setArrangement(arranged);
}

void ListsView::showWhere()
{
    const platform::Record* selected = controller_.arrayControllerPlistSelected()->selection();
    unsigned pots = 0;
    std::vector<int> pages;
    if (selected && controller_.isMappingLoaded()) {
        for (const std::int32_t position : controller_.mappedPots().positionsOf(*selected)) {
            const int page = position / mapping::kPotsPerPage + 1;
            if (pages.empty() || pages.back() != page)
                pages.push_back(page);
            if (page == mapping::curPage)
                pots |= 1U << static_cast<unsigned>(position % mapping::kPotsPerPage);
        }
    }
    panel_->ringPots(pots);
    overview_->ringPages(std::move(pages));
}

void ListsView::showMapped()
{
    const mapping::MappedPots& pots = controller_.mappedPots();
    const QLocale locale;
    mapped_->setText(
        pots.parameterCount() == 0
            ? QString()
            : tr("%1 of %2 mapped").arg(locale.toString(pots.mappedCount()), locale.toString(pots.parameterCount())));
    parameters_->records().refreshMadeTexts();
}

void ListsView::showFoundPlugins()
{
    const auto listed = controller_.myArrayController();
    const QString searched = qt::toQt(listed->filterText.get());
    const QStringList words = qt::searchWords(listed->filterText.get());
    const platform::Record* selected = listed->selection();
    const bool isKept = selected && !qt::holdsWords(*selected, {plugins::kPlugin, plugins::kType}, words);
    const std::int32_t found = listed->arrangedCount() - (isKept ? 1 : 0);
    const QLocale locale;
    foundPlugins_->setText(words.isEmpty() || listed->content().empty()
                               ? QString()
                               : tr("%1 of %2").arg(locale.toString(found), locale.toString(listed->content().size())));
    QString hint;
    if (listed->content().empty())
        hint = tr("No plug-ins were found.\n\nSave a 'default' setting of a plug-in in Logic, "
                  "then press \u201cScan for plugins\u201d.");
    else if (found == 0)
        hint = tr("No plug-in found for \u201c%1\u201d.\n\nPress Escape in the search field to see all again.")
                   .arg(searched.left(80));
    plugins_->setHint(hint);
}

void ListsView::showHints()
{
    const auto found = controller_.myArrayController();
    const auto offered = controller_.arrayControllerPlistSelected();
    const QString searched = qt::toQt(offered->filterText.get());
    QString hint;
    if (offered->content().empty())
        hint = found->content().empty() ? QString() : tr("Choose a plug-in to see its parameters here.");
    else if (offered->content().size() == 1)
        hint = tr("The file of this plug-in lists no parameters.");
    else if (offered->arrangedCount() == 1 && !searched.isEmpty() && unmappedOnly_->isChecked())
        hint = tr("No parameter that is not mapped yet was found for \u201c%1\u201d.\n\nSwitch off \u201cNot mapped "
                  "yet\u201d to search all of them.")
                   .arg(searched.left(80));
    else if (offered->arrangedCount() == 1 && !searched.isEmpty())
        hint = tr("No parameter found for \u201c%1\u201d.\n\nPress Escape in the search field to see all again.")
                   .arg(searched.left(80));
    else if (offered->arrangedCount() == 1)
        hint = tr("Every parameter stands on a pot.");
    parameters_->setHint(hint);
    if (!controller_.arrayController_downloadList()->content().empty())
        hint.clear();
    else if (controller_.myArrayController()->selection())
        hint = tr("Nothing to show: nothing is shared for this plug-in yet, or the community server did not answer.");
    else
        hint = tr("Choose a plug-in in the main window to see what others shared for it.");
    shared_->setHint(hint);
}

void ListsView::findInList()
{
    const std::int32_t pot = controller_.potChoice.get().focusedPot;
    const auto position = static_cast<std::size_t>(panel::slotFor(mapping::curPage, pot));
    if (pot == panel::PotChoice::kNone || position >= mapping::plistBuild.size())
        return;
    const platform::Record& sought = mapping::plistBuild[position];
    if (mapping::isEmptyEntry(sought))
        return;
    const auto list = controller_.arrayControllerPlistSelected();
    const auto isSought = [&sought](const platform::Record& parameter) {
        return mapping::isSameParameter(parameter, sought);
    };
    if (std::none_of(list->content().begin(), list->content().end(), isSought))
        return;
    const auto select = [&] {
        std::int32_t row = 0;
        while (row < list->arrangedCount() && !isSought(*list->arrangedObject(row)))
            ++row;
        list->setSelectionIndex(row == list->arrangedCount() ? platform::ArrayController::kNoSelection : row);
        return list->selection() != nullptr;
    };
    if (!select()) {
        unmappedOnly_->setChecked(false); // which hides all that stand on a pot
        if (!select()) {
            search_->clear();
            select();
        }
    }
    parameters_->scrollTo(parameters_->model()->index(list->selectionIndex(), 0));
}

} // namespace interface
