// What becomes of a file that the desktop is asked to open.

#include "platform/files/FileUrl.h"
#include "platform/qt/SystemEffects.h"

#include <gtest/gtest.h>

#include <QDesktopServices>
#include <QObject>
#include <QUrl>

#include <utility>
#include <vector>

namespace test {

class OpenedUrl final : public QObject {
    Q_OBJECT

public:
    OpenedUrl() { QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "remember"); }
    ~OpenedUrl() override { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }

    std::vector<QUrl> urls;

public Q_SLOTS:
    void remember(const QUrl& url) { urls.push_back(url); }
};

TEST(DesktopWorkspace, APathBecomesAFileUrlThatNamesIt)
{
    const std::pair<const char*, const char*> cases[] = {
        {"/tmp/plain.html", "file:///tmp/plain.html"},
        {"/a b/it's \"q\".html", "file:///a%20b/it%27s%20%22q%22.html"},
        {"/50%20#1?.html", "file:///50%2520%231%3F.html"},
        {"/\u00c9cho/\U0001f30a.html", "file:///%C3%89cho/%F0%9F%8C%8A.html"},
        {"/a;b:c&d=e+f.html", "file:///a%3Bb%3Ac%26d%3De%2Bf.html"},
    };
    OpenedUrl opened;
    platform::qt::DesktopWorkspace workspace;
    for (const auto& [path, url] : cases) {
        opened.urls.clear();
        workspace.openFile(path);
        ASSERT_EQ(opened.urls.size(), 1U) << path;
        EXPECT_EQ(platform::fileUrl(path), url);
        EXPECT_EQ(opened.urls[0].toLocalFile().toStdString(), path);
    }
}

#ifndef Q_OS_MACOS // where it is done by a program of the system's
TEST(DesktopWorkspace, AFileIsShownByItsFolder)
{
    OpenedUrl opened;
    platform::qt::DesktopWorkspace().revealFile("/a b/50% #1/CSParameterOrder.plist");
    ASSERT_EQ(opened.urls.size(), 1U);
    EXPECT_EQ(opened.urls[0].toLocalFile().toStdString(), "/a b/50% #1");
}
#endif

} // namespace test

#include "DesktopWorkspaceTest.moc"
