// Carries out operations that second_opinion.py names, a line each, with the program's own controller, and answers each
// with a line of JSON that tells everything a user could see of it.

#include "chart/ChartState.h"
#include "mapping/EditingState.h"
#include "tests/support/WindowlessTest.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <utility>

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

/// One run of the program, on a folder of its own.
class Sequence {
public:
    Sequence() { program_.controller.btnRunCheck(); }

    /// False when there is no such operation.
    bool carryOut(const std::string& operation, const std::string& argument)
    {
        const auto found = operations().find(operation);
        if (found == operations().end())
            return false;
        found->second(program_, argument);
        return true;
    }

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
        set("rows", list->arrangedCount());
        set("selected", list->selectionIndex());
        set("chart", checksum(chart::bHTML));
        set("canUndo", seen.history().canUndo());
        set("canRedo", seen.history().canRedo());
        set("changedPots", static_cast<qint64>(seen.changedPots()));
        set("unsaved", seen.hasUnsavedChanges());
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
            {"exchange",
             [](test::Windowless& program, const std::string& pots) {
                 program.controller.exchangeControls(pots.at(0) - '0', pots.at(1) - '0');
             }},
            {"mode",
             [](test::Windowless& program, const std::string& mode) {
                 const auto matrix = program.controller.kvPluginMode();
                 matrix->selectedTag.set(std::stoi(mode));
                 program.controller.kvPluginMode_Changed(matrix);
             }},
        };
        return all;
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
};

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    std::unique_ptr<Sequence> sequence;
    for (std::string line; std::getline(std::cin, line);) {
        const std::string operation = line.substr(0, line.find('\t'));
        const std::string argument = operation.size() < line.size() ? line.substr(operation.size() + 1) : std::string();
        if (operation == "begin") {
            sequence.reset();
            test::liveBelow(argument);
            sequence = std::make_unique<Sequence>();
        } else if (!sequence || !sequence->carryOut(operation, argument)) {
            std::cerr << "no such operation: " << line << '\n';
            return 2;
        }
        const QByteArray state = QJsonDocument(sequence->state()).toJson(QJsonDocument::Compact);
        std::cout << state.constData() << std::endl;
    }
    return 0;
}
