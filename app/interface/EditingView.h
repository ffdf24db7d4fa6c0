#pragma once
// Shows in the main window what there is to know of the edit beside the fixed labels: what can be done now, what is
// unsaved, what undo would take back, where parameters are mapped, all pages at a glance, and what to do next where a
// list is empty. Follows the controller; changes nothing, but lets it keep a draft soon after each edit.

#include "platform/controls/Signal.h"

#include <QObject>
#include <QString>
#include <QTimer>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

class QAbstractButton;
class QAction;
class QCheckBox;
class QLabel;
class ViewController;

namespace platform::qt {
class RecordListView;
}

namespace interface {

class DraftBar;
class FrontPanel;
class Interface;
class PageOverview;
class SearchField;
enum class Needs;

class EditingView final : public QObject {
    Q_OBJECT

public:
    /// Both must outlive it. The lists have their models.
    EditingView(ViewController& controller, const Interface& loaded);

protected:
    /// Looks at a backup when somebody comes to its recall button.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct RecallButton {
        QAbstractButton* button;
        const char* suffix;
        QString toolTip; ///< without the backup
    };
    struct ToldButton {
        QAbstractButton* button;
        QString toolTip; ///< without what there is to know of it now
    };

    void letThingsBeDragged();
    void arrangeParameters();
    void refresh();
    void enableWhatCanBeDone();
    void showTitle();
    void showHistory();
    void showMapped();
    void showHints();
    /// Where the selected parameter stands.
    void showWhere();
    /// Selects the parameter of the pot that has the focus, in sight whatever was searched.
    void findInList();
    /// Which plug-ins the filter leaves.
    void showFoundPlugins();
    void showLeftovers();
    void showWhatTheChartHolds();
    void showDraft();
    void showPlaced();
    void markPlugins();
    void keepDraft();
    void describeBackup(const RecallButton& recall);

    ViewController& controller_;
    QWidget* window_;
    FrontPanel* panel_;
    PageOverview* overview_;
    SearchField* pluginSearch_;
    SearchField* search_;
    platform::qt::RecordListView* plugins_;
    platform::qt::RecordListView* parameters_;
    platform::qt::RecordListView* shared_;
    QLabel* foundPlugins_;
    QLabel* mapped_;
    QLabel* unsaved_;
    QCheckBox* unmappedOnly_;
    QWidget* modeSwitch_;
    std::vector<std::pair<QAction*, Needs>> needing_;
    QAction* undo_;
    QAction* redo_;
    QAction* modeItems_[2]; ///< by mode
    std::vector<RecallButton> recalls_;
    QLabel* leftoverHint_;
    QLabel* placedHint_;
    ToldButton clearAll_;
    ToldButton newPage_;
    ToldButton save_;
    ToldButton chart_;
    bool isSelectedPlaced_ = false; ///< on a pot
    std::string searched_;          ///< what the parameters shown were searched for
    std::uint64_t historyRevision_ = 0;
    QTimer backupsChanged_;
    DraftBar* draftBar_;
    QAction* draftItems_[2];
    std::string unsavedPath_; ///< of the plug-in with unsaved edits
    QTimer keepsDraft_;
    std::vector<platform::Connection> connections_;
};

} // namespace interface
