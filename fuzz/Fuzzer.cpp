// A fuzzer's entry: hands every input to the target it was built for.

#include "fuzz/Targets.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    fuzz::KV_FUZZ_TARGET({reinterpret_cast<const char*>(bytes), size});
    return 0;
}
