#pragma once
// Makers of the widgets that several windows use, each under its object name.

#include <QString>

class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QWidget;

namespace platform::qt {
class ElidedLabel;
class RecordListView;
} // namespace platform::qt

namespace interface {

/// A button with a word on it and, where it helps to find it, a symbol of our own.
QPushButton* makeButton(const char* name, const QString& title, const QString& toolTip, const char* symbol = nullptr);
/// A button whose symbol says enough; the title is what a screen reader says.
QPushButton* makeSymbolButton(const char* name, const QString& title, const QString& toolTip, const char* symbol);
platform::qt::ElidedLabel* makeLabel(const char* name, Qt::TextElideMode mode = Qt::ElideRight);
platform::qt::RecordListView* makeList(const char* name, const QString& accessibleName);
QLineEdit* makeLine(const char* name);
QPlainTextEdit* makeTextBox(const char* name, const QString& accessibleName);
/// A heading over a list or a group; not an outlet.
QLabel* makeHeading(const QString& text);
/// A line between groups of buttons.
QWidget* makeSeparator();

} // namespace interface
