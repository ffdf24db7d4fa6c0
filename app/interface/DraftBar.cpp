#include "app/interface/DraftBar.h"

#include "app/interface/Actions.h"
#include "app/interface/Fonts.h"
#include "app/interface/RowButton.h"
#include "app/interface/Widgets.h"
#include "platform/qt/ElidedLabel.h"

#include <QAccessible>
#include <QHBoxLayout>

namespace interface {

DraftBar::DraftBar() : label_(new platform::qt::ElidedLabel)
{
    setObjectName(QStringLiteral("draftBar"));
    setFrameShape(QFrame::StyledPanel);
    label_->setFont(boldFont(label_->font()));
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(10, 4, 4, 4);
    layout->addWidget(label_, 1);
    for (const Action& action : Action::all()) {
        if (action.row == ButtonRow::draft)
            layout->addWidget(makeButton(action));
    }
    hide();
}

void DraftBar::tell(const QString& text)
{
    label_->setText(text);
    setAccessibleName(text);
    show();
    QAccessibleEvent told(label_, QAccessible::Alert);
    QAccessible::updateAccessibility(&told);
}

QString DraftBar::text() const
{
    return label_->text();
}

} // namespace interface
