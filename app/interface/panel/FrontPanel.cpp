#include "app/interface/panel/FrontPanel.h"

#include "app/interface/DragPicture.h"
#include "app/interface/Fonts.h"
#include "app/interface/panel/PanelDrawing.h"
#include "app/interface/panel/Pot.h"
#include "platform/qt/ElidedLabel.h"
#include "platform/qt/Hover.h"

#include <QDrag>
#include <QDragEnterEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>

#include <algorithm>

namespace interface {

using platform::qt::ElidedLabel;

namespace {

/// What stands under a pot without a parameter.
bool isEmptyName(const QString& name)
{
    return name.isEmpty() || name == QLatin1String("-");
}

QString placeOf(int pot, const QString& name, int page, int pages)
{
    const QString number = QString::number(pot);
    if (pages < 1)
        return FrontPanel::tr("Pot %1").arg(number);
    // All in one go, since a name may hold "%3" itself.
    if (isEmptyName(name))
        return FrontPanel::tr("Pot %1, empty, page %2 of %3")
            .arg(number, QString::number(page), QString::number(pages));
    return FrontPanel::tr("Pot %1, %2, page %3 of %4").arg(number, name, QString::number(page), QString::number(pages));
}

QString accessibleNameOf(const Pot& pot, const QString& name, int page, int pages)
{
    const QString place = placeOf(pot.number(), name, page, pages);
    return pot.isChosen() ? FrontPanel::tr("%1, chosen").arg(place) : place;
}

ElidedLabel* makeDisplay(const QString& name, int mostLines, QWidget* parent)
{
    auto* display = new ElidedLabel(mostLines, parent);
    display->setObjectName(name);
    display->setAlignment(Qt::AlignCenter);
    return display;
}

} // namespace

FrontPanel::FrontPanel(QWidget* parent) : QFrame(parent)
{
    setAccessibleName(tr("Front panel"));
    setLayoutDirection(Qt::LeftToRight); // the hardware is the same in every language
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    setAcceptDrops(true);
    makeReadOuts();
    makePots();
    followPalette();
    followLabels();
}

void FrontPanel::makeReadOuts()
{
    title_ = makeDisplay(QStringLiteral("labKOScreen_Title"), 1, this);
    title_->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    pageReadOut_ = makeDisplay(QStringLiteral("lab_PageCurrentlyDisplayed"), 1, this);
    totalReadOut_ = makeDisplay(QStringLiteral("labTotalPagesIndicator"), 1, this);
}

void FrontPanel::makePots()
{
    for (int number = 1; number <= PanelLayout::kPots; ++number) {
        const auto at = static_cast<std::size_t>(number - 1);
        auto* pot = pots_[at] = new Pot(number, this);
        connect(pot, &Pot::pulled, this, [this, pot] { dragPot(pot); });
        connect(pot, &Pot::clickedToChoose, this, [this, number](auto modifiers) { extendChoice(number, modifiers); });
        connect(pot, &Pot::reached, this, [this, number] { beginChoiceAt(number); });
        connect(pot, &Pot::pressed, this, [this, number] { beginChoiceAt(number); });
        connect(pot, &Pot::clicked, this, [this, number] { beginChoiceAt(number); });
        labels_[at] = makeDisplay(QStringLiteral("kvControl%1").arg(number), 2, this);
        labels_[at]->setText(QStringLiteral("-"));
    }
}

void FrontPanel::setShownPage(int page, int pages)
{
    if (page != page_)
        giveUpChoice();
    page_ = page;
    pages_ = pages;
    followLabels();
}

std::vector<int> FrontPanel::chosenPots() const
{
    std::vector<int> chosen;
    for (const Pot* pot : pots_) {
        if (pot->isChosen())
            chosen.push_back(pot->number());
    }
    return chosen;
}

void FrontPanel::leaveChoice()
{
    beginChoiceAt(kNoPot);
}

void FrontPanel::mean(const Pot& pot)
{
    if (!pot.isChosen())
        beginChoiceAt(pot.number());
}

void FrontPanel::beginChoiceAt(int pot)
{
    choiceBegin_ = pot;
    setChoice({});
}

void FrontPanel::giveUpChoice()
{
    const auto focused = std::find_if(pots_.begin(), pots_.end(), [](const Pot* pot) { return pot->hasFocus(); });
    beginChoiceAt(focused != pots_.end() ? (*focused)->number() : kNoPot);
}

void FrontPanel::setChoice(const Choice& choice)
{
    if (choice == choice_)
        return;
    choice_ = choice;
    for (std::size_t i = 0; i < pots_.size(); ++i)
        pots_[i]->setChosen(choice[i]);
    followLabels();
    Q_EMIT choiceChanged();
}

void FrontPanel::extendChoice(int pot, Qt::KeyboardModifiers modifiers)
{
    const int begin = choiceBegin_ == kNoPot ? pot : choiceBegin_;
    Choice choice;
    if (modifiers & Qt::ShiftModifier) {
        choiceBegin_ = begin;
        for (int each = std::min(begin, pot); each <= std::max(begin, pot); ++each)
            choice.set(static_cast<std::size_t>(each - 1));
    } else {
        const auto clicked = static_cast<std::size_t>(pot - 1);
        choice = choice_;
        if (choice.none())
            choice.set(static_cast<std::size_t>(begin - 1)).set(clicked);
        else
            choice.flip(clicked);
        choiceBegin_ = pot;
    }
    setChoice(choice);
}

void FrontPanel::goTo(Pot& pot, Qt::FocusReason reason, Qt::KeyboardModifiers modifiers)
{
    const int begin = choiceBegin_;
    pot.setFocus(reason);
    if (!(modifiers & Qt::ShiftModifier))
        return;
    choiceBegin_ = begin;
    extendChoice(pot.number(), Qt::ShiftModifier);
}

void FrontPanel::setTasks(const std::array<QString, PanelLayout::kPots>& tasks)
{
    for (std::size_t i = 0; i < pots_.size(); ++i)
        pots_[i]->setTask(tasks[i]);
}

void FrontPanel::setDifferences(const std::array<QString, PanelLayout::kPots>& differences)
{
    for (std::size_t i = 0; i < pots_.size(); ++i) {
        const bool wasDifferent = pots_[i]->differs();
        pots_[i]->setDifference(differences[i]);
        if (!differences[i].isEmpty())
            labels_[i]->setToolTip(differences[i]);
        else if (wasDifferent)
            labels_[i]->setToolTip(labels_[i]->text());
    }
}

void FrontPanel::focusPot(int pot)
{
    beginChoiceAt(pot);
    pots_[static_cast<std::size_t>(pot - 1)]->setFocus(Qt::ShortcutFocusReason);
}

void FrontPanel::ringPots(unsigned pots)
{
    for (Pot* pot : pots_)
        pot->setHoldsSelected((pots >> static_cast<unsigned>(pot->number() - 1)) & 1U);
}

void FrontPanel::followLabels()
{
    for (std::size_t i = 0; i < pots_.size(); ++i) {
        const QString name = labels_[i]->text();
        pots_[i]->setMapped(!isEmptyName(name));
        const QString spoken = accessibleNameOf(*pots_[i], name, page_, pages_);
        if (spoken != pots_[i]->accessibleName())
            pots_[i]->setAccessibleName(spoken);
    }
}

void FrontPanel::followPalette()
{
    const PanelColours& colours = panelColours(palette());
    QPalette onDisplay = palette();
    onDisplay.setColor(QPalette::WindowText, colours.screenText);
    onDisplay.setColor(QPalette::Disabled, QPalette::WindowText, colours.screenTextOff);
    onDisplay.setColor(QPalette::Window, colours.screenBottom);
    for (ElidedLabel* label : labels_)
        label->setPalette(onDisplay);
    for (ElidedLabel* label : {title_, pageReadOut_, totalReadOut_})
        label->setPalette(onDisplay);
    drawAnew();
}

QSize FrontPanel::sizeHint() const
{
    return preferredPanelSize(font());
}

QSize FrontPanel::minimumSizeHint() const
{
    return smallestPanelSize(font());
}

void FrontPanel::placeChildren()
{
    layout_ = layOutPanel(size(), font());
    for (std::size_t i = 0; i < pots_.size(); ++i) {
        pots_[i]->setGeometry(layout_.pots[i]);
        labels_[i]->setGeometry(layout_.fields[i]);
        labels_[i]->setFont(scaledFont(font(), layout_.scale));
    }
    title_->setGeometry(layout_.title);
    title_->setFont(titleFont(font(), layout_.scale));
    pageReadOut_->setGeometry(layout_.page);
    totalReadOut_->setGeometry(layout_.total);
    for (ElidedLabel* label : {pageReadOut_, totalReadOut_})
        label->setFont(scaledFont(font(), layout_.scale));
    drawAnew();
}

void FrontPanel::drawAnew()
{
    picture_ = {};
    update();
}

bool FrontPanel::event(QEvent* event)
{
    // A label has no signal for another text, but asks its parent for the room it now needs.
    if (event->type() == QEvent::LayoutRequest)
        followLabels();
    return QFrame::event(event);
}

void FrontPanel::changeEvent(QEvent* event)
{
    QFrame::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        followPalette();
    } else if (event->type() == QEvent::FontChange) {
        updateGeometry();
        placeChildren();
    }
}

void FrontPanel::showEvent(QShowEvent* event)
{
    followLabels(); // of what changed while hidden nobody was told
    QFrame::showEvent(event);
}

void FrontPanel::resizeEvent(QResizeEvent* event)
{
    QFrame::resizeEvent(event);
    placeChildren();
}

void FrontPanel::paintEvent(QPaintEvent*)
{
    const PanelColours& colours = panelColours(palette());
    QPainter painter(this);
    const double scale = painter.deviceTransform().m11();
    if (picture_.isNull() || picture_.devicePixelRatio() != scale) {
        picture_ = QPixmap((QSizeF(size()) * scale).toSize());
        picture_.setDevicePixelRatio(scale);
        picture_.fill(Qt::transparent);
        QPainter onPicture(&picture_);
        drawPanel(onPicture, layout_, colours, font());
    }
    painter.drawPixmap(0, 0, picture_);
    if (target_ != kNoPot)
        drawDropField(painter, layout_, target_, colours);
}

void FrontPanel::keyPressEvent(QKeyEvent* event)
{
    const auto focused = std::find_if(pots_.begin(), pots_.end(), [](const Pot* pot) { return pot->hasFocus(); });
    // The hardware's pots stand from left to right in every language.
    if (focused != pots_.end() && event->key() == Qt::Key_Left && focused != pots_.begin())
        goTo(**std::prev(focused), Qt::BacktabFocusReason, event->modifiers());
    else if (focused != pots_.end() && event->key() == Qt::Key_Right && std::next(focused) != pots_.end())
        goTo(**std::next(focused), Qt::TabFocusReason, event->modifiers());
    else if (focused != pots_.end() && event->matches(QKeySequence::SelectAll))
        setChoice(Choice().set());
    else if (event->key() == Qt::Key_Escape && choice_.any())
        giveUpChoice();
    else
        QFrame::keyPressEvent(event);
}

void FrontPanel::dragPot(Pot* pot)
{
    const QString name = labels_[static_cast<std::size_t>(pot->number() - 1)]->text();
    auto* drag = new QDrag(pot);
    drag->setMimeData(
        DragData{.kind = DragData::Kind::pot, .state = state_(), .page = page_, .pot = pot->number()}.toMime());
    drag->setPixmap(dragPicture(isEmptyName(name) ? tr("Pot %1").arg(pot->number()) : name, this));
    const bool wasDropped = drag->exec(Qt::MoveAction) != Qt::IgnoreAction;
    platform::qt::endHover(*pot);
    setTarget(kNoPot);
    Q_EMIT dragEnded(wasDropped);
}

DragData FrontPanel::draggedIn(const QDropEvent& event) const
{
    const DragData drag = DragData::of(*event.mimeData(), state_());
    return drag.kind == DragData::Kind::page ? DragData() : drag;
}

int FrontPanel::targetOf(const QDropEvent& event) const
{
    if (draggedIn(event).kind == DragData::Kind::nothing)
        return kNoPot;
    const QPoint position = event.position().toPoint();
    for (std::size_t i = 0; i < pots_.size(); ++i) {
        const bool isOver = layout_.pots[i].united(layout_.fields[i]).contains(position);
        if (isOver && pots_[i]->isEnabled())
            return pots_[i]->number();
    }
    return kNoPot;
}

void FrontPanel::setTarget(int pot)
{
    if (pot == target_)
        return;
    target_ = pot;
    for (Pot* each : pots_)
        each->setDropTarget(each->number() == pot);
    update(layout_.strip.toAlignedRect());
}

void FrontPanel::dragEnterEvent(QDragEnterEvent* event)
{
    // Taken wherever it enters, since moves are told only to who took it.
    if (draggedIn(*event).kind == DragData::Kind::nothing)
        return;
    event->acceptProposedAction();
    setTarget(targetOf(*event));
}

void FrontPanel::dragMoveEvent(QDragMoveEvent* event)
{
    setTarget(targetOf(*event));
    if (target_ == kNoPot)
        event->ignore();
    else
        event->acceptProposedAction();
}

void FrontPanel::dragLeaveEvent(QDragLeaveEvent*)
{
    setTarget(kNoPot);
}

void FrontPanel::dropEvent(QDropEvent* event)
{
    const int onto = targetOf(*event);
    setTarget(kNoPot);
    if (onto == kNoPot) {
        event->ignore();
        return;
    }
    event->acceptProposedAction();
    const DragData drag = draggedIn(*event);
    if (drag.kind == DragData::Kind::parameters)
        Q_EMIT parametersDropped(onto);
    else if (drag.page == page_ && drag.pot == onto)
        pots_[static_cast<std::size_t>(onto - 1)]->click(); // pulled and brought back, it was pressed after all
    else
        Q_EMIT potDropped(drag.page, drag.pot, onto);
}

} // namespace interface
