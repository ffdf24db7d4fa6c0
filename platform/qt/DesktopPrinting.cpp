#include "platform/qt/DesktopPrinting.h"

#include "platform/qt/CompletionGate.h"
#include "platform/qt/TablePrinting.h"
#include "platform/qt/Text.h"

#include <QApplication>
#include <QFile>
#include <QFileDialog>
#include <QStandardPaths>

namespace platform::qt {

bool DesktopPrinting::print(const PrintedTable& table)
{
    const CompletionGate::Hold hold(gate_);
    return printTable(table, QApplication::activeWindow());
}

std::string DesktopPrinting::pdf(const PrintedTable& table)
{
    return tablePdf(table);
}

std::optional<std::filesystem::path> DesktopPrinting::whereToSave(const std::string& proposedName)
{
    const CompletionGate::Hold hold(gate_);
    QFileDialog dialog(QApplication::activeWindow());
    dialog.setObjectName(QStringLiteral("saveDialog"));
    dialog.setWindowModality(Qt::WindowModal);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(QStringLiteral("pdf"));
    dialog.setNameFilter(QObject::tr("PDF documents (*.pdf)"));
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    dialog.setDirectory(QFile::exists(documents) ? documents : QDir::homePath());
    dialog.selectFile(toQt(proposedName));
    if (dialog.exec() != QDialog::Accepted)
        return std::nullopt;
    return QFile::encodeName(dialog.selectedFiles().front()).toStdString();
}

} // namespace platform::qt
