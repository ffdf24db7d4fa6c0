#pragma once
// Linked into a test, stands in for the product's constant base URL, so that each test names its server.

#include <string>

namespace test {

/// Nobody listens there.
inline constexpr char kNobodysUrl[] = "http://127.0.0.1:9/";

void setBaseUrl(std::string url);

} // namespace test
