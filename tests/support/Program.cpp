#include "tests/support/Program.h"

#include "tests/support/FreshState.h"

#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QTreeView>

#include <algorithm>
#include <iterator>

namespace support {

std::vector<std::string> RecordedLog::linesWith(std::string_view beginning) const
{
    std::vector<std::string> found;
    std::copy_if(lines.begin(), lines.end(), std::back_inserter(found),
                 [&](const std::string& line) { return line.starts_with(beginning); });
    return found;
}

Program::Program(platform::qt::HttpLimits limits) : http(gate, {}, limits)
{
    test::startAnew();
}

void Program::start()
{
    controller.viewDidLoad();
    windows.mainWindow()->show();
}

void Program::click(const char* button)
{
    QTest::mouseClick(windows.find<QPushButton>(button), Qt::LeftButton);
}

void Program::choosePlugin(int row)
{
    auto* view = windows.find<QTreeView>("pluginTableView");
    const QModelIndex index = view->model()->index(row, 0);
    view->scrollTo(index);
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->visualRect(index).center());
}

std::string Program::text(const char* label) const
{
    if (auto* box = windows.find<QPlainTextEdit>(label))
        return box->toPlainText().toStdString();
    return windows.find<QLabel>(label)->text().toStdString();
}

void Program::type(const char* field, const char* text)
{
    if (auto* box = windows.find<QPlainTextEdit>(field))
        box->setPlainText(QString::fromUtf8(text));
    else
        windows.find<QLineEdit>(field)->setText(QString::fromUtf8(text));
}

} // namespace support
