#include "tests/support/Alerts.h"

#include <QAbstractButton>
#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QMessageBox>
#include <QTest>

#include <utility>

namespace test {

namespace {

constexpr int kLongestWait = 10'000;

} // namespace

AlertAnswers::AlertAnswers(std::vector<std::string> presses) : presses_(std::move(presses))
{
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { answer(); });
    timer_.start(2);
}

void AlertAnswers::answer()
{
    auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (!box || !box->isVisible())
        return;
    if (patience > 0) {
        --patience;
        return;
    }
    if (whileOpen)
        whileOpen();
    ShownAlert alert{box->text().toStdString(), box->informativeText().toStdString(), {}};
    QAbstractButton* pressed = box->buttons().front();
    for (QAbstractButton* button : box->buttons()) {
        alert.buttons.push_back(button->text().toStdString());
        if (shown_.size() < presses_.size() && alert.buttons.back() == presses_[shown_.size()])
            pressed = button;
    }
    shown_.push_back(std::move(alert));
    QTest::mouseClick(pressed, Qt::LeftButton);
}

bool waitUntil(const std::function<bool()>& isDone)
{
    QElapsedTimer time;
    time.start();
    while (!isDone() && !time.hasExpired(kLongestWait))
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 10);
    return isDone();
}

void runFor(int milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

} // namespace test
