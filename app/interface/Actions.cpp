#include "app/interface/Actions.h"

#include <algorithm>

namespace interface {

std::span<const Action> Action::all()
{
    using VC = ViewController;
    const auto putOnPot = [](int number, const char* itsName, const char* itsButton, Call itsCall) {
        const QString digit = QString::number(number);
        return Action{.name = itsName,
                      .text = QT_TR_NOOP("Put on Pot %1"),
                      .pot = number,
                      .menu = Menu::edit,
                      .beginsSection = number == 1,
                      .keys = QStringLiteral("Ctrl+") + digit,
                      .plainKeys = digit,
                      .needs = Needs::plugin,
                      .call = itsCall,
                      .button = itsButton,
                      .toolTip = QT_TR_NOOP("Put the selected parameter on pot %1")};
    };
    // A row: what it is, what it does, what its button says.
    // clang-format off
    static const Action table[] = {
        {.name = "btnRunCheck", .text = QT_TR_NOOP("Scan for plugins"), .symbol = "scan",
         .menu = Menu::file, .keys = QKeySequence::Refresh, .call = &VC::btnRunCheck,
         .row = ButtonRow::scan, .toolTip = QT_TR_NOOP("Look for plug-ins with a parameter order again")},
        {.name = "kvExportToPlist", .text = QT_TR_NOOP("Save Mapping"), .symbol = "save",
         .menu = Menu::file, .beginsSection = true, .keys = QKeySequence::Save, .needs = Needs::mapping,
         .call = &VC::kvExportToPlist,
         .row = ButtonRow::mapping,
         .toolTip = QT_TR_NOOP("Write the mapping into the plug-in's file and keep backups")},
        {.name = "kvRecallOriginalMapping", .text = QT_TR_NOOP("Recall Original"), .symbol = "recall-original",
         .menu = Menu::file, .keys = "Ctrl+Shift+O", .needs = Needs::plugin, .call = &VC::kvRecallOriginalMapping,
         .row = ButtonRow::mapping, .toolTip = QT_TR_NOOP("Put back the file as it was before the first save")},
        {.name = "kvRecallPreviousMapping", .text = QT_TR_NOOP("Recall Previous"), .symbol = "recall-previous",
         .menu = Menu::file, .keys = "Ctrl+Shift+P", .needs = Needs::plugin, .call = &VC::kvRecallPreviousMapping,
         .row = ButtonRow::mapping, .toolTip = QT_TR_NOOP("Put back the file as it was before the last save")},
        {.name = "kvCreateChart", .text = QT_TR_NOOP("Chart"), .symbol = "chart",
         .menu = Menu::file, .keys = QKeySequence::Print, .needs = Needs::plugin, .call = &VC::kvCreateChart,
         .row = ButtonRow::mapping, .toolTip = QT_TR_NOOP("Write the mapping as an HTML chart and open it")},
        {.name = "bringBackDraft", .text = QT_TR_NOOP("Bring Back Draft"), .symbol = "bring-back",
         .menu = Menu::file, .beginsSection = true, .keys = "Ctrl+Shift+B", .call = &VC::bringBackDraft,
         .row = ButtonRow::draft, .caption = QT_TR_NOOP("Bring Back"), .spoken = QT_TR_NOOP("Bring back draft"),
         .toolTip = QT_TR_NOOP("Go on with these edits; undo takes that back")},
        {.name = "discardDraft", .text = QT_TR_NOOP("Discard Draft"), .symbol = "clear",
         .menu = Menu::file, .call = &VC::discardDraft,
         .row = ButtonRow::draft, .caption = QT_TR_NOOP("Discard"), .spoken = QT_TR_NOOP("Discard draft"),
         .toolTip = QT_TR_NOOP("Forget these edits for good")},
        {.name = "saveAction", .text = QT_TR_NOOP("Save Application Data"),
         .menu = Menu::file, .beginsSection = true, .keys = "Ctrl+Shift+S"},
        {.name = "closeWindow", .text = QT_TR_NOOP("Close Window"),
         .menu = Menu::file, .beginsSection = true, .keys = QKeySequence::Close},
        {.name = "terminate", .text = QT_TR_NOOP("Quit"),
         .menu = Menu::file, .role = QAction::QuitRole, .keys = "Ctrl+Q"},

        {.name = "undo", .text = QT_TR_NOOP("Undo"), .symbol = "undo",
         .menu = Menu::edit, .keys = QKeySequence::Undo, .repeats = true, .call = &VC::undo,
         .button = "undoButton", .row = ButtonRow::history, .isSymbolOnly = true},
        {.name = "redo", .text = QT_TR_NOOP("Redo"), .symbol = "redo",
         .menu = Menu::edit, .keys = QKeySequence::Redo, .repeats = true, .call = &VC::redo,
         .button = "redoButton", .row = ButtonRow::history, .isSymbolOnly = true},
        {.name = "findParameter", .text = QT_TR_NOOP("Find Parameter"), .symbol = "search",
         .menu = Menu::edit, .beginsSection = true, .keys = QKeySequence::Find},
        {.name = "unmappedOnlyItem", .text = QT_TR_NOOP("Only Parameters Not Mapped Yet"), .symbol = "unmapped",
         .menu = Menu::edit, .mark = Mark::check, .keys = "Ctrl+Shift+M",
         .button = "unmappedOnly", .caption = QT_TR_NOOP("Not mapped yet"),
         .toolTip = QT_TR_NOOP("Show only parameters that stand on no pot")},
        putOnPot(1, "kvRotBtn1_Pressed", "kvRotaryBtn1", &VC::kvRotBtn1_Pressed),
        putOnPot(2, "kvRotBtn2_Pressed", "kvRotaryBtn2", &VC::kvRotBtn2_Pressed),
        putOnPot(3, "kvRotBtn3_Pressed", "kvRotaryBtn3", &VC::kvRotBtn3_Pressed),
        putOnPot(4, "kvRotBtn4_Pressed", "kvRotaryBtn4", &VC::kvRotBtn4_Pressed),
        putOnPot(5, "kvRotBtn5_Pressed", "kvRotaryBtn5", &VC::kvRotBtn5_Pressed),
        putOnPot(6, "kvRotBtn6_Pressed", "kvRotaryBtn6", &VC::kvRotBtn6_Pressed),
        putOnPot(7, "kvRotBtn7_Pressed", "kvRotaryBtn7", &VC::kvRotBtn7_Pressed),
        putOnPot(8, "kvRotBtn8_Pressed", "kvRotaryBtn8", &VC::kvRotBtn8_Pressed),
        {.name = "modeInstrument", .text = QT_TR_NOOP("Instrument Mode"),
         .menu = Menu::edit, .beginsSection = true, .mark = Mark::choice, .keys = "Ctrl+Shift+I",
         .needs = Needs::plugin,
         .button = "kvPluginMode_1", .caption = QT_TR_NOOP("Instrument"),
         .toolTip = QT_TR_NOOP("Edit the plug-in as an instrument")},
        {.name = "modeInsertEffect", .text = QT_TR_NOOP("Insert/Effect Mode"),
         .menu = Menu::edit, .mark = Mark::choice, .keys = "Ctrl+Shift+E", .needs = Needs::plugin,
         .button = "kvPluginMode_0", .caption = QT_TR_NOOP("Insert/Effect"),
         .toolTip = QT_TR_NOOP("Edit the plug-in as an insert or effect")},

        {.name = "firstPageButtonPressed", .text = QT_TR_NOOP("First Page"), .symbol = "page-first",
         .menu = Menu::page, .keys = "Alt+Home", .plainKeys = "Home", .needs = Needs::mapping,
         .call = &VC::firstPageButtonPressed,
         .row = ButtonRow::showPage, .isSymbolOnly = true, .spoken = QT_TR_NOOP("Show first page"),
         .toolTip = QT_TR_NOOP("Show the first page")},
        {.name = "prevPageButtonPressed", .text = QT_TR_NOOP("Previous Page"), .symbol = "page-previous",
         .menu = Menu::page, .keys = "Alt+PgUp", .plainKeys = "PgUp", .repeats = true, .needs = Needs::mapping,
         .call = &VC::prevPageButtonPressed,
         .row = ButtonRow::showPage, .isSymbolOnly = true, .spoken = QT_TR_NOOP("Show previous page"),
         .toolTip = QT_TR_NOOP("Show the page before")},
        {.name = "nextPageButtonPressed", .text = QT_TR_NOOP("Next Page"), .symbol = "page-next",
         .menu = Menu::page, .keys = "Alt+PgDown", .plainKeys = "PgDown", .repeats = true, .needs = Needs::mapping,
         .call = &VC::nextPageButtonPressed,
         .row = ButtonRow::showPage, .isSymbolOnly = true, .spoken = QT_TR_NOOP("Show next page"),
         .toolTip = QT_TR_NOOP("Show the page after")},
        {.name = "lastPageButtonPressed", .text = QT_TR_NOOP("Last Page"), .symbol = "page-last",
         .menu = Menu::page, .keys = "Alt+End", .plainKeys = "End", .needs = Needs::mapping,
         .call = &VC::lastPageButtonPressed,
         .row = ButtonRow::showPage, .isSymbolOnly = true, .spoken = QT_TR_NOOP("Show last page"),
         .toolTip = QT_TR_NOOP("Show the last page")},
        {.name = "kvMovePage_First", .text = QT_TR_NOOP("Move Page to First"), .symbol = "move-first",
         .menu = Menu::page, .beginsSection = true, .keys = "Ctrl+Home", .needs = Needs::mapping,
         .call = &VC::kvMovePage_First,
         .row = ButtonRow::movePage, .caption = QT_TR_NOOP("First"), .spoken = QT_TR_NOOP("Move page to first"),
         .toolTip = QT_TR_NOOP("Exchange this page with the first one")},
        {.name = "kvMovePage_Prev", .text = QT_TR_NOOP("Move Page to Previous"), .symbol = "move-previous",
         .menu = Menu::page, .keys = "Ctrl+PgUp", .needs = Needs::mapping, .call = &VC::kvMovePage_Prev,
         .row = ButtonRow::movePage, .caption = QT_TR_NOOP("Previous"), .spoken = QT_TR_NOOP("Move page to previous"),
         .toolTip = QT_TR_NOOP("Exchange this page with the one before")},
        {.name = "kvMovePage_Next", .text = QT_TR_NOOP("Move Page to Next"), .symbol = "move-next",
         .menu = Menu::page, .keys = "Ctrl+PgDown", .needs = Needs::mapping, .call = &VC::kvMovePage_Next,
         .row = ButtonRow::movePage, .caption = QT_TR_NOOP("Next"), .spoken = QT_TR_NOOP("Move page to next"),
         .toolTip = QT_TR_NOOP("Exchange this page with the one after")},
        {.name = "kvMovePage_Last", .text = QT_TR_NOOP("Move Page to Last"), .symbol = "move-last",
         .menu = Menu::page, .keys = "Ctrl+End", .needs = Needs::mapping, .call = &VC::kvMovePage_Last,
         .row = ButtonRow::movePage, .caption = QT_TR_NOOP("Last"), .spoken = QT_TR_NOOP("Move page to last"),
         .toolTip = QT_TR_NOOP("Exchange this page with the last one")},
        {.name = "newPageButtonPressed", .text = QT_TR_NOOP("New Page"), .symbol = "page-new",
         .menu = Menu::page, .beginsSection = true, .keys = QKeySequence::New, .needs = Needs::mapping,
         .call = &VC::newPageButtonPressed,
         .row = ButtonRow::newPage, .toolTip = QT_TR_NOOP("Add an empty page at the end")},
        {.name = "deletePageButtonPressed", .text = QT_TR_NOOP("Delete Page"), .symbol = "page-delete",
         .menu = Menu::page, .beginsSection = true, .keys = "Ctrl+D", .needs = Needs::mapping,
         .call = &VC::deletePageButtonPressed,
         .row = ButtonRow::removePage, .toolTip = QT_TR_NOOP("Delete the page shown")},
        {.name = "clearPage", .text = QT_TR_NOOP("Clear Page"), .symbol = "clear",
         .menu = Menu::page, .needs = Needs::mapping, .call = &VC::clearPage,
         .toolTip = QT_TR_NOOP("Empty the pots of the page shown")},
        {.name = "clearAllPagesButtonPressed", .text = QT_TR_NOOP("Clear All Pages"), .symbol = "clear-all",
         .menu = Menu::page, .keys = "Ctrl+Shift+D", .needs = Needs::mapping, .call = &VC::clearAllPagesButtonPressed,
         .row = ButtonRow::removePage, .caption = QT_TR_NOOP("Clear All"),
         .toolTip = QT_TR_NOOP("Empty the first page and make it the only one")},
        {.name = "startFromScratch", .text = QT_TR_NOOP("Start From Scratch"), .symbol = "start-over",
         .menu = Menu::page, .keys = "Ctrl+Shift+N", .needs = Needs::mapping, .call = &VC::startFromScratch,
         .row = ButtonRow::leftovers, .toolTip = QT_TR_NOOP("Leave one empty page and nothing behind it")},

        {.name = "kvLoginToCloudAccount", .text = QT_TR_NOOP("Account"), .symbol = "account",
         .menu = Menu::community, .keys = "Ctrl+L", .call = &VC::kvLoginToCloudAccount,
         .row = ButtonRow::community, .toolTip = QT_TR_NOOP("Log in to the community library or ask for an account")},
        {.name = "kvCommunityLibrary", .text = QT_TR_NOOP("Share"), .symbol = "share",
         .menu = Menu::community, .keys = "Ctrl+U", .call = &VC::kvCommunityLibrary,
         .button = "kv_btn_cloudLibrary", .row = ButtonRow::community,
         .toolTip = QT_TR_NOOP("Upload the saved mapping")},
        {.name = "kvCommunityLibraryDownload", .text = QT_TR_NOOP("Browse"), .symbol = "browse",
         .menu = Menu::community, .keys = "Ctrl+B", .call = &VC::kvCommunityLibraryDownload,
         .button = "kv_btn_cloudLibraryDownload", .row = ButtonRow::community,
         .toolTip = QT_TR_NOOP("See what others shared for this plug-in")},

        {.name = "minimiseWindow", .text = QT_TR_NOOP("Minimise"), .menu = Menu::window, .keys = "Ctrl+M"},
        {.name = "zoomWindow", .text = QT_TR_NOOP("Zoom"), .menu = Menu::window},

        {.name = "kvHelpMe", .text = QT_TR_NOOP("Brief instructions on use"), .symbol = "help",
         .menu = Menu::help, .keys = QKeySequence::HelpContents, .call = &VC::kvHelpMe,
         .row = ButtonRow::help, .caption = QT_TR_NOOP("Help"), .toolTip = QT_TR_NOOP("Brief instructions on use")},
        {.name = "about", .text = QT_TR_NOOP("About kvOrvantaLogic Tool"),
         .menu = Menu::help, .beginsSection = true, .role = QAction::AboutRole, .call = &VC::about},

        // Of the community windows.
        {.name = "cwinLoginAttempt", .text = QT_TR_NOOP("Log In"), .symbol = "log-in",
         .call = &VC::cwinLoginAttempt,
         .toolTip = QT_TR_NOOP("Log in with this PIN")},
        {.name = "cwinNewUserCreate", .text = QT_TR_NOOP("Create Account"), .symbol = "new-account",
         .call = &VC::cwinNewUserCreate,
         .toolTip = QT_TR_NOOP("Ask the community library for an account")},
        {.name = "kvCommunityUploadBtn", .text = QT_TR_NOOP("Upload"), .symbol = "upload",
         .call = &VC::kvCommunityUploadBtn,
         .toolTip = QT_TR_NOOP("Send the mapping as last saved, with these comments")},
        {.name = "kvCommunityLoadSelectedDownload", .text = QT_TR_NOOP("Load"), .symbol = "load",
         .needs = Needs::mapping, .call = &VC::kvCommunityLoadSelectedDownload,
         .toolTip = QT_TR_NOOP("Fetch the selected mapping and load it into the editor")},
    };
    // clang-format on
    return table;
}

const Action& Action::named(std::string_view name)
{
    const auto table = all();
    return *std::find_if(table.begin(), table.end(), [name](const Action& action) { return action.name == name; });
}

QString Action::translated(const char* words) const
{
    const QString translation = words ? tr(words) : QString();
    return pot > 0 ? translation.arg(pot) : translation;
}

} // namespace interface
