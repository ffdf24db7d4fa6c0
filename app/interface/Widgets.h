#pragma once
// Makers of the widgets that several windows use, each under its object name.

#include <QString>

#include <string>
#include <vector>

class QAbstractButton;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QWidget;

namespace platform::qt {
class ElidedLabel;
class RecordListView;
struct RecordColumn;
} // namespace platform::qt

namespace interface {

struct Action;
class RowButton;

/// Names a button after its action and writes the action's caption on it.
void label(QAbstractButton& button, const Action& action);
/// The push button of an action, with its symbol. Tool tip, enabling and click come when it is connected.
RowButton* makeButton(const Action& action);
platform::qt::ElidedLabel* makeLabel(const char* name, Qt::TextElideMode mode = Qt::ElideRight);
/// A list, its model named after the outlet of the rows.
platform::qt::RecordListView* makeList(const char* name, const char* rowsName, const QString& accessibleName,
                                       std::vector<platform::qt::RecordColumn> columns, std::string toolTipKey = {});
QLineEdit* makeLine(const char* name);
QPlainTextEdit* makeTextBox(const char* name, const QString& accessibleName);
/// A heading over a list or a group; not an outlet.
QLabel* makeHeading(const QString& text);
/// A line between groups of buttons.
QWidget* makeSeparator();

} // namespace interface
