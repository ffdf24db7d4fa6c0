#include "app/interface/FrontPanel.h"

#include "app/interface/Widgets.h"
#include "platform/qt/ElidedLabel.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QPushButton>

namespace interface {

namespace {

constexpr int kPots = 8;
constexpr int kPotSize = 64;

// One palette for the piece of hardware, whatever the desktop's colours are.
const char* const kHardwareLook = R"(
    interface--FrontPanel { background: #2a2d31; border: 1px solid #17191b; border-radius: 8px; }
    QLabel { color: #e6e8ea; }
    QLabel#labKOScreen_Title { color: #ffffff; font-weight: bold; }
    QLabel[potLabel="true"] { background: #0f2a1f; color: #b7f5cf; border: 1px solid #06130e; border-radius: 3px; }
    QLabel[potLabel="true"]:disabled { color: #567a66; }
    QPushButton { background: qradialgradient(cx:0.4, cy:0.35, radius:0.75, fx:0.4, fy:0.3,
                                              stop:0 #6d747c, stop:0.7 #3c4147, stop:1 #22262a);
                  color: #f2f4f5; border: 2px solid #121416; border-radius: 32px; font-weight: bold; }
    QPushButton:hover { border-color: #6fb6ff; }
    QPushButton:focus { border-color: #ffd479; }
    QPushButton:pressed { background: #2b3036; }
    QPushButton:disabled { color: #8b9198; }
)";

QWidget* makePot(int number)
{
    auto* pot = makeButton(qPrintable(QStringLiteral("kvRotaryBtn%1").arg(number)), QString::number(number),
                           QObject::tr("Put the selected parameter on pot %1").arg(number));
    pot->setFixedSize(kPotSize, kPotSize);
    pot->setAccessibleName(QObject::tr("Pot %1").arg(number));
    return pot;
}

QWidget* makePotLabel(int number)
{
    auto* label = makeLabel(qPrintable(QStringLiteral("kvControl%1").arg(number)));
    label->setProperty("potLabel", true);
    label->setAlignment(Qt::AlignCenter);
    label->setMargin(4);
    label->setMinimumWidth(kPotSize + 16);
    label->setText(QStringLiteral("-"));
    return label;
}

} // namespace

FrontPanel::FrontPanel(QWidget* parent) : QFrame(parent)
{
    setStyleSheet(QString::fromLatin1(kHardwareLook));

    auto* readOuts = new QHBoxLayout;
    readOuts->addWidget(makeLabel("labKOScreen_Title"), 3);
    auto* page = makeLabel("lab_PageCurrentlyDisplayed");
    auto* total = makeLabel("labTotalPagesIndicator");
    page->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    total->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    readOuts->addWidget(page, 1);
    readOuts->addWidget(total, 1);

    auto* pots = new QGridLayout;
    pots->setHorizontalSpacing(10);
    for (int number = 1; number <= kPots; ++number) {
        pots->addWidget(makePot(number), 0, number - 1, Qt::AlignHCenter);
        pots->addWidget(makePotLabel(number), 1, number - 1);
        pots->setColumnStretch(number - 1, 1);
    }

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(14, 10, 14, 12);
    layout->setSpacing(10);
    layout->addLayout(readOuts);
    layout->addLayout(pots);
}

} // namespace interface
