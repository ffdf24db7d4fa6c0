#pragma once
// The table of all actions that the user can call. Menu bar, buttons, keys, tool tips and enabling read it, so a new
// action is a row here and a member of the controller.

#include "app/ViewController.h"

#include <QAction>
#include <QCoreApplication>
#include <QKeySequence>
#include <QList>
#include <QString>

#include <span>
#include <string_view>
#include <utility>

namespace interface {

/// One key, or all that the platform has for a standard operation.
struct Keys {
    Keys() = default;
    Keys(QKeySequence::StandardKey standard) : sequences(QKeySequence::keyBindings(standard)) {}
    Keys(QList<QKeySequence> several) : sequences(std::move(several)) {}
    Keys(const QString& keys) : sequences{QKeySequence(keys)} {}
    Keys(const char* keys) : Keys(QString::fromLatin1(keys)) {}

    QList<QKeySequence> sequences;
};

/// The menus of the bar, from the left. That of the window is for Macs, where windows bring no such menu themselves.
enum class Menu { none, file, edit, page, compare, community, window, help };

/// An item that stays marked: by itself, or as the one chosen of its section.
enum class Mark { none, check, choice };

/// What an action can do nothing without.
enum class Needs {
    nothing,   ///< or what only its own operation knows, which enables it: undo, redo, drafts, share
    mapping,   ///< one is loaded
    plugin,    ///< and its plug-in is the selected row
    selected,  ///< and a parameter of the list is selected that is not the blank entry
    placed,    ///< a mapping, and the selected parameter stands on a pot of it
    unmapped,  ///< a mapping, and a parameter of the list stands on no pot of it
    pot,       ///< a mapping, and a pot has the focus
    mappedPot, ///< and a parameter stands on it
    slots,     ///< a mapping, and a pot or the tile of a page has the focus
    copied,    ///< a mapping, slots that were copied on the clipboard, and no text field that has the focus
};

/// Places of the main window with context menus and plain keys of their own; together where one is not enough.
enum Places : unsigned { kNowhere = 0, kOnPots = 1, kOnTiles = 2, kOnParameters = 4 };

/// Rows of buttons in the main window; a row has them in the table's order.
enum class ButtonRow {
    none,
    scan,
    history,
    saving,
    mapping,
    help,
    draft,
    leftovers,
    showPage,
    movePage,
    newPage,
    removePage,
    community
};

struct Action {
    Q_DECLARE_TR_FUNCTIONS(interface::Action)

public:
    using Call = void (ViewController::*)(ViewController::Sender);

    const char* name = nullptr; ///< of the `QAction`
    const char* text = nullptr; ///< in the menu
    const char* symbol = nullptr;
    int pot = 0; ///< what "%1" in its texts stands for

    Menu menu = Menu::none;
    bool beginsSection = false; ///< a line is above it in the menu
    Mark mark = Mark::none;
    QAction::MenuRole role = QAction::NoRole; ///< where a Mac puts it, which is not guessed from its text
    Keys keys = {};
    Keys plainKeys = {}; ///< work where they are at home only
    unsigned plainKeyPlaces = kOnPots | kOnTiles;
    unsigned contexts = kNowhere; ///< whose context menus have it
    bool repeats = false; ///< while a key is held down; nothing that edits does, but what can be taken back again
    Needs needs = Needs::nothing;
    Call call = nullptr; ///< null: what its button does by itself, or what somebody connects who knows more

    const char* button = nullptr; ///< the button's name; null: the action's
    ButtonRow row = ButtonRow::none;
    bool isSymbolOnly = false;     ///< the symbol says enough
    const char* caption = nullptr; ///< what the button says; null: the text
    const char* spoken = nullptr;  ///< what a screen reader says where the caption is too short
    const char* toolTip = nullptr; ///< of the button, without the keys; null: what the menu item says at the time

    /// In the order of the menus.
    static std::span<const Action> all();
    /// The action of that name, which has to be there.
    static const Action& named(std::string_view name);

    const char* buttonName() const { return button ? button : name; }
    /// A tool tip followed by the first of its keys, if it has any.
    QString withKeys(const QString& tip) const;
    /// One of its texts in the user's language.
    QString translated(const char* words) const;
};

} // namespace interface
