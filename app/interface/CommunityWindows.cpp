#include "app/interface/CommunityWindows.h"

#include "app/interface/Actions.h"
#include "app/interface/RowButton.h"
#include "app/interface/Widgets.h"
#include "community/Listing.h"
#include "platform/qt/ElidedLabel.h"
#include "platform/qt/RecordListView.h"
#include "platform/qt/Text.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QShortcut>
#include <QStackedWidget>
#include <QTableView>
#include <QVBoxLayout>

#include <initializer_list>
#include <vector>

namespace interface {

namespace {

QWidget* makeWindow(const char* name, const QString& title)
{
    auto* window = new QWidget(nullptr, Qt::Window);
    window->setObjectName(QString::fromLatin1(name));
    window->setWindowTitle(title);
    for (const auto keys : {QKeySequence::Cancel, QKeySequence::Close}) {
        auto* close = new QShortcut(keys, window);
        QObject::connect(close, &QShortcut::activated, window, &QWidget::close);
    }
    auto* layout = new QVBoxLayout(window);
    layout->setContentsMargins(12, 12, 12, 12);
    return window;
}

void pressOnReturn(QPushButton* button, std::initializer_list<QLineEdit*> lines)
{
    for (QLineEdit* line : lines)
        QObject::connect(line, &QLineEdit::returnPressed, button, &QPushButton::click);
}

QVBoxLayout* layoutOf(QWidget* window)
{
    return static_cast<QVBoxLayout*>(window->layout());
}

/// A button at the end of what it finishes, no wider than it need be.
QHBoxLayout* atTheEnd(QPushButton* button)
{
    auto* row = new QHBoxLayout;
    row->addStretch(1);
    row->addWidget(button);
    return row;
}

/// Says how far the running downloads are; keeps its place while none runs.
QProgressBar* makeProgressBar()
{
    auto* bar = new QProgressBar;
    bar->setObjectName(QStringLiteral("downloadProgress"));
    QSizePolicy policy = bar->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    bar->setSizePolicy(policy);
    bar->hide();
    return bar;
}

std::vector<platform::qt::RecordColumn> sharedColumns(const std::vector<platform::Record>& entries)
{
    std::vector<platform::qt::RecordColumn> columns;
    for (const auto& [key, title] : community::columnsOf(entries))
        columns.push_back({platform::qt::toQt(title), key});
    return columns;
}

QWidget* makeSharedList()
{
    auto* list =
        makeList("cwinPlistAvailable", "arrayController_downloadList", QObject::tr("Shared for this plug-in"), {});
    list->records().setColumns(sharedColumns);
    list->header()->setDefaultSectionSize(105);
    QObject::connect(&list->records(), &QAbstractItemModel::modelReset, list, [list] {
        list->header()->resizeSection(0, 320); // the comments
    });
    return list;
}

/// The pages of a mapping that is looked at, and what there is to say of it; until there is one, what to do.
QWidget* makePreview()
{
    auto* table = new QTableView;
    table->setObjectName(QStringLiteral("previewTable"));
    table->setAccessibleName(QObject::tr("Pages of the shared mapping"));
    table->setTabKeyNavigation(false);
    table->setWordWrap(false);
    table->setAlternatingRowColors(true);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    table->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    auto* hint = new QLabel;
    hint->setObjectName(QStringLiteral("previewHint"));
    hint->setTextFormat(Qt::PlainText);
    hint->setAlignment(Qt::AlignCenter);
    hint->setWordWrap(true);
    // Like a list that is empty.
    hint->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    hint->setAutoFillBackground(true);
    hint->setBackgroundRole(QPalette::Base);
    hint->setForegroundRole(QPalette::Text);
    auto* content = new QWidget;
    auto* layout = new QVBoxLayout(content);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(makeLabel("previewSummary"));
    layout->addWidget(table, 1);
    auto* preview = new QStackedWidget;
    preview->setObjectName(QStringLiteral("sharedPreview"));
    preview->addWidget(hint);
    preview->addWidget(content);
    return preview;
}

} // namespace

QWidget* makeAccountWindow()
{
    QWidget* window = makeWindow("cwinCloudWindow", QObject::tr("Community Account"));

    auto* logIn = new QGroupBox(QObject::tr("Log in"));
    auto* logInForm = new QFormLayout(logIn);
    auto* userName = makeLine("cwinUserName");
    auto* pin = makeLine("cwinPinCode");
    pin->setEchoMode(QLineEdit::Password);
    auto* attempt = makeButton(Action::named("cwinLoginAttempt"));
    pressOnReturn(attempt, {userName, pin});
    logInForm->addRow(QObject::tr("User name"), userName);
    logInForm->addRow(QObject::tr("PIN"), pin);
    logInForm->addRow(atTheEnd(attempt));

    auto* create = new QGroupBox(QObject::tr("New account"));
    auto* createForm = new QFormLayout(create);
    auto* newUserName = makeLine("cwinUserNameNew");
    newUserName->setAccessibleName(QObject::tr("User name of the new account"));
    auto* email = makeLine("cwinEmailAddrNew");
    auto* request = makeButton(Action::named("cwinNewUserCreate"));
    pressOnReturn(request, {newUserName, email});
    createForm->addRow(QObject::tr("User name"), newUserName);
    createForm->addRow(QObject::tr("E-mail address"), email);
    createForm->addRow(atTheEnd(request));

    window->layout()->addWidget(logIn);
    window->layout()->addWidget(create);
    window->layout()->setSizeConstraint(QLayout::SetMinimumSize);
    window->resize(400, 1); // no lower than its contents
    return window;
}

QWidget* makeUploadWindow()
{
    QWidget* window = makeWindow("cwinUploadWindow", QObject::tr("Share Mapping"));
    window->layout()->addWidget(makeHeading(QObject::tr("Comments for the others")));
    window->layout()->addWidget(makeTextBox("cwinUploadComments", QObject::tr("Comments for the others")));
    auto* upload = makeButton(Action::named("kvCommunityUploadBtn"));
    layoutOf(window)->addLayout(atTheEnd(upload));
    window->resize(420, 260);
    return window;
}

QWidget* makeDownloadWindow()
{
    QWidget* window = makeWindow("cwinDownloadWindow", QObject::tr("Shared Mappings"));
    auto* comments = makeTextBox("cwinUploadedComments", QObject::tr("Comments"));
    comments->setReadOnly(true);
    comments->setMaximumHeight(120);
    window->layout()->addWidget(makeHeading(QObject::tr("Shared for this plug-in")));
    window->layout()->addWidget(makeSharedList());
    window->layout()->addWidget(makeHeading(QObject::tr("Comments")));
    window->layout()->addWidget(comments);
    window->layout()->addWidget(makeHeading(QObject::tr("Preview")));
    window->layout()->addWidget(makePreview());
    auto* load = makeButton(Action::named("kvCommunityLoadSelectedDownload"));
    QHBoxLayout* end = atTheEnd(load);
    end->insertWidget(0, makeProgressBar(), 1);
    end->insertWidget(2, makeButton(Action::named("previewShared")));
    layoutOf(window)->addLayout(end);
    window->resize(820, 640);
    return window;
}

} // namespace interface
