#include "app/interface/FittingRow.h"

#include "app/interface/Actions.h"
#include "app/interface/RowButton.h"
#include "app/interface/Widgets.h"
#include "platform/qt/ElidedLabel.h"
#include "platform/qt/SymbolIcon.h"

#include <QAction>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>

#include <algorithm>

namespace interface {

namespace {

constexpr int kGap = 4; ///< within a group
/// So much of a longer text is shown before a button gives up its words for it, in letters.
constexpr int kReadable = 40;

int leastWidth(const QWidget& widget)
{
    return std::max(widget.minimumSizeHint().width(), widget.minimumWidth());
}

int readableWidth(const QWidget& widget)
{
    int wanted = widget.sizeHint().width();
    for (const auto* label : widget.findChildren<platform::qt::ElidedLabel*>()) // which its box does not ask
        wanted = std::max(wanted, label->sizeHint().width());
    return std::max(leastWidth(widget), std::min(wanted, kReadable * widget.fontMetrics().averageCharWidth()));
}

void setShown(QWidget* widget, bool isShown)
{
    if (widget && widget->isHidden() == isShown)
        widget->setVisible(isShown);
}

} // namespace

FittingRow::FittingRow(int spacing, const char* buttonName, const QString& accessibleName)
    : row_(new QHBoxLayout(this)), more_(new RowButton(this)), menu_(new QMenu(more_))
{
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    row_->setContentsMargins(0, 0, 0, 0);
    row_->setSpacing(spacing);
    more_->setObjectName(QLatin1String(buttonName));
    more_->setIcon(platform::qt::symbolIcon(QStringLiteral("more")));
    more_->setText(tr("More"));
    more_->setShowsWords(false);
    more_->setAccessibleName(accessibleName);
    more_->setToolTip(accessibleName);
    menu_->setAccessibleName(accessibleName);
    more_->hide();
    // By a click and not as the button's own menu, which assistive programs could not open.
    connect(more_, &QPushButton::clicked, this, &FittingRow::openMenu);
    row_->addWidget(more_);
}

void FittingRow::add(QWidget* widget, int stretch)
{
    others_.push_back(widget);
    row_->insertWidget(row_->count() - 1, widget, stretch);
}

void FittingRow::addStretch()
{
    row_->insertStretch(row_->count() - 1, 1);
}

void FittingRow::addSeparator()
{
    separator_ = makeSeparator();
    row_->insertWidget(row_->count() - 1, separator_);
}

void FittingRow::addGroup(ButtonRow buttons, const QString& caption)
{
    Group group{new QWidget, std::exchange(separator_, nullptr), nullptr, {}, {}};
    group.box->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    auto* layout = new QHBoxLayout(group.box);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(kGap);
    if (!caption.isEmpty())
        layout->addWidget(group.caption = new QLabel(caption));
    for (const Action& action : Action::all()) {
        if (action.row != buttons)
            continue;
        group.buttons.push_back(makeButton(action));
        group.actions.push_back(&action);
        layout->addWidget(group.buttons.back());
    }
    row_->insertWidget(row_->count() - 1, group.box);
    groups_.push_back(std::move(group));
}

FittingRow::Form FittingRow::everything() const
{
    std::size_t buttons = 0;
    for (const Group& group : groups_)
        buttons += group.buttons.size();
    return {groups_.size(), buttons};
}

int FittingRow::widthOf(const Form& form, bool areTextsShortened) const
{
    int width = 0; // each part with the room behind it
    for (const QWidget* other : others_) {
        if (!other->isHidden())
            width += (areTextsShortened ? leastWidth(*other) : readableWidth(*other)) + row_->spacing();
    }
    std::size_t left = form.buttonsShown;
    for (std::size_t i = 0; i < groups_.size() && left > 0; ++i) {
        const Group& group = groups_[i];
        const std::size_t shown = std::min(left, group.buttons.size());
        left -= shown;
        if (group.separator)
            width += group.separator->sizeHint().width() + row_->spacing();
        if (group.caption)
            width += group.caption->sizeHint().width() + kGap;
        for (std::size_t button = 0; button < shown; ++button)
            width += group.buttons[button]->sizeFor(i < form.groupsWithWords).width() + kGap;
        width += row_->spacing() - kGap;
    }
    if (form.buttonsShown < everything().buttonsShown)
        width += more_->sizeHint().width() + row_->spacing();
    return width - row_->spacing();
}

QSize FittingRow::sizeHint() const
{
    return {widthOf(everything(), false), row_->sizeHint().height()};
}

QSize FittingRow::minimumSizeHint() const
{
    return {widthOf({0, 0}, true), row_->minimumSize().height()};
}

bool FittingRow::event(QEvent* event)
{
    const bool hasHandled = QWidget::event(event);
    if (event->type() == QEvent::Resize || event->type() == QEvent::LayoutRequest)
        fit();
    return hasHandled;
}

void FittingRow::fit()
{
    Form form = everything();
    while (form.groupsWithWords > 0 && widthOf(form, false) > width())
        --form.groupsWithWords;
    while (form.buttonsShown > 0 && widthOf(form, true) > width())
        --form.buttonsShown;
    std::size_t left = form.buttonsShown;
    for (std::size_t i = 0; i < groups_.size(); ++i) {
        const Group& group = groups_[i];
        setShown(group.box, left > 0);
        setShown(group.separator, left > 0);
        for (RowButton* button : group.buttons) {
            button->setShowsWords(i < form.groupsWithWords);
            setShown(button, left > 0);
            left -= left > 0 ? 1 : 0;
        }
        group.box->layout()->activate(); // so that the row knows its width
    }
    setShown(more_, form.buttonsShown < everything().buttonsShown);
    row_->activate(); // now, or it would be seen for a moment as it was
}

void FittingRow::openMenu()
{
    menu_->clear();
    for (const Group& group : groups_) {
        for (std::size_t i = 0; i < group.buttons.size(); ++i) {
            if (group.buttons[i]->isHidden())
                menu_->addAction(window()->findChild<QAction*>(QLatin1String(group.actions[i]->name)));
        }
    }
    const int besideIt = isRightToLeft() ? 0 : more_->width() - menu_->sizeHint().width(); // it stands at the end
    menu_->popup(more_->mapToGlobal(QPoint(besideIt, more_->height())));
}

} // namespace interface
