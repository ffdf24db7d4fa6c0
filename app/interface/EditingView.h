#pragma once
// Shows in the main window what there is to know of the edit beside the fixed labels and the lists: what can be done
// now, what is unsaved, what undo would take back, all pages at a glance. Follows the controller; changes nothing, but
// lets it keep a draft soon after each edit.

#include "platform/controls/Signal.h"

#include <QObject>
#include <QString>
#include <QTimer>

#include <string>
#include <utility>
#include <vector>

class QAbstractButton;
class QAction;
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

    void refresh();
    void enableWhatCanBeDone();
    void showWhatPotsDo();
    void showTitle();
    void showHistory();
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
    platform::qt::RecordListView* plugins_;
    QLabel* unsaved_;
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
    QAction* chartItem_;
    bool lacksChart_ = false; ///< the chart cannot be written
    QTimer backupsChanged_;
    DraftBar* draftBar_;
    QAction* draftItems_[2];
    std::string unsavedPath_; ///< of the plug-in with unsaved edits
    QTimer keepsDraft_;
    std::vector<platform::Connection> connections_;
};

} // namespace interface
