// Scalar references of the MPEG-4 quantisers.
#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "core/arith.h"
#include "mpeg4/quant_kernels.h"

namespace kivvc::mpeg4 {
namespace {

constexpr int kLevelMax = 2047;

inline int with_sign(int negative, int magnitude) { return negative ? -magnitude : magnitude; }

// H.263 method, forward. For bits <= 8 (QP <= 31) the division by 2 QP goes
// through R(QP); |c| * R(QP) is at most 32768 * 16385 < 2^31.
template <bool Intra, bool High>
int quant_h263(s16* c, const QuantRecord&, int qp) {
    const int offset = Intra ? 0 : qp >> 1;
    int nonzero = 0;
    for (int i = Intra ? 1 : 0; i < 64; ++i) {
        const int a = std::abs(int{c[i]});
        int level;
        if constexpr (High) {
            level = std::min(std::max(a - offset, 0) / (2 * qp), kLevelMax);
        } else if (qp == 1) {
            level = a >> 1;
        } else {
            level = (std::max(a - offset, 0) * _p_QuantInv[qp]) >> 16;
        }
        c[i] = static_cast<s16>(with_sign(c[i] < 0, level));
        nonzero += level != 0;
    }
    return nonzero;
}

// MPEG method, forward. The 8-bit form multiplies by the weight's reciprocal
// and by R(QP); both products are formed in 64 bits so that any 16-bit input
// gives the exact value of the formula (a weight of 1 takes
// (16 |c| + h) * r past 32 bits once |c| > 4095).
template <bool Intra, bool High>
int quant_mpeg(s16* c, const QuantRecord& rec, int qp) {
    const std::int64_t round = Intra ? (3 * qp + 2) >> 2 : 0;
    int nonzero = 0;
    for (int i = Intra ? 1 : 0; i < 64; ++i) {
        const std::int64_t a = std::abs(int{c[i]});
        std::int64_t scaled, level;
        if constexpr (High) {
            const int w = rec.weights[i];
            scaled = (16 * a + (w >> 1)) / w;
            level = (scaled + round) / (2 * qp);
        } else {
            scaled = ((16 * a + rec.weights[i]) * rec.reciprocals[i]) >> 16;
            level = ((scaled + round) * _p_QuantInv[qp]) >> 16;
        }
        const int l = static_cast<int>(std::min<std::int64_t>(level, kLevelMax));
        c[i] = static_cast<s16>(with_sign(c[i] < 0, l));
        nonzero += l != 0;
    }
    return nonzero;
}

// H.263 method, inverse (intra AC and inter alike).
void quant_inv_h263(s16* c, int last, const QuantInvRecord& rec, int qp, int) {
    const int v = _p_QuantInvClip[rec.bits - kMinBits];
    for (int i = 0; i <= last; ++i) c[i] = static_cast<s16>(limit_reconstructed(inverse_h263(c[i], qp), v));
}

// MPEG method, inverse, with mismatch control on element 63: its parity is
// toggled when the sum of the block is even.
template <bool Intra>
void quant_inv_mpeg(s16* c, int last, const QuantInvRecord& rec, int qp, int dc) {
    const int v = _p_QuantInvClip[rec.bits - kMinBits];
    int sum = Intra ? dc : 0;
    for (int i = Intra ? 1 : 0; i <= last; ++i) {
        const std::int64_t r = Intra ? inverse_mpeg_intra(c[i], rec.weights[i], qp)
                                     : inverse_mpeg_inter(c[i], rec.weights[i], qp);
        c[i] = static_cast<s16>(limit_reconstructed(r, v));
        sum += c[i];
    }
    if ((sum & 1) == 0) c[63] = static_cast<s16>(c[63] ^ 1);
}

}  // namespace

void init_quant(Table& t, CpuFlags cpu) {
    t.ownpmp4_QuantIntra0_16s_I[0] = &quant_h263<true, false>;
    t.ownpmp4_QuantIntra0_16s_I[1] = &quant_h263<true, true>;
    t.ownpmp4_QuantInter0_16s_I[0] = &quant_h263<false, false>;
    t.ownpmp4_QuantInter0_16s_I[1] = &quant_h263<false, true>;
    t.ownpmp4_QuantIntra1_16s_I[0] = &quant_mpeg<true, false>;
    t.ownpmp4_QuantIntra1_16s_I[1] = &quant_mpeg<true, true>;
    t.ownpmp4_QuantInter1_16s_I[0] = &quant_mpeg<false, false>;
    t.ownpmp4_QuantInter1_16s_I[1] = &quant_mpeg<false, true>;
    for (int r = 0; r < 2; ++r) {
        t.ownpmp4_QuantInv_16s_I[r] = &quant_inv_h263;
        t.ownpmp4_QuantInvIntra_16s_I[r] = &quant_inv_mpeg<true>;
        t.ownpmp4_QuantInvInter_16s_I[r] = &quant_inv_mpeg<false>;
    }
#if KIVVC_X86
    if (!(cpu & kSse2)) return;
    init_quant_sse2(t);
    if (!(cpu & kAvx2)) return;
    init_quant_avx2(t);
#else
    (void)cpu;
#endif
}

const Table& table() { return process_table<Table, init_quant>(); }

}  // namespace kivvc::mpeg4
