// Backward intra RVLC decoding from a sign bit in the last input byte.
#include "mpeg4_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kivvc::fuzz::Input in(data, size);
    const int dc = in.range(0, 1);
    kivvc::fuzz::run_backward(in, dc ? 0 : -1, [dc](Kiv8u** pp, int* offset, Kiv16s* block, int* last) {
        return kiviDecodeCoeffsIntraRVLCBack_MPEG4_1u16s(pp, offset, block, last, dc);
    });
    return 0;
}
