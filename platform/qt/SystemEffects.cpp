#include "platform/qt/SystemEffects.h"

#include "platform/FileUrl.h"
#include "platform/qt/CompletionGate.h"
#include "platform/qt/Text.h"

#include <QApplication>
#include <QDesktopServices>
#include <QDir>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QUrl>

#include <cstdlib>

namespace platform::qt {

namespace {

QMessageBox::Icon iconFor(Alert::Style style)
{
    switch (style) {
    case Alert::Style::informational: return QMessageBox::Information;
    case Alert::Style::critical: return QMessageBox::Critical;
    case Alert::Style::warning: break;
    }
    return QMessageBox::Warning;
}

const char* environmentOr(const char* name, const char* otherwise)
{
    const char* value = std::getenv(name);
    return value && *value ? value : otherwise;
}

} // namespace

int MessageBoxAlerts::runModal(const Alert& alert)
{
    const CompletionGate::Hold hold(gate_);
    QMessageBox box(QApplication::activeWindow());
    box.setWindowModality(Qt::ApplicationModal);
    box.setWindowTitle(QApplication::applicationDisplayName());
    box.setIcon(iconFor(alert.style));
    box.setText(toQt(alert.messageText));
    box.setInformativeText(toQt(alert.informativeText));
    QList<QAbstractButton*> buttons;
    for (const std::string& title : alert.buttons)
        buttons += box.addButton(toQt(title), QMessageBox::AcceptRole);
    if (!buttons.isEmpty()) {
        box.setDefaultButton(qobject_cast<QPushButton*>(buttons.front()));
        box.setEscapeButton(buttons.back());
    }
    // The box formats its message only; the informative text has a label of its own.
    box.setTextFormat(Qt::PlainText);
    for (QLabel* label : box.findChildren<QLabel*>())
        label->setTextFormat(Qt::PlainText);
    box.exec();
    return kFirstButton + static_cast<int>(buttons.indexOf(box.clickedButton()));
}

void DesktopWorkspace::openFile(const std::filesystem::path& path)
{
    QDesktopServices::openUrl(QUrl::fromEncoded(QByteArray::fromStdString(fileUrl(path)), QUrl::StrictMode));
}

std::filesystem::path UserFolders::home() const
{
    if (const char* home = environmentOr("HOME", nullptr))
        return home;
    return QFile::encodeName(QDir::homePath()).toStdString();
}

std::filesystem::path UserFolders::localApplicationSupport() const
{
    return std::filesystem::path(environmentOr("KV_LOCAL_LIBRARY", "/Library")) / "Application Support";
}

} // namespace platform::qt
