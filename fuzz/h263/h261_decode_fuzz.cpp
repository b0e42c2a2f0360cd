// H.261 coefficient decoding over arbitrary bits, intra and inter, both scans.
#include "h263_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kivvc::fuzz::Input in(data, size);
    const bool intra = in.range(0, 1);
    const int scan = in.range(-1, 0);
    int offset = in.range(0, 7);
    kivvc::fuzz::ZeroPaddedStream s(in);
    Kiv8u* p = s.mem.get();
    Kiv16s block[64];
    int last = -2;
    const int o0 = offset;
    const KivStatus st = intra ? kiviDecodeCoeffsIntra_H261_1u16s(&p, &offset, block, &last, scan)
                               : kiviDecodeCoeffsInter_H261_1u16s(&p, &offset, block, &last, scan);
    kivvc::fuzz::check_decode(st, last, -1, s.mem.get(), o0, p, offset, intra ? s.mem.get() + 1 : nullptr);
    return 0;
}
