#pragma once
// Shows in the download window the shared mapping that is looked at: its pages as a table, what of it the loaded
// plug-in offers, and how it differs from the mapping being edited. Follows the controller; closing the window ends it.

#include "mapping/Comparison.h"
#include "panel/OfferedHere.h"
#include "platform/controls/Record.h"
#include "platform/controls/Signal.h"

#include <QObject>

#include <vector>

class QAction;
class QLabel;
class QStackedWidget;
class ViewController;

namespace interface {

class Interface;
class PreviewModel;

class PreviewView final : public QObject {
    Q_OBJECT

public:
    /// Both must outlive it.
    PreviewView(ViewController& controller, const Interface& loaded);

private:
    void show();
    void followEdit();
    void enable();

    ViewController& controller_;
    QStackedWidget* places_;
    QLabel* hint_;
    QLabel* summary_;
    QAction* preview_;
    PreviewModel* model_;
    mapping::Differences differences_;
    platform::SharedRecords countedIn_; ///< the list in which was looked for what is offered
    panel::Placed count_;
    std::vector<platform::Connection> connections_;
};

} // namespace interface
