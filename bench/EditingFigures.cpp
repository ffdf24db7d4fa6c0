// What a user does with a plug-in of ten thousand parameters: choose it, press a pot, search.

#include "app/interface/panel/FrontPanel.h"
#include "bench/Figure.h"
#include "bench/LoadedWindow.h"
#include "mapping/EditingState.h"
#include "mapping/MappingStore.h"
#include "platform/files/Files.h"
#include "platform/plist/PropertyList.h"
#include "tests/support/OrderFiles.h"

#include <QImage>
#include <QLineEdit>

#include <memory>
#include <stdexcept>

namespace bench {

namespace {

constexpr int kParameters = 10'000;
constexpr char kHuge[] = "Huge Synthesizer";
constexpr char kOther[] = "Small Filter";

/// A window with the large plug-in loaded.
struct Editing {
    explicit Editing(int parameters)
    {
        file = home.writePlugin(kHuge, parameters);
        home.writePlugin(kOther, 4);
        test::writeDictionary(mapping::backupPath(file, "prev"), test::orderFile(test::numbered(parameters, "Dial")));
        window = std::make_unique<LoadedWindow>(home);
        window->choose(kHuge);
    }

    double load()
    {
        window->choose(kOther);
        return millisecondsOf([&] { window->choose(kHuge); });
    }

    double parse()
    {
        const std::string bytes = platform::files::read(file).value();
        return millisecondsOf([&] {
            if (!platform::plist::parse(bytes))
                throw std::runtime_error("the file cannot be parsed");
        });
    }

    /// A press of one pot after the other, until everything but the painting has followed it.
    double press()
    {
        const auto list = window->controller().arrayControllerPlistSelected();
        list->setSelectionIndex(1 + ++presses * 7 % (list->arrangedCount() - 1));
        LoadedWindow::settle();
        return millisecondsOf([&] { window->controller().clickControl(presses % 8); });
    }

    double pressAndBack()
    {
        const double time = press();
        window->controller().undo();
        LoadedWindow::settle();
        return time;
    }

    double repaint()
    {
        auto* panel = window->find<interface::FrontPanel>("frontPanel");
        QImage image(panel->size(), QImage::Format_ARGB32_Premultiplied);
        return millisecondsOf([&] { panel->render(&image); });
    }

    /// One letter more in the search field, until the rows found are painted.
    double keystroke()
    {
        auto* search = window->find<QLineEdit>("parameterSearch");
        search->setText(QStringLiteral("kno"));
        LoadedWindow::settle();
        return millisecondsOf([&] {
            search->insert(QStringLiteral("b"));
            LoadedWindow::settle();
        });
    }

    /// Keeping a draft after an edit.
    double keepDraft()
    {
        press();
        return millisecondsOf([&] {
            if (!window->controller().keepDraft() || !window->controller().hasUnsavedChanges())
                throw std::runtime_error("no draft was written");
        });
    }

    /// An edit of the mapping with the pot's choice, until everything but the painting has followed it; then undone.
    double edit(void (ViewController::*action)(ViewController::Sender), const panel::PotChoice& choice)
    {
        ViewController& controller = window->controller();
        controller.potChoice.set(choice);
        LoadedWindow::settle();
        const auto before = mapping::plistBuild;
        const double time = millisecondsOf([&] { (controller.*action)(nullptr); });
        if (mapping::plistBuild == before)
            throw std::runtime_error("nothing was edited");
        controller.undo();
        LoadedWindow::settle();
        return time;
    }

    /// What a screen that shows sixty of them a second leaves for one.
    double frame() { return 16; }

    Home home;
    std::filesystem::path file;
    std::unique_ptr<LoadedWindow> window;
    int presses = 0;
};

/// An operation of the menu, as it is done with the mapping: a list of 10,000 parameters, each on its slot.
struct Edit {
    const char* name;
    void (ViewController::*action)(ViewController::Sender);
    panel::PotChoice choice = {};
    /// What stands before it, once.
    std::function<void(ViewController&)> prepare = {};
};

const panel::PotChoice kPot{2, {2}};
const panel::PotChoice kPots{2, {2, 3, 4, 5}};
const panel::PotChoice kPage{.isPage = true};

void copyPots(ViewController& controller)
{
    controller.potChoice.set(kPots);
    controller.copySlots();
}

void copyPage(ViewController& controller)
{
    controller.potChoice.set(kPage);
    controller.copySlots();
}

void selectParameter(ViewController& controller)
{
    controller.arrayControllerPlistSelected()->setSelectionIndex(100);
}

void compare(ViewController& controller)
{
    controller.compareWithPrevious();
}

/// Those that change few slots: a press of a pot changes one, too.
const Edit kSmallEdits[] = {
    {"Clear Pot", &ViewController::clearPot, kPot},
    {"Clear Page", &ViewController::clearPage},
    {"Cut of four pots", &ViewController::cutSlots, kPots},
    {"Paste of four pots", &ViewController::pasteSlots, {5, {5}}, copyPots},
    {"Fill from Pot", &ViewController::fillFromPot, kPot, selectParameter},
    {"Take Pot", &ViewController::takePot, kPot, compare},
    {"Take Page", &ViewController::takePage, {}, compare},
};
/// Those that change what stands on every slot.
const Edit kLargeEdits[] = {
    {"Insert Pot", &ViewController::insertPot, kPot},
    {"Remove Pot", &ViewController::removePot, kPot},
    {"Insert Page", &ViewController::insertPage},
    {"Duplicate Page", &ViewController::duplicatePage},
    {"Cut of a page", &ViewController::cutSlots, kPage},
    {"Paste of a page", &ViewController::pasteSlots, kPage, copyPage},
    {"Map Unmapped", &ViewController::mapUnmapped, {}, [](ViewController& controller) { controller.clearAllPages(); }},
    {"Tidy Up", &ViewController::tidyUp, {}, [](ViewController& controller) { controller.clearPage(); }},
};

Measure measure(const std::shared_ptr<Editing>& editing, double (Editing::*side)())
{
    return [editing, side] { return (*editing.*side)(); };
}

void addWork(const std::string& name, double (Editing::*work)())
{
    add(Growth{"growth: " + name + ", 100,000 parameters", kParameters, 5,
               [work](int parameters) { return measure(std::make_shared<Editing>(parameters), work); }});
}

} // namespace

void addEditingFigures()
{
    const auto beside = [](double (Editing::*work)(), double (Editing::*yardstick)()) {
        return [work, yardstick] {
            const auto editing = std::make_shared<Editing>(kParameters);
            return std::pair(measure(editing, work), measure(editing, yardstick));
        };
    };
    add(Figure{"load of 10,000 parameters", "parse of its file", 3, 15, beside(&Editing::load, &Editing::parse)});
    add(Figure{"pot press, 10,000 parameters", "repaint of the panel", 1, 100,
               beside(&Editing::press, &Editing::repaint)});
    add(Figure{"search keystroke, 10,000 parameters", "a frame", 0.5, 25,
               beside(&Editing::keystroke, &Editing::frame)});
    add(Figure{"draft of 10,000 parameters", "a frame", 1, 20, beside(&Editing::keepDraft, &Editing::frame)});
    const auto besideEdit = [](const Edit& edit, double (Editing::*yardstick)()) {
        return [edit, yardstick] {
            const auto editing = std::make_shared<Editing>(kParameters);
            if (edit.prepare)
                edit.prepare(editing->window->controller());
            return std::pair(Measure([=] { return editing->edit(edit.action, edit.choice); }),
                             measure(editing, yardstick));
        };
    };
    for (const Edit& edit : kSmallEdits)
        add(Figure{edit.name, "pot press, 10,000 parameters", 2, 100, besideEdit(edit, &Editing::pressAndBack)});
    for (const Edit& edit : kLargeEdits)
        add(Figure{edit.name, "a frame", 1, 20, besideEdit(edit, &Editing::frame)});
    addWork("load", &Editing::load);
    addWork("pot press", &Editing::press);
    addWork("search keystroke", &Editing::keystroke);
}

} // namespace bench
