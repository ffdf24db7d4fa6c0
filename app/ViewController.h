#pragma once
// The main window's controller: it receives every action of the interface and carries out every operation of the
// program. A member reads state, calls a function of its folder, stores the result, and refreshes or alerts.
//
// Contents
//   Shell                  app/ViewController.cpp
//   Plug-in library        plugins/ViewControllerPlugins.cpp
//   Mapping document       mapping/ViewControllerMapping.cpp
//   Drafts                 mapping/ViewControllerDrafts.cpp
//   Comparing              mapping/ViewControllerComparing.cpp
//   History                app/ViewControllerHistory.cpp
//   Control panel          panel/ViewControllerPanel.cpp
//   Pages                  panel/ViewControllerPages.cpp
//   Assignment             panel/ViewControllerAssignment.cpp
//   Edits                  panel/ViewControllerEdits.cpp
//   Filling and moving     panel/ViewControllerMoves.cpp
//   Chart                  chart/ViewControllerChart.cpp
//   Community account      community/ViewControllerAccount.cpp
//   Community sharing      community/ViewControllerSharing.cpp
//   Shared preview         community/ViewControllerPreview.cpp

#include "app/Outlets.h"
#include "mapping/Comparison.h"
#include "mapping/Drafts.h"
#include "mapping/EditingSnapshot.h"
#include "mapping/MappedPots.h"
#include "mapping/MappingFile.h"
#include "mapping/MappingStore.h"
#include "panel/OfferedHere.h"
#include "panel/PotChoice.h"
#include "platform/Effects.h"
#include "platform/Http.h"
#include "platform/ViewControllerBase.h"

#include <any>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace panel {
struct Mapping;
}

class ViewController final : public platform::ViewControllerBase, public Outlets {
public:
    using Sender = platform::Sender;

    explicit ViewController(platform::Platform& platform);

    // Shell

    /// Scans for plug-ins, then logs in with what is stored. Does not call the base class; keep it so.
    void viewDidLoad() override;
    void setRepresentedObject(std::any object) override;

    /// Shows a modal alert with one "OK" button; returns when it was dismissed.
    void alertUserAndSub(const std::string& messageText, const std::string& informativeText);
    /// Closes the three community windows, whichever are open.
    void closeAllAuxillaryWindows();
    void kvHelpMe(Sender sender = nullptr);
    /// Opens the user guide's first page.
    void userGuide(Sender = nullptr);
    /// Whether it came along: it is made only where its converter is.
    bool hasUserGuide() const;
    /// Tells which version this is, on what it runs, and on what terms it uses the libraries that come with it.
    void about(Sender = nullptr);

    // Plug-in library

    /// Empties both lists and scans both folders anew; nothing is selected afterwards.
    void btnRunCheck(Sender sender = nullptr);
    /// Appends a row for every parameter-order file below `root`. No row uses the type label.
    void checkFilesAndType(const std::string& root, const std::string& type);
    void tablePluginSelected(Sender sender = nullptr);
    void tablePlistView(Sender sender = nullptr);
    /// Starts a fresh edit of the selected row's plug-in.
    void plugInSelected();
    /// Shows a mode (1 instrument, 0 insert/effect); with `readPlist` 1 the file is re-read, unsaved changes are lost.
    void changePlugInModeAndReadPlist(std::int32_t mode, std::int32_t readPlist);
    void kvPluginMode_Changed(std::shared_ptr<RadioMatrix> sender);

    // Mapping document

    /// A plug-in has been loaded, so there is a mapping to show, edit and save.
    bool isMappingLoaded() const;
    /// A mapping is loaded and its plug-in is still the selected row.
    bool isPluginBeingEdited() const;
    /// The list offered for assignment; while a rescan, which is no edit, has emptied it, the one offered before.
    platform::SharedRecords offeredParameters() const;
    /// Writes the plug-in's catalogue into the file, once.
    void korvelizePlistFile(const std::string& path);
    /// Replaces the editing state by the file's. Check mode 1 takes the editing mode from the file, any other keeps it.
    void readPlistFileCheckMode(const std::string& path, std::int32_t checkMode);
    void kvExportToPlist(Sender sender = nullptr);
    /// Saves the mapping with its backups and tells the user. Does nothing before a plug-in has been loaded.
    void exportToPlist();
    void kvRecallOriginalMapping(Sender sender = nullptr);
    void kvRecallPreviousMapping(Sender sender = nullptr);
    /// Puts the backup "original" or "prev" in place of the file and loads it.
    void recallOriginalMapping(const std::string& suffix);
    /// Shows the plug-in's file where it lies. Ignored before a plug-in has been loaded.
    void revealFile(Sender = nullptr);

    // Drafts. Unsaved edits outlast the choice of another plug-in and the end of the program.

    /// Keeps unsaved edits as a draft; removes it when there are none. Called soon after an edit, and at the end. False
    /// when that failed: worth trying again later.
    bool keepDraft();
    /// Makes the newest draft left of the plug-in the mapping being edited. Ignored without one.
    void bringBackDraft(Sender = nullptr);
    /// Deletes it.
    void discardDraft(Sender = nullptr);
    /// The newest draft that was left of the plug-in loaded; none once it was used or the mapping saved.
    const std::optional<mapping::KeptDraft>& leftDraft() const { return leftDraft_; }
    /// How many pots of it differ from the file; 0 when only its mode or its pages do, none without a draft.
    std::optional<std::size_t> potsInLeftDraft() const;
    /// Whether a draft was left of the plug-in with this file.
    bool isDraftLeftOf(std::string_view path) const { return drafts_.isLeftOf(path); }
    /// Other drafts are left than before, of whichever plug-in.
    platform::Signal<> draftsChanged;

    // Comparing. The other side is read when it is chosen and when a save, a recall or a download has changed it, and
    // never written. Another plug-in begins without a comparison.

    void compareWithNothing(Sender = nullptr);
    /// With what the file held when it was last read or written, as `changedPots` has it.
    void compareWithSaved(Sender = nullptr);
    void compareWithPrevious(Sender = nullptr);
    void compareWithOriginal(Sender = nullptr);
    void compareWithDownloaded(Sender = nullptr);
    bool canCompareWith(mapping::ComparedWith side) const;
    /// As the mapping is now.
    const mapping::Comparison& comparison() const { return comparison_; }
    /// The slots of the other side.
    const std::vector<platform::Record>& comparedEntries() const { return differences_.other(); }
    /// What was chosen last and could not be read; nothing is compared then.
    mapping::ComparedWith unreadableSide() const { return unreadableSide_; }
    /// Shows the next pot that differs, behind the focused one or on the shown page, and begins anew at the end.
    void nextDifference(Sender = nullptr);
    void previousDifference(Sender = nullptr);
    /// Sent with the pot (0 to 7) of the shown page that was gone to.
    platform::Signal<std::int32_t> potGoneTo;
    /// Puts on the focused pot what the other side has there.
    void takePot(Sender = nullptr);
    /// The same for the shown page. One that the other side does not have becomes empty.
    void takePage(Sender = nullptr);

    // History. Every edit of the mapping is one step with a name; loading another plug-in begins anew. Memory only.

    void undo(Sender = nullptr);
    void redo(Sender = nullptr);
    const platform::UndoManager& history() const { return *history_; }
    /// Another number after every edit, undo and redo.
    std::uint64_t historyRevision() const { return historyRevision_; }
    /// How many pots a save would write differently from what the file held when it was last read or written.
    std::size_t changedPots() const;
    /// Whether a save would change the file: its pots, or its mode.
    bool hasUnsavedChanges() const;
    /// Whether it would change the mode.
    bool hasUnsavedMode() const;
    const mapping::MappedPots& mappedPots() const { return mappedPots_; }
    /// How the backup "original" or "prev" differs from the mapping being edited; none when there is no such backup.
    std::optional<mapping::BackupComparison> compareWithBackup(const std::string& suffix) const;
    /// Sent once after each operation that refreshed the panel or changed what is unsaved.
    platform::Signal<> editingChanged;

    // Control panel

    /// Makes `page` (from 1) the shown page and refreshes pot labels, read-outs and chart.
    void populateKnobLabels(std::int32_t page);
    /// Fills labels `prefix`1, 2, ... from the entries at positions `first` to `last`, counted from 0.
    void writeKnobLabelAndRowEndAndLabelPre(std::int32_t first, std::int32_t last, const std::string& prefix);
    void updateHelperDisplay(const std::string& text);
    /// Shows a page (from 1); one that does not exist is not shown.
    void showPage(std::int32_t page);
    /// Shows the first page on which the selected parameter stands, from there the next, and after the last the first.
    void showOnPanel(Sender = nullptr);

    // Pages

    void prevPageButtonPressed(Sender sender = nullptr);
    void nextPageButtonPressed(Sender sender = nullptr);
    void firstPageButtonPressed(Sender sender = nullptr);
    void lastPageButtonPressed(Sender sender = nullptr);
    void newPageButtonPressed(Sender sender = nullptr);
    void deletePageButtonPressed(Sender sender = nullptr);
    void clearAllPagesButtonPressed(Sender sender = nullptr);
    /// Leaves one empty page and nothing behind it.
    void startFromScratch(Sender sender = nullptr);
    void kvMovePage_First(Sender sender = nullptr);
    void kvMovePage_Last(Sender sender = nullptr);
    void kvMovePage_Prev(Sender sender = nullptr);
    void kvMovePage_Next(Sender sender = nullptr);
    /// Appends a page of empty slots and shows it.
    void addControlsPage();
    /// Removes the shown page; the first one stays.
    void removeControlsPage();
    /// Empties the first page and makes it the only one; later entries stay behind it.
    void clearAllPages();
    /// Exchanges the contents of two pages (from 1) and shows the second.
    void movePageAndPageTo(std::int32_t from, std::int32_t to);

    // Assignment

    void kvRotBtn1_Pressed(Sender sender = nullptr);
    void kvRotBtn2_Pressed(Sender sender = nullptr);
    void kvRotBtn3_Pressed(Sender sender = nullptr);
    void kvRotBtn4_Pressed(Sender sender = nullptr);
    void kvRotBtn5_Pressed(Sender sender = nullptr);
    void kvRotBtn6_Pressed(Sender sender = nullptr);
    void kvRotBtn7_Pressed(Sender sender = nullptr);
    void kvRotBtn8_Pressed(Sender sender = nullptr);
    /// Puts the selected parameter on a pot (0 to 7) of the shown page. Ignored without a selected parameter.
    void clickControl(std::int32_t control);
    /// Mode 1 exchanges two slots; any other copies row `from` of the parameter list into slot `to`.
    void moveParameterPositionAndToMovePageMode(std::int32_t from, std::int32_t to, std::int32_t movePageMode);

    // Edits of our own, each one step of the history. They leave the parameter list's selection alone.

    /// Runs an edit of the mapping as one step of that name and shows the page it leaves. Ignored without a mapping.
    void editMapping(const std::string& name, const std::function<void(panel::Mapping&)>& edit);
    /// What operations that need a pot or a page act on.
    platform::Property<panel::PotChoice> potChoice;
    void clearPage(Sender = nullptr);
    void clearPot(Sender = nullptr);
    /// Copies what is chosen and empties it; a page is taken out.
    void cutSlots(Sender = nullptr);
    void copySlots(Sender = nullptr);
    /// Lays copied pots on the focused one, or the shown page's first, and the following; inserts copied pages behind
    /// the shown one. What comes from another plug-in is looked up in the list offered for assignment.
    void pasteSlots(Sender = nullptr);
    bool canPaste() const { return platform_.clipboard.holdsOwn(); }
    /// How much of what was pasted is offered here, until something else is done.
    platform::Property<panel::Placed> placed;
    void insertPot(Sender = nullptr);
    void removePot(Sender = nullptr);
    /// Inserts an empty page before the shown one and shows it.
    void insertPage(Sender = nullptr);
    void duplicatePage(Sender = nullptr);
    void mapUnmapped(Sender = nullptr);
    void tidyUp(Sender = nullptr);

    // Filling and moving, likewise. Positions count from 0.

    /// Lays the selected parameters, in the list's order, on the focused pot and those that follow, with as many pages
    /// appended as that takes. Without one it begins at the first empty pot of the shown page, or of those behind it;
    /// where all are full, on a new page.
    void fillFromPot(Sender = nullptr);
    /// The same from a pot (0 to 7) of the shown page on, and from the first empty pot of a page on, unless it is full.
    void fillControls(std::int32_t control);
    void fillPage(std::int32_t page);
    /// Exchanges what two pots hold, of whichever pages.
    void exchangeSlots(std::int32_t one, std::int32_t other);
    /// Moves a pot's parameter to the first empty pot of a page, unless it is full.
    void movePotToPage(std::int32_t position, std::int32_t page);
    /// Moves a page before another one, or behind the last (`before` is one more then); the others keep their order.
    void movePageBefore(std::int32_t page, std::int32_t before);

    // Chart

    /// Appends a row with the entries at positions `first` to `last`, counted from 1, to the chart.
    void writebHTMLDataAndRowEndAndLabelPre(std::int32_t first, std::int32_t last, const std::string& title);
    void kvCreateChart(Sender sender = nullptr);
    /// Writes the chart beside the plug-in's file and opens it. The format is not consulted: it is always HTML.
    void outputChartAs(const std::string& format);
    /// Prints a chart of the mapping as it is now, with names of any script.
    void printChart(Sender = nullptr);
    /// Writes the same to a PDF, where the user says, and opens it.
    void chartPdf(Sender = nullptr);

    // Community account. An absent name or PIN is sent as "(null)".

    void kvLoginToCloudAccount(Sender sender = nullptr);
    /// Stores what was typed, whatever the server says, and logs in or out as it says.
    void cwinLoginAttempt(Sender sender = nullptr);
    void cwinNewUserCreate(Sender sender = nullptr);
    /// State 1 logs in, any other logs out; `userName` does not matter then.
    void changeLoginStateAndState(const std::optional<std::string>& userName, std::int32_t state);
    std::string checkCloudUserNameAndPinCode(const std::optional<std::string>& userName,
                                             const std::optional<std::string>& pinCode);
    std::string createNewCloudUserNameAndEmail(const std::string& userName, const std::string& email);
    void writePrefsFileAndPIN(const std::string& userName, const std::string& pin);
    /// Logs in with what is stored, asking the server even when nothing is. Shows no alert.
    void readPrefsFile();

    // Community sharing. Replies are the server's texts, empty when none came.

    void kvCommunityLibrary(Sender sender = nullptr);
    void kvCommunityUploadBtn(Sender sender = nullptr);
    /// Lists what others shared for the selected plug-in and opens the download window, whatever came back.
    void kvCommunityLibraryDownload(Sender sender = nullptr);
    void cwin_DownloadAvalableHighlighted(Sender sender = nullptr);
    /// Registers and starts the download of the selected entry. Does nothing before a plug-in has been loaded.
    void kvCommunityLoadSelectedDownload(Sender sender = nullptr);
    /// Sends the file as it is on disk; one that cannot be read goes out empty.
    std::string uploadFileToServerAndComments(const std::string& path, const std::string& comments);
    std::string checkForDownloads(const std::string& plugin);
    std::string registerCloudDownloadAttempt(const std::optional<std::string>& patchId);
    void startDownloadingURLToLocalFile(const std::string& address, const std::string& path);
    /// Loads the downloaded file beside the plug-in selected now. It is not marked.
    void downloadDidFinish(Sender download = nullptr);
    void downloadDidFailWithError(Sender download, const platform::DownloadError& error);
    /// How far the running downloads are.
    platform::Property<platform::DownloadProgress>& downloadProgress() { return platform_.http.downloadProgress; }

    // Shared preview. What is looked at stays in memory, is not registered and is no edit.

    struct SharedPreview {
        enum class State { none, fetching, shown, unreachable, refused, unreadable };

        State state = State::none;
        std::string description;        ///< why it is unreachable
        long status = 0;                ///< with which it was refused
        mapping::LoadedMapping mapping; ///< while it is shown
    };
    /// Fetches the selected entry's mapping, in place of one looked at before. Ignored without a selected entry.
    void previewShared(Sender = nullptr);
    /// Forgets what is looked at or still fetched.
    void endPreview();
    const SharedPreview& sharedPreview() const { return sharedPreview_; }
    platform::Signal<> sharedPreviewChanged;

private:
    class Operation;
    /// What a step of the history does with drafts: those it makes are undone with it.
    enum class DraftStep { none, leavesEdits, bringsBack };

    void finishEdit(const std::string& name, const mapping::EditingSnapshot& before, const std::string& pathBefore);
    /// Keeps what is edited now; false when that failed.
    bool keepEdits();
    /// What is edited is about to be replaced; it stays as a draft.
    void leaveEdits();
    /// Finds the newest draft that was left of the plug-in loaded.
    void lookForDraft();
    /// A draft was left, or what is edited now was one: then it is the draft being edited, and nothing left.
    void settleDrafts();
    void compareWith(mapping::ComparedWith side);
    void compare();
    /// Reads the other side again, whose file may have changed, or leaves it with its plug-in.
    void followComparedFile();
    void showPreview(SharedPreview preview);
    void goToDifference(std::optional<std::int32_t> position);
    void takeSlots(const std::string& name, std::int32_t first, std::int32_t count);
    std::size_t potsThatDiffer(const mapping::Draft& draft) const;
    void goThrough(const mapping::EditingChange& change, bool forward, DraftStep draftStep);
    /// By its file: after a rescan no row is selected, but the mapping still has its plug-in.
    std::string loadedPlugin() const;
    /// The subtitle and the help line of the mode, which names the plug-in.
    void showMode(const std::string& plugin);
    /// What the mapping and its mode are now is what the file holds.
    void noteSaved();
    void fillFrom(const std::function<std::optional<std::int32_t>(panel::Mapping&)>& begin);
    std::shared_ptr<TextField> knobLabel(std::int32_t number) const;
    platform::PrintedTable printedChart() const;
    /// Sends a request without a body and returns the reply's text.
    std::string sendRequest(const std::string& address);
    std::string selectedPlugin() const;
    std::filesystem::path userGuidePath() const;
    /// Where a shared mapping is kept, beside the file of the plug-in selected now.
    std::string downloadedPath() const;

    platform::Platform& platform_;
    std::unique_ptr<platform::UndoManager> history_;
    std::uint64_t historyRevision_ = 0;
    /// The mapping as its file holds it, and the mode that the file was read with or that was saved.
    std::vector<platform::Record> savedEntries_;
    std::int32_t savedMode_ = 0;
    platform::SharedRecords offered_ = std::make_shared<const std::vector<platform::Record>>();
    /// What the file marked just now holds, for the read that follows.
    std::optional<mapping::KnownContent> markedFile_;
    mapping::Drafts drafts_;
    std::optional<mapping::KeptDraft> leftDraft_;
    /// Revision of the history and page of what the draft being edited holds.
    std::optional<std::pair<std::uint64_t, std::int32_t>> keptEdit_;
    /// When what is edited was edited last, and the history's revision then.
    std::time_t editedAt_ = 0;
    std::uint64_t datedRevision_ = 0;
    DraftStep draftStep_ = DraftStep::none; ///< the one being made
    mapping::Comparison comparison_;
    mapping::Differences differences_;
    std::int32_t comparedMode_ = 0;
    SharedPreview sharedPreview_;
    std::uint64_t previewFetch_ = 0;
    platform::Record previewedEntry_;
    std::string comparedPath_; ///< of the plug-in
    mapping::ComparedWith unreadableSide_ = mapping::ComparedWith::nothing;
    mapping::MappedPots mappedPots_;
    std::uint64_t mappedRevision_ = 0;
    int operationDepth_ = 0;
};
