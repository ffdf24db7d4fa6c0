// What a server can send that is long: a text of any kind in an alert and in the comments field, and a listing.

#include "bench/Figure.h"
#include "bench/LoadedWindow.h"
#include "platform/qt/CompletionGate.h"
#include "platform/qt/SystemEffects.h"
#include "platform/qt/Text.h"
#include "tests/support/LongTexts.h"
#include "tests/support/ScriptedPeer.h"
#include "tests/support/TestBaseUrl.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QTimer>

#include <memory>
#include <stdexcept>

namespace bench {

namespace {

constexpr char kPlugin[] = "Small Filter";
constexpr std::size_t kLongestListing = std::size_t{32} << 20;
constexpr int kEntries = 100'000;

double halfASecond()
{
    return 500;
}

/// A window with a plug-in chosen.
struct Community {
    Community()
    {
        home.writePlugin(kPlugin, 4);
        window = std::make_unique<LoadedWindow>(home);
        window->choose(kPlugin);
    }

    Home home;
    std::unique_ptr<LoadedWindow> window;
};

/// An alert with the text, until it is painted and closed again.
double alertWith(const std::string& text)
{
    platform::qt::CompletionGate gate;
    platform::qt::MessageBoxAlerts alerts(gate);
    return millisecondsOf([&] {
        QTimer::singleShot(0, qApp, [] {
            LoadedWindow::settle();
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (!box)
                throw std::runtime_error("there is no alert");
            box->grab(); // painted for certain
            box->buttons().front()->click();
        });
        alerts.runModal({"Reply", text, {"OK"}, platform::Alert::Style::warning});
    });
}

/// The text in the comments field and a short one after it, each until it is painted.
double commentsWith(Community& community, const std::string& text)
{
    const auto comments = community.window->controller().cwinUploadedComments();
    auto* window = community.window->find<QWidget>("cwinDownloadWindow");
    return millisecondsOf([&] {
        for (const std::string& one : {text, std::string("short")}) {
            comments->stringValue.set(one);
            LoadedWindow::settle();
            window->grab(); // painted for certain
        }
    });
}

/// As long as one may be, and with as many entries.
std::string listing()
{
    std::string text = "[";
    for (int entry = 1; entry <= kEntries; ++entry) {
        const std::string number = std::to_string(entry);
        const std::size_t end = kLongestListing / kEntries * static_cast<std::size_t>(entry);
        text += R"({"patchID": )" + number + R"(, "fileLocation": "files/)" + number +
                R"(.plist", "user_name": "someone", "userComments": ")";
        text.append(end - text.size() - 4, 'x');
        text += entry < kEntries ? "\"}, " : "\"}]";
    }
    return text;
}

struct Listing : Community {
    Listing() { test::setBaseUrl(peer.url()); }

    /// From the press of the button until the window with all entries is painted; what the server does is counted, too.
    double open()
    {
        peer.play(bytes);
        const double time = millisecondsOf([this] {
            window->controller().kvCommunityLibraryDownload();
            LoadedWindow::settle();
            window->find<QWidget>("cwinDownloadWindow")->grab();
        });
        if (window->controller().arrayController_downloadList()->arrangedCount() != kEntries)
            throw std::runtime_error("the listing is not shown");
        return time;
    }

    const std::string bytes = test::reply(listing());
    test::ScriptedPeer peer;
};

} // namespace

void addCommunityFigures()
{
    for (const test::LongText& one : test::longTexts()) {
        const std::string text = platform::qt::fromQt(one.text);
        add(Figure{std::string("alert with 1 MB, ") + one.kind, "half a second", 1, 2,
                   [text] { return std::pair(Measure([text] { return alertWith(text); }), Measure(halfASecond)); }});
        add(Figure{std::string("comments of 1 MB, ") + one.kind, "half a second", 1, 2, [text] {
                       const auto community = std::make_shared<Community>();
                       community->window->find<QWidget>("cwinDownloadWindow")->show();
                       LoadedWindow::settle();
                       return std::pair(Measure([=] { return commentsWith(*community, text); }), Measure(halfASecond));
                   }});
    }
    add(Figure{"listing of 32 MiB, 100,000 entries", "half a second", 2, 5, [] {
                   const auto listing = std::make_shared<Listing>();
                   return std::pair(Measure([=] { return listing->open(); }), Measure(halfASecond));
               }});
}

} // namespace bench
