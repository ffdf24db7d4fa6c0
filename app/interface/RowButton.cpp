#include "app/interface/RowButton.h"

#include "platform/qt/Text.h"

#include <QStyleOptionButton>
#include <QStylePainter>

#include <algorithm>

namespace interface {

RowButton::RowButton(QWidget* parent) : QPushButton(parent)
{
    setAutoDefault(false);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void RowButton::setShowsWords(bool showsWords)
{
    if (showsWords == showsWords_)
        return;
    showsWords_ = showsWords;
    updateGeometry();
    update();
}

QSize RowButton::sizeFor(bool showsWords) const
{
    const QSize whole = QPushButton::sizeHint();
    if (icon().isNull() || (showsWords && !text().isEmpty()))
        return whole;
    QStyleOptionButton option;
    initStyleOption(&option);
    option.text.clear();
    const QSize bare = style()->sizeFromContents(QStyle::CT_PushButton, &option, iconSize(), this);
    return {std::max(bare.width(), whole.height() + 8), whole.height()};
}

void RowButton::paintEvent(QPaintEvent*)
{
    QStyleOptionButton option;
    initStyleOption(&option);
    if (showsWords_ || icon().isNull())
        option.text = platform::qt::isolated(option.text);
    else
        option.text.clear();
    QStylePainter painter(this);
    // The style lays out words and symbol by the option's direction; the painter's would turn that round again.
    painter.setLayoutDirection(Qt::LeftToRight);
    painter.drawControl(QStyle::CE_PushButton, option);
}

} // namespace interface
