#include "tests/support/WindowTest.h"

#include "platform/qt/Text.h"
#include "tests/support/FreshState.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTest>

namespace test {

using platform::qt::fromQt;
using platform::qt::toQt;

WindowTest::WindowTest(const platform::qt::HttpLimits& limits)
    : system_(kPreferences, {nullptr, &workspace_, nullptr, &log_, nullptr}, limits)
{
    startAnew();
}

WindowTest::~WindowTest()
{
    tearDown();
}

void WindowTest::tearDown()
{
    interface_.reset();
    controller_.reset();
    startAnew();
}

void WindowTest::loadInterface()
{
    tearDown();
    controller_ = std::make_unique<ViewController>(platform());
    interface_ = std::make_unique<interface::Interface>(*controller_);
}

void WindowTest::launch()
{
    loadInterface();
    controller_->viewDidLoad();
    interface_->mainWindow()->show();
    QApplication::processEvents();
}

std::string WindowTest::text(const char* name) const
{
    const auto* widget = find(name);
    const auto* box = qobject_cast<const QPlainTextEdit*>(widget);
    return fromQt(box ? box->toPlainText() : widget->property("text").toString());
}

std::string WindowTest::toolTip(const char* name) const
{
    return fromQt(find<QWidget>(name)->toolTip());
}

bool WindowTest::isEnabled(const char* name) const
{
    return find<QWidget>(name)->isEnabled();
}

void WindowTest::click(const char* button)
{
    auto* widget = find<QAbstractButton>(button);
    ASSERT_TRUE(widget->isEnabled()) << button;
    QTest::mouseClick(widget, Qt::LeftButton);
}

void WindowTest::pressPot(int number)
{
    click(("kvRotaryBtn" + std::to_string(number)).c_str());
}

std::string WindowTest::potLabel(int number) const
{
    return text(("kvControl" + std::to_string(number)).c_str());
}

std::vector<std::string> WindowTest::potLabels() const
{
    std::vector<std::string> labels;
    for (int number = 1; number <= 8; ++number)
        labels.push_back(potLabel(number));
    return labels;
}

std::vector<std::string> WindowTest::columnOf(const char* list, int column) const
{
    const QAbstractItemModel* model = find<QAbstractItemView>(list)->model();
    std::vector<std::string> texts;
    for (int row = 0; row < model->rowCount(); ++row)
        texts.push_back(fromQt(model->index(row, column).data().toString()));
    return texts;
}

void WindowTest::clickRow(const char* list, const std::string& text, int column)
{
    auto* view = find<QAbstractItemView>(list);
    const auto rows = view->model()->match(view->model()->index(0, column), Qt::DisplayRole, toQt(text), 1,
                                           Qt::MatchFixedString | Qt::MatchCaseSensitive);
    ASSERT_FALSE(rows.isEmpty()) << text << " is not in " << list;
    view->scrollTo(rows.front());
    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, view->visualRect(rows.front()).center());
}

void WindowTest::letKeysRest()
{
    EXPECT_TRUE(waitUntil(
        [this] { return selectedRow("pluginTableView") == controller().myArrayController()->selectionIndex(); }));
}

std::int32_t WindowTest::selectedRow(const char* list) const
{
    const QModelIndexList rows = find<QAbstractItemView>(list)->selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.front().row();
}

void WindowTest::typeInto(const char* field, const std::string& text)
{
    auto* widget = find<QWidget>(field);
    widget->setFocus();
    QTest::keyClicks(widget, toQt(text));
}

void WindowTest::fill(const char* field, const std::string& text)
{
    if (auto* box = qobject_cast<QPlainTextEdit*>(find(field)))
        box->setPlainText(toQt(text));
    else
        find<QLineEdit>(field)->setText(toQt(text));
}

std::vector<ShownAlert> WindowTest::alertsOf(const std::function<void()>& action,
                                             const std::vector<std::string>& presses)
{
    const AlertAnswers answers(presses);
    action();
    return answers.shown();
}

std::string WindowTest::logText() const
{
    std::string text;
    for (const std::string& line : log_.lines)
        text += line + '\n';
    return text;
}

} // namespace test
