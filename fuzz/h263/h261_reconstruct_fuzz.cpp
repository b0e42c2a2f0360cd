// H.261 decoding with reconstruction, intra and inter, any QUANT byte.
#include "h263_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kivvc::fuzz::Input in(data, size);
    const bool intra = in.range(0, 1);
    const int quant = in.range(0, 33);
    int offset = in.range(0, 7);
    kivvc::fuzz::ZeroPaddedStream s(in);
    Kiv8u* p = s.mem.get();
    Kiv16s block[64];
    int last = -2;
    const int o0 = offset;
    const KivStatus st = intra ? kiviReconstructCoeffsIntra_H261_1u16s(&p, &offset, block, &last, quant)
                               : kiviReconstructCoeffsInter_H261_1u16s(&p, &offset, block, &last, quant);
    if (st == kivStsBadQp) {
        if (quant >= 1 && quant <= 31) std::abort();
        return 0;
    }
    kivvc::fuzz::check_decode(st, last, -1, s.mem.get(), o0, p, offset);
    if (st == kivStsOk)
        for (int i = intra ? 1 : 0; i < 64; ++i)
            if (block[i] < -2048 || block[i] > 2047) std::abort();
    return 0;
}
