#include "app/interface/EditingView.h"

#include "app/ViewController.h"
#include "app/interface/Actions.h"
#include "app/interface/DraftBar.h"
#include "app/interface/Interface.h"
#include "app/interface/ShortName.h"
#include "app/interface/panel/FrontPanel.h"
#include "app/interface/panel/PageOverview.h"
#include "chart/Chart.h"
#include "chart/ChartState.h"
#include "mapping/EditingState.h"
#include "mapping/ParameterOrder.h"
#include "panel/PageTitle.h"
#include "panel/Pages.h"
#include "platform/qt/RecordListView.h"
#include "platform/qt/SymbolIcon.h"
#include "platform/qt/Text.h"
#include "plugins/PluginScan.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QAction>
#include <QClipboard>
#include <QDateTime>
#include <QEvent>
#include <QGuiApplication>
#include <QIcon>
#include <QLabel>
#include <QLocale>
#include <QStringList>

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace interface {

namespace qt = platform::qt;

namespace {

/// After an edit the backups are compared again when no other edit has followed for so long.
constexpr int kBackupPauseMs = 250;
/// An edit is kept as a draft when so much time has passed, whatever follows meanwhile, and tried again when that
/// failed.
constexpr int kDraftPauseMs = 1000;
constexpr int kDraftRetryMs = 10'000;

/// Puts a line under a tool tip, or none, and has a screen reader tell it.
void describe(QAbstractButton* button, const QString& toolTip, const QString& more)
{
    button->setToolTip(more.isEmpty() ? toolTip : toolTip + QLatin1Char('\n') + more);
    button->setAccessibleDescription(more);
}

/// What stands behind the last page: "1 parameter beyond page 2".
QString leftoverText(std::size_t parameters, std::size_t entries, std::int32_t pages)
{
    const QLocale locale;
    if (parameters == 1)
        return QObject::tr("1 parameter beyond page %1").arg(locale.toString(pages));
    const QString text = parameters > 0 ? QObject::tr("%1 parameters beyond page %2") //
                                        : QObject::tr("%1 empty pots beyond page %2");
    return text.arg(locale.toString(parameters > 0 ? parameters : entries), locale.toString(pages));
}

} // namespace

EditingView::EditingView(ViewController& controller, const Interface& loaded)
    : controller_(controller),
      window_(loaded.mainWindow()),
      panel_(loaded.find<FrontPanel>("frontPanel")),
      overview_(loaded.find<PageOverview>("pageOverview")),
      plugins_(loaded.find<qt::RecordListView>("pluginTableView")),
      unsaved_(loaded.find<QLabel>("unsavedReadOut")),
      modeSwitch_(loaded.find<QWidget>("kvPluginMode")),
      undo_(loaded.find<QAction>("undo")),
      redo_(loaded.find<QAction>("redo")),
      modeItems_{loaded.find<QAction>("modeInsertEffect"), loaded.find<QAction>("modeInstrument")},
      leftoverHint_(loaded.find<QLabel>("leftoverHint")),
      placedHint_(loaded.find<QLabel>("placedHint")),
      chartItem_(loaded.find<QAction>("kvCreateChart")),
      draftBar_(loaded.find<DraftBar>("draftBar")),
      draftItems_{loaded.find<QAction>("bringBackDraft"), loaded.find<QAction>("discardDraft")}
{
    for (const auto& [kept, name] :
         {std::pair{&clearAll_, "clearAllPagesButtonPressed"}, std::pair{&newPage_, "newPageButtonPressed"},
          std::pair{&save_, "kvExportToPlist"}, std::pair{&chart_, "kvCreateChart"}}) {
        auto* button = loaded.find<QAbstractButton>(name);
        *kept = {button, button->toolTip()};
    }
    for (const Action& action : Action::all()) {
        if (action.needs != Needs::nothing)
            needing_.emplace_back(loaded.find<QAction>(action.name), action.needs);
    }
    overview_->setSource(
        [](int page, int pot) { return qt::toQt(mapping::nameAt(mapping::plistBuild, panel::slotFor(page, pot - 1))); },
        [](int page) { return qt::toQt(panel::pageTitle(mapping::plistBuild, page)); });
    for (const auto& [name, suffix] :
         {std::pair{"kvRecallOriginalMapping", "original"}, std::pair{"kvRecallPreviousMapping", "prev"}}) {
        auto* button = loaded.find<QAbstractButton>(name);
        recalls_.push_back({button, suffix, button->toolTip()});
        button->installEventFilter(this);
    }
    plugins_->records().setMark(qt::symbolIcon(QStringLiteral("unsaved")), [this](const platform::Record& plugin) {
        const std::string_view path = plugin.text(plugins::kFileLocation);
        QStringList words;
        if (!unsavedPath_.empty() && path == unsavedPath_)
            words += tr("unsaved edits");
        if (controller_.isDraftLeftOf(path))
            words += tr("draft of unsaved edits");
        return words.join(QStringLiteral(", "));
    });
    keepsDraft_.setSingleShot(true);
    connect(&keepsDraft_, &QTimer::timeout, this, &EditingView::keepDraft);
    backupsChanged_.setSingleShot(true);
    connect(&backupsChanged_, &QTimer::timeout, this, [this] {
        for (const RecallButton& recall : recalls_)
            describeBackup(recall);
    });
    connections_.push_back(controller_.editingChanged.connect([this] { refresh(); }));
    connections_.push_back(controller_.potChoice.onChange([this](const auto&) { enableWhatCanBeDone(); }));
    connect(QGuiApplication::clipboard(), &QClipboard::dataChanged, this, &EditingView::enableWhatCanBeDone);
    connections_.push_back(controller_.placed.onChange([this](const auto&) { showPlaced(); }));
    connections_.push_back(controller_.draftsChanged.connect([this] {
        showDraft();
        plugins_->records().refreshMarks();
    }));
    connections_.push_back(controller_.arrayControllerPlistSelected()->selectionChanged.connect([this] {
        enableWhatCanBeDone();
        showWhatPotsDo();
    }));
    showDraft();
    refresh();
}

bool EditingView::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Enter || event->type() == QEvent::FocusIn) {
        for (const RecallButton& recall : recalls_) {
            if (recall.button == watched)
                describeBackup(recall);
        }
    }
    return false;
}

void EditingView::refresh()
{
    const bool hasMapping = controller_.isMappingLoaded();
    panel_->setShownPage(mapping::curPage, hasMapping ? mapping::totalPages : 0);
    showLeftovers();
    showWhatTheChartHolds();
    enableWhatCanBeDone();
    showWhatPotsDo();
    showTitle();
    showHistory();
    markPlugins();
    backupsChanged_.start(kBackupPauseMs);
    if (!keepsDraft_.isActive() || keepsDraft_.interval() > kDraftPauseMs)
        keepsDraft_.start(kDraftPauseMs);
}

void EditingView::keepDraft()
{
    if (!controller_.keepDraft())
        keepsDraft_.start(kDraftRetryMs);
}

void EditingView::markPlugins()
{
    const bool isUnsaved = window_->isWindowModified();
    std::string path = isUnsaved ? controller_.labPluginPlistLocation()->stringValue.get() : std::string();
    if (path != std::exchange(unsavedPath_, path))
        plugins_->records().refreshMarks();
}

void EditingView::showDraft()
{
    const auto& left = controller_.leftDraft();
    for (QAction* item : draftItems_)
        item->setEnabled(left.has_value());
    if (!left) {
        draftBar_->hide();
        return;
    }
    const std::size_t pots = *controller_.potsInLeftDraft();
    const QDateTime madeAt = QDateTime::fromSecsSinceEpoch(left->draft.madeAt);
    const bool isThisYear = madeAt.date().year() == QDate::currentDate().year();
    const QString date = QLocale().toString(madeAt, isThisYear ? tr("d MMMM, HH:mm") : tr("d MMMM yyyy, HH:mm"));
    if (pots == 0)
        draftBar_->tell(tr("Unsaved mode from %1").arg(date));
    else if (pots == 1)
        draftBar_->tell(tr("1 unsaved pot from %1").arg(date));
    else
        draftBar_->tell(tr("%1 unsaved pots from %2").arg(QLocale().toString(pots), date));
}

void EditingView::showPlaced()
{
    const panel::Placed& placed = controller_.placed.get();
    QStringList names;
    for (const std::string& name : placed.missing)
        names += qt::toQt(name);
    const QLocale locale;
    // All in one go, since a name may hold "%1" itself.
    const QString text = names.isEmpty() ? QString()
                                         : tr("%1 of %2 placed; not offered here: %3")
                                               .arg(locale.toString(placed.placed), locale.toString(placed.wanted),
                                                    names.join(QStringLiteral(", ")));
    placedHint_->setText(text);
    placedHint_->setToolTip(text);
    placedHint_->setVisible(!text.isEmpty());
    if (text.isEmpty())
        return;
    QAccessibleEvent told(placedHint_, QAccessible::Alert);
    QAccessible::updateAccessibility(&told);
}

void EditingView::enableWhatCanBeDone()
{
    const bool hasMapping = controller_.isMappingLoaded();
    const bool hasPlugin = controller_.isPluginBeingEdited();
    // Pots that cannot be used hand the focus on, and to the strip it would mean the whole page.
    if (!hasPlugin && panel_->isAncestorOf(window_->focusWidget()))
        plugins_->setFocus(Qt::OtherFocusReason);
    const panel::PotChoice choice = controller_.potChoice.get();
    const bool hasPot = hasMapping && choice.focusedPot != panel::PotChoice::kNone;
    const bool hasSlots = hasPot || (hasMapping && choice.isPage);
    const mapping::MappedPots& pots = controller_.mappedPots();
    const auto parameters = controller_.arrayControllerPlistSelected();
    const platform::Record* current = parameters->selection();
    const auto selected = parameters->selectedObjects();
    const bool isAnySelected = std::ranges::any_of(
        selected, [](const platform::Record* parameter) { return !mapping::isEmptyEntry(*parameter); });
    const auto canBeDone = [&](Needs needs) {
        switch (needs) {
        case Needs::plugin: return hasPlugin;
        case Needs::placed: return hasMapping && current && pots.isOnPot(*current);
        case Needs::unmapped: return hasMapping && pots.mappedCount() < pots.parameterCount();
        case Needs::pot: return hasPot;
        case Needs::mappedPot:
            return hasPot &&
                   panel::contentAt(mapping::plistBuild, panel::slotFor(mapping::curPage, choice.focusedPot)).name !=
                       mapping::kEmptyName;
        case Needs::selected: return hasPlugin && isAnySelected;
        case Needs::slots: return hasSlots;
        case Needs::copied: return hasMapping && !choice.isText && controller_.canPaste();
        default: return hasMapping;
        }
    };
    for (const auto& [item, needs] : needing_)
        item->setEnabled(canBeDone(needs));
    modeSwitch_->setEnabled(hasPlugin);
    modeItems_[mapping::plugin_Mode != mapping::kModeInsertEffect ? 1 : 0]->setChecked(true);
}

void EditingView::showWhatPotsDo()
{
    std::array<QString, mapping::kPotsPerPage> tasks;
    for (const Action& action : Action::all()) {
        if (action.pot == 0)
            continue;
        QString& task = tasks[static_cast<std::size_t>(action.pot - 1)];
        const QString pot = QString::number(action.pot);
        const platform::Record* parameter = controller_.arrayControllerPlistSelected()->selection();
        if (!controller_.isPluginBeingEdited())
            task = tr("Choose a plug-in to put its parameters on pot %1").arg(pot);
        else if (!parameter)
            task = tr("Select a parameter to put it on pot %1").arg(pot);
        else if (mapping::isEmptyEntry(*parameter))
            task = action.withKeys(tr("Clear pot %1").arg(pot));
        else // all in one go, since a name may hold "%2" itself
            task = action.withKeys(
                tr("Put %1 on pot %2").arg(shortName(qt::toQt(parameter->text(mapping::kParameter))), pot));
    }
    panel_->setTasks(tasks);
}

void EditingView::showTitle()
{
    const bool hasMapping = controller_.isMappingLoaded();
    const auto pots = hasMapping ? controller_.changedPots() : 0;
    const bool isModified = pots > 0 || (hasMapping && controller_.hasUnsavedMode());
    QString unsaved;
    if (pots > 0)
        unsaved = tr("Unsaved pots: %1").arg(QLocale().toString(pots));
    else if (isModified)
        unsaved = tr("Unsaved mode");
    unsaved_->setText(unsaved);
    const QString program = QStringLiteral("kvOrvantaLogic Tool");
    QString plugin = qt::toQt(controller_.myArrayController()->selectionText(plugins::kPlugin));
    plugin.replace(QLatin1String("[*]"), QLatin1String("[*][*]")); // or Qt would take it for the mark's place
    window_->setWindowTitle(plugin.isEmpty() ? program + QStringLiteral("[*]")
                                             : plugin + QStringLiteral("[*] \u2013 ") + program);
    window_->setWindowFilePath(hasMapping ? qt::toQt(controller_.labPluginPlistLocation()->stringValue.get())
                                          : QString());
    window_->setWindowModified(isModified);
}

void EditingView::showHistory()
{
    const auto show = [](QAction* item, const QString& title, bool enabled) {
        item->setText(title);
        item->setEnabled(enabled);
    };
    const platform::UndoManager& history = controller_.history();
    const QString undo = qt::toQt(history.undoName());
    const QString redo = qt::toQt(history.redoName());
    show(undo_, undo.isEmpty() ? tr("Undo") : tr("Undo %1").arg(undo), history.canUndo());
    show(redo_, redo.isEmpty() ? tr("Redo") : tr("Redo %1").arg(redo), history.canRedo());
}

void EditingView::showLeftovers()
{
    const std::int32_t pages = controller_.isMappingLoaded() ? mapping::totalPages : 0;
    const std::size_t all = pages > 0 ? mapping::plistBuild.size() : 0;
    const std::size_t left = all - std::min(all, static_cast<std::size_t>(pages) * mapping::kPotsPerPage);
    overview_->refresh(pages, mapping::curPage, mapping::pagesFilledBy(left));
    QString hint, save, newPage;
    if (left > 0) {
        const std::size_t parameters = panel::parametersBehind(mapping::plistBuild, pages);
        const QString leftovers = leftoverText(parameters, left, pages);
        hint = parameters == 1 ? tr("%1 stays in the file until its page is deleted").arg(leftovers)
                               : tr("%1 stay in the file until their pages are deleted").arg(leftovers);
        save = tr("Writes what is left behind, too: %1").arg(leftovers);
        newPage = tr("Brings back page %1 as it was left behind; the empty one is added behind all that is left")
                      .arg(QLocale().toString(pages + 1));
    }
    leftoverHint_->setText(hint);
    leftoverHint_->parentWidget()->setVisible(left > 0);
    describe(save_.button, save_.toolTip, save);
    describe(newPage_.button, newPage_.toolTip, newPage);
    describe(clearAll_.button, clearAll_.toolTip,
             all > mapping::kPotsPerPage
                 ? tr("What stands beyond page 1 stays in the file; \u201cStart From Scratch\u201d leaves nothing")
                 : QString());
}

void EditingView::showWhatTheChartHolds()
{
    const bool lacks = controller_.isPluginBeingEdited() && !chart::canBeWritten(chart::bHTML);
    const QString hint = lacks ? tr("Will not be written: a name or the path has letters outside ASCII, which this "
                                    "chart cannot hold; \u201cChart as PDF\u201d in the File menu can")
                               : QString();
    describe(chart_.button, chart_.toolTip, hint);
    const Action& action = Action::named("kvCreateChart");
    chartItem_->setToolTip(lacks ? hint : action.translated(action.toolTip));
    if (std::exchange(lacksChart_, lacks) == lacks)
        return;
    const QIcon symbol = qt::symbolIcon(lacks ? QStringLiteral("chart-lacking") : QStringLiteral("chart"));
    chart_.button->setIcon(symbol);
    chartItem_->setIcon(symbol);
}

void EditingView::describeBackup(const RecallButton& recall)
{
    const auto comparison = controller_.compareWithBackup(recall.suffix);
    const QString backup =
        comparison
            ? tr("Backup of %1; pots that differ: %2")
                  .arg(QLocale().toString(QDateTime::fromSecsSinceEpoch(comparison->madeAt), QLocale::ShortFormat),
                       QLocale().toString(comparison->differingPots))
            : tr("There is no such backup yet");
    recall.button->setToolTip(recall.toolTip + QLatin1Char('\n') + backup);
    recall.button->setAccessibleDescription(backup);
}

} // namespace interface
