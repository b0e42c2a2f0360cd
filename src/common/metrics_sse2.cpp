// SSE2 block metrics. 8-bit sums of absolute differences use psadbw; squared
// differences widen to 16 bits and pair up with pmaddwd. Half-sample
// predictions are formed a row at a time, rounding up with pavgb (down by
// taking back the carried bit), four-sample averages in 16 bits reusing each
// row's horizontal sums for the next row. Unsigned 16-bit sums go through
// pmaddwd after a 0x8000 bias, taken back once at the end.
#include <emmintrin.h>

#include "common/metrics_helpers.h"
#include "common/metrics_kernels.h"
#include "common/metrics_x86.h"

namespace kivvc::metrics {
namespace {

// Horizontal pair sums of a row of W bytes widened to 16 bits.
template <int W>
struct PairSums {
    __m128i lo, hi;
    static PairSums of(const u8* p) {
        const __m128i z = _mm_setzero_si128();
        const __m128i a = load<W>(p), b = load<W>(p + 1);
        PairSums s;
        s.lo = _mm_add_epi16(_mm_unpacklo_epi8(a, z), _mm_unpacklo_epi8(b, z));
        s.hi = W == 16 ? _mm_add_epi16(_mm_unpackhi_epi8(a, z), _mm_unpackhi_epi8(b, z)) : z;
        return s;
    }
};

// Yields the half-sample prediction of one row of W bytes per next().
// Pos: 0 FF, 1 FH, 2 HF, 3 HH; Rc: 0 rounds up, 1 down.
template <int W, int Pos, int Rc>
struct Predictor {
    const u8* src;
    int step;
    __m128i prev{};           // FH: the previous row
    PairSums<W> prev_sums{};  // HH: its horizontal sums
    Predictor(const u8* s, int st) : src(s), step(st) {
        if constexpr (Pos == 1) prev = load<W>(src);
        if constexpr (Pos == 3) prev_sums = PairSums<W>::of(src);
    }
    __m128i next() {
        if constexpr (Pos == 0) {
            const __m128i v = load<W>(src);
            src += step;
            return v;
        } else if constexpr (Pos == 2) {
            const __m128i v = average2<Rc>(load<W>(src), load<W>(src + 1));
            src += step;
            return v;
        } else if constexpr (Pos == 1) {
            src += step;
            const __m128i n = load<W>(src);
            const __m128i v = average2<Rc>(prev, n);
            prev = n;
            return v;
        } else {
            src += step;
            const PairSums<W> n = PairSums<W>::of(src);
            const __m128i bias = _mm_set1_epi16(2 - Rc);
            const __m128i lo = _mm_srli_epi16(_mm_add_epi16(_mm_add_epi16(prev_sums.lo, n.lo), bias), 2);
            const __m128i hi = _mm_srli_epi16(_mm_add_epi16(_mm_add_epi16(prev_sums.hi, n.hi), bias), 2);
            prev_sums = n;
            return _mm_packus_epi16(lo, hi);
        }
    }
};

// Sum of squared byte differences of a and b, as four 32-bit partial sums.
template <int W>
inline __m128i squared_diffs(__m128i a, __m128i b) {
    const __m128i z = _mm_setzero_si128();
    const __m128i dlo = _mm_sub_epi16(_mm_unpacklo_epi8(a, z), _mm_unpacklo_epi8(b, z));
    __m128i s = _mm_madd_epi16(dlo, dlo);
    if constexpr (W == 16) {
        const __m128i dhi = _mm_sub_epi16(_mm_unpackhi_epi8(a, z), _mm_unpackhi_epi8(b, z));
        s = _mm_add_epi32(s, _mm_madd_epi16(dhi, dhi));
    }
    return s;
}

template <int W, int H, int Pos>
s32 sad(const u8* cur, int cs, const u8* ref, int rs) {
    Predictor<W, Pos, 0> pr(ref, rs);
    __m128i acc = _mm_setzero_si128();
    for (int y = 0; y < H; ++y) acc = _mm_add_epi32(acc, _mm_sad_epu8(load<W>(row(cur, cs, y)), pr.next()));
    return sum_halves(acc);
}

// 8-wide full-position SAD: two rows per register.
template <int H>
s32 sad8_full(const u8* cur, int cs, const u8* ref, int rs) {
    __m128i acc = _mm_setzero_si128();
    for (int y = 0; y < H; y += 2) {
        const __m128i c = _mm_unpacklo_epi64(load<8>(row(cur, cs, y)), load<8>(row(cur, cs, y + 1)));
        const __m128i r = _mm_unpacklo_epi64(load<8>(row(ref, rs, y)), load<8>(row(ref, rs, y + 1)));
        acc = _mm_add_epi32(acc, _mm_sad_epu8(c, r));
    }
    return sum_halves(acc);
}

s32 sad4x4_full(const u8* cur, int cs, const u8* ref, int rs) {
    const auto rows4 = [](const u8* p, int s) {
        return _mm_unpacklo_epi64(_mm_unpacklo_epi32(load<4>(p), load<4>(row(p, s, 1))),
                                  _mm_unpacklo_epi32(load<4>(row(p, s, 2)), load<4>(row(p, s, 3))));
    };
    return sum_halves(_mm_sad_epu8(rows4(cur, cs), rows4(ref, rs)));
}

template <int W, int H, int Pos>
s32 ssd(const u8* cur, int cs, const u8* ref, int rs) {
    Predictor<W, Pos, 0> pr(ref, rs);
    __m128i acc = _mm_setzero_si128();
    for (int y = 0; y < H; ++y) acc = _mm_add_epi32(acc, squared_diffs<W>(load<W>(row(cur, cs, y)), pr.next()));
    return sum_epi32(acc);
}

template <int Pf, int Pb>
s32 sqr_diff_bidir(const u8* cur, int cs, const u8* fwd, int fs, const u8* bwd, int bs) {
    Predictor<16, Pf, 0> pf(fwd, fs);
    Predictor<16, Pb, 0> pb(bwd, bs);
    __m128i acc = _mm_setzero_si128();
    for (int y = 0; y < 16; ++y) {
        const __m128i b = _mm_avg_epu8(pf.next(), pb.next());
        acc = _mm_add_epi32(acc, squared_diffs<16>(load<16>(row(cur, cs, y)), b));
    }
    return sum_epi32(acc);
}

// Stores c - p (W bytes each) as 16-bit differences, and p when asked.
template <int W, bool StorePred>
inline void store_diff(__m128i c, __m128i p, s16* d, s16* pred) {
    const __m128i z = _mm_setzero_si128();
    const __m128i plo = _mm_unpacklo_epi8(p, z);
    const __m128i dlo = _mm_sub_epi16(_mm_unpacklo_epi8(c, z), plo);
    if constexpr (W == 4) {
        store<8>(d, dlo);
        if constexpr (StorePred) store<8>(pred, plo);
    } else {
        store<16>(d, dlo);
        if constexpr (StorePred) store<16>(pred, plo);
    }
    if constexpr (W == 16) {
        const __m128i phi = _mm_unpackhi_epi8(p, z);
        store<16>(d + 8, _mm_sub_epi16(_mm_unpackhi_epi8(c, z), phi));
        if constexpr (StorePred) store<16>(pred + 8, phi);
    }
}

template <int W, int H, int Pos, int Rc, bool StorePred>
void get_diff_at(const u8* cur, int cs, const u8* ref, int rs, s16* diff, int ds, s16* pred, int ps) {
    Predictor<W, Pos, Rc> pr(ref, rs);
    for (int y = 0; y < H; ++y)
        store_diff<W, StorePred>(load<W>(row(cur, cs, y)), pr.next(), row(diff, ds, y),
                                 StorePred ? row(pred, ps, y) : nullptr);
}

template <int W, int H, int Pos>
void get_diff(const u8* cur, int cs, const u8* ref, int rs, s16* diff, int ds, s16* pred, int ps, int rc) {
    with_rounding_and_pred(rc, pred != nullptr, [&](auto r, auto store) {
        get_diff_at<W, H, Pos, r.value, store.value>(cur, cs, ref, rs, diff, ds, pred, ps);
    });
}

template <int W, int H, int Pf, int Pb, int Rc>
void get_diff_bidir_at(const u8* cur, int cs, const u8* fwd, int fs, const u8* bwd, int bs, s16* diff, int ds) {
    Predictor<W, Pf, Rc> pf(fwd, fs);
    Predictor<W, Pb, Rc> pb(bwd, bs);
    for (int y = 0; y < H; ++y)
        store_diff<W, false>(load<W>(row(cur, cs, y)), _mm_avg_epu8(pf.next(), pb.next()), row(diff, ds, y), nullptr);
}

template <int W, int H, int Pf, int Pb>
void get_diff_bidir(const u8* cur, int cs, const u8* fwd, int fs, const u8* bwd, int bs, s16* diff, int ds, int rc) {
    with_rounding(rc, [&](auto r) { get_diff_bidir_at<W, H, Pf, Pb, r.value>(cur, cs, fwd, fs, bwd, bs, diff, ds); });
}

template <int W, int H>
void sub(const u8* a, int as, const u8* b, int bs, s16* dst, int ds) {
    for (int y = 0; y < H; ++y)
        store_diff<W, false>(load<W>(row(a, as, y)), load<W>(row(b, bs, y)), row(dst, ds, y), nullptr);
}

// 16-bit samples: the difference wraps modulo 2^16, as psubw gives it.
template <int W, int H>
void sub16(const u16* a, int as, const u16* b, int bs, s16* dst, int ds) {
    constexpr int kBytes = W == 4 ? 8 : 16;
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; x += 8)
            store<kBytes>(row(dst, ds, y) + x,
                          _mm_sub_epi16(load<kBytes>(row(a, as, y) + x), load<kBytes>(row(b, bs, y) + x)));
}

s32 sub_sad8x8(const u8* a, int as, const u8* b, int bs, s16* dst, int ds) {
    __m128i acc = _mm_setzero_si128();
    for (int y = 0; y < 8; ++y) {
        const __m128i p = load<8>(row(a, as, y)), q = load<8>(row(b, bs, y));
        store_diff<8, false>(p, q, row(dst, ds, y), nullptr);
        acc = _mm_add_epi32(acc, _mm_sad_epu8(p, q));
    }
    return sum_halves(acc);
}

template <int W, int H>
Moments moments(const u8* src, int step) {
    const __m128i z = _mm_setzero_si128();
    __m128i sum = z, squares = z;
    for (int y = 0; y < H; ++y) {
        const __m128i v = load<W>(row(src, step, y));
        sum = _mm_add_epi32(sum, _mm_sad_epu8(v, z));
        squares = _mm_add_epi32(squares, squared_diffs<W>(v, z));
    }
    return Moments{sum_halves(sum), static_cast<u32>(sum_epi32(squares))};
}

// Squares wrap modulo 2^32 like the scalar sums (pmaddwd gives 2^31 for two
// -32768 squares, which is the same residue).
Moments moments8x8_16s(const s16* src, int step) {
    const __m128i one = _mm_set1_epi16(1);
    __m128i sum = _mm_setzero_si128(), squares = _mm_setzero_si128();
    for (int y = 0; y < 8; ++y) {
        const __m128i v = load<16>(row(src, step, y));
        sum = _mm_add_epi32(sum, _mm_madd_epi16(v, one));
        squares = _mm_add_epi32(squares, _mm_madd_epi16(v, v));
    }
    return Moments{sum_epi32(sum), static_cast<u32>(sum_epi32(squares))};
}

// Left and right 8x8 blocks of 16-wide rows: psadbw sums each half of the
// prediction; squared residuals of each half go to their own accumulator.
template <int H, int Pos>
void var_mean_diff(const u8* cur, int cs, const u8* ref, int rs, s32* squares, s32* pred_sums) {
    const __m128i z = _mm_setzero_si128();
    Predictor<16, Pos, 0> pr(ref, rs);
    for (int band = 0; band < H / 8; ++band) {
        __m128i sp = z, left = z, right = z;
        for (int y = 0; y < 8; ++y) {
            const __m128i p = pr.next();
            const __m128i c = load<16>(row(cur, cs, band * 8 + y));
            sp = _mm_add_epi32(sp, _mm_sad_epu8(p, z));
            left = _mm_add_epi32(left, squared_diffs<8>(c, p));
            right = _mm_add_epi32(right, squared_diffs<8>(_mm_unpackhi_epi64(c, c), _mm_unpackhi_epi64(p, p)));
        }
        squares[2 * band] = sum_epi32(left);
        squares[2 * band + 1] = sum_epi32(right);
        pred_sums[2 * band] = _mm_cvtsi128_si32(sp);
        pred_sums[2 * band + 1] = _mm_cvtsi128_si32(_mm_unpackhi_epi64(sp, sp));
    }
}

template <int N>
s32 mean_abs_dev(const u8* src, int step) {
    constexpr int kShift = N == 8 ? 6 : 8;
    const __m128i z = _mm_setzero_si128();
    __m128i sum = z;
    for (int y = 0; y < N; ++y) sum = _mm_add_epi32(sum, _mm_sad_epu8(load<N>(row(src, step, y)), z));
    const int mean = (sum_halves(sum) + (1 << (kShift - 1))) >> kShift;  // 0..255
    const __m128i m = _mm_set1_epi8(static_cast<char>(mean));
    __m128i dev = z;
    for (int y = 0; y < N; ++y) dev = _mm_add_epi32(dev, _mm_sad_epu8(load<N>(row(src, step, y)), m));
    // An 8-wide row compares its upper zero bytes with the mean too.
    return sum_halves(dev) - (N == 8 ? 8 * 8 * mean : 0);
}

void frame_field_sad(const u8* src, int step, s32* frame, s32* field) {
    __m128i r[16];
    for (int y = 0; y < 16; ++y) r[y] = load<16>(row(src, step, y));
    __m128i fr = _mm_setzero_si128(), fi = _mm_setzero_si128();
    for (int y = 0; y < 14; ++y) {
        if (y != 7) fr = _mm_add_epi32(fr, _mm_sad_epu8(r[y], r[y + 1]));
        fi = _mm_add_epi32(fi, _mm_sad_epu8(r[y], r[y + 2]));
    }
    fr = _mm_add_epi32(fr, _mm_sad_epu8(r[14], r[15]));
    *frame = sum_halves(fr);
    *field = sum_halves(fi);
}

// abs(a - b) of 16-bit lanes as unsigned 16-bit values.
inline __m128i absdiff_epi16(__m128i a, __m128i b) { return _mm_sub_epi16(_mm_max_epi16(a, b), _mm_min_epi16(a, b)); }
inline __m128i absdiff_epu16(__m128i a, __m128i b) { return _mm_or_si128(_mm_subs_epu16(a, b), _mm_subs_epu16(b, a)); }
// Pair sums of unsigned 16-bit lanes, each biased by -32768 per lane.
inline __m128i biased_pair_sums(__m128i d) {
    return _mm_madd_epi16(_mm_xor_si128(d, _mm_set1_epi16(-32768)), _mm_set1_epi16(1));
}

void frame_field_sad_16s(const s16* src, int step, s32* frame, s32* field) {
    __m128i fr = _mm_setzero_si128(), fi = _mm_setzero_si128();
    for (int half = 0; half < 16; half += 8) {
        __m128i r[16];
        for (int y = 0; y < 16; ++y) r[y] = load<16>(row(src, step, y) + half);
        for (int y = 0; y < 14; ++y) {
            if (y != 7) fr = _mm_add_epi32(fr, biased_pair_sums(absdiff_epi16(r[y], r[y + 1])));
            fi = _mm_add_epi32(fi, biased_pair_sums(absdiff_epi16(r[y], r[y + 2])));
        }
        fr = _mm_add_epi32(fr, biased_pair_sums(absdiff_epi16(r[14], r[15])));
    }
    // 224 samples in each sum.
    *frame = sum_epi32(fr) + 224 * 32768;
    *field = sum_epi32(fi) + 224 * 32768;
}

void sad_blocks8x8(const u8* cur, int cs, const u8* ref, int rs, u16* sads) {
    for (int band = 0; band < 2; ++band) {
        __m128i acc = _mm_setzero_si128();
        for (int y = band * 8; y < band * 8 + 8; ++y)
            acc = _mm_add_epi32(acc, _mm_sad_epu8(load<16>(row(cur, cs, y)), load<16>(row(ref, rs, y))));
        sads[2 * band] = static_cast<u16>(_mm_cvtsi128_si32(acc));
        sads[2 * band + 1] = static_cast<u16>(_mm_cvtsi128_si32(_mm_unpackhi_epi64(acc, acc)));
    }
}

// psadbw over the low dwords of each half (columns 0-3, 8-11) and over the
// high dwords shifted down (4-7, 12-15).
void sad_blocks4x4(const u8* cur, int cs, const u8* ref, int rs, u16* sads) {
    const __m128i low = _mm_set_epi32(0, -1, 0, -1);
    for (int band = 0; band < 4; ++band) {
        __m128i even = _mm_setzero_si128(), odd = even;
        for (int y = band * 4; y < band * 4 + 4; ++y) {
            const __m128i c = load<16>(row(cur, cs, y)), r = load<16>(row(ref, rs, y));
            even = _mm_add_epi32(even, _mm_sad_epu8(_mm_and_si128(c, low), _mm_and_si128(r, low)));
            odd = _mm_add_epi32(odd, _mm_sad_epu8(_mm_srli_epi64(c, 32), _mm_srli_epi64(r, 32)));
        }
        // even: blocks 0, 2 in dwords 0, 2; odd: blocks 1, 3.
        const __m128i all = _mm_or_si128(even, _mm_slli_epi64(odd, 32));
        store<8>(sads + 4 * band, _mm_packs_epi32(all, all));
    }
}

void sad_blocks8x8_16u(const u16* cur, int cs, const u16* ref, int rs, u32* sads) {
    for (int band = 0; band < 2; ++band) {
        __m128i left = _mm_setzero_si128(), right = left;
        for (int y = band * 8; y < band * 8 + 8; ++y) {
            const u16* c = row(cur, cs, y);
            const u16* r = row(ref, rs, y);
            left = _mm_add_epi32(left, biased_pair_sums(absdiff_epu16(load<16>(c), load<16>(r))));
            right = _mm_add_epi32(right, biased_pair_sums(absdiff_epu16(load<16>(c + 8), load<16>(r + 8))));
        }
        sads[2 * band] = static_cast<u32>(sum_epi32(left) + 64 * 32768);
        sads[2 * band + 1] = static_cast<u32>(sum_epi32(right) + 64 * 32768);
    }
}

void sad_blocks4x4_16u(const u16* cur, int cs, const u16* ref, int rs, u32* sads) {
    for (int band = 0; band < 4; ++band) {
        __m128i a0 = _mm_setzero_si128(), a1 = a0;
        for (int y = band * 4; y < band * 4 + 4; ++y) {
            const u16* c = row(cur, cs, y);
            const u16* r = row(ref, rs, y);
            a0 = _mm_add_epi32(a0, biased_pair_sums(absdiff_epu16(load<16>(c), load<16>(r))));
            a1 = _mm_add_epi32(a1, biased_pair_sums(absdiff_epu16(load<16>(c + 8), load<16>(r + 8))));
        }
        // a0 = [b0, b0, b1, b1] halves, a1 = [b2, b2, b3, b3] halves.
        const __m128i x = _mm_unpacklo_epi32(a0, a1), y = _mm_unpackhi_epi32(a0, a1);
        __m128i s = _mm_add_epi32(_mm_unpacklo_epi64(x, y), _mm_unpackhi_epi64(x, y));  // b0 b2 b1 b3
        s = _mm_shuffle_epi32(s, _MM_SHUFFLE(3, 1, 2, 0));
        store<16>(sads + 4 * band, _mm_add_epi32(s, _mm_set1_epi32(16 * 32768)));
    }
}

// 16-bit half-sample prediction of 4 or 8 lanes; four-sample sums in 32 bits.
template <int N, int Pos>
struct Predictor16 {
    static constexpr int kBytes = 2 * N;
    struct Sums {
        __m128i lo, hi;
    };
    const u16* src;
    int step;
    __m128i prev{};
    Sums prev_sums{};
    static Sums sums_of(const u16* p) {
        const __m128i z = _mm_setzero_si128();
        const __m128i a = load<kBytes>(p), b = load<kBytes>(p + 1);
        return Sums{_mm_add_epi32(_mm_unpacklo_epi16(a, z), _mm_unpacklo_epi16(b, z)),
                    _mm_add_epi32(_mm_unpackhi_epi16(a, z), _mm_unpackhi_epi16(b, z))};
    }
    Predictor16(const u16* s, int st) : src(s), step(st) {
        if constexpr (Pos == 1) prev = load<kBytes>(src);
        if constexpr (Pos == 3) prev_sums = sums_of(src);
    }
    __m128i next() {
        __m128i v;
        if constexpr (Pos == 0) {
            v = load<kBytes>(src);
        } else if constexpr (Pos == 2) {
            v = _mm_avg_epu16(load<kBytes>(src), load<kBytes>(src + 1));
        } else if constexpr (Pos == 1) {
            const __m128i n = load<kBytes>(row(src, step, 1));
            v = _mm_avg_epu16(prev, n);
            prev = n;
        } else {
            const Sums n = sums_of(row(src, step, 1));
            const __m128i two = _mm_set1_epi32(2);
            // 0..65535 after the shift; biased into the signed range to pack.
            const __m128i bias = _mm_set1_epi32(32768);
            const __m128i lo =
                _mm_sub_epi32(_mm_srli_epi32(_mm_add_epi32(_mm_add_epi32(prev_sums.lo, n.lo), two), 2), bias);
            const __m128i hi =
                _mm_sub_epi32(_mm_srli_epi32(_mm_add_epi32(_mm_add_epi32(prev_sums.hi, n.hi), two), 2), bias);
            v = _mm_xor_si128(_mm_packs_epi32(lo, hi), _mm_set1_epi16(-32768));
            prev_sums = n;
        }
        src = row(src, step, 1);
        return v;
    }
};

template <int W, int H, int Pos>
s32 sad16(const u16* cur, int cs, const u16* ref, int rs) {
    constexpr int N = W == 4 ? 4 : 8;
    __m128i acc = _mm_setzero_si128();
    for (int x = 0; x < W; x += N) {
        Predictor16<N, Pos> pr(ref + x, rs);
        for (int y = 0; y < H; ++y)
            acc = _mm_add_epi32(acc, biased_pair_sums(absdiff_epu16(load<2 * N>(row(cur, cs, y) + x), pr.next())));
    }
    // A 4-wide load leaves four zero lanes on both sides: they too carry the bias.
    return sum_epi32(acc) + 8 * H * (W == 4 ? 1 : W / 8) * 32768;
}

// Steps to the right (the row shifted by one byte; column 15 masked off) and
// down, capped at 127 so that the signed byte comparison sees them as
// non-negative.
u8 edges_detect(const u8* src, int step, int diffThreshold, int countThreshold) {
    const __m128i td = _mm_set1_epi8(static_cast<char>(diffThreshold));
    const __m128i cap = _mm_set1_epi8(127);
    const auto step_of = [&](__m128i a, __m128i b) {
        const __m128i d = _mm_min_epu8(_mm_or_si128(_mm_subs_epu8(a, b), _mm_subs_epu8(b, a)), cap);
        return _mm_cmpgt_epi8(d, td);
    };
    int count = 0;
    __m128i cur = load<16>(src);
    for (int y = 0; y < 15; ++y) {
        const __m128i below = load<16>(row(src, step, y + 1));
        const __m128i hits = _mm_or_si128(step_of(cur, _mm_srli_si128(cur, 1)), step_of(cur, below));
        count += __builtin_popcount(static_cast<unsigned>(_mm_movemask_epi8(hits)) & 0x7FFFu);
        if (count > countThreshold) return 1;
        cur = below;
    }
    return 0;
}

u32 count_zeros(const s16* coefs) {
    const __m128i z = _mm_setzero_si128();
    __m128i n = z;
    for (int i = 0; i < 64; i += 16) {
        const __m128i a = _mm_cmpeq_epi16(load<16>(coefs + i), z);
        const __m128i b = _mm_cmpeq_epi16(load<16>(coefs + i + 8), z);
        n = _mm_sub_epi8(n, _mm_packs_epi16(a, b));
    }
    return static_cast<u32>(sum_halves(_mm_sad_epu8(n, z)));
}

struct GetDiffKernels {
    template <int W, int H, int Pos>
    static constexpr GetDiffFn at = &get_diff<W, H, Pos>;
    template <int W, int H, int Pf, int Pb>
    static constexpr GetDiffBFn bidir = &get_diff_bidir<W, H, Pf, Pb>;
};

}  // namespace

void init_metrics_sse2(Table& t) {
    fill(t.ownvc_SAD16x16HP_8u32s_C1R, [](auto p) { return &sad<16, 16, p.value>; });
    fill(t.ownvc_SAD16x8HP_8u32s_C1R, [](auto p) { return &sad<16, 8, p.value>; });
    fill(t.ownvc_SAD8x8HP_8u32s_C1R, [](auto p) { return &sad<8, 8, p.value>; });
    t.ownvc_SAD8x8HP_8u32s_C1R[0] = &sad8_full<8>;
    fill(t.ownvc_SAD4x4HP_16u32s_C1R, [](auto p) { return &sad16<4, 4, p.value>; });
    fill(t.ownvc_SAD8x8HP_16u32s_C1R, [](auto p) { return &sad16<8, 8, p.value>; });
    fill(t.ownvc_SAD16x16HP_16u32s_C1R, [](auto p) { return &sad16<16, 16, p.value>; });
    fill(t.ownvc_SSD8x8HP_8u32s_C1R, [](auto p) { return &ssd<8, 8, p.value>; });
    fill(t.ownvc_SSD4x4HP_8u32s_C1R, [](auto p) { return &ssd<4, 4, p.value>; });
    t.sad4x4 = &sad4x4_full;
    fill(t.sqr_diff16x16, [](auto p) { return &ssd<16, 16, p.value>; });
    fill(t.sqr_diff16x16_bidir, [](auto i) { return &sqr_diff_bidir<i.value % 4, i.value / 4>; });

    fill_get_diff<GetDiffKernels>(t);

    t.sub4x4 = &sub<4, 4>;
    t.sub8x8 = &sub<8, 8>;
    t.sub16x16 = &sub<16, 16>;
    t.sub4x4_16u = &sub16<4, 4>;
    t.sub8x8_16u = &sub16<8, 8>;
    t.sub_sad8x8 = &sub_sad8x8;

    t.moments16x16 = &moments<16, 16>;
    t.moments8x8 = &moments<8, 8>;
    t.moments8x8_16s = &moments8x8_16s;
    fill(t.var_mean_diff16x16, [](auto p) { return &var_mean_diff<16, p.value>; });
    fill(t.var_mean_diff16x8, [](auto p) { return &var_mean_diff<8, p.value>; });
    t.mean_abs_dev8x8 = &mean_abs_dev<8>;
    t.mean_abs_dev16x16 = &mean_abs_dev<16>;
    t.frame_field_sad = &frame_field_sad;
    t.frame_field_sad_16s = &frame_field_sad_16s;
    t.sad_blocks8x8 = &sad_blocks8x8;
    t.sad_blocks4x4 = &sad_blocks4x4;
    t.sad_blocks8x8_16u = &sad_blocks8x8_16u;
    t.sad_blocks4x4_16u = &sad_blocks4x4_16u;
    t.edges_detect = &edges_detect;
    t.count_zeros = &count_zeros;
}

}  // namespace kivvc::metrics
