#include "app/interface/CommunityWindows.h"

#include "app/interface/Widgets.h"
#include "platform/qt/ElidedLabel.h"
#include "platform/qt/RecordListView.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QShortcut>
#include <QVBoxLayout>

#include <initializer_list>

namespace interface {

namespace {

QWidget* makeWindow(const char* name, const QString& title)
{
    auto* window = new QWidget(nullptr, Qt::Window);
    window->setObjectName(QString::fromLatin1(name));
    window->setWindowTitle(title);
    auto* close = new QShortcut(QKeySequence::Cancel, window);
    QObject::connect(close, &QShortcut::activated, window, &QWidget::close);
    new QVBoxLayout(window);
    return window;
}

void pressOnReturn(QPushButton* button, std::initializer_list<QLineEdit*> lines)
{
    for (QLineEdit* line : lines)
        QObject::connect(line, &QLineEdit::returnPressed, button, &QPushButton::click);
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

} // namespace

QWidget* makeAccountWindow()
{
    QWidget* window = makeWindow("cwinCloudWindow", QObject::tr("Community Account"));

    auto* logIn = new QGroupBox(QObject::tr("Log in"));
    auto* logInForm = new QFormLayout(logIn);
    auto* userName = makeLine("cwinUserName");
    auto* pin = makeLine("cwinPinCode");
    pin->setEchoMode(QLineEdit::Password);
    auto* attempt = makeButton("cwinLoginAttempt", QObject::tr("Log In"), QObject::tr("Log in with this PIN"));
    pressOnReturn(attempt, {userName, pin});
    logInForm->addRow(QObject::tr("User name"), userName);
    logInForm->addRow(QObject::tr("PIN"), pin);
    logInForm->addRow(attempt);

    auto* create = new QGroupBox(QObject::tr("New account"));
    auto* createForm = new QFormLayout(create);
    auto* newUserName = makeLine("cwinUserNameNew");
    auto* email = makeLine("cwinEmailAddrNew");
    auto* request = makeButton("cwinNewUserCreate", QObject::tr("Create Account"),
                               QObject::tr("Ask the community library for an account"));
    pressOnReturn(request, {newUserName, email});
    createForm->addRow(QObject::tr("User name"), newUserName);
    createForm->addRow(QObject::tr("E-mail address"), email);
    createForm->addRow(request);

    window->layout()->addWidget(logIn);
    window->layout()->addWidget(create);
    window->resize(380, 300);
    return window;
}

QWidget* makeUploadWindow()
{
    QWidget* window = makeWindow("cwinUploadWindow", QObject::tr("Share Mapping"));
    window->layout()->addWidget(makeHeading(QObject::tr("Comments for the others")));
    window->layout()->addWidget(makeTextBox("cwinUploadComments"));
    window->layout()->addWidget(makeButton("kvCommunityUploadBtn", QObject::tr("Upload"),
                                           QObject::tr("Send the mapping as last saved, with these comments")));
    window->resize(420, 260);
    return window;
}

QWidget* makeDownloadWindow()
{
    QWidget* window = makeWindow("cwinDownloadWindow", QObject::tr("Shared Mappings"));
    auto* comments = makeTextBox("cwinUploadedComments");
    comments->setReadOnly(true);
    comments->setMaximumHeight(120);
    window->layout()->addWidget(makeHeading(QObject::tr("Shared for this plugin")));
    window->layout()->addWidget(makeList("cwinPlistAvailable"));
    window->layout()->addWidget(makeHeading(QObject::tr("Comments")));
    window->layout()->addWidget(comments);
    window->layout()->addWidget(makeProgressBar());
    window->layout()->addWidget(makeButton("kvCommunityLoadSelectedDownload", QObject::tr("Load"),
                                           QObject::tr("Fetch the selected mapping and load it into the editor")));
    window->resize(720, 460);
    return window;
}

} // namespace interface
