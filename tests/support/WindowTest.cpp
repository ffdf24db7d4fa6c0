#include "tests/support/WindowTest.h"

#include "platform/qt/Text.h"
#include "tests/support/FreshState.h"

#include <QAbstractButton>
#include <QTest>

#include <fcntl.h>
#include <unistd.h>

namespace test {

using platform::qt::fromQt;
using platform::qt::toQt;

void PrintTo(const SeenAlert& alert, std::ostream* stream)
{
    *stream << "\"" << alert.message << "\" / \"" << alert.informative << "\"";
    for (const std::string& button : alert.buttons)
        *stream << " [" << button << "]";
}

WindowTest::WindowTest()
{
    ::setenv("HOME", (home_ / "home").c_str(), 1);
    ::setenv("KV_LOCAL_LIBRARY", (home_ / "Library").c_str(), 1);
    ::setenv("XDG_CONFIG_HOME", (home_ / "config").c_str(), 1);
    ::setenv("XDG_DATA_HOME", (home_ / "data").c_str(), 1);
    logDescriptor_ = ::open(logFile_.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    log_ = std::make_unique<platform::StreamLog>(logDescriptor_);
    platform_ = std::make_unique<platform::Platform>(platform::Platform{
        alerts_, workspace_, folders_, *log_, http_, preferences_, json_, errors_, localization_, undoManagers_});
}

WindowTest::~WindowTest()
{
    tearDown();
    log_.reset();
    ::close(logDescriptor_);
}

void WindowTest::tearDown()
{
    interface_.reset();
    controller_.reset();
    startAnew();
}

Path WindowTest::builtIn(const std::string& plugin) const
{
    return home_ / "Library/Application Support/Logic/Plug-In Settings" / plugin / "CSParameterOrder.plist";
}

Path WindowTest::thirdParty(const std::string& maker, const std::string& plugin) const
{
    return home_ / "home/Library/Audio/Presets" / maker / plugin / "CSParameterOrder.plist";
}

void WindowTest::launch()
{
    tearDown();
    controller_ = std::make_unique<ViewController>(*platform_);
    interface_ = std::make_unique<interface::Interface>(*controller_);
    controller_->viewDidLoad();
    interface_->mainWindow()->show();
    QApplication::processEvents();
}

std::string WindowTest::text(const char* name) const
{
    return fromQt(find<QWidget>(name)->property("text").toString());
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

std::vector<SeenAlert> WindowTest::alertsOf(const std::function<void()>& action,
                                            const std::vector<std::string>& presses)
{
    std::vector<SeenAlert> seen;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &poll, [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box)
            return;
        SeenAlert alert{fromQt(box->text()), fromQt(box->informativeText()), {}};
        QAbstractButton* pressed = box->buttons().front();
        for (QAbstractButton* button : box->buttons()) {
            alert.buttons.push_back(fromQt(button->text()));
            if (seen.size() < presses.size() && alert.buttons.back() == presses[seen.size()])
                pressed = button;
        }
        seen.push_back(std::move(alert));
        QTest::mouseClick(pressed, Qt::LeftButton);
    });
    poll.start(5);
    action();
    return seen;
}

std::string WindowTest::logText()
{
    log_->flush();
    return read(logFile_);
}

} // namespace test
