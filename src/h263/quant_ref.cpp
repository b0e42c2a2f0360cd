// Scalar H.263 quantisers.
#include "core/arith.h"
#include "h263/quant_kernels.h"

namespace kivvc::h263 {
namespace {

template <QuantMode M, bool Clip>
int quant(std::int16_t* block, int qp) {
    const std::uint32_t r = mpeg4::_p_QuantInv[qp];
    int count = 0;
    for (int i = 0; i < 64; ++i) {
        const int c = block[i];
        int m = c < 0 ? -c : c;  // at most 32768
        if constexpr (M == QuantMode::Inter) m = m > (qp >> 1) ? m - (qp >> 1) : 0;
        if constexpr (M == QuantMode::AdvIntra) m = m + ((3 * qp) >> 2) > 32767 ? 32767 : m + ((3 * qp) >> 2);
        int level = static_cast<int>((static_cast<std::uint32_t>(m) * r) >> 16);  // at most 16384
        if constexpr (Clip) level = level > 127 ? 127 : level;
        count += level != 0;
        block[i] = static_cast<std::int16_t>(c < 0 ? -level : level);
    }
    return count;
}

template <InvMode M>
void quant_inv(std::int16_t* block, int last, int qp) {
    const int q = (qp & 1) ? qp : qp - 1;
    for (int i = 0; i <= last; ++i) {
        const int level = block[i];
        if (level == 0) continue;
        if constexpr (M == InvMode::AdvIntra) {
            block[i] = wrap_s16(2 * qp * level);
            continue;
        }
        const int m = 2 * qp * (level < 0 ? -level : level) + q;  // at most 62 * 32768 + 31
        const int rec = level < 0 ? -m : m;
        block[i] = M == InvMode::ModQ ? sat_s16(rec) : static_cast<std::int16_t>(clip3(-2048, 2047, rec));
    }
}

}  // namespace

void init_quant(QuantTable& t, CpuFlags cpu) {
    t.ownph263_QuantIntra_16s_I = &quant<QuantMode::Intra, true>;
    t.ownph263_QuantIntraNoClip_16s_I = &quant<QuantMode::Intra, false>;
    t.ownph263_QuantInter_16s_I = &quant<QuantMode::Inter, true>;
    t.ownph263_QuantInterNoClip_16s_I = &quant<QuantMode::Inter, false>;
    t.ownph263_QuantAdvIntra_16s_I = &quant<QuantMode::AdvIntra, true>;
    t.ownph263_QuantAdvIntraNoClip_16s_I = &quant<QuantMode::AdvIntra, false>;
    t.ownph263_QuantInv_16s_I = &quant_inv<InvMode::Ordinary>;
    t.ownph263_QuantInv_ModQ_16s_I = &quant_inv<InvMode::ModQ>;
    t.ownph263_QuantInv_AdvIntra_16s_I = &quant_inv<InvMode::AdvIntra>;
#if KIVVC_X86
    if (!(cpu & kSse2)) return;
    init_quant_sse2(t);
#else
    (void)cpu;
#endif
}

const QuantTable& quant_table() {
    static const QuantTable t = [] {
        QuantTable x{};
        init_quant(x, active_flags());
        return x;
    }();
    return t;
}

}  // namespace kivvc::h263
