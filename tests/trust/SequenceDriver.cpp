// Carries out operations that second_opinion.py names, a line each, with the program's own controller, and answers each
// with a line of JSON that tells everything a user could see of it.

#include "chart/ChartState.h"
#include "mapping/EditingState.h"
#include "tests/support/FreshState.h"
#include "tests/trust/Headless.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <array>
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

/// The checksum of zlib, PNG and Ethernet, so that long texts need not be sent.
std::uint32_t checksum(const std::string& text)
{
    static const auto table = [] {
        std::array<std::uint32_t, 256> made = {};
        for (std::uint32_t n = 0; n < made.size(); ++n) {
            made[n] = n;
            for (int bit = 0; bit < 8; ++bit)
                made[n] = (made[n] >> 1) ^ ((made[n] & 1) != 0 ? 0xEDB88320u : 0u);
        }
        return made;
    }();
    std::uint32_t sum = 0xFFFFFFFFu;
    for (const char c : text)
        sum = (sum >> 8) ^ table[(sum ^ static_cast<unsigned char>(c)) & 0xFFu];
    return ~sum;
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
    explicit Sequence(const std::string& root) : program_(root)
    {
        test::startAnew();
        program_.controller.btnRunCheck();
    }

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
        for (const auto& label : {seen.kvControl1(), seen.kvControl2(), seen.kvControl3(), seen.kvControl4(),
                                  seen.kvControl5(), seen.kvControl6(), seen.kvControl7(), seen.kvControl8()}) {
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
        set("mapping", static_cast<qint64>(checksum(textOf(mapping::plistBuild))));
        set("list", static_cast<qint64>(checksum(textOf(list->content()))));
        set("rows", list->arrangedCount());
        set("selected", list->selectionIndex());
        set("chart", static_cast<qint64>(checksum(chart::bHTML)));
        set("canUndo", seen.history().canUndo());
        set("canRedo", seen.history().canRedo());
        set("changedPots", static_cast<qint64>(seen.changedPots()));
        set("unsaved", seen.hasUnsavedChanges());
        set("alerts", takeAlerts());
        set("opened", takeOpened());
        return state;
    }

private:
    using Operation = std::function<void(trust::Headless&, const std::string&)>;

    static const std::map<std::string, Operation>& operations()
    {
        static const auto plain = [](void (ViewController::*action)(ViewController::Sender)) {
            return [action](trust::Headless& program, const std::string&) { (program.controller.*action)(nullptr); };
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
            {"plugin", [](trust::Headless& program, const std::string& name) { program.select(name); }},
            {"row",
             [](trust::Headless& program, const std::string& row) {
                 program.controller.arrayControllerPlistSelected()->setSelectionIndex(std::stoi(row));
             }},
            {"pot",
             [](trust::Headless& program, const std::string& pot) { program.controller.clickControl(std::stoi(pot)); }},
            {"page",
             [](trust::Headless& program, const std::string& page) { program.controller.showPage(std::stoi(page)); }},
            {"exchange",
             [](trust::Headless& program, const std::string& pots) {
                 program.controller.exchangeControls(pots.at(0) - '0', pots.at(1) - '0');
             }},
            {"mode",
             [](trust::Headless& program, const std::string& mode) {
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
        for (const auto& [text, informative] : std::exchange(program_.alerts.shown, {}))
            texts.append(QJsonArray{json(text), json(informative)});
        return texts;
    }
    QJsonArray takeOpened()
    {
        QJsonArray paths;
        for (const trust::Path& path : std::exchange(program_.files.opened, {}))
            paths.append(json(path.native()));
        return paths;
    }

    trust::Headless program_;
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
            sequence = std::make_unique<Sequence>(argument);
        } else if (!sequence || !sequence->carryOut(operation, argument)) {
            std::cerr << "no such operation: " << line << '\n';
            return 2;
        }
        const QByteArray state = QJsonDocument(sequence->state()).toJson(QJsonDocument::Compact);
        std::cout << state.constData() << std::endl;
    }
    return 0;
}
