// AVX2 block metrics where a whole 16-sample row fits one register once
// widened: squared differences, 16-bit residuals, the four-sample averages,
// the 16-bit sample metrics. Narrower blocks stay with the SSE2 kernels.
#include <immintrin.h>

#include "common/metrics_helpers.h"
#include "common/metrics_kernels.h"
#include "common/metrics_x86.h"

namespace kivvc::metrics {
namespace {

inline __m256i load32(const void* p) { return _mm256_loadu_si256(static_cast<const __m256i*>(p)); }
inline __m256i widen(__m128i bytes) { return _mm256_cvtepu8_epi16(bytes); }

inline int sum_epi32(__m256i v) {
    return sum_epi32(_mm_add_epi32(_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1)));
}

inline __m256i pair_sums(const u8* p) { return _mm256_add_epi16(widen(load<16>(p)), widen(load<16>(p + 1))); }

// Half-sample prediction of 16-byte rows, as bytes (next) or as 16-bit words
// (next_words). Pos: 0 FF, 1 FH, 2 HF, 3 HH; Rc: 0 rounds up, 1 down.
template <int Pos, int Rc>
struct Predictor {
    const u8* src;
    int step;
    __m128i prev{};
    __m256i prev_sums{};
    Predictor(const u8* s, int st) : src(s), step(st) {
        if constexpr (Pos == 1) prev = load<16>(src);
        if constexpr (Pos == 3) prev_sums = pair_sums(src);
    }
    __m256i next_words() {
        if constexpr (Pos == 3) {
            src += step;
            const __m256i n = pair_sums(src);
            const __m256i v =
                _mm256_srli_epi16(_mm256_add_epi16(_mm256_add_epi16(prev_sums, n), _mm256_set1_epi16(2 - Rc)), 2);
            prev_sums = n;
            return v;
        } else {
            return widen(next());
        }
    }
    __m128i next() {
        if constexpr (Pos == 0) {
            const __m128i v = load<16>(src);
            src += step;
            return v;
        } else if constexpr (Pos == 2) {
            const __m128i v = average2<Rc>(load<16>(src), load<16>(src + 1));
            src += step;
            return v;
        } else if constexpr (Pos == 1) {
            src += step;
            const __m128i n = load<16>(src);
            const __m128i v = average2<Rc>(prev, n);
            prev = n;
            return v;
        } else {
            const __m256i w = next_words();
            return _mm_packus_epi16(_mm256_castsi256_si128(w), _mm256_extracti128_si256(w, 1));
        }
    }
};

// 16-wide SAD; registered for HH only, where the widened four-sample sums pay.
template <int H, int Pos>
s32 sad16(const u8* cur, int cs, const u8* ref, int rs) {
    Predictor<Pos, 0> pr(ref, rs);
    __m128i acc = _mm_setzero_si128();
    for (int y = 0; y < H; ++y) acc = _mm_add_epi32(acc, _mm_sad_epu8(load<16>(row(cur, cs, y)), pr.next()));
    return sum_halves(acc);
}

inline __m256i squares_of(__m256i d) { return _mm256_madd_epi16(d, d); }

template <int Pos>
s32 sqr_diff(const u8* cur, int cs, const u8* ref, int rs) {
    Predictor<Pos, 0> pr(ref, rs);
    __m256i acc = _mm256_setzero_si256();
    for (int y = 0; y < 16; ++y)
        acc = _mm256_add_epi32(acc, squares_of(_mm256_sub_epi16(widen(load<16>(row(cur, cs, y))), pr.next_words())));
    return sum_epi32(acc);
}

template <int Pf, int Pb>
s32 sqr_diff_bidir(const u8* cur, int cs, const u8* fwd, int fs, const u8* bwd, int bs) {
    Predictor<Pf, 0> pf(fwd, fs);
    Predictor<Pb, 0> pb(bwd, bs);
    __m256i acc = _mm256_setzero_si256();
    for (int y = 0; y < 16; ++y) {
        const __m256i b = widen(_mm_avg_epu8(pf.next(), pb.next()));
        acc = _mm256_add_epi32(acc, squares_of(_mm256_sub_epi16(widen(load<16>(row(cur, cs, y))), b)));
    }
    return sum_epi32(acc);
}

template <int H, int Pos, int Rc, bool StorePred>
void get_diff_at(const u8* cur, int cs, const u8* ref, int rs, s16* diff, int ds, s16* pred, int ps) {
    Predictor<Pos, Rc> pr(ref, rs);
    for (int y = 0; y < H; ++y) {
        const __m256i p = pr.next_words();
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(row(diff, ds, y)),
                            _mm256_sub_epi16(widen(load<16>(row(cur, cs, y))), p));
        if constexpr (StorePred) _mm256_storeu_si256(reinterpret_cast<__m256i*>(row(pred, ps, y)), p);
    }
}

template <int H, int Pos>
void get_diff(const u8* cur, int cs, const u8* ref, int rs, s16* diff, int ds, s16* pred, int ps, int rc) {
    with_rounding_and_pred(rc, pred != nullptr, [&](auto r, auto store) {
        get_diff_at<H, Pos, r.value, store.value>(cur, cs, ref, rs, diff, ds, pred, ps);
    });
}

template <int H, int Pf, int Pb, int Rc>
void get_diff_bidir_at(const u8* cur, int cs, const u8* fwd, int fs, const u8* bwd, int bs, s16* diff, int ds) {
    Predictor<Pf, Rc> pf(fwd, fs);
    Predictor<Pb, Rc> pb(bwd, bs);
    for (int y = 0; y < H; ++y) {
        const __m256i b = widen(_mm_avg_epu8(pf.next(), pb.next()));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(row(diff, ds, y)),
                            _mm256_sub_epi16(widen(load<16>(row(cur, cs, y))), b));
    }
}

template <int H, int Pf, int Pb>
void get_diff_bidir(const u8* cur, int cs, const u8* fwd, int fs, const u8* bwd, int bs, s16* diff, int ds, int rc) {
    with_rounding(rc, [&](auto r) { get_diff_bidir_at<H, Pf, Pb, r.value>(cur, cs, fwd, fs, bwd, bs, diff, ds); });
}

void sub16x16(const u8* a, int as, const u8* b, int bs, s16* dst, int ds) {
    for (int y = 0; y < 16; ++y)
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(row(dst, ds, y)),
                            _mm256_sub_epi16(widen(load<16>(row(a, as, y))), widen(load<16>(row(b, bs, y)))));
}

// Squared residuals: the low 128 bits hold the left 8x8 block, the high the
// right one; prediction sums gather in 16-bit lanes (8 rows of 255 at most).
template <int H, int Pos>
void var_mean_diff(const u8* cur, int cs, const u8* ref, int rs, s32* squares, s32* pred_sums) {
    const __m256i one = _mm256_set1_epi16(1);
    Predictor<Pos, 0> pr(ref, rs);
    for (int band = 0; band < H / 8; ++band) {
        __m256i sq = _mm256_setzero_si256(), sp = sq;
        for (int y = 0; y < 8; ++y) {
            const __m256i p = pr.next_words();
            sq = _mm256_add_epi32(sq, squares_of(_mm256_sub_epi16(widen(load<16>(row(cur, cs, band * 8 + y))), p)));
            sp = _mm256_add_epi16(sp, p);
        }
        sp = _mm256_madd_epi16(sp, one);
        // hadd twice leaves each 128-bit half's total in its lowest lane.
        sq = _mm256_hadd_epi32(sq, sp);
        sq = _mm256_hadd_epi32(sq, sq);
        squares[2 * band] = _mm256_extract_epi32(sq, 0);
        squares[2 * band + 1] = _mm256_extract_epi32(sq, 4);
        pred_sums[2 * band] = _mm256_extract_epi32(sq, 1);
        pred_sums[2 * band + 1] = _mm256_extract_epi32(sq, 5);
    }
}

// 16-bit samples: a row of 16 in one register.
inline __m256i absdiff_epu16(__m256i a, __m256i b) {
    return _mm256_or_si256(_mm256_subs_epu16(a, b), _mm256_subs_epu16(b, a));
}
// Pair sums of unsigned 16-bit lanes, each lane biased by -32768.
inline __m256i biased_pair_sums(__m256i d) {
    return _mm256_madd_epi16(_mm256_xor_si256(d, _mm256_set1_epi16(-32768)), _mm256_set1_epi16(1));
}

inline __m256i pair_sums_lo(const u16* p) {
    const __m256i z = _mm256_setzero_si256();
    return _mm256_add_epi32(_mm256_unpacklo_epi16(load32(p), z), _mm256_unpacklo_epi16(load32(p + 1), z));
}
inline __m256i pair_sums_hi(const u16* p) {
    const __m256i z = _mm256_setzero_si256();
    return _mm256_add_epi32(_mm256_unpackhi_epi16(load32(p), z), _mm256_unpackhi_epi16(load32(p + 1), z));
}

template <int Pos>
s32 sad16x16_16u(const u16* cur, int cs, const u16* ref, int rs) {
    __m256i acc = _mm256_setzero_si256();
    __m256i prev = load32(ref), lo = _mm256_setzero_si256(), hi = lo;
    if constexpr (Pos == 3) lo = pair_sums_lo(ref), hi = pair_sums_hi(ref);
    for (int y = 0; y < 16; ++y) {
        const u16* r = row(ref, rs, y);
        __m256i p;
        if constexpr (Pos == 0) {
            p = load32(r);
        } else if constexpr (Pos == 2) {
            p = _mm256_avg_epu16(load32(r), load32(r + 1));
        } else if constexpr (Pos == 1) {
            const __m256i n = load32(row(r, rs, 1));
            p = _mm256_avg_epu16(prev, n);
            prev = n;
        } else {
            // Unpacking and packing within 128-bit lanes keeps the order.
            const __m256i nlo = pair_sums_lo(row(r, rs, 1)), nhi = pair_sums_hi(row(r, rs, 1));
            const __m256i two = _mm256_set1_epi32(2);
            p = _mm256_packus_epi32(_mm256_srli_epi32(_mm256_add_epi32(_mm256_add_epi32(lo, nlo), two), 2),
                                    _mm256_srli_epi32(_mm256_add_epi32(_mm256_add_epi32(hi, nhi), two), 2));
            lo = nlo;
            hi = nhi;
        }
        acc = _mm256_add_epi32(acc, biased_pair_sums(absdiff_epu16(load32(row(cur, cs, y)), p)));
    }
    return sum_epi32(acc) + 256 * 32768;
}

// Narrow 16-bit blocks (4 or 8 wide): one row widened to 32-bit lanes, so
// that every half-sample sum and difference is exact.
template <int N>
struct Wide;
template <>
struct Wide<8> {
    using V = __m256i;
    static V get(const u16* p) { return _mm256_cvtepu16_epi32(load<16>(p)); }
    static V add(V a, V b) { return _mm256_add_epi32(a, b); }
    static V set1(int v) { return _mm256_set1_epi32(v); }
    template <int S>
    static V shift(V v) {
        return _mm256_srli_epi32(v, S);
    }
    static V absdiff(V a, V b) { return _mm256_abs_epi32(_mm256_sub_epi32(a, b)); }
    static int sum(V v) { return sum_epi32(v); }
};
template <>
struct Wide<4> {
    using V = __m128i;
    static V get(const u16* p) { return _mm_cvtepu16_epi32(load<8>(p)); }
    static V add(V a, V b) { return _mm_add_epi32(a, b); }
    static V set1(int v) { return _mm_set1_epi32(v); }
    template <int S>
    static V shift(V v) {
        return _mm_srli_epi32(v, S);
    }
    static V absdiff(V a, V b) { return _mm_abs_epi32(_mm_sub_epi32(a, b)); }
    static int sum(V v) { return sum_epi32(v); }
};

template <int N, int Pos>
s32 sad_narrow_16u(const u16* cur, int cs, const u16* ref, int rs) {
    using O = Wide<N>;
    using V = typename O::V;
    const auto pair = [](const u16* p) { return O::add(O::get(p), O::get(p + 1)); };
    V prev{};
    if constexpr (Pos == 1) prev = O::get(ref);
    if constexpr (Pos == 3) prev = pair(ref);
    V acc{};
    for (int y = 0; y < N; ++y) {
        const u16* r = row(ref, rs, y);
        V p;
        if constexpr (Pos == 0) {
            p = O::get(r);
        } else if constexpr (Pos == 2) {
            p = O::template shift<1>(O::add(pair(r), O::set1(1)));
        } else if constexpr (Pos == 1) {
            const V n = O::get(row(r, rs, 1));
            p = O::template shift<1>(O::add(O::add(prev, n), O::set1(1)));
            prev = n;
        } else {
            const V n = pair(row(r, rs, 1));
            p = O::template shift<2>(O::add(O::add(prev, n), O::set1(2)));
            prev = n;
        }
        acc = O::add(acc, O::absdiff(O::get(row(cur, cs, y)), p));
    }
    return O::sum(acc);
}

// Lane i of the pair sums covers columns 2i and 2i + 1.
template <int B>
void sad_blocks_16u(const u16* cur, int cs, const u16* ref, int rs, u32* sads) {
    for (int band = 0; band < 16 / B; ++band) {
        __m256i acc = _mm256_setzero_si256();
        for (int y = band * B; y < band * B + B; ++y)
            acc = _mm256_add_epi32(acc,
                                   biased_pair_sums(absdiff_epu16(load32(row(cur, cs, y)), load32(row(ref, rs, y)))));
        acc = _mm256_hadd_epi32(acc, acc);  // 4x4 blocks in lanes 0, 1, 4, 5
        const __m256i bias = _mm256_set1_epi32(B * B * 32768);
        if constexpr (B == 4) {
            acc = _mm256_add_epi32(acc, bias);
            sads[4 * band + 0] = static_cast<u32>(_mm256_extract_epi32(acc, 0));
            sads[4 * band + 1] = static_cast<u32>(_mm256_extract_epi32(acc, 1));
            sads[4 * band + 2] = static_cast<u32>(_mm256_extract_epi32(acc, 4));
            sads[4 * band + 3] = static_cast<u32>(_mm256_extract_epi32(acc, 5));
        } else {
            acc = _mm256_add_epi32(_mm256_hadd_epi32(acc, acc), bias);
            sads[2 * band + 0] = static_cast<u32>(_mm256_extract_epi32(acc, 0));
            sads[2 * band + 1] = static_cast<u32>(_mm256_extract_epi32(acc, 4));
        }
    }
}

void frame_field_sad_16s(const s16* src, int step, s32* frame, s32* field) {
    const auto absdiff = [](__m256i a, __m256i b) {
        return _mm256_sub_epi16(_mm256_max_epi16(a, b), _mm256_min_epi16(a, b));
    };
    __m256i r[16];
    for (int y = 0; y < 16; ++y) r[y] = load32(row(src, step, y));
    __m256i fr = _mm256_setzero_si256(), fi = fr;
    for (int y = 0; y < 14; ++y) {
        if (y != 7) fr = _mm256_add_epi32(fr, biased_pair_sums(absdiff(r[y], r[y + 1])));
        fi = _mm256_add_epi32(fi, biased_pair_sums(absdiff(r[y], r[y + 2])));
    }
    fr = _mm256_add_epi32(fr, biased_pair_sums(absdiff(r[14], r[15])));
    // 224 samples in each sum.
    *frame = sum_epi32(fr) + 224 * 32768;
    *field = sum_epi32(fi) + 224 * 32768;
}

}  // namespace

void init_metrics_avx2(Table& t) {
    t.ownvc_SAD16x16HP_8u32s_C1R[3] = &sad16<16, 3>;
    t.ownvc_SAD16x8HP_8u32s_C1R[3] = &sad16<8, 3>;
    fill(t.ownvc_SAD16x16HP_16u32s_C1R, [](auto p) { return &sad16x16_16u<p.value>; });
    // 8x8 FH and HF gain nothing over pavgw in 16-bit lanes.
    t.ownvc_SAD8x8HP_16u32s_C1R[0] = &sad_narrow_16u<8, 0>;
    t.ownvc_SAD8x8HP_16u32s_C1R[3] = &sad_narrow_16u<8, 3>;
    fill(t.ownvc_SAD4x4HP_16u32s_C1R, [](auto p) { return &sad_narrow_16u<4, p.value>; });
    fill(t.sqr_diff16x16, [](auto p) { return &sqr_diff<p.value>; });
    fill(t.sqr_diff16x16_bidir, [](auto i) { return &sqr_diff_bidir<i.value % 4, i.value / 4>; });
    fill(t.GetDiff16x16FnTbl, [](auto i) { return &get_diff<16, i.value / 4>; });
    fill(t.GetDiff16x8FnTbl, [](auto i) { return &get_diff<8, i.value / 4>; });
    fill(t.GetDiff16x16BFnTbl, [](auto i) { return &get_diff_bidir<16, i.value % 4, i.value / 4>; });
    fill(t.GetDiff16x8BFnTbl, [](auto i) { return &get_diff_bidir<8, i.value % 4, i.value / 4>; });
    t.sub16x16 = &sub16x16;
    fill(t.var_mean_diff16x16, [](auto p) { return &var_mean_diff<16, p.value>; });
    fill(t.var_mean_diff16x8, [](auto p) { return &var_mean_diff<8, p.value>; });
    t.sad_blocks8x8_16u = &sad_blocks_16u<8>;
    t.sad_blocks4x4_16u = &sad_blocks_16u<4>;
    t.frame_field_sad_16s = &frame_field_sad_16s;
}

}  // namespace kivvc::metrics
