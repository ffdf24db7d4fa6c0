#pragma once
// Shows in the main window how the mapping differs from what it is compared with: the hint, the marks of pots and
// pages, and what can be done about it. Follows the controller; changes nothing.

#include "mapping/Comparison.h"
#include "platform/controls/Signal.h"

#include <QObject>
#include <QString>

#include <map>
#include <vector>

class QAction;
class QLabel;
class ViewController;

namespace interface {

class FrontPanel;
class Interface;
class PageOverview;

class ComparisonView final : public QObject {
    Q_OBJECT

public:
    /// Both must outlive it.
    ComparisonView(ViewController& controller, const Interface& loaded);

private:
    void refresh();
    void showHint();
    void enableWhatCanBeDone();
    bool differsAt(std::int32_t position) const;
    /// "Cutoff; in the original backup: Drive"; empty for a slot (from 0) that does not differ.
    QString differenceAt(std::int32_t position) const;

    ViewController& controller_;
    FrontPanel* panel_;
    PageOverview* overview_;
    QLabel* hint_;
    std::pair<mapping::ComparedWith, mapping::ComparedWith> toldSides_ = {}; ///< compared with, unreadable
    std::map<mapping::ComparedWith, QAction*> choices_;
    QAction* next_;
    QAction* previous_;
    QAction* takePot_;
    QAction* takePage_;
    std::vector<platform::Connection> connections_;
};

} // namespace interface
