#pragma once
// A check that ends the process, so that fuzzers and sanitizers keep the input.

#include <cstdio>
#include <cstdlib>

namespace fuzz {

inline void require(bool holds, const char* what)
{
    if (holds)
        return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

} // namespace fuzz
