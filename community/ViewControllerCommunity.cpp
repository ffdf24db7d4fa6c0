#include "app/ViewController.h"

void ViewController::kvLoginToCloudAccount(Sender)
{
    cwinCloudWindow()->makeKeyAndOrderFront();
    cwinCloudWindow()->center();
}

void ViewController::kvCommunityLibrary(Sender)
{
    cwinUploadWindow()->makeKeyAndOrderFront();
    cwinUploadWindow()->center();
}

void ViewController::kvCommunityLibraryDownload(Sender)
{
    arrayController_downloadList()->setContent({});
    cwinDownloadWindow()->makeKeyAndOrderFront();
    cwinDownloadWindow()->center();
    cwin_DownloadAvalableHighlighted();
}

void ViewController::cwin_DownloadAvalableHighlighted(Sender)
{
    cwinUploadedComments()->stringValue.set(arrayController_downloadList()->selectionText("userComments"));
}
