#include "app/interface/panel/PanelColumn.h"

#include "app/interface/panel/FrontPanel.h"
#include "app/interface/panel/PageOverview.h"

namespace interface {

PanelColumn::PanelColumn(FrontPanel* panel, PageOverview* strip, QWidget* parent)
    : QVBoxLayout(parent), panel_(panel), strip_(strip)
{
    setContentsMargins(0, 0, 0, 0);
    addWidget(panel, 1);
    addWidget(strip);
}

QSize PanelColumn::minimumSize() const
{
    const QSize now = QVBoxLayout::minimumSize();
    return now - QSize(0, strip_->sizeHint().height() - strip_->minimumSizeHint().height());
}

void PanelColumn::setGeometry(const QRect& rect)
{
    const int others = minimumSize().height() - panel_->minimumSizeHint().height() - strip_->minimumSizeHint().height();
    const int room = rect.height() - others - panel_->heightFor(rect.width());
    strip_->setRows(strip_->rowsWithin(QSize(rect.width(), room)));
    QVBoxLayout::setGeometry(rect);
}

} // namespace interface
