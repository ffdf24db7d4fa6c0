#include "tools/tour/Tour.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QDesktopServices>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
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

/// A window with what is open over it at a place of its own, behind which it is darker when that is modal.
QPixmap pictureWith(QWidget& window, QWidget& above, QPoint corner, bool isModal)
{
    QPixmap picture = window.grab();
    QPainter painter(&picture);
    if (isModal)
        painter.fillRect(picture.rect(), QColor(0, 0, 0, 70));
    painter.drawPixmap(corner, above.grab());
    return picture;
}

QPixmap pictureWithDialog(QWidget& dialog)
{
    QWidget* window = topLevel("cwinMainWindow");
    const QPoint corner((window->width() - dialog.width()) / 2, (window->height() - dialog.height()) / 3);
    return pictureWith(*window, dialog, corner, true);
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
    alertAlone_ = {};
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
    QPixmap picture = alertPicture_.isNull() ? shownWindow_->grab() : alertPicture_;
    QRect menuRect;
    if (QMenu* menu = openMenu()) {
        menuRect = QRect(shownWindow_->mapFromGlobal(menu->pos()), menu->size());
        picture = pictureWith(*shownWindow_, *menu, shownWindow_->mapFromGlobal(menu->pos()), false);
        menu->close();
    }
    bool isWritten = picture.save(output_.filePath(file));
    for (const Excerpt& excerpt : step.excerpts) {
        constexpr int kAsSmallAsItGets = 0;
        const QString excerptFile = output_.filePath(QStringLiteral("guide/%1.png").arg(excerpt.name));
        isWritten = isWritten && output_.mkpath(QStringLiteral("guide")) &&
                    cutOut(excerpt, picture, menuRect).save(excerptFile, nullptr, kAsSmallAsItGets);
    }
    if (!isWritten) {
        print(QStringLiteral("%1: FAILED, cannot write %2").arg(step.name, output_.filePath(file)));
        QCoreApplication::exit(1);
        return;
    }
    print(QStringLiteral("%1: %2 (%3)").arg(step.name, seen, file));
    QTimer::singleShot(kPauseMs, this, &Tour::next);
}

QMenu* Tour::openMenu() const
{
    return qobject_cast<QMenu*>(QApplication::activePopupWidget());
}

QImage Tour::cutOut(const Excerpt& excerpt, const QPixmap& picture, const QRect& menu)
{
    QPixmap cut = alertAlone_;
    if (!excerpt.widgets.empty()) {
        constexpr int kMargin = 3;
        QRect rect = menu;
        for (const char* name : excerpt.widgets) {
            const QWidget* widget = findWidget(name, QWidget::staticMetaObject);
            rect |= QRect(widget->mapTo(shownWindow_, QPoint()), widget->size());
        }
        if (excerpt.height > 0)
            rect.setHeight(excerpt.height);
        cut = picture.copy(rect.adjusted(-kMargin, -kMargin, kMargin, kMargin) & picture.rect());
    }
    return cut.toImage().convertToFormat(QImage::Format_RGB555, Qt::AvoidDither);
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

void Tour::clickRow(const char* list, const QString& text, int column, Qt::KeyboardModifiers keys)
{
    auto* view = find<QAbstractItemView>(list);
    const auto rows = view->model()->match(view->model()->index(0, column), Qt::DisplayRole, text, 1,
                                           Qt::MatchFixedString | Qt::MatchCaseSensitive);
    expect(!rows.isEmpty(), QStringLiteral("\"%1\" is listed").arg(text));
    view->scrollTo(rows.front());
    QTest::mouseClick(view->viewport(), Qt::LeftButton, keys, view->visualRect(rows.front()).center());
}

void Tour::clickPage(int number)
{
    auto* strip = find<QAbstractItemView>("pageOverview");
    const QModelIndex page = strip->model()->index(number - 1, 0);
    expect(page.isValid(), QStringLiteral("there is a page %1").arg(number));
    strip->scrollTo(page);
    QTest::mouseClick(strip->viewport(), Qt::LeftButton, Qt::NoModifier, strip->visualRect(page).center());
}

void Tour::type(const char* field, const QString& text)
{
    auto* widget = findWidget(field, QWidget::staticMetaObject);
    widget->setFocus();
    QTest::keyClicks(widget, text);
}

void Tour::press(const char* widget, Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    auto* focused = findWidget(widget, QWidget::staticMetaObject);
    // No key reaches a menu's item while the active window is another one, such as a menu that was open.
    focused->activateWindow();
    waitUntil([focused] { return focused->isActiveWindow(); }, QStringLiteral("the window is the active one"));
    focused->setFocus();
    QTest::keyClick(focused, key, modifiers);
}

void Tour::openContextMenu(const char* widget)
{
    auto* over = findWidget(widget, QWidget::staticMetaObject);
    const QPoint at = over->rect().center();
    QContextMenuEvent event(QContextMenuEvent::Mouse, at, over->mapToGlobal(at));
    QApplication::sendEvent(over, &event);
    expect(openMenu(), QStringLiteral("%1 has a context menu").arg(QLatin1String(widget)));
}

void Tour::choose(const char* item)
{
    QMenu* menu = openMenu();
    expect(menu, QStringLiteral("a menu is open"));
    for (QAction* action : menu->actions()) {
        if (action->objectName() != QLatin1String(item))
            continue;
        expect(action->isEnabled(), QStringLiteral("%1 can be chosen").arg(QLatin1String(item)));
        QTest::mouseClick(menu, Qt::LeftButton, Qt::NoModifier, menu->actionGeometry(action).center());
        return;
    }
    throw Failure(std::string("the menu has no ") + item);
}

void Tour::chooseFromMenuBar(const char* item)
{
    auto* bar = find<QMenuBar>("menuBar");
    const auto* action = topLevel("cwinMainWindow")->findChild<QAction*>(QLatin1String(item));
    expect(action, QStringLiteral("there is %1").arg(QLatin1String(item)));
    QAction* menu = qobject_cast<QMenu*>(action->parent())->menuAction();
    QTest::mouseClick(bar, Qt::LeftButton, Qt::NoModifier, bar->actionGeometry(menu).center());
    choose(item);
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

void Tour::waitUntil(const std::function<bool()>& holds, const QString& what)
{
    constexpr int kLongestWaitMs = 10000;
    expect(QTest::qWaitFor(holds, kLongestWaitMs), what);
}

void Tour::waitForAlert()
{
    waitUntil([this] { return !alertText_.isEmpty(); }, QStringLiteral("an alert comes up"));
}

QString Tour::answerSaveDialog(const QString& name)
{
    savePath_ = output_.absoluteFilePath(name);
    alertWatch_.start(kPauseMs);
    return savePath_;
}

void Tour::answerNow()
{
    // It may come yet; if not, the step's own expectation tells.
    QWidget* modal = QApplication::activeModalWidget();
    if (auto* box = qobject_cast<QMessageBox*>(modal))
        answer(*box);
    else if (auto* dialog = qobject_cast<QFileDialog*>(modal))
        answer(*dialog);
}

void Tour::answer(QMessageBox& box)
{
    alertWatch_.stop();
    alertText_ = box.text();
    alertInformativeText_ = box.informativeText();
    alertPicture_ = pictureWithDialog(box);
    alertAlone_ = box.grab();
    QTest::mouseClick(box.buttons().front(), Qt::LeftButton);
}

void Tour::answer(QFileDialog& dialog)
{
    alertWatch_.stop();
    auto* name = dialog.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    name->setText(savePath_);
    alertPicture_ = pictureWithDialog(dialog);
    QTest::keyClick(name, Qt::Key_Return);
}

void Tour::rememberUrl(const QUrl& url)
{
    openedUrl_ = QString::fromLatin1(url.toEncoded());
}

} // namespace tour
