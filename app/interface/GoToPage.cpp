#include "app/interface/GoToPage.h"

#include <QApplication>
#include <QFocusEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

#include <algorithm>

namespace interface {

namespace {

constexpr int kGap = 4; // below the strip
constexpr qsizetype kLongestTold = 30;

} // namespace

GoToPage::GoToPage(QWidget* strip, QWidget* parent)
    : QFrame(parent), strip_(strip), field_(new QLineEdit), message_(new QLabel)
{
    setObjectName(QStringLiteral("goToPagePopup"));
    setFrameStyle(QFrame::Box | QFrame::Plain);
    setAutoFillBackground(true);
    auto* words = new QLabel(tr("Go to page"));
    words->setBuddy(field_);
    field_->setObjectName(QStringLiteral("goToPageField"));
    field_->setPlaceholderText(tr("Number or first letters of a name"));
    field_->setAccessibleName(tr("Go to page: number or first letters of a name"));
    field_->setMinimumWidth(field_->fontMetrics().horizontalAdvance(field_->placeholderText()) + 24);
    field_->installEventFilter(this);
    message_->setObjectName(QStringLiteral("goToPageMessage"));
    message_->setTextFormat(Qt::PlainText);
    auto* line = new QHBoxLayout;
    line->addWidget(words);
    line->addWidget(field_, 1);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(10, 6, 10, 6);
    layout->addLayout(line);
    layout->addWidget(message_);
    connect(field_, &QLineEdit::returnPressed, this, &GoToPage::enter);
    connect(field_, &QLineEdit::textEdited, this, [this] { tell({}); });
    hide();
}

void GoToPage::open()
{
    if (isHidden())
        before_ = QApplication::focusWidget();
    field_->clear();
    tell({});
    show();
    raise();
    field_->setFocus(Qt::PopupFocusReason);
}

void GoToPage::leave()
{
    if (before_)
        before_->setFocus(Qt::PopupFocusReason);
    hide();
}

void GoToPage::tell(const QString& message)
{
    message_->setText(message);
    message_->setVisible(!message.isEmpty());
    field_->setAccessibleDescription(message);
    place();
}

void GoToPage::enter()
{
    const QString text = field_->text().trimmed();
    if (text.isEmpty() || goTo_(text)) {
        leave();
        return;
    }
    tell(tr("No such page, and no name that begins with \u201c%1\u201d").arg(text.left(kLongestTold)));
    field_->selectAll();
}

void GoToPage::place()
{
    layout()->activate();
    const QSize size = sizeHint();
    const QRect strip(strip_->mapTo(parentWidget(), QPoint()), strip_->size());
    const QRect room = parentWidget()->rect();
    const int x = isRightToLeft() ? strip.right() + 1 - size.width() : strip.left();
    const int y = strip.bottom() + kGap;
    setGeometry(QRect(QPoint(std::clamp(x, 0, std::max(0, room.width() - size.width())),
                             std::clamp(y, 0, std::max(0, room.height() - size.height()))),
                      size));
}

bool GoToPage::eventFilter(QObject*, QEvent* event)
{
    if (event->type() == QEvent::FocusOut) {
        const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
        // Another program, a menu: they give the focus back.
        if (reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason && reason != Qt::MenuBarFocusReason)
            hide();
    }
    if (event->type() != QEvent::ShortcutOverride)
        return false;
    const auto* key = static_cast<QKeyEvent*>(event);
    const bool leaves = key->matches(QKeySequence::Close) || key->matches(QKeySequence::Quit);
    if (!leaves)
        event->accept(); // no item of the menu bar changes the pages below it
    return !leaves;
}

void GoToPage::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape)
        leave();
    else
        event->accept(); // what the field has no use for means nothing else while it is open
}

} // namespace interface
