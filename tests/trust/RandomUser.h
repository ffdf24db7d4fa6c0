#pragma once
// Somebody who does anything at any time in the real windows: clicks, keys, typing, drops. What is done at a step
// follows from the seed and the step's number alone, so that any selection of the steps can be done again.

#include "tests/support/ScriptedPeer.h"
#include "tests/support/WindowTest.h"

#include <optional>
#include <random>
#include <string>
#include <vector>

class QTimer;

namespace test {

class Dragged;

class RandomUser : public WindowTest {
protected:
    /// Whether keys have moved in the list of plug-ins and not rested yet. They rest at a step of its own.
    bool isOnTheWay() const;
    /// New plug-ins on disk and a new run of the program.
    void startOver();
    /// Does what comes at a step and tells what it was.
    std::string doSomething(unsigned seed, int step);

    struct Edits {
        std::string plugin; ///< path of its file
        Texts order;
    };
    /// What was unsaved when the program was ended just now.
    std::optional<Edits> unsavedAtQuit_;

private:
    /// Draws numbers; the same on every machine.
    class Chance {
    public:
        Chance(unsigned seed, int step);

        int below(int limit) { return static_cast<int>(engine_() % static_cast<unsigned>(limit)); }
        template <typename List>
        const auto& oneOf(const List& list)
        {
            return list[static_cast<std::size_t>(below(static_cast<int>(std::size(list))))];
        }

    private:
        std::mt19937 engine_;
    };
    struct Deed {
        int weight;
        std::string (RandomUser::*act)(Chance&);
    };
    static const Deed kDeeds[];

    std::string pressPotButton(Chance& chance);
    std::string pressButton(Chance& chance);
    std::string choosePlugin(Chance& chance);
    std::string restOnRow(Chance& chance);
    std::string chooseRow(Chance& chance);
    std::string typeSearch(Chance& chance);
    std::string pressKey(Chance& chance);
    std::string sortPlugins(Chance& chance);
    std::string drag(Chance& chance);
    std::string useItem(Chance& chance);
    std::string choosePots(Chance& chance);
    std::string chooseRows(Chance& chance);
    std::string openMenu(Chance& chance);
    std::string goToPage(Chance& chance);
    std::string choosePage(Chance& chance);
    std::string useCommunity(Chance& chance);
    std::string typeForCommunity(Chance& chance);
    std::string quit(Chance& chance);

    QTimer& restTimer() const;
    QTimer& dragRestTimer() const;
    QWidget* potAt(int number) const;
    /// Takes what is dragged over tiles and pots, and lets it go there or gives it up.
    std::string dropSomewhere(Dragged&& dragged, Chance& chance);
    static void type(QWidget* field, const std::string& text);
    std::string clickButton(const char* name);
    std::string clickRowAt(const char* list, int row, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void openCommunity();
    void start();

    const AlertAnswers answers_;
    std::unique_ptr<ScriptedPeer> community_;
};

} // namespace test
