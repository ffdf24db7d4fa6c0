// Carries out operations that second_opinion.py names, a line each, with the program's own controller, and answers each
// with a line of JSON that tells everything a user could see of it.

#include "app/interface/Interface.h"
#include "chart/ChartState.h"
#include "mapping/EditingState.h"
#include "plugins/PluginScan.h"
#include "tests/support/WindowlessTest.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>

#include <array>
#include <ctime>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

std::time_t now = 0;

} // namespace

/// A second goes by with every operation, so that it is known which draft is the newer one.
extern "C" std::time_t time(std::time_t* result) noexcept
{
    if (result)
        *result = now;
    return now;
}

namespace {

QJsonValue json(const std::string& text)
{
    return QString::fromStdString(text);
}

/// So that long texts need not be sent.
QJsonValue checksum(const std::string& text)
{
    return QString::fromLatin1(
        QCryptographicHash::hash(QByteArray::fromStdString(text), QCryptographicHash::Md5).toHex());
}

std::string textOf(const std::vector<platform::Record>& records)
{
    std::string text;
    for (const platform::Record& record : records) {
        text += record.text("ParamNum");
        text += '\t';
        text += record.text("Parameter");
        text += '\t' + std::to_string(record.number("KorvelPage")) + '\t' +
                std::to_string(record.number("KorvelControlNo")) + '\n';
    }
    return text;
}

QJsonArray json(const std::vector<std::int32_t>& numbers)
{
    QJsonArray array;
    for (const std::int32_t number : numbers)
        array.append(number);
    return array;
}

std::vector<std::int32_t> numbersIn(const std::string& text)
{
    std::istringstream stream(text);
    std::vector<std::int32_t> numbers;
    for (std::int32_t number = 0; stream >> number;)
        numbers.push_back(number);
    return numbers;
}

/// One run of the program; where something is searched, with the windows that this is done in, which nobody sees. With
/// windows, what has an item in their menus is done by that.
class Sequence {
public:
    explicit Sequence(bool hasWindows)
    {
        if (hasWindows)
            windows_ = std::make_unique<interface::Interface>(program_.controller);
        program_.controller.btnRunCheck();
    }

    bool hasWindows() const { return windows_ != nullptr; }

    /// False when there is no such operation.
    bool carryOut(const std::string& operation, const std::string& argument)
    {
        if (operation == "search" || operation == "search plugins") {
            find<QLineEdit>(operation == "search" ? "parameterSearch" : "pluginSearch")
                ->setText(QString::fromStdString(argument));
            return true;
        }
        if (operation == "only unmapped") {
            find<QCheckBox>("unmappedOnly")->setChecked(argument == "1");
            return true;
        }
        if (auto* item = windows_ ? windows_->find<QAction>(operation.c_str()) : nullptr) {
            item->trigger();
            if (operation == "goToPage")
                goToPage(argument);
            return true;
        }
        const auto found = operations().find(operation);
        if (found == operations().end())
            return false;
        found->second(program_, argument);
        return true;
    }
    /// What the program does last of all, unless it is killed.
    void quit() { program_.controller.keepDraft(); }

    QJsonObject state()
    {
        const ViewController& seen = program_.controller;
        QJsonArray pots;
        QJsonArray tips;
        for (const auto& label : program_.potLabels()) {
            pots.append(json(label->stringValue.get()));
            tips.append(json(label->toolTip.get()));
        }
        const auto list = seen.arrayControllerPlistSelected();
        QJsonObject state;
        const auto set = [&](const char* key, const QJsonValue& value) { state.insert(QLatin1String(key), value); };
        set("pots", pots);
        set("tips", tips);
        set("page", json(seen.lab_PageCurrentlyDisplayed()->stringValue.get()));
        set("pages", json(seen.labTotalPagesIndicator()->stringValue.get()));
        set("title", json(seen.labKOScreen_Title()->stringValue.get()));
        set("subtitle", json(seen.mainTitle_Sub()->stringValue.get()));
        set("help", json(seen.labelHelperDisplay()->stringValue.get()));
        set("path", json(seen.labPluginPlistLocation()->stringValue.get()));
        set("cell", seen.kvPluginMode()->selectedTag.get());
        set("mode", mapping::plugin_Mode);
        set("current", mapping::curPage);
        set("total", mapping::totalPages);
        set("mapping", checksum(textOf(mapping::plistBuild)));
        set("list", checksum(textOf(list->content())));
        std::vector<platform::Record> shown;
        for (std::int32_t row = 0; row < list->arrangedCount(); ++row)
            shown.push_back(*list->arrangedObject(row));
        set("shown", checksum(textOf(shown)));
        set("search", json(list->filterText.get()));
        set("rows", list->arrangedCount());
        set("selected", list->selectionIndex());
        set("selectedRows", json(list->selectedRows()));
        set("chart", checksum(chart::bHTML));
        set("canUndo", seen.history().canUndo());
        set("canRedo", seen.history().canRedo());
        set("undoName", json(seen.history().undoName()));
        set("changedPots", static_cast<qint64>(seen.changedPots()));
        set("unsaved", seen.hasUnsavedChanges());
        const panel::PotChoice& choice = seen.potChoice.get();
        set("choice", QJsonArray{choice.focusedPot, json(choice.pots), choice.isPage, choice.isText});
        set("where", where());
        set("pasted", pasted());
        set("clipboard", QGuiApplication::clipboard()->text());
        set("comparison", comparison());
        set("enabled", enabledItems());
        set("hints", hints());
        set("pluginRows", pluginRows());
        set("draft", draftLeft());
        set("drafted", rowsWithDrafts());
        set("now", static_cast<qint64>(now));
        set("drafts", json(program_.system.platform.folders.drafts().native()));
        set("alerts", takeAlerts());
        set("opened", takeOpened());
        return state;
    }

private:
    using Operation = std::function<void(test::Windowless&, const std::string&)>;

    static const std::map<std::string, Operation>& operations()
    {
        static const auto plain = [](void (ViewController::*action)(ViewController::Sender)) {
            return [action](test::Windowless& program, const std::string&) { (program.controller.*action)(nullptr); };
        };
        static const auto withTwo = [](void (ViewController::*action)(std::int32_t, std::int32_t)) {
            return [action](test::Windowless& program, const std::string& argument) {
                const std::vector<std::int32_t> numbers = numbersIn(argument);
                (program.controller.*action)(numbers.at(0), numbers.at(1));
            };
        };
        static const std::map<std::string, Operation> all = {
            {"scan", plain(&ViewController::btnRunCheck)},
            {"previous", plain(&ViewController::prevPageButtonPressed)},
            {"next", plain(&ViewController::nextPageButtonPressed)},
            {"first", plain(&ViewController::firstPageButtonPressed)},
            {"last", plain(&ViewController::lastPageButtonPressed)},
            {"new", plain(&ViewController::newPageButtonPressed)},
            {"delete", plain(&ViewController::deletePageButtonPressed)},
            {"clear", plain(&ViewController::clearAllPagesButtonPressed)},
            {"move first", plain(&ViewController::kvMovePage_First)},
            {"move last", plain(&ViewController::kvMovePage_Last)},
            {"move previous", plain(&ViewController::kvMovePage_Prev)},
            {"move next", plain(&ViewController::kvMovePage_Next)},
            {"save", plain(&ViewController::kvExportToPlist)},
            {"recall original", plain(&ViewController::kvRecallOriginalMapping)},
            {"recall previous", plain(&ViewController::kvRecallPreviousMapping)},
            {"chart", plain(&ViewController::kvCreateChart)},
            {"downloaded", plain(&ViewController::downloadDidFinish)},
            {"clearPage", plain(&ViewController::clearPage)},
            {"clearPot", plain(&ViewController::clearPot)},
            {"cutSlots", plain(&ViewController::cutSlots)},
            {"copySlots", plain(&ViewController::copySlots)},
            {"pasteSlots", plain(&ViewController::pasteSlots)},
            {"insertPot", plain(&ViewController::insertPot)},
            {"removePot", plain(&ViewController::removePot)},
            {"insertPage", plain(&ViewController::insertPage)},
            {"duplicatePage", plain(&ViewController::duplicatePage)},
            {"mapUnmapped", plain(&ViewController::mapUnmapped)},
            {"tidyUp", plain(&ViewController::tidyUp)},
            {"startFromScratch", plain(&ViewController::startFromScratch)},
            {"fillFromPot", plain(&ViewController::fillFromPot)},
            {"showOnPanel", plain(&ViewController::showOnPanel)},
            {"compareWithNothing", plain(&ViewController::compareWithNothing)},
            {"compareWithSaved", plain(&ViewController::compareWithSaved)},
            {"compareWithPrevious", plain(&ViewController::compareWithPrevious)},
            {"compareWithOriginal", plain(&ViewController::compareWithOriginal)},
            {"compareWithDownloaded", plain(&ViewController::compareWithDownloaded)},
            {"nextDifference", plain(&ViewController::nextDifference)},
            {"previousDifference", plain(&ViewController::previousDifference)},
            {"takePot", plain(&ViewController::takePot)},
            {"takePage", plain(&ViewController::takePage)},
            {"bring back", plain(&ViewController::bringBackDraft)},
            {"discard", plain(&ViewController::discardDraft)},
            {"keep", [](test::Windowless& program, const std::string&) { program.controller.keepDraft(); }},
            {"undo", plain(&ViewController::undo)},
            {"redo", plain(&ViewController::redo)},
            {"plugin", [](test::Windowless& program, const std::string& name) { program.select(name); }},
            {"row",
             [](test::Windowless& program, const std::string& row) {
                 program.controller.arrayControllerPlistSelected()->setSelectionIndex(std::stoi(row));
             }},
            {"pot", [](test::Windowless& program,
                       const std::string& pot) { program.controller.clickControl(std::stoi(pot)); }},
            {"page",
             [](test::Windowless& program, const std::string& page) { program.controller.showPage(std::stoi(page)); }},
            {"rows", // the current one, then all
             [](test::Windowless& program, const std::string& rows) {
                 std::vector<std::int32_t> selected = numbersIn(rows);
                 const std::int32_t current = selected.front();
                 selected.erase(selected.begin());
                 program.controller.arrayControllerPlistSelected()->setSelectedRows(std::move(selected), current);
             }},
            {"choose", // the focused pot, then all
             [](test::Windowless& program, const std::string& pots) {
                 panel::PotChoice choice{.isPage = pots == "page", .isText = pots == "text"};
                 if (const auto numbers = numbersIn(pots); !numbers.empty()) {
                     choice.focusedPot = numbers.front();
                     choice.pots.assign(numbers.begin() + 1, numbers.end());
                 }
                 program.controller.potChoice.set(choice);
             }},
            {"exchange", withTwo(&ViewController::exchangeSlots)},
            {"pot to page", withTwo(&ViewController::movePotToPage)},
            {"page before", withTwo(&ViewController::movePageBefore)},
            {"fill pot", [](test::Windowless& program,
                            const std::string& pot) { program.controller.fillControls(std::stoi(pot)); }},
            {"fill page",
             [](test::Windowless& program, const std::string& page) { program.controller.fillPage(std::stoi(page)); }},
            {"mode",
             [](test::Windowless& program, const std::string& mode) {
                 const auto matrix = program.controller.kvPluginMode();
                 matrix->selectedTag.set(std::stoi(mode));
                 program.controller.kvPluginMode_Changed(matrix);
             }},
        };
        return all;
    }

    template <typename T>
    T* find(const char* name) const
    {
        T* found = windows_ ? windows_->find<T>(name) : nullptr;
        if (!found)
            throw std::runtime_error(std::string("there is no ") + name);
        return found;
    }

    void goToPage(const std::string& text)
    {
        auto* field = find<QLineEdit>("goToPageField");
        field->setText(QString::fromStdString(text));
        QKeyEvent enter(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
        QApplication::sendEvent(field, &enter);
    }

    /// On which pots the selected parameter stands.
    QJsonArray where() const
    {
        const platform::Record* selected = program_.controller.arrayControllerPlistSelected()->selection();
        return selected ? json(program_.controller.mappedPots().positionsOf(*selected)) : QJsonArray();
    }
    QJsonArray pasted() const
    {
        const panel::Placed& placed = program_.controller.placed.get();
        QJsonArray missing;
        for (const std::string& name : placed.missing)
            missing.append(json(name));
        return {static_cast<qint64>(placed.placed), static_cast<qint64>(placed.wanted), missing};
    }
    QJsonArray comparison() const
    {
        static constexpr std::array kSides = {"", "Saved", "Previous", "Original", "Downloaded"};
        const auto name = [](mapping::ComparedWith side) {
            return QString::fromLatin1(kSides.at(static_cast<std::size_t>(side)));
        };
        const mapping::Comparison& found = program_.controller.comparison();
        return {name(found.side), json(found.positions), found.morePages,
                found.otherMode ? QJsonValue(*found.otherMode) : QJsonValue(),
                name(program_.controller.unreadableSide())};
    }
    /// Of the items that stand for further edits and comparing.
    QJsonArray enabledItems() const
    {
        QJsonArray enabled;
        const auto look = [&](const std::string& name) {
            const auto* item = windows_ ? windows_->find<QAction>(name.c_str()) : nullptr;
            if (item && item->isEnabled())
                enabled.append(json(name));
        };
        for (const auto& [name, operation] : operations())
            look(name);
        for (const char* name : {"findInList", "goToPage"})
            look(name);
        return enabled;
    }
    QJsonArray hints() const
    {
        QJsonArray texts;
        for (const char* name : {"placedHint", "differenceHint", "pluginReadOut"}) {
            const auto* label = windows_ ? find<QLabel>(name) : nullptr;
            texts.append(label && !label->isHidden() ? label->text() : QString());
        }
        return texts;
    }
    QJsonArray pluginRows() const
    {
        QJsonArray names;
        const auto list = program_.controller.myArrayController();
        for (std::int32_t row = 0; row < list->arrangedCount(); ++row)
            names.append(json(std::string(list->arrangedObject(row)->text(plugins::kPlugin))));
        return names;
    }

    /// What the bar above the lists offers; null where there is none.
    QJsonValue draftLeft() const
    {
        const auto& left = program_.controller.leftDraft();
        if (hasWindows() && find<QWidget>("draftBar")->isHidden() == left.has_value())
            return json("a bar that tells something else");
        if (!left)
            return {};
        std::string order;
        for (const std::string& element : left->draft.order)
            order += element + '\n';
        return QJsonArray{static_cast<qint64>(*program_.controller.potsInLeftDraft()),
                          checksum(order),
                          left->draft.totalPages,
                          left->draft.curPage,
                          left->draft.mode,
                          static_cast<qint64>(left->draft.madeAt)};
    }
    QJsonArray rowsWithDrafts() const
    {
        QJsonArray names;
        for (const platform::Record& row : program_.controller.myArrayController()->content()) {
            if (program_.controller.isDraftLeftOf(row.text(plugins::kFileLocation)))
                names.append(json(std::string(row.text(plugins::kPlugin))));
        }
        return names;
    }

    QJsonArray takeAlerts()
    {
        QJsonArray texts;
        for (const auto& alert : std::exchange(program_.alerts.shown, {}))
            texts.append(QJsonArray{json(alert.text), json(alert.informativeText)});
        return texts;
    }
    QJsonArray takeOpened()
    {
        QJsonArray paths;
        for (const test::Path& path : std::exchange(program_.files.opened, {}))
            paths.append(json(path.native()));
        return paths;
    }

    test::Windowless program_;
    std::unique_ptr<interface::Interface> windows_;
};

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    std::unique_ptr<Sequence> sequence;
    for (std::string line; std::getline(std::cin, line);) {
        const std::string operation = line.substr(0, line.find('\t'));
        const std::string argument = operation.size() < line.size() ? line.substr(operation.size() + 1) : std::string();
        ++now;
        if (operation == "begin" || operation == "begin in windows") {
            sequence.reset();
            QGuiApplication::clipboard()->clear();
            test::liveBelow(argument);
            sequence = std::make_unique<Sequence>(operation != "begin");
        } else if (sequence && (operation == "quit" || operation == "crash")) {
            if (operation == "quit")
                sequence->quit();
            const bool hasWindows = sequence->hasWindows();
            sequence.reset();
            sequence = std::make_unique<Sequence>(hasWindows);
        } else if (!sequence || !sequence->carryOut(operation, argument)) {
            std::cerr << "no such operation: " << line << '\n';
            return 2;
        }
        const QByteArray state = QJsonDocument(sequence->state()).toJson(QJsonDocument::Compact);
        std::cout << state.constData() << std::endl;
    }
    return 0;
}
