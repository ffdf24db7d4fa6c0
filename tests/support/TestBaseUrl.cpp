#include "tests/support/TestBaseUrl.h"

#include "community/BaseUrl.h"

#include <utility>

namespace {

std::string& url()
{
    static std::string text = "http://127.0.0.1:9/"; // nobody listens there
    return text;
}

} // namespace

namespace community {

// Found before the library's own, which the linker then leaves out.
const std::string& baseUrl()
{
    return url();
}

} // namespace community

namespace support {

void setBaseUrl(std::string text)
{
    url() = std::move(text);
}

} // namespace support
