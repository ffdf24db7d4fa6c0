#include "tests/support/Alerts.h"

#include <QAbstractButton>
#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QMessageBox>

namespace support {

namespace {

constexpr int kLongestWait = 10'000;

} // namespace

AlertAnswers::AlertAnswers()
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
    const auto buttons = box->buttons();
    shown_.push_back(
        {box->text().toStdString(), box->informativeText().toStdString(), static_cast<int>(buttons.size())});
    buttons.front()->click();
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

} // namespace support
