// H.263 coefficient decoding over arbitrary bits in every mode and scan.
#include "h263_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kivvc::fuzz::Input in(data, size);
    const int kind = in.range(0, 2);  // inter, intra, advanced intra
    const bool modq = in.range(0, 1);
    const int scan = in.range(0, 3);
    int offset = in.range(0, 7);
    kivvc::fuzz::ZeroPaddedStream s(in);
    Kiv8u* p = s.mem.get();
    Kiv16s block[64];
    int last = -2;
    const int o0 = offset;
    const KivStatus st = kind == 0 ? kiviDecodeCoeffsInter_H263_1u16s(&p, &offset, block, &last, modq, scan)
                                   : kiviDecodeCoeffsIntra_H263_1u16s(&p, &offset, block, &last, kind == 2, modq, scan);
    kivvc::fuzz::check_decode(st, last, kind == 1 ? 0 : -1, s.mem.get(), o0, p, offset);
    return 0;
}
