// Scalar references of the H.264 forward transforms, quantisers and sums of
// differences.
#include <cstdlib>
#include <limits>

#include "h264/residual/fwd_kernels.h"
#include "h264/residual/rows.h"

namespace kivvc::h264::fwd {
namespace {

using s64 = std::int64_t;
using u32 = std::uint32_t;
using u64 = std::uint64_t;

// Stores v at the width of T: 16-bit blocks wrap, 32-bit ones hold it exactly.
template <class T>
constexpr T store(s64 v) {
    if constexpr (sizeof(T) == 2) return static_cast<s16>(static_cast<u16>(v));
    else return static_cast<s32>(static_cast<u32>(v));
}

// 4-point forward core transform of x[0], x[s], x[2s], x[3s] in place.
template <class T>
void forward4(T* x, int s) {
    const s64 a = s64{x[0]} + x[3 * s], b = s64{x[s]} + x[2 * s];
    const s64 c = s64{x[s]} - x[2 * s], d = s64{x[0]} - x[3 * s];
    x[0] = store<T>(a + b);
    x[s] = store<T>(c + 2 * d);
    x[2 * s] = store<T>(a - b);
    x[3 * s] = store<T>(d - 2 * c);
}

template <class T>
void transform4x4(const s16* src, T* dst) {
    T x[16];
    for (int k = 0; k < 16; ++k) x[k] = src[k];
    for (int i = 0; i < 4; ++i) forward4(x + 4 * i, 1);
    for (int j = 0; j < 4; ++j) forward4(x + j, 4);
    for (int k = 0; k < 16; ++k) dst[k] = x[k];
}

// 8-point forward butterfly of x[0], x[s], ..., x[7s] in place (arithmetic
// shifts, no rounding).
template <class T>
void forward8(T* x, int s) {
    s64 v[8];
    for (int i = 0; i < 8; ++i) v[i] = x[i * s];
    const s64 a0 = v[0] + v[7], a1 = v[1] + v[6], a2 = v[2] + v[5], a3 = v[3] + v[4];
    const s64 b0 = a0 + a3, b1 = a1 + a2, b2 = a0 - a3, b3 = a1 - a2;
    const s64 d0 = v[0] - v[7], d1 = v[1] - v[6], d2 = v[2] - v[5], d3 = v[3] - v[4];
    const s64 b4 = d1 + d2 + d0 + (d0 >> 1);
    const s64 b5 = d0 - d3 - d2 - (d2 >> 1);
    const s64 b6 = d0 + d3 - d1 - (d1 >> 1);
    const s64 b7 = d1 - d2 + d3 + (d3 >> 1);
    x[0] = store<T>(b0 + b1);
    x[2 * s] = store<T>(b2 + (b3 >> 1));
    x[4 * s] = store<T>(b0 - b1);
    x[6 * s] = store<T>((b2 >> 1) - b3);
    x[s] = store<T>(b4 + (b7 >> 2));
    x[3 * s] = store<T>(b5 + (b6 >> 2));
    x[5 * s] = store<T>(b6 - (b5 >> 2));
    x[7 * s] = store<T>((b4 >> 2) - b7);
}

template <class T>
void transform8x8(const s16* src, T* dst) {
    T x[64];
    for (int k = 0; k < 64; ++k) x[k] = src[k];
    for (int i = 0; i < 8; ++i) forward8(x + 8 * i, 1);
    for (int j = 0; j < 8; ++j) forward8(x + j, 8);
    for (int k = 0; k < 64; ++k) dst[k] = x[k];
}

template <class T, int N>
int quant(const T* src, T* dst, const s16* m, int shift, u32 round, const s16* scan, s32* last) {
    constexpr u64 kMax = std::numeric_limits<T>::max();
    int count = 0;
    s32 highest = 0;
    for (int k = 0; k < N; ++k) {
        const s64 t = src[k];
        const u64 magnitude = (u64(t < 0 ? -t : t) * u16(m[k]) + round) >> shift;
        const s64 level = s64(magnitude > kMax ? kMax : magnitude);
        dst[k] = T(t < 0 ? -level : level);
        if (level) {
            ++count;
            if (scan[k] > highest) highest = scan[k];
        }
    }
    *last = highest;
    return count;
}

template <class Sample, class Sum, int Blocks>
void sums_diff(const Sample* src, int srcStep, const Sample* pred, int predStep, Sum* sums, s16* diff) {
    constexpr int kPerRow = Blocks == 16 ? 4 : 2;
    for (int b = 0; b < Blocks; ++b) {
        const int x0 = (b % kPerRow) * 4, y0 = (b / kPerRow) * 4;
        s32 sum = 0;
        for (int y = 0; y < 4; ++y) {
            const Sample* s = row(src, srcStep, y0 + y) + x0;
            const Sample* p = row(pred, predStep, y0 + y) + x0;
            for (int x = 0; x < 4; ++x) {
                const s32 d = s32{s[x]} - s32{p[x]};
                sum += d;
                if (diff) diff[16 * b + 4 * y + x] = s16(d);
            }
        }
        sums[b] = Sum(sum);
    }
}

}  // namespace

void init_fwd(Table& t, CpuFlags cpu) {
    t.transform4x4 = &transform4x4<s16>;
    t.transform4x4_wide = &transform4x4<s32>;
    t.transform8x8 = &transform8x8<s16>;
    t.transform8x8_wide = &transform8x8<s32>;
    t.quant[0] = &quant<s16, 4>;
    t.quant[1] = &quant<s16, 8>;
    t.quant[2] = &quant<s16, 16>;
    t.quant[3] = &quant<s16, 64>;
    t.quant_wide[0] = &quant<s32, 4>;
    t.quant_wide[1] = &quant<s32, 8>;
    t.quant_wide[2] = &quant<s32, 16>;
    t.quant_wide[3] = &quant<s32, 64>;
    t.sums_diff[0] = &sums_diff<u8, s16, 16>;
    t.sums_diff[1] = &sums_diff<u8, s16, 4>;
    t.sums_diff_hbd[0] = &sums_diff<u16, s32, 16>;
    t.sums_diff_hbd[1] = &sums_diff<u16, s32, 4>;
#if KIVVC_X86
    if (!(cpu & kSse2)) return;
    init_fwd_sse2(t);
#else
    (void)cpu;
#endif
}

const Table& table() { return process_table<Table, init_fwd>(); }

}  // namespace kivvc::h264::fwd
