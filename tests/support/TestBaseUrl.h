#pragma once
// Linked into a test, stands in for the product's constant base URL, so that each test names its server.

#include <string>

namespace support {

void setBaseUrl(std::string url);

} // namespace support
