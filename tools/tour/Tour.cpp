#include "tools/tour/Tour.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QDesktopServices>
#include <QLabel>
#include <QMessageBox>
#include <QPainter>
#include <QTest>
#include <QTextStream>
#include <QTimer>
#include <QUrl>

#include <utility>

namespace tour {

namespace {

constexpr int kPauseMs = 40;

void print(const QString& line)
{
    QTextStream(stdout) << line << Qt::endl;
}

QWidget* topLevel(const char* name)
{
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (widget->objectName() == QLatin1String(name))
            return widget;
    }
    return nullptr;
}

} // namespace

Tour::Tour(const QDir& output) : output_(output)
{
    connect(&alertWatch_, &QTimer::timeout, this, &Tour::answerNow);
}

void Tour::start(std::vector<Step> steps)
{
    steps_ = std::move(steps);
    // Without a desktop nobody could open the chart; the tour is who it is opened for.
    QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "rememberUrl");
    next();
}

void Tour::next()
{
    if (current_ == steps_.size()) {
        QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
        topLevel("cwinMainWindow")->close();
        return;
    }
    const Step& step = steps_[current_++];
    shownWindow_ = topLevel("cwinMainWindow");
    alertPicture_ = {};
    alertText_.clear();
    alertWatch_.stop();
    QString seen;
    try {
        seen = step.act(*this);
    } catch (const Failure& failure) {
        print(QStringLiteral("%1: FAILED, %2").arg(step.name, QString::fromUtf8(failure.what())));
        QCoreApplication::exit(1);
        return;
    }
    QTest::qWait(kPauseMs);
    const QString file = QStringLiteral("%1-%2.png").arg(current_, 2, 10, QLatin1Char('0')).arg(step.name);
    const QPixmap picture = alertPicture_.isNull() ? pictureOf(shownWindow_) : alertPicture_;
    if (!picture.save(output_.filePath(file))) {
        print(QStringLiteral("%1: FAILED, cannot write %2").arg(step.name, output_.filePath(file)));
        QCoreApplication::exit(1);
        return;
    }
    print(QStringLiteral("%1: %2 (%3)").arg(step.name, seen, file));
    QTimer::singleShot(kPauseMs, this, &Tour::next);
}

QPixmap Tour::pictureOf(QWidget* window) const
{
    return window->grab();
}

QWidget* Tour::findWidget(const char* name, const QMetaObject& type)
{
    for (QWidget* window : QApplication::topLevelWidgets()) {
        QList<QWidget*> found = window->findChildren<QWidget*>(QLatin1String(name));
        if (window->objectName() == QLatin1String(name))
            found += window;
        for (QWidget* widget : found) {
            if (type.cast(widget))
                return widget;
        }
    }
    throw Failure(std::string("there is no ") + name);
}

void Tour::click(const char* button)
{
    auto* widget = find<QAbstractButton>(button);
    expect(widget->isEnabled() && widget->isVisible(), QStringLiteral("%1 can be clicked").arg(QLatin1String(button)));
    QTest::mouseClick(widget, Qt::LeftButton);
}

void Tour::clickRow(const char* list, const QString& text, int column)
{
    auto* view = find<QAbstractItemView>(list);
    const auto rows = view->model()->match(view->model()->index(0, column), Qt::DisplayRole, text, 1,
                                           Qt::MatchFixedString | Qt::MatchCaseSensitive);
    expect(!rows.isEmpty(), QStringLiteral("\"%1\" is listed").arg(text));
    view->scrollTo(rows.front());
    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, view->visualRect(rows.front()).center());
}

void Tour::type(const char* field, const QString& text)
{
    auto* widget = findWidget(field, QWidget::staticMetaObject);
    widget->setFocus();
    QTest::keyClicks(widget, text);
}

QString Tour::text(const char* label)
{
    return findWidget(label, QWidget::staticMetaObject)->property("text").toString();
}

void Tour::expect(bool holds, const QString& what)
{
    if (!holds)
        throw Failure(QStringLiteral("expected: %1").arg(what).toStdString());
}

void Tour::lookAt(const char* window)
{
    shownWindow_ = topLevel(window);
    expect(shownWindow_ && shownWindow_->isVisible(), QStringLiteral("%1 is open").arg(QLatin1String(window)));
}

void Tour::answerAlert()
{
    alertWatch_.start(kPauseMs);
}

void Tour::waitForAlert()
{
    constexpr int kLongestWaitMs = 10000;
    expect(QTest::qWaitFor([this] { return !alertText_.isEmpty(); }, kLongestWaitMs),
           QStringLiteral("an alert comes up"));
}

void Tour::answerNow()
{
    auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (!box)
        return; // it may come yet; if not, the step's own expectation of the text tells
    alertWatch_.stop();
    alertText_ = box->text();
    alertInformativeText_ = box->informativeText();
    QPixmap picture = pictureOf(topLevel("cwinMainWindow"));
    const QPixmap alert = pictureOf(box);
    QPainter painter(&picture);
    const QPoint corner((picture.width() - alert.width()) / 2, (picture.height() - alert.height()) / 3);
    painter.fillRect(picture.rect(), QColor(0, 0, 0, 70));
    painter.drawPixmap(corner, alert);
    painter.end();
    alertPicture_ = picture;
    QTest::mouseClick(box->buttons().front(), Qt::LeftButton);
}

void Tour::rememberUrl(const QUrl& url)
{
    openedUrl_ = QString::fromLatin1(url.toEncoded());
}

} // namespace tour
