// Scalar references of the block copy, average and add kernels.
#include <utility>

#include "common/block_kernels.h"
#include "core/arith.h"

namespace kivvc::block {
namespace {

// Half-sample prediction at column x of the row `s` (next row at s + step).
// Acc: 0 full, 1 HF, 2 FH, 3 HH. Round: 0 rounds up, 1 down.
template <int Acc, int Round>
inline int predict(const u8* s, int step, int x) {
    if constexpr (Acc == 0) {
        return s[x];
    } else if constexpr (Acc == 1) {
        return (s[x] + s[x + 1] + 1 - Round) >> 1;
    } else if constexpr (Acc == 2) {
        return (s[x] + s[x + step] + 1 - Round) >> 1;
    } else {
        return (s[x] + s[x + 1] + s[x + step] + s[x + step + 1] + 2 - Round) >> 2;
    }
}

template <int W, int H, int Acc, int Round>
void copy_hp(const u8* src, int srcStep, u8* dst, int dstStep) {
    for (int y = 0; y < H; ++y, src += srcStep, dst += dstStep)
        for (int x = 0; x < W; ++x) dst[x] = static_cast<u8>(predict<Acc, Round>(src, srcStep, x));
}

template <int W, int H, int Acc, int Round>
void interpolate_average_hp(const u8* src, int srcStep, u8* dst, int dstStep) {
    for (int y = 0; y < H; ++y, src += srcStep, dst += dstStep)
        for (int x = 0; x < W; ++x)
            dst[x] = static_cast<u8>(avg_round_up(dst[x], predict<Acc, Round>(src, srcStep, x)));
}

template <int Acc, int Round>
void add8x8_hp(const s16* res, int resStep, const u8* ref, int refStep, u8* dst, int dstStep) {
    for (int y = 0; y < 8; ++y, ref += refStep, dst += dstStep) {
        const s16* r = reinterpret_cast<const s16*>(reinterpret_cast<const u8*>(res) + y * resStep);
        for (int x = 0; x < 8; ++x) dst[x] = clip_u8(wrap_s16(predict<Acc, Round>(ref, refStep, x) + r[x]));
    }
}

template <int W, int H>
void average(const u8* a, int aStep, const u8* b, int bStep, u8* dst, int dstStep) {
    for (int y = 0; y < H; ++y, a += aStep, b += bStep, dst += dstStep)
        for (int x = 0; x < W; ++x) dst[x] = static_cast<u8>(avg_round_up(a[x], b[x]));
}

void add8x8(const s16* res, int resStep, u8* dst, int dstStep) {
    for (int y = 0; y < 8; ++y, dst += dstStep) {
        const s16* r = reinterpret_cast<const s16*>(reinterpret_cast<const u8*>(res) + y * resStep);
        for (int x = 0; x < 8; ++x) dst[x] = clip_u8(wrap_s16(dst[x] + r[x]));
    }
}

void add_const8x8(s16 value, u8* dst, int dstStep) {
    for (int y = 0; y < 8; ++y, dst += dstStep)
        for (int x = 0; x < 8; ++x) dst[x] = clip_u8(wrap_s16(dst[x] + value));
}

template <int W, int H>
struct CopyK {
    template <int Acc, int Round>
    struct At {
        static constexpr CopyFn fn = &copy_hp<W, H, Acc, Round>;
    };
};
template <int W, int H>
struct AvgK {
    template <int Acc, int Round>
    struct At {
        static constexpr CopyFn fn = &interpolate_average_hp<W, H, Acc, Round>;
    };
};
template <int Acc, int Round>
struct AddK {
    static constexpr AddHpFn fn = &add8x8_hp<Acc, Round>;
};

// Vertical flag first: swap the HF and FH pairs.
void fill_vertical_first(CopyFn (&dst)[kHpEntries], const CopyFn (&src)[kHpEntries]) {
    static constexpr int kFrom[kHpEntries] = {0, 1, 4, 5, 2, 3, 6, 7};
    for (int i = 0; i < kHpEntries; ++i) dst[i] = src[kFrom[i]];
}

}  // namespace

void init_block(Table& t, CpuFlags cpu) {
    fill_hp_table<CopyK<8, 4>::At>(t.ownvc_Copy8x4HP_8u_C1R);
    fill_hp_table<CopyK<8, 8>::At>(t.ownvc_Copy8x8HP_8u_C1R);
    fill_hp_table<CopyK<16, 8>::At>(t.ownvc_Copy16x8HP_8u_C1R);
    fill_hp_table<CopyK<16, 16>::At>(t.ownvc_Copy16x16HP_8u_C1R);
    fill_hp_table<CopyK<4, 8>::At>(t.ownvc_Copy4x8HP_8u_C1R);
    fill_hp_table<CopyK<4, 4>::At>(t.copy4x4_hp);
    fill_hp_table<AddK>(t.ownvc_Add8x8HP_16s8u_C1RS);
    fill_hp_table<AvgK<8, 4>::At>(t.ownvc_InterpolateAverage8x4HP_8u_C1IR);
    fill_hp_table<AvgK<8, 8>::At>(t.ownvc_InterpolateAverage8x8HP_8u_C1IR);
    fill_hp_table<AvgK<16, 8>::At>(t.ownvc_InterpolateAverage16x8HP_8u_C1IR);
    fill_hp_table<AvgK<16, 16>::At>(t.ownvc_InterpolateAverage16x16HP_8u_C1IR);
    t.average8x8 = &average<8, 8>;
    t.average16x16 = &average<16, 16>;
    t.add8x8 = &add8x8;
    t.add_const8x8 = &add_const8x8;

#if KIVVC_X86
    if (cpu & kSse2) {
        init_block_sse2(t);
        if (cpu & kAvx2) init_block_avx2(t);
    }
#else
    (void)cpu;
#endif

    fill_vertical_first(t.copy4x4_vertical_first, t.copy4x4_hp);
    fill_vertical_first(t.copy8x4_vertical_first, t.ownvc_Copy8x4HP_8u_C1R);
    fill_vertical_first(t.copy8x8_vertical_first, t.ownvc_Copy8x8HP_8u_C1R);
    fill_vertical_first(t.copy16x16_vertical_first, t.ownvc_Copy16x16HP_8u_C1R);
}

const Table& table() { return process_table<Table, init_block>(); }

}  // namespace kivvc::block
