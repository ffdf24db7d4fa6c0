#include "app/ViewControllerOperation.h"
#include "community/BaseUrl.h"
#include "community/CommunityState.h"
#include "community/Listing.h"
#include "community/Requests.h"
#include "platform/files/Files.h"
#include "plugins/PluginScan.h"

void ViewController::kvCommunityLibrary(Sender)
{
    cwinUploadWindow()->makeKeyAndOrderFront();
    cwinUploadWindow()->center();
}

void ViewController::kvCommunityUploadBtn(Sender)
{
    const std::string path = labPluginPlistLocation()->stringValue.get();
    const std::string comments = cwinUploadComments()->stringValue.get();
    alertUserAndSub("Upload notification", uploadFileToServerAndComments(path, comments));
    cwinUploadWindow()->close();
}

void ViewController::kvCommunityLibraryDownload(Sender)
{
    endPreview();
    arrayController_downloadList()->setContent({});
    const std::string listing = checkForDownloads(selectedPlugin());
    arrayController_downloadList()->addObjects(platform_.json.objectsOf(listing));
    arrayController_downloadList()->setSelectionIndex(0);
    cwinDownloadWindow()->makeKeyAndOrderFront();
    cwinDownloadWindow()->center();
    cwin_DownloadAvalableHighlighted();
}

void ViewController::cwin_DownloadAvalableHighlighted(Sender)
{
    const platform::Record* entry = arrayController_downloadList()->selection();
    if (!entry || *entry != previewedEntry_)
        endPreview(); // it would seem to be that of the entry selected now
    cwinUploadedComments()->stringValue.set(arrayController_downloadList()->selectionText(community::kUserComments));
}

void ViewController::kvCommunityLoadSelectedDownload(Sender)
{
    const platform::Record* entry = arrayController_downloadList()->selection();
    if (!entry) {
        alertUserAndSub("No plist selected",
                        "Please select an item from the list before attempting to load into the current view");
        return;
    }
    if (!isMappingLoaded())
        return; // there is no plug-in's file that the shared one could lie beside
    const auto patchId = community::textOf(entry, community::kPatchId);
    const auto fileLocation = community::textOf(entry, community::kFileLocation);
    const std::string path = downloadedPath();
    registerCloudDownloadAttempt(patchId);
    if (platform::files::exists(path))
        platform::files::remove(path);
    startDownloadingURLToLocalFile(community::sharedFileAddress(community::baseUrl(), fileLocation), path);
}

std::string ViewController::uploadFileToServerAndComments(const std::string& path, const std::string& comments)
{
    const std::string address =
        community::uploadAddress(community::baseUrl(), community::loggedInAs, selectedPlugin(), comments);
    keepDraft(); // the server may take its time
    const std::string body = community::uploadBody(platform::files::read(path).value_or(std::string()));
    return community::replyText(platform_.http.post(address, community::uploadContentType(), body));
}

std::string ViewController::checkForDownloads(const std::string& plugin)
{
    return sendRequest(community::listingAddress(community::baseUrl(), plugin));
}

std::string ViewController::registerCloudDownloadAttempt(const std::optional<std::string>& patchId)
{
    return sendRequest(community::downloadRegistrationAddress(community::baseUrl(), patchId));
}

void ViewController::startDownloadingURLToLocalFile(const std::string& address, const std::string& path)
{
    platform_.http.download(
        address, path,
        {[this] { downloadDidFinish(); },
         [this](const platform::DownloadError& error) { downloadDidFailWithError(nullptr, error); }});
}

void ViewController::downloadDidFinish(Sender)
{
    platform_.log.write("downloadDidFinish");
    // The path is that of the plug-in selected now, even if the download began with another one; that is meant.
    {
        const Operation edit(*this, "Load Shared Mapping");
        leaveEdits();
        readPlistFileCheckMode(downloadedPath(), 1);
        populateKnobLabels(1);
        arrayControllerPlistSelected()->setSelectionIndex(0);
        lookForDraft();
        followComparedFile();
    }
    alertUserAndSub("OK Done", "Loaded cloud file into interface memory, please remember to save if you wish to make "
                               "this your new default mapping");
}

void ViewController::downloadDidFailWithError(Sender, const platform::DownloadError& error)
{
    platform_.log.write("Download failed! Error - " + error.description + " " + error.failingAddress);
}

std::string ViewController::selectedPlugin() const
{
    return myArrayController()->selectionText(plugins::kPlugin);
}

std::string ViewController::downloadedPath() const
{
    return labPluginPlistLocation()->stringValue.get() + ".downloaded";
}
