#include "tools/community_server/SharedFile.h"

#include "platform/plist/PropertyList.h"

#include <algorithm>

namespace community_server {

bool isMapping(std::string_view bytes)
{
    if (bytes.size() > kLargestFile)
        return false;
    const auto document = platform::plist::parse(bytes);
    const auto* root = document ? document->root.asDictionary() : nullptr;
    const auto* value = root ? root->find("ControlSurfaceParameterOrder") : nullptr;
    const auto* order = value ? value->asArray() : nullptr;
    return order && std::all_of(order->begin(), order->end(), [](const auto& element) { return element.asString(); });
}

} // namespace community_server
