// Inter decoding with inverse quantisation: record method, bits and QP from
// the input (QP may be out of range, to reach the late RVLC check).
#include "mpeg4_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kivvc::fuzz::Input in(data, size);
    const int rvlc = in.range(0, 1), scan = in.range(0, 3), bits = in.range(4, 12), mpeg = in.range(0, 1);
    const int qp = in.range(0, 255) % ((1 << (bits - 3)) + 1);
    Kiv8u matrix[64];
    for (auto& w : matrix) w = static_cast<Kiv8u>(in.range(1, 255));
    int offset = in.range(0, 7);
    alignas(16) Kiv8u record[160];
    auto* spec = reinterpret_cast<KiviQuantInvInterSpec_MPEG4*>(record + 3);
    if (kiviQuantInvInterInit_MPEG4(mpeg ? matrix : nullptr, spec, bits) != kivStsOk) std::abort();
    kivvc::fuzz::ForwardStream s(in);
    Kiv8u* p = s.mem.get();
    Kiv16s block[64];
    int last = 0;
    const int o0 = offset;
    const KivStatus st = kiviReconstructCoeffsInter_MPEG4_1u16s(&p, &offset, block, &last, rvlc, scan, spec, qp);
    if (st == kivStsBadQp) return 0;
    kivvc::fuzz::check_decode(st, last, -1, s.mem.get(), o0, p, offset);
    const int v = 1 << (bits + 3);
    if (st == kivStsOk)
        for (int i = 0; i < 64; ++i)
            if (block[i] < -v || block[i] > v - 1) std::abort();
    return 0;
}
