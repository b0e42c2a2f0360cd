// VC-1 interpolation at every position and rounding control, deblocking with
// its third-line rule, the inverse quantisers with their non-zero region and
// range mapping, each against its formula.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "kivvc.h"
#include "support/kernel_case.h"

namespace {

using kivvc::test::Rng;

// A source picture with a margin of 4 around the block and a destination of
// 20 x 20 whose samples outside the block are guards.
struct InterpolationBuffers {
    static constexpr int kSrcStep = 28, kDstStep = 20;
    std::vector<Kiv8u> src = std::vector<Kiv8u>(kSrcStep * 26);
    std::vector<Kiv8u> dst = std::vector<Kiv8u>(kDstStep * 20);
    int s(int x, int y) const { return src[(y + 4) * kSrcStep + x + 4]; }
    void fill(Rng& rng, bool extremes) {
        for (auto& v : src) v = extremes ? (rng.chance(2) ? 0 : 255) : Kiv8u(rng.next());
        std::fill(dst.begin(), dst.end(), Kiv8u(0xA5));
    }
    KivInterpolate_8u record(int w, int h, int dx, int dy, int rc) {
        return KivInterpolate_8u{&src[4 * kSrcStep + 4], kSrcStep, dst.data(), kDstStep, dx, dy, {w, h}, rc};
    }
    // Compares the block with want(x, y) and the guards with their fill.
    template <class F>
    void expect(int w, int h, F want, const char* what) const {
        for (int y = 0; y < 20; ++y)
            for (int x = 0; x < 20; ++x) {
                const int expected = (x < w && y < h) ? want(x, y) : 0xA5;
                ASSERT_EQ(dst[y * kDstStep + x], expected) << what << " at " << x << "," << y;
            }
    }
};

int bilinear_model(const InterpolationBuffers& b, int x, int y, int dx, int dy, int rc) {
    return ((4 - dx) * (4 - dy) * b.s(x, y) + dx * (4 - dy) * b.s(x + 1, y) + (4 - dx) * dy * b.s(x, y + 1) +
            dx * dy * b.s(x + 1, y + 1) + 8 - rc) >> 4;
}

// The filter as described: taps per fraction, shifts by the number of halves.
constexpr int kTaps[4][4] = {{0, 0, 0, 0}, {-4, 53, 18, -3}, {-1, 9, 9, -1}, {-3, 18, 53, -4}};

int bicubic_model(const InterpolationBuffers& b, int x, int y, int dx, int dy, int rc) {
    auto vertical = [&](int col, int shift, int round) {
        int s = 0;
        for (int k = 0; k < 4; ++k) s += kTaps[dy][k] * b.s(col, y + k - 1);
        return (s + round) >> shift;
    };
    if (dx == 0 && dy == 0) return b.s(x, y);
    if (dx == 0) {
        const int shift = dy == 2 ? 4 : 6;
        return std::clamp(vertical(x, shift, (1 << (shift - 1)) - 1 + rc), 0, 255);
    }
    if (dy == 0) {
        const int shift = dx == 2 ? 4 : 6;
        int s = 0;
        for (int k = 0; k < 4; ++k) s += kTaps[dx][k] * b.s(x + k - 1, y);
        return std::clamp((s + (1 << (shift - 1)) - rc) >> shift, 0, 255);
    }
    const int halves = (dx == 2) + (dy == 2);
    const int shift = halves == 0 ? 5 : halves == 1 ? 3 : 1;
    int s = 0;
    for (int k = 0; k < 4; ++k) s += kTaps[dx][k] * vertical(x + k - 1, shift, (1 << (shift - 1)) - 1 + rc);
    return std::clamp((s + 64 - rc) >> 7, 0, 255);
}

TEST(Vc1Interpolation, EveryPositionSizeAndRounding) {
    Rng rng(1311);
    InterpolationBuffers b;
    // Requested size, the size served.
    const std::vector<std::array<int, 4>> sizes[2] = {
        {{16, 16, 16, 16}, {8, 8, 8, 8}, {8, 4, 8, 4}, {8, 2, 8, 4}, {4, 4, 4, 4}, {5, 9, 4, 4}},
        {{8, 8, 8, 8}, {16, 8, 16, 8}, {16, 16, 16, 16}, {8, 4, 8, 4}, {4, 4, 4, 4}, {8, 16, 8, 16}, {3, 5, 3, 5},
         {16, 1, 16, 1}}};
    for (int bicubic = 0; bicubic < 2; ++bicubic)
        for (const auto& sz : sizes[bicubic])
            for (int pos = 0; pos < 16; ++pos)
                for (int rc = 0; rc < 4; ++rc) {
                    const int dx = pos >> 2, dy = pos & 3;
                    // Extremes drive the clamps and the widest intermediates.
                    b.fill(rng, rc >= 2);
                    // Fractions modulo 4 and rounding modulo 2.
                    auto rec = b.record(sz[0], sz[1], dx + (rc & 1 ? 4 : -4), dy - 8, rc);
                    ASSERT_EQ((bicubic ? kiviInterpolateQPBicubic_VC1_8u_C1R : kiviInterpolateQPBilinear_VC1_8u_C1R)(&rec),
                              kivStsOk);
                    const auto model = bicubic ? bicubic_model : bilinear_model;
                    b.expect(sz[2], sz[3], [&](int x, int y) { return model(b, x, y, dx, dy, rc & 1); },
                             bicubic ? "bicubic" : "bilinear");
                }
}

TEST(Vc1Interpolation, Statuses) {
    InterpolationBuffers b;
    for (auto fn : {kiviInterpolateQPBilinear_VC1_8u_C1R, kiviInterpolateQPBicubic_VC1_8u_C1R}) {
        EXPECT_EQ(fn(nullptr), kivStsNullPointer);
        auto rec = b.record(8, 8, 1, 1, 0);
        rec.pSrc = nullptr;
        EXPECT_EQ(fn(&rec), kivStsNullPointer);
        rec = b.record(8, 8, 1, 1, 0);
        rec.pDst = nullptr;
        EXPECT_EQ(fn(&rec), kivStsNullPointer);
    }
    Rng rng(3);
    b.fill(rng, false);
    for (const auto& sz : {KiviSize{0, 8}, KiviSize{8, 0}, KiviSize{17, 16}, KiviSize{16, 17}, KiviSize{-8, 8}}) {
        auto rec = b.record(sz.width, sz.height, 1, 1, 0);
        EXPECT_EQ(kiviInterpolateQPBicubic_VC1_8u_C1R(&rec), kivStsBadSize);
        b.expect(0, 0, [](int, int) { return 0; }, "refused size");
    }
}

// ---- deblocking --------------------------------------------------------------

// One line from the description; p[0..7] = P1..P8. False when a test fails.
bool deblock_line_model(int* p, int pquant) {
    const int clip = (p[3] - p[4]) / 2;
    if (clip == 0) return false;
    const int a0 = (2 * (p[2] - p[5]) - 5 * (p[3] - p[4]) + 4) >> 3;
    if (std::abs(a0) >= pquant) return false;
    const int a1 = (2 * (p[0] - p[3]) - 5 * (p[1] - p[2]) + 4) >> 3;
    const int a2 = (2 * (p[4] - p[7]) - 5 * (p[5] - p[6]) + 4) >> 3;
    const int a3 = std::min(std::abs(a1), std::abs(a2));
    if (a3 >= std::abs(a0)) return false;
    const int s = a0 > 0 ? 1 : a0 < 0 ? -1 : 0;
    int d = 5 * (s * a3 - a0) / 8;
    if ((clip > 0 && d > 0) || (clip < 0 && d < 0)) {
        if (std::abs(d) > std::abs(clip)) d = clip;
    } else {
        d = 0;
    }
    p[3] -= d;
    p[4] += d;
    return true;
}

using DeblockFunction = KivStatus (*)(Kiv8u*, Kiv32s, Kiv32s, Kiv32u);

struct Deblocker {
    DeblockFunction fn;
    int lines;
    bool vertical;
};

const Deblocker kDeblockers[] = {
    {kiviFilterDeblockingLuma_HorEdge_VC1_8u_C1IR, 16, false},
    {kiviFilterDeblockingLuma_VerEdge_VC1_8u_C1IR, 16, true},
    {kiviFilterDeblockingChroma_HorEdge_VC1_8u_C1IR, 8, false},
    {kiviFilterDeblockingChroma_VerEdge_VC1_8u_C1IR, 8, true},
};

// A 16 x 16 plane with the edge in the middle; sample k (0..7 = P1..P8) of
// line j lives at offset(j, k).
struct EdgePlane {
    static constexpr int kStep = 16;
    Kiv8u s[16 * 16];
    bool vertical;
    int offset(int line, int k) const { return vertical ? line * kStep + 4 + k : (4 + k) * kStep + line; }
    Kiv8u* edge() { return s + (vertical ? 8 : 8 * kStep); }
    // Each side near its own level with small noise, so that filters switch on.
    void fill(Rng& rng) {
        const int a = rng.range(0, 255), b = std::clamp(a + rng.range(-24, 24), 0, 255);
        const int noise = rng.range(0, 6);
        for (int i = 0; i < 256; ++i) s[i] = Kiv8u(rng.range(0, 255));
        for (int j = 0; j < 16; ++j)
            for (int k = 0; k < 8; ++k)
                s[offset(j, k)] = Kiv8u(std::clamp((k < 4 ? a : b) + rng.range(-noise, noise), 0, 255));
    }
};

TEST(Vc1Deblocking, EveryEdgeFollowsTheThirdLineRule) {
    Rng rng(1321);
    int filtered_lines = 0, held_back = 0;
    for (const auto& f : kDeblockers)
        for (int trial = 0; trial < 2000; ++trial) {
            EdgePlane e{};
            e.vertical = f.vertical;
            e.fill(rng);
            const int pquant = trial % 50 == 0 ? rng.range(-2, 0) : rng.range(1, 31);
            const Kiv32u flags = rng.chance(3) ? Kiv32u(rng.next()) : 0;
            EdgePlane want = e;
            for (int seg = 0; seg < f.lines / 4; ++seg) {
                if (flags & (1u << seg)) continue;
                int line[4][8];
                for (int j = 0; j < 4; ++j)
                    for (int k = 0; k < 8; ++k) line[j][k] = e.s[e.offset(seg * 4 + j, k)];
                if (!deblock_line_model(line[2], pquant)) {
                    // Lines that would filter on their own stay as they are.
                    for (int j : {0, 1, 3}) held_back += deblock_line_model(line[j], pquant);
                    continue;
                }
                for (int j : {0, 1, 3}) filtered_lines += deblock_line_model(line[j], pquant);
                for (int j = 0; j < 4; ++j)
                    for (int k = 0; k < 8; ++k) want.s[e.offset(seg * 4 + j, k)] = Kiv8u(line[j][k]);
            }
            ASSERT_EQ(f.fn(e.edge(), pquant, EdgePlane::kStep, flags), kivStsOk);
            ASSERT_EQ(std::memcmp(e.s, want.s, sizeof e.s), 0) << "lines " << f.lines << " vertical " << f.vertical
                                                                << " trial " << trial;
        }
    EXPECT_GT(filtered_lines, 1000);
    EXPECT_GT(held_back, 100);
    for (const auto& f : kDeblockers) EXPECT_EQ(f.fn(nullptr, 31, 16, 0), kivStsNullPointer);
}

// ---- inverse quantisation ----------------------------------------------------

TEST(Vc1QuantInv, UniformNonuniformAndTheNonZeroRegion) {
    Rng rng(1331);
    using Intra = KivStatus (*)(Kiv16s*, Kiv32s, Kiv32s, KiviSize*);
    using Inter = KivStatus (*)(Kiv16s*, Kiv32s, Kiv32s, KiviSize, KiviSize*);
    const Intra intra[2] = {kiviQuantInvIntraUniform_VC1_16s_C1IR, kiviQuantInvIntraNonuniform_VC1_16s_C1IR};
    const Inter inter[2] = {kiviQuantInvInterUniform_VC1_16s_C1IR, kiviQuantInvInterNonuniform_VC1_16s_C1IR};
    const KiviSize sizes[] = {{8, 8}, {8, 4}, {4, 8}, {4, 4}, {2, 9}};
    for (int trial = 0; trial < 400; ++trial)
        for (int nonuniform = 0; nonuniform < 2; ++nonuniform)
            for (int kind = 0; kind < 6; ++kind) {
                const bool is_intra = kind == 5;
                const KiviSize size = is_intra ? KiviSize{8, 8} : sizes[kind];
                const int w = size.width >= 8 ? 8 : 4, h = size.height >= 8 ? 8 : 4;
                const int q = trial % 40 == 0 ? 0 : rng.range(2, 62);
                Kiv16s block[8 * 10];  // step of 10 elements
                const int density = rng.range(1, 40);
                for (auto& v : block) v = rng.chance(density) ? Kiv16s(rng.range(-300, 300)) : 0;
                if (trial % 7 == 0) block[0] = 0;
                Kiv16s want[8 * 10];
                std::copy(std::begin(block), std::end(block), want);
                int last_c = is_intra ? 0 : -1, last_r = is_intra ? 0 : -1;
                for (int r = 0; r < h; ++r)
                    for (int c = 0; c < w; ++c) {
                        if (is_intra && r == 0 && c == 0) continue;
                        const int v = block[r * 10 + c];
                        const int sgn = (v > 0) - (v < 0);
                        want[r * 10 + c] = Kiv16s(v * q + (nonuniform ? sgn * (q >> 1) : 0));
                        if (want[r * 10 + c]) last_c = std::max(last_c, c), last_r = std::max(last_r, r);
                    }
                KiviSize nz{-1, -1};
                const KivStatus st = is_intra ? intra[nonuniform](block, 20, q, &nz)
                                              : inter[nonuniform](block, 20, q, size, &nz);
                ASSERT_EQ(st, kivStsOk);
                ASSERT_TRUE(std::equal(std::begin(block), std::end(block), want)) << "kind " << kind;
                ASSERT_EQ(nz.width, last_c + 1) << "kind " << kind;
                ASSERT_EQ(nz.height, last_r + 1) << "kind " << kind;
            }
    Kiv16s b[64] = {};
    KiviSize nz;
    EXPECT_EQ(intra[1](b, 16, 2, nullptr), kivStsNullPointer);
    EXPECT_EQ(inter[0](nullptr, 16, 2, KiviSize{8, 8}, &nz), kivStsNullPointer);
}

// ---- range mapping -----------------------------------------------------------

TEST(Vc1RangeMapping, FormulaClampAndStatuses) {
    Rng rng(1341);
    for (int r = 0; r < 8; ++r)
        for (const auto& sz : {KiviSize{1, 1}, KiviSize{17, 3}, KiviSize{64, 2}, KiviSize{35, 5}}) {
            const int step = 72;
            std::vector<Kiv8u> src(step * 6), dst(step * 6, 0x3C);
            for (int i = 0; i < int(src.size()); ++i) src[i] = Kiv8u(i < 256 ? i : rng.next());
            ASSERT_EQ(kiviRangeMapping_VC1_8u_C1R(src.data(), step, dst.data(), step, sz.width, sz.height, r),
                      kivStsOk);
            for (int y = 0; y < 6; ++y)
                for (int x = 0; x < step; ++x) {
                    const int s = src[y * step + x], mapped = std::clamp((((s - 128) * (r + 9) + 4) >> 3) + 128, 0, 255);
                    ASSERT_EQ(dst[y * step + x], x < sz.width && y < sz.height ? mapped : 0x3C) << r << " at " << x << "," << y;
                }
        }
    Kiv8u s[4] = {}, d[4] = {};
    EXPECT_EQ(kiviRangeMapping_VC1_8u_C1R(nullptr, 4, d, 4, 4, 1, 0), kivStsNullPointer);
    EXPECT_EQ(kiviRangeMapping_VC1_8u_C1R(s, 4, nullptr, 4, 4, 1, 9), kivStsNullPointer);
    EXPECT_EQ(kiviRangeMapping_VC1_8u_C1R(s, 4, d, 4, 4, 0, 8), kivStsOutOfRange);
    EXPECT_EQ(kiviRangeMapping_VC1_8u_C1R(s, 4, d, 4, 4, 1, -1), kivStsOutOfRange);
    EXPECT_EQ(kiviRangeMapping_VC1_8u_C1R(s, 4, d, 4, 4, 0, 3), kivStsOk);
}

}  // namespace
