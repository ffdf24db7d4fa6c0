#pragma once
// What there is to know in the lists of plug-ins and of parameters: which rows a search finds, on which pots parameters
// stand, what is dragged from there, and what to do next where a list is empty. Follows the controller; selects,
// and edits nothing.

#include "platform/controls/Signal.h"

#include <QObject>

#include <cstdint>
#include <string>
#include <vector>

class QCheckBox;
class QLabel;
class ViewController;

namespace platform::qt {
class RecordListView;
}

namespace interface {

class FrontPanel;
class Interface;
class PageOverview;
class SearchField;

class ListsView final : public QObject {
    Q_OBJECT

public:
    /// Both must outlive it. The lists have their models.
    ListsView(ViewController& controller, const Interface& loaded);

private:
    void refresh();
    void letThingsBeDragged();
    /// Which parameters are shown, in which order.
    void arrangeParameters();
    /// Where the selected parameter stands.
    void showWhere();
    void showMapped();
    /// Which plug-ins the filter leaves.
    void showFoundPlugins();
    void showHints();
    /// Selects the parameter of the pot that has the focus, in sight whatever was searched.
    void findInList();

    ViewController& controller_;
    FrontPanel* panel_;
    PageOverview* overview_;
    SearchField* pluginSearch_;
    SearchField* search_;
    platform::qt::RecordListView* plugins_;
    platform::qt::RecordListView* parameters_;
    platform::qt::RecordListView* shared_;
    QLabel* foundPlugins_;
    QLabel* mapped_;
    QCheckBox* unmappedOnly_;
    std::string searched_; ///< what the parameters shown were searched for
    std::uint64_t historyRevision_ = 0;
    std::vector<platform::Connection> connections_;
};

} // namespace interface
