// Scalar references of the block metrics kernels.
#include <cstdlib>

#include "common/metrics_helpers.h"
#include "common/metrics_kernels.h"
#include "core/arith.h"

namespace kivvc::metrics {
namespace {

// Half-sample prediction at column x of row r (next row one step on).
// Pos: 0 FF, 1 FH, 2 HF, 3 HH. Rc: 0 rounds up, 1 down.
template <int Pos, int Rc, class T>
inline int predict(const T* r, int step, int x) {
    if constexpr (Pos == 0) {
        return r[x];
    } else if constexpr (Pos == 2) {
        return (r[x] + r[x + 1] + 1 - Rc) >> 1;
    } else {
        const T* n = row(r, step, 1);
        if constexpr (Pos == 1)
            return (r[x] + n[x] + 1 - Rc) >> 1;
        else
            return (r[x] + r[x + 1] + n[x] + n[x + 1] + 2 - Rc) >> 2;
    }
}

struct Abs {
    static int of(int d) { return std::abs(d); }
};
struct Square {
    static int of(int d) { return d * d; }
};

// 16-bit 16x16 SAD reaches 256 * 65535: fits in 32 bits.
template <int W, int H, int Pos, class Op, class T>
s32 distortion(const T* cur, int cs, const T* ref, int rs) {
    s32 sum = 0;
    for (int y = 0; y < H; ++y) {
        const T* c = row(cur, cs, y);
        const T* r = row(ref, rs, y);
        for (int x = 0; x < W; ++x) sum += Op::of(c[x] - predict<Pos, 0>(r, rs, x));
    }
    return sum;
}

template <int Pf, int Pb>
s32 sqr_diff_bidir(const u8* cur, int cs, const u8* fwd, int fs, const u8* bwd, int bs) {
    s32 sum = 0;
    for (int y = 0; y < 16; ++y) {
        const u8* c = row(cur, cs, y);
        const u8* f = row(fwd, fs, y);
        const u8* b = row(bwd, bs, y);
        for (int x = 0; x < 16; ++x) {
            const int d = c[x] - avg_round_up(predict<Pf, 0>(f, fs, x), predict<Pb, 0>(b, bs, x));
            sum += d * d;
        }
    }
    return sum;
}

template <int W, int H, int Pos, int Rc, bool StorePred>
void get_diff_at(const u8* cur, int cs, const u8* ref, int rs, s16* diff, int ds, s16* pred, int ps) {
    for (int y = 0; y < H; ++y) {
        const u8* c = row(cur, cs, y);
        const u8* r = row(ref, rs, y);
        s16* d = row(diff, ds, y);
        for (int x = 0; x < W; ++x) {
            const int p = predict<Pos, Rc>(r, rs, x);
            d[x] = static_cast<s16>(c[x] - p);
            if constexpr (StorePred) row(pred, ps, y)[x] = static_cast<s16>(p);
        }
    }
}

template <int W, int H, int Pos>
void get_diff(const u8* cur, int cs, const u8* ref, int rs, s16* diff, int ds, s16* pred, int ps, int rc) {
    with_rounding_and_pred(rc, pred != nullptr, [&](auto r, auto store) {
        get_diff_at<W, H, Pos, r.value, store.value>(cur, cs, ref, rs, diff, ds, pred, ps);
    });
}

template <int W, int H, int Pf, int Pb, int Rc>
void get_diff_bidir_at(const u8* cur, int cs, const u8* fwd, int fs, const u8* bwd, int bs, s16* diff, int ds) {
    for (int y = 0; y < H; ++y) {
        const u8* c = row(cur, cs, y);
        const u8* f = row(fwd, fs, y);
        const u8* b = row(bwd, bs, y);
        s16* d = row(diff, ds, y);
        for (int x = 0; x < W; ++x)
            d[x] = static_cast<s16>(c[x] - avg_round_up(predict<Pf, Rc>(f, fs, x), predict<Pb, Rc>(b, bs, x)));
    }
}

template <int W, int H, int Pf, int Pb>
void get_diff_bidir(const u8* cur, int cs, const u8* fwd, int fs, const u8* bwd, int bs, s16* diff, int ds, int rc) {
    with_rounding(rc, [&](auto r) { get_diff_bidir_at<W, H, Pf, Pb, r.value>(cur, cs, fwd, fs, bwd, bs, diff, ds); });
}

template <int W, int H, class T>
void sub(const T* a, int as, const T* b, int bs, s16* dst, int ds) {
    for (int y = 0; y < H; ++y) {
        const T* p = row(a, as, y);
        const T* q = row(b, bs, y);
        s16* d = row(dst, ds, y);
        for (int x = 0; x < W; ++x) d[x] = wrap_s16(p[x] - q[x]);
    }
}

s32 sub_sad8x8(const u8* a, int as, const u8* b, int bs, s16* dst, int ds) {
    sub<8, 8>(a, as, b, bs, dst, ds);
    return distortion<8, 8, 0, Abs>(a, as, b, bs);
}

// Sums wrap modulo 2^32 (only the squares of large 16-bit samples can).
template <int W, int H, class T>
Moments moments(const T* src, int step) {
    u32 sum = 0, squares = 0;
    for (int y = 0; y < H; ++y) {
        const T* s = row(src, step, y);
        for (int x = 0; x < W; ++x) {
            const s32 v = s[x];
            sum += static_cast<u32>(v);
            squares += static_cast<u32>(v * v);
        }
    }
    return Moments{static_cast<s32>(sum), squares};
}

template <int H, int Pos>
void var_mean_diff(const u8* cur, int cs, const u8* ref, int rs, s32* squares, s32* pred_sums) {
    for (int i = 0; i < H / 4; ++i) squares[i] = pred_sums[i] = 0;
    for (int y = 0; y < H; ++y) {
        const u8* c = row(cur, cs, y);
        const u8* r = row(ref, rs, y);
        for (int x = 0; x < 16; ++x) {
            const int p = predict<Pos, 0>(r, rs, x);
            const int block = x / 8 + 2 * (y / 8);
            squares[block] += (c[x] - p) * (c[x] - p);
            pred_sums[block] += p;
        }
    }
}

template <int N>
s32 mean_abs_dev(const u8* src, int step) {
    constexpr int kShift = N == 8 ? 6 : 8;
    s32 sum = 0;
    for (int y = 0; y < N; ++y)
        for (int x = 0; x < N; ++x) sum += row(src, step, y)[x];
    const int mean = (sum + (1 << (kShift - 1))) >> kShift;
    s32 dev = 0;
    for (int y = 0; y < N; ++y)
        for (int x = 0; x < N; ++x) dev += std::abs(row(src, step, y)[x] - mean);
    return dev;
}

template <class T>
void frame_field_sad(const T* src, int step, s32* frame, s32* field) {
    s32 fr = 0, fi = 0;
    for (int y = 0; y < 14; ++y) {
        const T* a = row(src, step, y);
        const T* b = row(src, step, y + 1);
        const T* c = row(src, step, y + 2);
        for (int x = 0; x < 16; ++x) {
            if (y != 7) fr += std::abs(a[x] - b[x]);
            fi += std::abs(a[x] - c[x]);
        }
    }
    // Row pair 14/15 belongs to the frame sum; pair 7/8 does not.
    const T* a = row(src, step, 14);
    const T* b = row(src, step, 15);
    for (int x = 0; x < 16; ++x) fr += std::abs(a[x] - b[x]);
    *frame = fr;
    *field = fi;
}

template <int B, class T, class R>
void sad_blocks(const T* cur, int cs, const T* ref, int rs, R* sads) {
    constexpr int kPerRow = 16 / B;
    for (int i = 0; i < kPerRow * kPerRow; ++i) sads[i] = 0;
    for (int y = 0; y < 16; ++y) {
        const T* c = row(cur, cs, y);
        const T* r = row(ref, rs, y);
        for (int x = 0; x < 16; ++x)
            sads[y / B * kPerRow + x / B] = static_cast<R>(sads[y / B * kPerRow + x / B] + std::abs(c[x] - r[x]));
    }
}

u8 edges_detect(const u8* src, int step, int diffThreshold, int countThreshold) {
    // The difference threshold is compared as a signed byte.
    const int td = static_cast<std::int8_t>(static_cast<u8>(diffThreshold));
    int count = 0;
    for (int y = 0; y < 15; ++y) {
        const u8* p = row(src, step, y);
        const u8* n = row(src, step, y + 1);
        for (int x = 0; x < 15; ++x) {
            const int h = std::abs(p[x + 1] - p[x]) < 127 ? std::abs(p[x + 1] - p[x]) : 127;
            const int v = std::abs(n[x] - p[x]) < 127 ? std::abs(n[x] - p[x]) : 127;
            if (h > td || v > td) ++count;
        }
        if (count > countThreshold) return 1;
    }
    return 0;
}

u32 count_zeros(const s16* coefs) {
    u32 n = 0;
    for (int i = 0; i < 64; ++i) n += coefs[i] == 0;
    return n;
}

void scan_fwd(const s16* src, s16* dst, int count, const std::int32_t* scan) {
    if (count >= 20) {
        for (int i = 0; i < 64; ++i) dst[i] = src[scan[i]];
        return;
    }
    for (int i = 0; i < 64; ++i) dst[i] = 0;
    int found = 0;
    for (int i = 0; i < 64 && found < count; ++i) {
        const s16 v = src[scan[i]];
        if (v != 0) {
            dst[i] = v;
            ++found;
        }
    }
}

void scan_inv(const s16* src, s16* dst, int last, const std::int32_t* scan) {
    for (int i = 0; i < 64; ++i) dst[i] = 0;
    dst[0] = src[0];
    for (int i = 1; i <= last; ++i) dst[scan[i]] = src[i];
}

struct GetDiffKernels {
    template <int W, int H, int Pos>
    static constexpr GetDiffFn at = &get_diff<W, H, Pos>;
    template <int W, int H, int Pf, int Pb>
    static constexpr GetDiffBFn bidir = &get_diff_bidir<W, H, Pf, Pb>;
};

}  // namespace

void init_metrics(Table& t, CpuFlags cpu) {
    fill(t.ownvc_SAD16x16HP_8u32s_C1R, [](auto p) { return &distortion<16, 16, p.value, Abs, u8>; });
    fill(t.ownvc_SAD16x8HP_8u32s_C1R, [](auto p) { return &distortion<16, 8, p.value, Abs, u8>; });
    fill(t.ownvc_SAD8x8HP_8u32s_C1R, [](auto p) { return &distortion<8, 8, p.value, Abs, u8>; });
    fill(t.ownvc_SAD4x4HP_16u32s_C1R, [](auto p) { return &distortion<4, 4, p.value, Abs, u16>; });
    fill(t.ownvc_SAD8x8HP_16u32s_C1R, [](auto p) { return &distortion<8, 8, p.value, Abs, u16>; });
    fill(t.ownvc_SAD16x16HP_16u32s_C1R, [](auto p) { return &distortion<16, 16, p.value, Abs, u16>; });
    fill(t.ownvc_SSD8x8HP_8u32s_C1R, [](auto p) { return &distortion<8, 8, p.value, Square, u8>; });
    fill(t.ownvc_SSD4x4HP_8u32s_C1R, [](auto p) { return &distortion<4, 4, p.value, Square, u8>; });
    t.sad4x4 = &distortion<4, 4, 0, Abs, u8>;
    fill(t.sqr_diff16x16, [](auto p) { return &distortion<16, 16, p.value, Square, u8>; });
    fill(t.sqr_diff16x16_bidir, [](auto i) { return &sqr_diff_bidir<i.value % 4, i.value / 4>; });

    fill_get_diff<GetDiffKernels>(t);

    t.sub4x4 = &sub<4, 4, u8>;
    t.sub8x8 = &sub<8, 8, u8>;
    t.sub16x16 = &sub<16, 16, u8>;
    t.sub4x4_16u = &sub<4, 4, u16>;
    t.sub8x8_16u = &sub<8, 8, u16>;
    t.sub_sad8x8 = &sub_sad8x8;

    t.moments16x16 = &moments<16, 16, u8>;
    t.moments8x8 = &moments<8, 8, u8>;
    t.moments8x8_16s = &moments<8, 8, s16>;
    fill(t.var_mean_diff16x16, [](auto p) { return &var_mean_diff<16, p.value>; });
    fill(t.var_mean_diff16x8, [](auto p) { return &var_mean_diff<8, p.value>; });
    t.mean_abs_dev8x8 = &mean_abs_dev<8>;
    t.mean_abs_dev16x16 = &mean_abs_dev<16>;
    t.frame_field_sad = &frame_field_sad<u8>;
    t.frame_field_sad_16s = &frame_field_sad<s16>;
    t.sad_blocks8x8 = &sad_blocks<8, u8, u16>;
    t.sad_blocks4x4 = &sad_blocks<4, u8, u16>;
    t.sad_blocks8x8_16u = &sad_blocks<8, u16, u32>;
    t.sad_blocks4x4_16u = &sad_blocks<4, u16, u32>;
    t.edges_detect = &edges_detect;
    t.count_zeros = &count_zeros;
    t.scan_fwd = &scan_fwd;
    t.scan_inv = &scan_inv;

#if KIVVC_X86
    if (!(cpu & kSse2)) return;
    init_metrics_sse2(t);
    if (!(cpu & kAvx2)) return;
    init_metrics_avx2(t);
#else
    (void)cpu;
#endif
}

const Table& table() { return process_table<Table, init_metrics>(); }

}  // namespace kivvc::metrics
