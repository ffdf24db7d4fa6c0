#include "app/interface/Widgets.h"

#include "app/interface/Actions.h"
#include "app/interface/Fonts.h"
#include "app/interface/RowButton.h"
#include "platform/qt/ElidedLabel.h"
#include "platform/qt/LongText.h"
#include "platform/qt/RecordListView.h"
#include "platform/qt/SymbolIcon.h"

#include <QFrame>
#include <QLineEdit>

#include <utility>

namespace interface {

namespace {

template <typename T>
T* named(T* widget, const char* name)
{
    widget->setObjectName(QString::fromLatin1(name));
    return widget;
}

} // namespace

void label(QAbstractButton& button, const Action& action)
{
    button.setObjectName(QString::fromLatin1(action.buttonName()));
    button.setAccessibleName(action.translated(action.spoken));
    if (!action.isSymbolOnly)
        button.setText(action.translated(action.caption ? action.caption : action.text));
}

RowButton* makeButton(const Action& action)
{
    auto* button = new RowButton;
    label(*button, action);
    if (action.symbol)
        button->setIcon(platform::qt::symbolIcon(QString::fromLatin1(action.symbol)));
    return button;
}

platform::qt::ElidedLabel* makeLabel(const char* name, Qt::TextElideMode mode)
{
    auto* label = named(new platform::qt::ElidedLabel, name);
    label->setElideMode(mode);
    return label;
}

platform::qt::RecordListView* makeList(const char* name, const char* rowsName, const QString& accessibleName,
                                       std::vector<platform::qt::RecordColumn> columns, std::string toolTipKey)
{
    auto* list = named(new platform::qt::RecordListView(std::move(columns), std::move(toolTipKey)), name);
    list->setAccessibleName(accessibleName);
    list->records().setObjectName(QString::fromLatin1(rowsName));
    return list;
}

QLineEdit* makeLine(const char* name)
{
    return named(new QLineEdit, name);
}

QPlainTextEdit* makeTextBox(const char* name, const QString& accessibleName)
{
    auto* box = named(new platform::qt::LongTextField, name);
    box->setTabChangesFocus(true);
    box->setAccessibleName(accessibleName);
    return box;
}

QLabel* makeHeading(const QString& text)
{
    auto* heading = new QLabel(text);
    heading->setFont(boldFont(heading->font()));
    return heading;
}

QWidget* makeSeparator()
{
    auto* line = new QFrame;
    line->setFrameShape(QFrame::VLine);
    line->setFrameShadow(QFrame::Sunken);
    return line;
}

} // namespace interface
