#include "app/interface/Widgets.h"

#include "platform/qt/ElidedLabel.h"
#include "platform/qt/RecordListView.h"

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

QPushButton* makeButton(const char* name, const QString& title, const QString& toolTip)
{
    auto* button = named(new QPushButton(title), name);
    button->setToolTip(toolTip);
    button->setAutoDefault(false);
    return button;
}

platform::qt::ElidedLabel* makeLabel(const char* name, Qt::TextElideMode mode)
{
    auto* label = named(new platform::qt::ElidedLabel, name);
    label->setElideMode(mode);
    return label;
}

platform::qt::RecordListView* makeList(const char* name)
{
    return named(new platform::qt::RecordListView, name);
}

QLineEdit* makeLine(const char* name)
{
    return named(new QLineEdit, name);
}

QPlainTextEdit* makeTextBox(const char* name)
{
    auto* box = named(new QPlainTextEdit, name);
    box->setTabChangesFocus(true);
    return box;
}

QLabel* makeHeading(const QString& text)
{
    auto* heading = new QLabel(text);
    QFont font = heading->font();
    font.setBold(true);
    heading->setFont(font);
    return heading;
}

} // namespace interface
