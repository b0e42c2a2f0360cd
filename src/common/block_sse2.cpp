// SSE2 block copy, average and add kernels. Rounding-up averages use pavgb;
// rounding down subtracts the carried-in bit ((a ^ b) & 1); four-sample
// averages widen to 16 bits, reusing each row's horizontal sum for the next.
#include <emmintrin.h>

#include <utility>

#include "common/block_kernels.h"
#include "core/sse2_helpers.h"

namespace kivvc::block {
namespace {

using namespace kivvc::sse2;

// Horizontal pair sums of a row, widened: lo holds columns 0..7, hi 8..15.
template <int W>
struct RowSum {
    __m128i lo, hi;
    static RowSum of(const u8* p) {
        const __m128i z = _mm_setzero_si128();
        const __m128i a = load<W>(p), b = load<W>(p + 1);
        RowSum s;
        s.lo = _mm_add_epi16(_mm_unpacklo_epi8(a, z), _mm_unpacklo_epi8(b, z));
        if constexpr (W == 16) s.hi = _mm_add_epi16(_mm_unpackhi_epi8(a, z), _mm_unpackhi_epi8(b, z));
        return s;
    }
};

template <int W, int Round>
__m128i average4(const RowSum<W>& t, const RowSum<W>& b) {
    const __m128i bias = _mm_set1_epi16(2 - Round);
    const __m128i lo = _mm_srli_epi16(_mm_add_epi16(_mm_add_epi16(t.lo, b.lo), bias), 2);
    __m128i hi = lo;
    if constexpr (W == 16) hi = _mm_srli_epi16(_mm_add_epi16(_mm_add_epi16(t.hi, b.hi), bias), 2);
    return _mm_packus_epi16(lo, hi);
}

// Calls out(y, p) with the half-sample prediction p of each row.
template <int W, int H, int Acc, int Round, class Out>
inline void predict_rows(const u8* src, int ss, Out out) {
    if constexpr (Acc == 0) {
        for (int y = 0; y < H; ++y, src += ss) out(y, load<W>(src));
    } else if constexpr (Acc == 1) {
        for (int y = 0; y < H; ++y, src += ss) out(y, average2<Round>(load<W>(src), load<W>(src + 1)));
    } else if constexpr (Acc == 2) {
        __m128i prev = load<W>(src);
        for (int y = 0; y < H; ++y) {
            src += ss;
            const __m128i next = load<W>(src);
            out(y, average2<Round>(prev, next));
            prev = next;
        }
    } else {
        RowSum<W> prev = RowSum<W>::of(src);
        for (int y = 0; y < H; ++y) {
            src += ss;
            const RowSum<W> next = RowSum<W>::of(src);
            out(y, average4<W, Round>(prev, next));
            prev = next;
        }
    }
}

template <int W, int H, int Acc, int Round>
void copy_hp(const u8* src, int ss, u8* dst, int ds) {
    predict_rows<W, H, Acc, Round>(src, ss, [&](int y, __m128i p) { store<W>(dst + y * ds, p); });
}

template <int W, int H, int Acc, int Round>
void interpolate_average_hp(const u8* src, int ss, u8* dst, int ds) {
    predict_rows<W, H, Acc, Round>(src, ss, [&](int y, __m128i p) {
        u8* d = dst + y * ds;
        store<W>(d, _mm_avg_epu8(p, load<W>(d)));
    });
}

// Adds eight 16-bit residuals to eight widened samples, saturating to 0..255.
inline __m128i add_residual(__m128i samples8, __m128i res16) {
    const __m128i wide = _mm_unpacklo_epi8(samples8, _mm_setzero_si128());
    return _mm_packus_epi16(_mm_add_epi16(wide, res16), res16);
}

inline __m128i residual_row(const s16* res, int resStep, int y) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(reinterpret_cast<const u8*>(res) + y * resStep));
}

template <int Acc, int Round>
void add8x8_hp(const s16* res, int rs, const u8* ref, int fs, u8* dst, int ds) {
    predict_rows<8, 8, Acc, Round>(ref, fs, [&](int y, __m128i p) {
        store<8>(dst + y * ds, add_residual(p, residual_row(res, rs, y)));
    });
}

void add8x8(const s16* res, int rs, u8* dst, int ds) {
    for (int y = 0; y < 8; ++y, dst += ds) store<8>(dst, add_residual(load<8>(dst), residual_row(res, rs, y)));
}

void add_const8x8(s16 value, u8* dst, int ds) {
    const __m128i c = _mm_set1_epi16(value);
    for (int y = 0; y < 8; ++y, dst += ds) store<8>(dst, add_residual(load<8>(dst), c));
}

template <int W, int H>
void average(const u8* a, int as, const u8* b, int bs, u8* dst, int ds) {
    for (int y = 0; y < H; ++y, a += as, b += bs, dst += ds) store<W>(dst, _mm_avg_epu8(load<W>(a), load<W>(b)));
}

template <int W, int H>
struct Copy {
    template <int A, int R>
    struct At {
        static constexpr CopyFn fn = &copy_hp<W, H, A, R>;
    };
};
template <int W, int H>
struct Avg {
    template <int A, int R>
    struct At {
        static constexpr CopyFn fn = &interpolate_average_hp<W, H, A, R>;
    };
};
template <int A, int R>
struct Add {
    static constexpr AddHpFn fn = &add8x8_hp<A, R>;
};

}  // namespace

void init_block_sse2(Table& t) {
    fill_hp_table<Copy<8, 4>::At>(t.ownvc_Copy8x4HP_8u_C1R);
    fill_hp_table<Copy<8, 8>::At>(t.ownvc_Copy8x8HP_8u_C1R);
    fill_hp_table<Copy<16, 8>::At>(t.ownvc_Copy16x8HP_8u_C1R);
    fill_hp_table<Copy<16, 16>::At>(t.ownvc_Copy16x16HP_8u_C1R);
    fill_hp_table<Copy<4, 8>::At>(t.ownvc_Copy4x8HP_8u_C1R);
    fill_hp_table<Copy<4, 4>::At>(t.copy4x4_hp);
    fill_hp_table<Add>(t.ownvc_Add8x8HP_16s8u_C1RS);
    fill_hp_table<Avg<8, 4>::At>(t.ownvc_InterpolateAverage8x4HP_8u_C1IR);
    fill_hp_table<Avg<8, 8>::At>(t.ownvc_InterpolateAverage8x8HP_8u_C1IR);
    fill_hp_table<Avg<16, 8>::At>(t.ownvc_InterpolateAverage16x8HP_8u_C1IR);
    fill_hp_table<Avg<16, 16>::At>(t.ownvc_InterpolateAverage16x16HP_8u_C1IR);
    t.average8x8 = &average<8, 8>;
    t.average16x16 = &average<16, 16>;
    t.add8x8 = &add8x8;
    t.add_const8x8 = &add_const8x8;
}

}  // namespace kivvc::block
