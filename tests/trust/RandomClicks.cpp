// What holds whatever somebody does: looked at again after every step of a random user.
//
// KV_RANDOM_CLICKS   number of steps; the default takes some seconds
// KV_RANDOM_SEED     another user
// KV_RANDOM_SHRINK   on a failure, seconds spent on looking for fewer steps that fail too
// KV_RANDOM_TRACE    writes every step before the next one, for a run that ends in a crash

#include "chart/ChartState.h"
#include "mapping/Drafts.h"
#include "mapping/EditingSnapshot.h"
#include "mapping/EditingState.h"
#include "mapping/MappingStore.h"
#include "mapping/ParameterOrder.h"
#include "plugins/PluginScan.h"
#include "tests/trust/RandomUser.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QElapsedTimer>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <map>
#include <set>
#include <string_view>

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
        expect(actual == expected,
               what + ": " + testing::PrintToString(actual) + " instead of " + testing::PrintToString(expected));
    }

    void look()
    {
        lookAtPages();
        lookAtPanel();
        lookAtLists();
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
                expectEqual(selectedRow(view), rows.selectionIndex(), std::string("selected row of ") + view);
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
