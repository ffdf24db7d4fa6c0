// What holds whatever somebody does: looked at again after every step of a random user.
//
// KV_RANDOM_CLICKS   number of steps; the default takes some seconds
// KV_RANDOM_SEED     another user
// KV_RANDOM_SHRINK   on a failure, seconds spent on looking for fewer steps that fail too
// KV_RANDOM_TRACE    writes every step before the next one, for a run that ends in a crash

#include "app/interface/panel/FrontPanel.h"
#include "app/interface/panel/PageDrags.h"
#include "app/interface/panel/PageModel.h"
#include "app/interface/panel/PageOverview.h"
#include "app/interface/panel/Pot.h"
#include "chart/ChartState.h"
#include "mapping/Comparison.h"
#include "mapping/Drafts.h"
#include "mapping/EditingSnapshot.h"
#include "mapping/EditingState.h"
#include "mapping/MappingStore.h"
#include "mapping/ParameterOrder.h"
#include "platform/qt/RecordSort.h"
#include "plugins/PluginScan.h"
#include "tests/trust/RandomUser.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAction>
#include <QElapsedTimer>
#include <QLabel>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <map>
#include <set>
#include <string_view>
#include <utility>

namespace test {

namespace fs = std::filesystem;

class RandomClicks : public RandomUser {
protected:
    struct Failure {
        std::size_t at = 0; ///< place in the list of steps
        std::string complaints;
        std::vector<std::string> done;
    };

    static int setting(const char* name, int otherwise)
    {
        const char* text = std::getenv(name);
        return text ? std::atoi(text) : otherwise;
    }

    /// Does the steps in a new run of the program until something no longer holds.
    std::optional<Failure> run(unsigned seed, const std::vector<int>& steps)
    {
        startOver();
        looked_.clear();
        looks_ = 0;
        chosenPots_.clear();
        const bool traces = std::getenv("KV_RANDOM_TRACE") != nullptr;
        std::vector<std::string> done;
        for (std::size_t i = 0; i < steps.size(); ++i) {
            done.push_back(std::to_string(steps[i]) + ": " + doSomething(seed, steps[i]));
            if (traces)
                std::cerr << done.back() << std::endl;
            complaints_.clear();
            look();
            if (!complaints_.empty())
                return Failure{i, complaints_, std::move(done)};
        }
        return std::nullopt;
    }

    /// Leaves out steps, fewer at a time, as long as something still fails.
    Failure shrink(unsigned seed, std::vector<int> steps, Failure failure)
    {
        QElapsedTimer time;
        time.start();
        const qint64 limit = qint64{1000} * setting("KV_RANDOM_SHRINK", 0);
        steps.resize(failure.at + 1);
        for (std::size_t chunk = steps.size() / 2; chunk > 0; chunk /= 2) {
            for (std::size_t from = 0; from + chunk < steps.size() && !time.hasExpired(limit);) {
                std::vector<int> fewer = steps;
                const auto first = fewer.begin() + static_cast<std::ptrdiff_t>(from);
                fewer.erase(first, first + static_cast<std::ptrdiff_t>(chunk));
                if (auto again = run(seed, fewer)) {
                    fewer.resize(again->at + 1);
                    steps = std::move(fewer);
                    failure = std::move(*again);
                } else {
                    from += chunk;
                }
            }
        }
        return failure;
    }

private:
    void expect(bool holds, const std::string& complaint)
    {
        if (!holds)
            complaints_ += complaint + "\n";
    }
    template <typename T>
    void expectEqual(const T& actual, const T& expected, const std::string& what)
    {
        if (!(actual == expected))
            expect(false,
                   what + ": " + testing::PrintToString(actual) + " instead of " + testing::PrintToString(expected));
    }

    void look()
    {
        lookAtPages();
        lookAtPanel();
        lookAtLists();
        lookAtSelection();
        lookAtFoundPlugins();
        lookAtChoice();
        lookAtComparison();
        lookAtPasted();
        lookAtUnsaved();
        if (++looks_ % 8 == 0 || unsavedAtQuit_) // reads files
            lookAtDrafts();
        lookAtFiles();
        lookAtHistory();
    }

    void lookAtPages()
    {
        const auto entries = static_cast<std::int32_t>(mapping::plistBuild.size());
        expect(mapping::totalPages >= 1, "there is no page");
        expect(mapping::curPage >= 1 && mapping::curPage <= mapping::totalPages, "the page shown does not exist");
        if (entries > 0)
            expect(entries >= mapping::totalPages * 8, "pages without entries");
        expect(entries % 8 == 0, "a page of less than eight pots");
    }

    void lookAtPanel()
    {
        std::vector<std::string> names(8, mapping::kEmptyName);
        if (!mapping::plistBuild.empty()) {
            for (int pot = 0; pot < 8; ++pot) {
                const auto position = static_cast<std::size_t>((mapping::curPage - 1) * 8 + pot);
                names.at(static_cast<std::size_t>(pot)) = mapping::plistBuild.at(position).text(mapping::kParameter);
            }
            const std::string pages = std::to_string(mapping::totalPages);
            expectEqual(text("lab_PageCurrentlyDisplayed"), "Page " + std::to_string(mapping::curPage) + " of " + pages,
                        "page read-out");
            expectEqual(text("labTotalPagesIndicator"), pages + (mapping::totalPages < 2 ? " Page" : " Pages"),
                        "total read-out");
            expectEqual(rowsOfChart(), mapping::totalPages, "rows of the chart");
        }
        expectEqual(potLabels(), names, "labels");
    }

    static std::int32_t rowsOfChart()
    {
        std::int32_t rows = 0;
        const std::string_view start = "<tr><th>Page ";
        for (auto at = chart::bHTML.find(start); at != std::string::npos; at = chart::bHTML.find(start, at + 1))
            ++rows;
        return rows;
    }

    void lookAtLists()
    {
        const auto look = [this](const char* view, const platform::ArrayController& rows) {
            expect(rows.selectionIndex() >= -1 && rows.selectionIndex() < rows.arrangedCount(),
                   std::string("a row that does not exist is selected in ") + view);
            if (std::string_view(view) != "pluginTableView" || !isOnTheWay())
                expectEqual(selectedRowsOf(view), rows.selectedRows(), std::string("selected rows of ") + view);
            expect(rows.selectedRows().empty() == (rows.selectionIndex() < 0) &&
                       (rows.selectionIndex() < 0 ||
                        std::ranges::binary_search(rows.selectedRows(), rows.selectionIndex())),
                   std::string("the row that is acted on is no selected one of ") + view);
            expectEqual(find<QAbstractItemView>(view)->model()->rowCount(), rows.arrangedCount(),
                        std::string("rows of ") + view);
        };
        const auto& parameters = *controller().arrayControllerPlistSelected();
        if (const platform::Record* plugin = controller().myArrayController()->selection())
            expectEqual(text("labPluginPlistLocation"), std::string(plugin->text(plugins::kFileLocation)),
                        "file of the selected plug-in");
        look("pluginTableView", *controller().myArrayController());
        look("tablePlistOfSelectedPlugin", parameters);
        look("cwinPlistAvailable", *controller().arrayController_downloadList());
        expectEqual(text("parameterSearch"), parameters.filterText.get(), "search field");

        std::set<std::string> onPots;
        for (std::int32_t p = 0; p < std::min(mapping::totalPages * 8, std::int32_t(mapping::plistBuild.size())); ++p)
            onPots.insert(mapping::elementFromEntry(mapping::plistBuild[static_cast<std::size_t>(p)]));
        int offered = 0;
        int mapped = 0;
        for (const platform::Record& parameter : parameters.content()) {
            if (mapping::isEmptyEntry(parameter))
                continue;
            ++offered;
            mapped += onPots.count(mapping::elementFromEntry(parameter)) ? 1 : 0;
        }
        expectEqual(text("mappedReadOut"),
                    offered ? std::to_string(mapped) + " of " + std::to_string(offered) + " mapped" : std::string(),
                    "read-out of what is mapped");
    }

    std::vector<std::int32_t> selectedRowsOf(const char* view)
    {
        std::vector<std::int32_t> rows;
        for (const QModelIndex& row : find<QAbstractItemView>(view)->selectionModel()->selectedRows())
            rows.push_back(row.row());
        std::ranges::sort(rows);
        return rows;
    }

    QModelIndex tile(int page) { return find<QAbstractItemView>("pageOverview")->model()->index(page - 1, 0); }
    interface::Pot* pot(int number) { return find<interface::Pot>(("kvRotaryBtn" + std::to_string(number)).c_str()); }
    bool canBeDone(const char* item) { return find<QAction>(item)->isEnabled(); }
    /// A bit for each pot of these positions, page by page.
    static std::vector<unsigned> potsByPage(const std::vector<std::int32_t>& positions)
    {
        std::vector<unsigned> pots(static_cast<std::size_t>(mapping::totalPages));
        for (const std::int32_t position : positions) {
            if (position < mapping::totalPages * 8)
                pots.at(static_cast<std::size_t>(position / 8)) |= 1U << static_cast<unsigned>(position % 8);
        }
        return pots;
    }

    /// Rings are where the selected parameter stands.
    void lookAtSelection()
    {
        const platform::Record* selected = controller().arrayControllerPlistSelected()->selection();
        std::vector<std::int32_t> positions;
        for (std::int32_t i = 0; selected && i < static_cast<std::int32_t>(mapping::plistBuild.size()); ++i) {
            const platform::Record& entry = mapping::plistBuild[static_cast<std::size_t>(i)];
            if (!mapping::isEmptyEntry(entry) && mapping::isSameParameter(entry, *selected))
                positions.push_back(i);
        }
        const std::vector<unsigned> rings = potsByPage(positions);
        bool isPlaced = false;
        for (int page = 1; page <= mapping::totalPages && controller().isMappingLoaded(); ++page) {
            const unsigned pots = rings[static_cast<std::size_t>(page - 1)];
            isPlaced = isPlaced || pots != 0;
            expectEqual(tile(page).data(interface::PageModel::HoldsSelected).toBool(), pots != 0,
                        "ring of page " + std::to_string(page));
            for (int number = 1; number <= 8 && page == mapping::curPage; ++number)
                expectEqual(pot(number)->accessibleDescription().startsWith(QLatin1String("Holds the selected")),
                            (pots >> static_cast<unsigned>(number - 1) & 1U) != 0,
                            "ring of pot " + std::to_string(number));
        }
        expectEqual(canBeDone("showOnPanel"), isPlaced, "whether the selected parameter can be shown on the panel");
    }

    /// The plug-ins that are found, and the loaded one.
    void lookAtFoundPlugins()
    {
        using platform::qt::holdsWords;
        const auto& list = *controller().myArrayController();
        const QStringList words = platform::qt::searchWords(text("pluginSearch"));
        const auto isFound = [&](const platform::Record& plugin) {
            return holdsWords(plugin, {plugins::kPlugin, plugins::kType}, words);
        };
        std::ptrdiff_t found = 0;
        for (std::int32_t row = 0; row < list.arrangedCount(); ++row)
            found += isFound(*list.arrangedObject(row)) ? 1 : 0;
        expectEqual(found, std::ranges::count_if(list.content(), isFound), "plug-ins found");
        expectEqual(text("pluginReadOut"),
                    words.isEmpty() ? std::string()
                                    : std::to_string(found) + " of " + std::to_string(list.content().size()),
                    "read-out of the plug-ins found");
    }

    /// What operations on a pot or a page act on is what has the focus.
    void lookAtChoice()
    {
        const panel::PotChoice& choice = controller().potChoice.get();
        const bool isLoaded = controller().isMappingLoaded();
        const bool hasPot = isLoaded && choice.focusedPot != panel::PotChoice::kNone;
        const bool hasSlots = hasPot || (isLoaded && choice.isPage);
        for (const char* item : {"clearPot", "insertPot", "removePot"})
            expectEqual(canBeDone(item), hasPot, std::string("whether ") + item + " can be done");
        for (const char* item : {"cutSlots", "copySlots"})
            expectEqual(canBeDone(item), hasSlots, std::string("whether ") + item + " can be done");
        expectEqual(canBeDone("pasteSlots"), isLoaded && !choice.isText && controller().canPaste(),
                    "whether pasteSlots can be done");
        const std::vector<int> chosen = find<interface::FrontPanel>("frontPanel")->chosenPots();
        const int pageBefore = std::exchange(shownPage_, mapping::curPage);
        const bool areThoseBefore = std::exchange(chosenPots_, chosen) == chosen;
        expect(chosen.empty() || !areThoseBefore || pageBefore == mapping::curPage,
               "chosen pots stay chosen on another page");
        const QWidget* focused = QApplication::focusWidget();
        const auto* focusedPot = qobject_cast<const interface::Pot*>(focused);
        // An alert that goes gives the focus to nobody where there is no desktop. And while another window is in front
        // a pot that is gone to has it as soon as that one goes.
        if (!focused || focused->window() != find<QWidget>("cwinMainWindow"))
            return;
        std::vector<std::int32_t> pots;
        for (const int number : chosen)
            pots.push_back(number - 1);
        if (pots.empty() && focusedPot)
            pots.push_back(focusedPot->number() - 1);
        expectEqual(choice.focusedPot, focusedPot ? focusedPot->number() - 1 : panel::PotChoice::kNone, "focused pot");
        expectEqual(choice.isPage, qobject_cast<const interface::PageOverview*>(focused) != nullptr, "focused page");
        expectEqual(choice.pots, pots, "chosen pots");
        expect(!find<interface::PageOverview>("pageOverview")->drags().isOver(), "a drag has no end");
    }

    /// Marks and hint against what the files hold now.
    void lookAtComparison()
    {
        using mapping::ComparedWith;
        const mapping::Comparison& found = controller().comparison();
        const std::string path = text("labPluginPlistLocation");
        const std::pair<const char*, ComparedWith> items[] = {{"compareWithNothing", ComparedWith::nothing},
                                                              {"compareWithSaved", ComparedWith::saved},
                                                              {"compareWithPrevious", ComparedWith::previous},
                                                              {"compareWithOriginal", ComparedWith::original},
                                                              {"compareWithDownloaded", ComparedWith::downloaded}};
        for (const auto& [item, side] : items) {
            const fs::path file = mapping::comparedFile(path, side);
            expectEqual(find<QAction>(item)->isChecked(), side == found.side, std::string("mark of ") + item);
            expectEqual(canBeDone(item), controller().isMappingLoaded() && (file.empty() || fs::exists(file)),
                        std::string("whether ") + item + " can be done");
        }
        std::vector<std::int32_t> differing;
        if (found.side != ComparedWith::nothing) {
            const fs::path file = mapping::comparedFile(path, found.side);
            Texts there =
                mapping::orderOf(mapping::readMapping(file.empty() ? fs::path(path) : file, std::nullopt).entries);
            Texts here = mapping::orderOf(mapping::plistBuild);
            const std::size_t longer = std::max(here.size(), there.size());
            here.resize(longer, mapping::kEmptyElement);
            there.resize(longer, mapping::kEmptyElement);
            for (std::size_t i = 0; i < longer; ++i) {
                if (here[i] != there[i])
                    differing.push_back(static_cast<std::int32_t>(i));
            }
            if (differing.size() > 1)
                expect(text("differenceHint").starts_with(std::to_string(differing.size()) + " pots differ from the "),
                       "hint of what differs: " + text("differenceHint"));
        }
        expectEqual(found.positions, differing, "pots that differ");
        expectEqual(find<QLabel>("differenceHint")->isVisible(),
                    found.side != ComparedWith::nothing || controller().unreadableSide() != ComparedWith::nothing,
                    "a hint of what differs");
        const std::vector<unsigned> marks = potsByPage(differing);
        for (std::int32_t page = 1; page <= mapping::totalPages && controller().isMappingLoaded(); ++page) {
            const unsigned pots = marks[static_cast<std::size_t>(page - 1)];
            expectEqual(tile(page).data(interface::PageModel::DifferingPots).toUInt(), pots,
                        "marks of page " + std::to_string(page));
            for (int number = 1; number <= 8 && page == mapping::curPage; ++number)
                expectEqual(pot(number)->differs(), (pots >> static_cast<unsigned>(number - 1) & 1U) != 0,
                            "mark of pot " + std::to_string(number));
        }
    }

    /// What was pasted and is not offered is told until something else is done.
    void lookAtPasted()
    {
        const auto& placed = controller().placed.get();
        expectEqual(find<QLabel>("placedHint")->isVisible(), !placed.missing.empty(), "a hint of what is not offered");
        if (!placed.missing.empty())
            expect(text("placedHint")
                       .starts_with(std::to_string(placed.placed) + " of " + std::to_string(placed.wanted) +
                                    " placed; not offered here: "),
                   "hint of what is not offered: " + text("placedHint"));
    }

    /// What a save would write against what a load would read now.
    void lookAtUnsaved()
    {
        const std::string path = text("labPluginPlistLocation");
        const bool isLoaded = !path.empty() && !mapping::plistBuild.empty();
        std::size_t pots = 0;
        bool isOtherMode = false;
        if (isLoaded) {
            const mapping::LoadedMapping saved = mapping::readMapping(path, std::nullopt);
            const auto before = mapping::orderOf(saved.entries);
            const auto now = mapping::orderOf(mapping::plistBuild);
            for (std::size_t p = 0; p < std::max(before.size(), now.size()); ++p)
                pots += p >= before.size() || p >= now.size() || before[p] != now[p] ? 1U : 0U;
            isOtherMode = saved.mode != mapping::plugin_Mode;
        }
        expectEqual(find<QWidget>("cwinMainWindow")->isWindowModified(), pots > 0 || isOtherMode, "modified mark");
        expectEqual(text("unsavedReadOut"),
                    pots          ? "Unsaved pots: " + std::to_string(pots)
                    : isOtherMode ? std::string("Unsaved mode")
                                  : std::string(),
                    "read-out of what is unsaved");
        if (isLoaded)
            expect(find<QAbstractButton>(mapping::plugin_Mode ? "kvPluginMode_1" : "kvPluginMode_0")->isChecked(),
                   "the mode shown is not the mode edited");
    }

    void lookAtDrafts()
    {
        if (unsavedAtQuit_) {
            bool isLeft = false;
            for (const auto& left : mapping::Drafts(platform().folders.drafts()).leftOf(unsavedAtQuit_->plugin))
                isLeft = isLeft || left.draft.order == unsavedAtQuit_->order;
            expect(isLeft, "what was unsaved when the program ended is no draft");
        }
        const std::string path = text("labPluginPlistLocation");
        expect(controller().keepDraft(), "no draft could be kept");
        std::ptrdiff_t left = 0;
        std::ptrdiff_t all = 0;
        const auto folder = platform().folders.drafts();
        if (fs::exists(folder)) {
            for (const auto& item : fs::directory_iterator(folder)) {
                expect(item.path().extension() == ".draft", "no draft: " + item.path().native());
                ++all;
            }
        }
        for (const auto& item : controller().myArrayController()->content())
            left +=
                static_cast<std::ptrdiff_t>(mapping::Drafts(folder).leftOf(item.text(plugins::kFileLocation)).size());
        const bool isUnsaved = find<QWidget>("cwinMainWindow")->isWindowModified();
        expectEqual(all - left, std::ptrdiff_t{isUnsaved ? 1 : 0}, "drafts being edited");
        const auto& shown = controller().leftDraft();
        expectEqual(find<QWidget>("draftBar")->isVisible(), shown.has_value(), "a bar for a draft");
        if (shown)
            expect(shown->draft.plugin == path && fs::exists(shown->file), "the bar's draft is not there");
        expectEqual(shown.has_value(), !path.empty() && !mapping::Drafts(folder).leftOf(path).empty(),
                    "a bar while a draft is left");
    }

    void lookAtFiles()
    {
        const std::set<std::string> known = {"CSParameterOrder.plist", "CSParameterOrder.plist.original",
                                             "CSParameterOrder.plist.prev", "CSParameterOrder.plist.html",
                                             "CSParameterOrder.plist.downloaded"};
        const std::set<std::string> unchecked = {"CSParameterOrder.plist.html", "CSParameterOrder.plist.downloaded"};
        int orders = 0;
        for (const char* folder : {"Library", "home"}) {
            for (const auto& item : fs::recursive_directory_iterator(home_ / folder)) {
                if (!item.is_regular_file())
                    continue;
                const std::string name = item.path().filename().native();
                expect(known.count(name) > 0, "a file is left behind: " + item.path().native());
                orders += name == "CSParameterOrder.plist" ? 1 : 0;
                const auto written = item.last_write_time();
                const auto before = looked_.find(item.path().native());
                if (unchecked.count(name) > 0 || (before != looked_.end() && before->second == written))
                    continue;
                looked_[item.path().native()] = written;
                const auto document = platform::plist::parse(read(item.path()));
                expect(document && document->root.asDictionary(), "no longer readable: " + item.path().native());
            }
        }
        expectEqual(orders, 5, "parameter-order files");
    }

    struct State {
        Texts entries;
        Texts parameters;
        std::int32_t totalPages;
        std::int32_t mode;
        std::string undoName;
        std::string redoName;
        bool isModified;

        bool operator==(const State&) const = default;
    };

    State state()
    {
        return {mapping::orderOf(mapping::plistBuild),
                mapping::orderOf(controller().arrayControllerPlistSelected()->content()),
                mapping::totalPages,
                mapping::plugin_Mode,
                controller().history().undoName(),
                controller().history().redoName(),
                find<QWidget>("cwinMainWindow")->isWindowModified()};
    }

    void lookAtHistory()
    {
        const State before = state();
        if (controller().history().canUndo()) {
            controller().undo();
            controller().redo();
            expect(find<QLabel>("placedHint")->isHidden(), "what was pasted is told after an undo");
            expect(state() == before, "undo and redo of \"" + before.undoName + "\" do not come back");
        }
        if (controller().history().canRedo()) {
            controller().redo();
            controller().undo();
            expect(state() == before, "redo and undo of \"" + before.redoName + "\" do not come back");
        }
        lookAtPages();
        lookAtPanel();
    }

    std::string complaints_;
    int looks_ = 0;
    int shownPage_ = 0;
    std::vector<int> chosenPots_;
    std::map<std::string, fs::file_time_type> looked_;
};

TEST_F(RandomClicks, NothingEverBreaks)
{
    const auto seed = static_cast<unsigned>(setting("KV_RANDOM_SEED", 1));
    std::vector<int> steps(static_cast<std::size_t>(setting("KV_RANDOM_CLICKS", 2000)));
    std::iota(steps.begin(), steps.end(), 0);
    auto failure = run(seed, steps);
    if (!failure)
        return;
    if (setting("KV_RANDOM_SHRINK", 0) > 0)
        failure = shrink(seed, steps, std::move(*failure));
    std::string last;
    const std::size_t count = failure->done.size();
    for (std::size_t i = count - std::min<std::size_t>(count, 40); i < count; ++i)
        last += failure->done[i] + "\n";
    FAIL() << failure->complaints << "seed " << seed << ", after these last of " << count << " steps:\n" << last;
}

} // namespace test
