#include "tests/support/TestBaseUrl.h"

#include "community/BaseUrl.h"

#include <utility>

namespace {

std::string& url()
{
    static std::string text = test::kNobodysUrl;
    return text;
}

} // namespace

// Found before the library's own, which the linker then leaves out.
const std::string& community::baseUrl()
{
    return url();
}

void test::setBaseUrl(std::string text)
{
    url() = std::move(text);
}
