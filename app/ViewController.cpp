#include "app/ViewController.h"

#include "platform/files/Files.h"

#include <utility>

ViewController::ViewController(platform::Platform& platform)
    : platform_(platform), history_(platform.undoManagers.make()), drafts_(platform.folders.drafts())
{}

void ViewController::viewDidLoad()
{
    btnRunCheck();
    readPrefsFile();
}

void ViewController::setRepresentedObject(std::any object)
{
    ViewControllerBase::setRepresentedObject(std::move(object));
}

void ViewController::alertUserAndSub(const std::string& messageText, const std::string& informativeText)
{
    platform_.alerts.runModal({messageText, informativeText, {"OK"}, platform::Alert::Style::warning});
}

void ViewController::closeAllAuxillaryWindows()
{
    for (const auto& window : {cwinUploadWindow(), cwinDownloadWindow(), cwinCloudWindow()})
        window->close();
}

void ViewController::kvHelpMe(Sender)
{
    alertUserAndSub(
        "Brief instructions on use",
        "1. Begin by pressing the 'Scan for plugins' button to locate available plugins on your system (Please note "
        "that third party plugins require a 'default' setting to be saved before they appear).\n\n"
        "2. Select a plugin from the newly populated list that you would like to edit the mapping - once a plugin is "
        "selected, the available parameters shall be displayed, and current mapping displayed on the controls located "
        "in the lower view.\n\n"
        "3. Select a Parameter you would like to map from the Plugin Parameters list (Search can be used to find "
        "specific parameters)\n\n"
        "4. Once a parameter is selected, click any control from the on-screen Orvanta front panel.\n\n"
        "5. Parameter is now mapped to that control\n\n"
        "6. When all mapping has been completed press 'Save Mapping' button, backups will be automatically made.\n\n"
        "\n\n"
        "More in depth help to come later");
}

void ViewController::userGuide(Sender)
{
    platform_.workspace.openFile(userGuidePath());
}

bool ViewController::hasUserGuide() const
{
    return platform::files::exists(userGuidePath());
}

std::filesystem::path ViewController::userGuidePath() const
{
    return platform_.folders.resources() / "guide/index.html";
}

void ViewController::about(Sender)
{
    std::string libraries;
    for (const std::string& library : platform_.surroundings.libraries())
        libraries += (libraries.empty() ? "" : ", ") + library;
    platform_.alerts.runModal({"kvOrvantaLogic Tool " KV_VERSION,
                               "System: " + platform_.surroundings.system() + "\nLibraries: " + libraries +
                                   "\n\nUses Qt under the GNU Lesser General Public License, version 3 "
                                   "(https://www.gnu.org/licenses/lgpl-3.0.html), and libcurl under the curl licence "
                                   "(https://curl.se/docs/copyright.html).",
                               {"OK"},
                               platform::Alert::Style::informational});
}
