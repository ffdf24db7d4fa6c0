#include "platform/qt/SystemEffects.h"

#include "platform/files/FileUrl.h"
#include "platform/qt/CompletionGate.h"
#include "platform/qt/LongText.h"
#include "platform/qt/RecordSort.h"
#include "platform/qt/Text.h"

#include <QApplication>
#include <QClipboard>
#include <QDesktopServices>
#include <QDir>
#include <QGridLayout>
#include <QLabel>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QScopeGuard>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QSysInfo>
#include <QTextDocument>
#include <QUrl>

#include <curl/curl.h>

#include <algorithm>
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

constexpr int kWidth = 520;

/// Puts something else where a text stands.
void replace(const QMessageBox& box, QLabel* text, QWidget* by)
{
    auto* grid = static_cast<QGridLayout*>(box.layout());
    int row = 0, column = 0, rows = 0, columns = 0;
    grid->getItemPosition(grid->indexOf(text), &row, &column, &rows, &columns);
    grid->removeWidget(text);
    grid->addWidget(by, row, column, rows, columns);
}

/// The system's own alert knows neither a field nor a text that scrolls, and Qt may take the markup out of what it
/// hands over. For the whole application, since a single box has such an option only since Qt 6.6.
void keepOurOwn()
{
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
}

/// The field with a text that would take a label minutes to lay out. The label keeps the text, which is the box's.
void showInField(QMessageBox& box, QLabel* text)
{
    keepOurOwn();
    auto* field = new LongTextField;
    field->setAccessibleName(QObject::tr("Text of the message"));
    field->setReadOnly(true);
    field->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    field->setTabChangesFocus(true);
    field->setMinimumSize(kWidth, std::min(320, box.screen()->availableGeometry().height() / 3));
    field->showText(text->text());
    replace(box, text, field);
    text->hide();
}

/// A text that is higher than the screen would take the buttons with it, and a line that cannot be broken would be cut.
void letScroll(QMessageBox& box, QLabel* text)
{
    const int screen = box.screen()->availableGeometry().height();
    const int highest = std::min(screen * 2 / 3, screen - 200);
    const int height = text->heightForWidth(kWidth);
    const int width = text->minimumSizeHint().width();
    if (height <= highest && width <= kWidth)
        return;
    keepOurOwn();
    auto* scroll = new QScrollArea;
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    const int bar = scroll->horizontalScrollBar()->sizeHint().height();
    scroll->setMinimumSize(kWidth + bar, std::min(highest, height + bar));
    text->setMinimumWidth(width); // or the box would have it as wide as it likes to be
    replace(box, text, scroll);
    scroll->setWidget(text);
}

/// Keeps the alert on the screen, whatever a server has to say.
void makeRoomForLongTexts(QMessageBox& box)
{
    for (const char* name : {"qt_msgbox_label", "qt_msgbox_informativelabel"}) {
        auto* text = box.findChild<QLabel*>(QLatin1String(name));
        if (!text)
            continue;
        if (isLong(text->text()) || hasSlowWord(text->text())) {
            showInField(box, text);
        } else if (text->wordWrap()) {
            letScroll(box, text);
        }
    }
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
    const bool isUsuallyOurOwn = QCoreApplication::testAttribute(Qt::AA_DontUseNativeDialogs);
    const auto restore =
        qScopeGuard([=] { QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs, isUsuallyOurOwn); });
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
    box.setTextInteractionFlags(Qt::TextSelectableByMouse); // a reply may hold what is needed later
    makeRoomForLongTexts(box);
    if (Qt::mightBeRichText(box.text()) || Qt::mightBeRichText(box.informativeText()))
        keepOurOwn();
    box.exec();
    const auto pressed = buttons.indexOf(box.clickedButton()); // none when the program is to end
    return kFirstButton + static_cast<int>(pressed < 0 ? buttons.size() - 1 : pressed);
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
    return std::filesystem::absolute(environmentOr("KV_LOCAL_LIBRARY", "/Library")) / "Application Support";
}

std::filesystem::path UserFolders::userApplicationSupport() const
{
#ifdef Q_OS_MACOS
    return home() / "Library/Application Support";
#else
    const std::filesystem::path data = environmentOr("XDG_DATA_HOME", "");
    return data.is_absolute() ? data : home() / ".local/share";
#endif
}

std::filesystem::path UserFolders::drafts() const
{
#ifdef Q_OS_MACOS
    return home() / "Library/Autosave Information" / KV_BUNDLE_IDENTIFIER;
#else
    const std::filesystem::path state = environmentOr("XDG_STATE_HOME", "");
    const auto name = fromQt(QCoreApplication::applicationName());
    return (state.is_absolute() ? state : home() / ".local/state") / name / "drafts";
#endif
}

std::filesystem::path UserFolders::resources() const
{
    const auto folder = QFile::encodeName(QCoreApplication::applicationDirPath()).toStdString();
    return (std::filesystem::path(folder) / ".." / KV_RESOURCES_FOLDER).lexically_normal();
}

std::string TranslatedTexts::localizedString(const std::string& english) const
{
    return fromQt(QCoreApplication::translate("Localizable", english.c_str()));
}

std::string TranslatedTexts::folded(std::string_view text) const
{
    return fromQt(foldedForSearch(toQt(text)));
}

std::string SystemSurroundings::system() const
{
    return fromQt(QSysInfo::prettyProductName() + QStringLiteral(", ") + QSysInfo::currentCpuArchitecture());
}

std::vector<std::string> SystemSurroundings::libraries() const
{
    return {std::string("Qt ") + qVersion(), std::string("libcurl ") + ::curl_version_info(CURLVERSION_NOW)->version};
}

void SystemClipboard::set(const std::string& own, const std::string& text)
{
    auto* content = new QMimeData;
    content->setData(QLatin1String(kOwnType), QByteArray::fromStdString(own));
    content->setText(toQt(text));
    QGuiApplication::clipboard()->setMimeData(content);
}

bool SystemClipboard::holdsOwn() const
{
    const QMimeData* content = QGuiApplication::clipboard()->mimeData();
    return content && content->hasFormat(QLatin1String(kOwnType));
}

std::string SystemClipboard::own() const
{
    const QMimeData* content = QGuiApplication::clipboard()->mimeData();
    return content ? content->data(QLatin1String(kOwnType)).toStdString() : std::string();
}

} // namespace platform::qt
