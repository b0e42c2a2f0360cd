// Backward inter RVLC decoding from a sign bit in the last input byte.
#include "mpeg4_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kivvc::fuzz::Input in(data, size);
    kivvc::fuzz::run_backward(in, -1, kiviDecodeCoeffsInterRVLCBack_MPEG4_1u16s);
    return 0;
}
