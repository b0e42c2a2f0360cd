// H.263 decoding with reconstruction in every mode, any QP byte.
#include "h263_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kivvc::fuzz::Input in(data, size);
    const int kind = in.range(0, 2);  // inter, intra, advanced intra
    const bool modq = in.range(0, 1);
    const int scan = in.range(0, 3), coded = in.range(0, 1), qp = in.range(0, 33);
    int offset = in.range(0, 7);
    kivvc::fuzz::ZeroPaddedStream s(in);
    Kiv8u* p = s.mem.get();
    Kiv16s block[64] = {};
    int last = -2;
    const int o0 = offset;
    const KivStatus st = kind == 0 ? kiviReconstructCoeffsInter_H263_1u16s(&p, &offset, block, &last, qp, modq)
                                   : kiviReconstructCoeffsIntra_H263_1u16s(&p, &offset, block, &last, coded, qp, kind == 2, scan, modq);
    if (st == kivStsBadQp) {
        if (qp >= 1 && qp <= 31) std::abort();
        return 0;
    }
    kivvc::fuzz::check_decode(st, last, -1, s.mem.get(), o0, p, offset, kind == 1 ? s.mem.get() + 1 : nullptr);
    if (st == kivStsOk && !modq && kind != 2)
        for (int i = kind == 1 ? 1 : 0; i < 64; ++i)
            if (block[i] < -2048 || block[i] > 2047) std::abort();
    return 0;
}
