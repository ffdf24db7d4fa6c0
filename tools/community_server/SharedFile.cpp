#include "tools/community_server/SharedFile.h"

#include <algorithm>

namespace community_server {

std::optional<platform::plist::Document> readShared(std::string_view bytes)
{
    return platform::plist::parse(bytes, {250'000, std::size_t{8} << 20});
}

bool isMapping(std::string_view bytes)
{
    if (bytes.size() > kLargestFile)
        return false;
    const auto document = readShared(bytes);
    const auto* root = document ? document->root.asDictionary() : nullptr;
    const auto* value = root ? root->find("ControlSurfaceParameterOrder") : nullptr;
    const auto* order = value ? value->asArray() : nullptr;
    return order && std::all_of(order->begin(), order->end(), [](const auto& element) { return element.asString(); });
}

} // namespace community_server
