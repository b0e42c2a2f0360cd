// Scalar references of the interpolation kernels, one scheme for both sample
// depths: each output sample is computed from the values the filter
// definition names (G, H, M, b, h, j, m, s).
#include <cstring>
#include <utility>

#include "core/arith.h"
#include "h264/inter/interp_kernels.h"

namespace kivvc::interp {
namespace {

using std::ptrdiff_t;

// The 6-tap sum (1, -5, 20, 20, -5, 1) over p[-2d] .. p[3d]: the half sample
// between p[0] and p[d], unrounded. 8-bit: -2550..10710; 16-bit fits 32 bits.
template <class T>
inline int tap6(const T* p, ptrdiff_t d) {
    return p[-2 * d] - 5 * p[-d] + 20 * p[0] + 20 * p[d] - 5 * p[2 * d] + p[3 * d];
}

template <class T>
inline int half_h(const T* p, int maxv) {
    return clip3(0, maxv, shift_right_floor(tap6(p, 1) + 16, 5));
}
template <class T>
inline int half_v(const T* p, ptrdiff_t step, int maxv) {
    return clip3(0, maxv, shift_right_floor(tap6(p, step) + 16, 5));
}
// Centre: the vertical sums of six columns, filtered across. |j1| < 2^27 for
// 16-bit samples.
template <class T>
inline int centre(const T* p, ptrdiff_t step, int maxv) {
    int v[6];
    for (int k = 0; k < 6; ++k) v[k] = tap6(p + k - 2, step);
    const int j1 = v[0] - 5 * v[1] + 20 * v[2] + 20 * v[3] - 5 * v[4] + v[5];
    return clip3(0, maxv, shift_right_floor(j1 + 512, 10));
}

// One luma sample at position `Type` (4 * dy + dx) of the integer sample p.
template <int Type, class T>
inline int luma_sample(const T* p, ptrdiff_t step, int maxv) {
    const auto G = [&] { return int(p[0]); };
    const auto b = [&] { return half_h(p, maxv); };
    const auto h = [&] { return half_v(p, step, maxv); };
    const auto j = [&] { return centre(p, step, maxv); };
    const auto m = [&] { return half_v(p + 1, step, maxv); };
    const auto s = [&] { return half_h(p + step, maxv); };
    switch (Type) {
        case 0: return G();
        case 1: return avg_round_up(G(), b());
        case 2: return b();
        case 3: return avg_round_up(int(p[1]), b());
        case 4: return avg_round_up(G(), h());
        case 5: return avg_round_up(b(), h());
        case 6: return avg_round_up(b(), j());
        case 7: return avg_round_up(b(), m());
        case 8: return h();
        case 9: return avg_round_up(h(), j());
        case 10: return j();
        case 11: return avg_round_up(j(), m());
        case 12: return avg_round_up(int(p[step]), h());
        case 13: return avg_round_up(h(), s());
        case 14: return avg_round_up(j(), s());
        default: return avg_round_up(m(), s());
    }
}

template <class T, int Type>
void luma(const T* src, int srcStep, T* dst, int dstStep, int width, int height, int maxv) {
    for (int y = 0; y < height; ++y, src += srcStep, dst += dstStep)
        for (int x = 0; x < width; ++x) dst[x] = static_cast<T>(luma_sample<Type>(src + x, srcStep, maxv));
}

template <int Type>
void luma_8u(const u8* src, int srcStep, u8* dst, int dstStep, int width, int height) {
    luma<u8, Type>(src, srcStep, dst, dstStep, width, height, 255);
}

// Chroma: copy, horizontal, vertical or both. The one-dimensional forms are
// the two-dimensional formula with one fraction 0, without reading the
// samples that would get weight 0.
template <class T, int Type>
void chroma(const T* src, int srcStep, T* dst, int dstStep, int dx, int dy, int width, int height) {
    for (int y = 0; y < height; ++y, src += srcStep, dst += dstStep) {
        for (int x = 0; x < width; ++x) {
            const T* p = src + x;
            int v;
            if constexpr (Type == 0) {
                v = p[0];
            } else if constexpr (Type == 1) {
                v = ((8 - dx) * p[0] + dx * p[1] + 4) >> 3;
            } else if constexpr (Type == 2) {
                v = ((8 - dy) * p[0] + dy * p[srcStep] + 4) >> 3;
            } else {
                v = ((8 - dx) * (8 - dy) * p[0] + dx * (8 - dy) * p[1] + (8 - dx) * dy * p[srcStep] +
                     dx * dy * p[srcStep + 1] + 32) >> 6;
            }
            dst[x] = static_cast<T>(v);
        }
    }
}

void average(const u8* a, int aStep, const u8* b, int bStep, u8* dst, int dstStep, int width, int height) {
    for (int y = 0; y < height; ++y, a += aStep, b += bStep, dst += dstStep)
        for (int x = 0; x < width; ++x) dst[x] = static_cast<u8>(avg_round_up(a[x], b[x]));
}

template <int... I>
void fill_luma(Table& t, std::integer_sequence<int, I...>) {
    ((t.luma_8u[I] = &luma_8u<I>), ...);
    ((t.luma_16u[I] = &luma<u16, I>), ...);
}

}  // namespace

void init_interp(Table& t, CpuFlags cpu) {
    fill_luma(t, std::make_integer_sequence<int, kLumaKernels>{});
    t.chroma_8u[0] = &chroma<u8, 0>;
    t.chroma_8u[1] = &chroma<u8, 1>;
    t.chroma_8u[2] = &chroma<u8, 2>;
    t.chroma_8u[3] = &chroma<u8, 3>;
    t.chroma_16u[0] = &chroma<u16, 0>;
    t.chroma_16u[1] = &chroma<u16, 1>;
    t.chroma_16u[2] = &chroma<u16, 2>;
    t.chroma_16u[3] = &chroma<u16, 3>;
    t.average_8u = &average;
    init_boundary_readers(t);

#if KIVVC_X86
    if (!(cpu & kSse2)) return;
    init_interp_sse2(t);
    if (!(cpu & kSse41)) return;
    init_interp_sse41(t);
    if (!(cpu & kAvx2)) return;
    init_interp_avx2(t);
#else
    (void)cpu;
#endif
}

const Table& table() { return process_table<Table, init_interp>(); }

}  // namespace kivvc::interp
