#include "app/interface/Widgets.h"

#include "app/interface/Fonts.h"
#include "platform/qt/ElidedLabel.h"
#include "platform/qt/RecordListView.h"
#include "platform/qt/SymbolIcon.h"

#include <QFrame>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>

namespace interface {

namespace {

template <typename T>
T* named(T* widget, const char* name)
{
    widget->setObjectName(QString::fromLatin1(name));
    return widget;
}

} // namespace

QPushButton* makeButton(const char* name, const QString& title, const QString& toolTip, const char* symbol)
{
    auto* button = named(new QPushButton(title), name);
    button->setToolTip(toolTip);
    button->setAutoDefault(false);
    if (symbol)
        button->setIcon(platform::qt::symbolIcon(QString::fromLatin1(symbol)));
    return button;
}

QPushButton* makeSymbolButton(const char* name, const QString& title, const QString& toolTip, const char* symbol)
{
    QPushButton* button = makeButton(name, {}, toolTip, symbol);
    button->setAccessibleName(title);
    button->setFixedWidth(button->sizeHint().height() + 8);
    return button;
}

platform::qt::ElidedLabel* makeLabel(const char* name, Qt::TextElideMode mode)
{
    auto* label = named(new platform::qt::ElidedLabel, name);
    label->setElideMode(mode);
    return label;
}

platform::qt::RecordListView* makeList(const char* name, const QString& accessibleName)
{
    auto* list = named(new platform::qt::RecordListView, name);
    list->setAccessibleName(accessibleName);
    return list;
}

QLineEdit* makeLine(const char* name)
{
    return named(new QLineEdit, name);
}

QPlainTextEdit* makeTextBox(const char* name, const QString& accessibleName)
{
    auto* box = named(new QPlainTextEdit, name);
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
