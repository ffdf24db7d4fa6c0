// What jobs take that are long by hand: each is done on the real window, and every key, click and drag counts. What is
// held down with a key counts with it, and a digit or letter that is typed is a key.

#include "mapping/EditingState.h"
#include "mapping/ParameterOrder.h"
#include "tests/support/Dragged.h"
#include "tests/support/WindowTest.h"

#include <QAbstractItemView>
#include <QClipboard>
#include <QDrag>
#include <QMouseEvent>
#include <QTest>

#include <algorithm>
#include <numeric>
#include <random>
#include <string>
#include <vector>

namespace test {

namespace {

constexpr std::int32_t kPages = 40;

/// A synthesizer's parameters: words that come again and again, and numbers with gaps.
Texts synthesizer(int count)
{
    const char* const parts[] = {"Osc 1", "Osc 2", "Filter", "Amp Env", "Mod Env", "LFO 1", "LFO 2", "Step 13"};
    const char* const whats[] = {"Level", "Tune", "Drive", "Mix", "Rate", "Depth", "Pan", "Phase", "Sync", "Spread"};
    Texts order;
    for (int i = 0; i < count; ++i)
        order.push_back(std::to_string(i + i / 16 * 2) + " " + parts[i / 10 % 8] + " " + whats[i % 10] + " " +
                        static_cast<char>('A' + i / 80));
    return order;
}

/// Numbers from `from` to before `to` in an order by chance, the same one everywhere.
std::vector<std::size_t> shuffled(std::size_t from, std::size_t to)
{
    std::vector<std::size_t> numbers(to - from);
    std::iota(numbers.begin(), numbers.end(), from);
    std::mt19937 chance(2026);
    for (std::size_t i = numbers.size() - 1; i > 0; --i)
        std::swap(numbers[i], numbers[chance() % (i + 1)]);
    return numbers;
}

} // namespace

class ActionCounts : public WindowTest {
protected:
    ActionCounts() { QGuiApplication::clipboard()->clear(); }

    void open(const Texts& order)
    {
        writeDictionary(builtIn("Synth"), orderFile(order));
        launch();
        find<>("cwinMainWindow")->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(find<>("cwinMainWindow")));
        select("Synth");
        ASSERT_EQ(QApplication::focusWidget(), find<>("pluginTableView"));
    }
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        ++actions_;
        QTest::keyClick(QApplication::focusWidget(), key, modifiers);
    }
    void type(const std::string& text)
    {
        for (const char character : text) {
            ++actions_;
            QTest::keyClick(QApplication::focusWidget(), character);
        }
    }
    void clickItem(const char* list, int row)
    {
        ++actions_;
        auto* view = find<QAbstractItemView>(list);
        const QModelIndex index = view->model()->index(row, 0);
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->visualRect(index).center());
    }
    /// Pulls a pot of the shown page onto the tile of another page.
    bool dragPotToTile(int number, std::int32_t page)
    {
        ++actions_;
        auto* pot = find<>(("kvRotaryBtn" + std::to_string(number)).c_str());
        const QPoint middle = pot->rect().center();
        const QPoint away = middle + QPoint(QApplication::startDragDistance() + 2, 0);
        QTest::mousePress(pot, Qt::LeftButton, {}, middle);
        QMouseEvent pull(QEvent::MouseMove, away, pot->mapToGlobal(away), Qt::NoButton, Qt::LeftButton, {});
        QApplication::sendEvent(pot, &pull);
        const auto* drag = pot->findChild<QDrag*>();
        if (!drag)
            return false;
        Dragged dragged(*drag->mimeData());
        auto* tiles = find<QAbstractItemView>("pageOverview");
        return dragged.dropOn(*tiles->viewport(), tiles->visualRect(tiles->model()->index(page - 1, 0)).center());
    }
    static std::string at(std::int32_t page, std::int32_t pot)
    {
        return std::string(mapping::nameAt(mapping::plistBuild, (page - 1) * mapping::kPotsPerPage + pot - 1));
    }
    std::string selectedNumber()
    {
        return controller().arrayControllerPlistSelected()->selectionText(mapping::kParamNum);
    }

    /// Of those that are listed; the first one's where there is none.
    std::int32_t rowOf(const std::string& number) const
    {
        const auto numbers = columnOf("tablePlistOfSelectedPlugin", 0);
        const auto found = std::find(numbers.begin(), numbers.end(), number);
        return found == numbers.end() ? 0 : static_cast<std::int32_t>(found - numbers.begin());
    }

    int actions_ = 0;
};

TEST_F(ActionCounts, AFreshStartTakesOne)
{
    open(synthesizer(kPages * 8));
    ASSERT_EQ(mapping::totalPages, kPages);
    key(Qt::Key_N, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(mapping::totalPages, 1);
    EXPECT_EQ(mapping::plistBuild.size(), 8u) << "nothing is left behind";
    EXPECT_EQ(potLabels(), Texts(8, "-"));
    EXPECT_EQ(actions_, 1);
}

TEST_F(ActionCounts, APageInBetweenTakesOne)
{
    open(synthesizer(kPages * 8));
    controller().showPage(3);
    const std::string former = at(3, 1);
    const std::string last = at(kPages, 8);
    key(Qt::Key_I, Qt::ControlModifier | Qt::AltModifier);
    EXPECT_EQ(mapping::totalPages, kPages + 1);
    EXPECT_EQ(text("lab_PageCurrentlyDisplayed"), "Page 3 of 41");
    EXPECT_EQ(potLabels(), Texts(8, "-"));
    EXPECT_EQ(at(4, 1), former);
    EXPECT_EQ(at(kPages + 1, 8), last) << "the others keep their order";
    EXPECT_EQ(actions_, 1);
}

TEST_F(ActionCounts, APotToAnotherPageTakesOneDrag)
{
    Texts order = synthesizer(24);
    order[18] = "-1";
    open(order);
    const std::string moved = potLabel(5);
    EXPECT_TRUE(dragPotToTile(5, 3));
    EXPECT_EQ(at(3, 3), moved);
    EXPECT_EQ(potLabel(5), "-");
    EXPECT_EQ(actions_, 1);
}

TEST_F(ActionCounts, APageToAnotherPluginTakesFour)
{
    Texts other = synthesizer(24);
    std::reverse(other.begin(), other.end());
    writeDictionary(builtIn("Another"), orderFile(other));
    open(synthesizer(24));
    const Texts copied = [this] {
        controller().showPage(2);
        const Texts labels = potLabels();
        controller().showPage(1);
        return labels;
    }();
    clickItem("pageOverview", 1);
    key(Qt::Key_C, Qt::ControlModifier);
    clickItem("pluginTableView", 0);
    ASSERT_EQ(text("labKOScreen_Title"), "Another (Logic Built-In)");
    key(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(text("lab_PageCurrentlyDisplayed"), "Page 2 of 4");
    EXPECT_EQ(potLabels(), copied);
    EXPECT_LE(actions_, 4);
}

TEST_F(ActionCounts, ScatteredParametersAreFoundByTheirNumbersAndPutOnPots)
{
    const Texts order = synthesizer(300);
    open(order);
    std::vector<std::size_t> wanted = shuffled(0, order.size());
    wanted.resize(24);
    key(Qt::Key_F, Qt::ControlModifier);
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        const std::string& element = order[wanted[i]];
        const std::string number = element.substr(0, element.find(' '));
        if (i > 0)
            key(Qt::Key_F, Qt::ControlModifier);
        if (i > 0 && i % 8 == 0)
            key(Qt::Key_PageDown, Qt::AltModifier);
        type(number);
        while (selectedRow("tablePlistOfSelectedPlugin") >
               rowOf(number)) // one that was selected stays while it is found
            key(Qt::Key_Up);
        while (selectedRow("tablePlistOfSelectedPlugin") < rowOf(number))
            key(Qt::Key_Down);
        ASSERT_EQ(selectedNumber(), number) << element;
        key(static_cast<Qt::Key>(Qt::Key_1 + i % 8), Qt::ControlModifier);
    }
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        const std::string& element = order[wanted[i]];
        EXPECT_EQ(mapping::elementFromEntry(mapping::plistBuild[i]), element);
    }
    EXPECT_LE(actions_, 150);
    RecordProperty("keys", actions_);
}

TEST_F(ActionCounts, AllThatIsUnmappedTakesOne)
{
    const Texts order = synthesizer(300);
    writeDictionary(builtIn("Synth"), orderFile(order));
    open(order);
    controller().startFromScratch();
    chooseParameter(order[7].substr(order[7].find(' ') + 1));
    pressPot(1);
    ASSERT_EQ(text("mappedReadOut"), "1 of 300 mapped");
    key(Qt::Key_Return, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(text("mappedReadOut"), "300 of 300 mapped");
    EXPECT_EQ(mapping::elementFromEntry(mapping::plistBuild[1]), order[0]);
    EXPECT_EQ(mapping::elementFromEntry(mapping::plistBuild[299]), order[299]);
    EXPECT_EQ(actions_, 1);
}

} // namespace test
