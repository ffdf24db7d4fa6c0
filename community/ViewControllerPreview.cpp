#include "app/ViewController.h"
#include "community/BaseUrl.h"
#include "community/Listing.h"
#include "community/Requests.h"
#include "mapping/MappingStore.h"

#include <utility>

void ViewController::previewShared(Sender)
{
    const platform::Record* entry = arrayController_downloadList()->selection();
    endPreview();
    if (!entry)
        return;
    previewedEntry_ = *entry;
    SharedPreview fetching;
    fetching.state = SharedPreview::State::fetching;
    showPreview(std::move(fetching));
    const auto fileLocation = community::textOf(entry, community::kFileLocation);
    previewFetch_ = platform_.http.fetch(community::sharedFileAddress(community::baseUrl(), fileLocation),
                                         {[this](platform::Reply reply) {
                                              SharedPreview preview;
                                              preview.status = reply.status;
                                              auto read = reply.status < 400 ? mapping::mappingIn(std::move(reply.body))
                                                                             : std::nullopt;
                                              if (read)
                                                  preview.mapping = std::move(*read);
                                              preview.state = read                  ? SharedPreview::State::shown
                                                              : reply.status >= 400 ? SharedPreview::State::refused
                                                                                    : SharedPreview::State::unreadable;
                                              showPreview(std::move(preview));
                                          },
                                          [this](const platform::DownloadError& error) {
                                              SharedPreview preview;
                                              preview.state = SharedPreview::State::unreachable;
                                              preview.description = error.description;
                                              showPreview(std::move(preview));
                                          }});
}

void ViewController::endPreview()
{
    if (previewFetch_ != 0)
        platform_.http.giveUp(std::exchange(previewFetch_, 0));
    previewedEntry_ = {};
    if (sharedPreview_.state != SharedPreview::State::none)
        showPreview({});
}

void ViewController::showPreview(SharedPreview preview)
{
    sharedPreview_ = std::move(preview);
    sharedPreviewChanged.emit();
}
