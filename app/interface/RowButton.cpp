#include "app/interface/RowButton.h"

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
    if (!showsWords_ && !icon().isNull())
        option.text.clear();
    QStylePainter(this).drawControl(QStyle::CE_PushButton, option);
}

} // namespace interface
