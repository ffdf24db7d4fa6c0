#pragma once
// Makers of the widgets that several windows use, each under its object name.

#include <QString>

class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QTreeView;
class QWidget;

namespace platform::qt {
class ElidedLabel;
class RecordListView;
} // namespace platform::qt

namespace interface {

QPushButton* makeButton(const char* name, const QString& title, const QString& toolTip);
platform::qt::ElidedLabel* makeLabel(const char* name, Qt::TextElideMode mode = Qt::ElideRight);
platform::qt::RecordListView* makeList(const char* name);
QLineEdit* makeLine(const char* name);
QPlainTextEdit* makeTextBox(const char* name);
/// A heading over a list or a group; not an outlet.
QLabel* makeHeading(const QString& text);

} // namespace interface
