#include "community/BaseUrl.h"

namespace community {

const std::string& baseUrl()
{
    static const std::string url = KV_COMMUNITY_BASE_URL;
    return url;
}

} // namespace community
