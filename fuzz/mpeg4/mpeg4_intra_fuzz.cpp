// Forward intra decoding (VLC and RVLC, with and without DC, every scan).
#include "mpeg4_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kivvc::fuzz::Input in(data, size);
    const int rvlc = in.range(0, 1), dc = in.range(0, 1), scan = in.range(0, 3);
    int offset = in.range(0, 7);
    kivvc::fuzz::ForwardStream s(in);
    Kiv8u* p = s.mem.get();
    Kiv16s block[64];
    int last = 0;
    const int o0 = offset;
    const KivStatus st = kiviDecodeCoeffsIntra_MPEG4_1u16s(&p, &offset, block, &last, rvlc, dc, scan);
    kivvc::fuzz::check_decode(st, last, dc ? 0 : -1, s.mem.get(), o0, p, offset);
    return 0;
}
