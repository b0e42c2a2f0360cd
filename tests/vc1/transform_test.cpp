// VC-1 inverse transforms against the transform matrices evaluated directly,
// the region shortcuts against the full transform, and the smoothing filter
// against its equations for every field mode.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "kivvc.h"
#include "support/kernel_case.h"

namespace {

using kivvc::test::Rng;

// Basis rows: output i of an inverse is sum over k of kBasis[k][i] * x[k].
constexpr int kBasis8[8][8] = {
    {12, 12, 12, 12, 12, 12, 12, 12},     {16, 15, 9, 4, -4, -9, -15, -16},
    {16, 6, -6, -16, -16, -6, 6, 16},     {15, -4, -16, -9, 9, 16, 4, -15},
    {12, -12, -12, 12, 12, -12, -12, 12}, {9, -16, 4, 15, -15, -4, 16, -9},
    {6, -16, 16, -6, -6, 16, -16, 6},     {4, -9, 15, -16, 16, -15, 9, -4},
};
constexpr int kBasis4[4][4] = {{17, 17, 17, 17}, {22, 10, -10, -22}, {17, -17, -17, 17}, {10, -22, 22, -10}};

int basis(int n, int k, int i) { return n == 8 ? kBasis8[k][i] : kBasis4[k][i]; }

// Rows first ((y + 4) >> 3), then columns ((y + 64) >> 7, one more on rows
// 4..7 of an 8-point column pass). Counts the outputs that the extra one
// changed.
std::vector<int> transform_by_matrix(const std::vector<int>& x, int w, int h, int* bumped) {
    std::vector<int> rows(w * h), out(w * h);
    for (int r = 0; r < h; ++r)
        for (int i = 0; i < w; ++i) {
            int y = 0;
            for (int k = 0; k < w; ++k) y += basis(w, k, i) * x[r * w + k];
            rows[r * w + i] = (y + 4) >> 3;
        }
    for (int c = 0; c < w; ++c)
        for (int i = 0; i < h; ++i) {
            int y = 0;
            for (int k = 0; k < h; ++k) y += basis(h, k, i) * rows[k * w + c];
            const int extra = (h == 8 && i >= 4) ? 1 : 0;
            out[i * w + c] = (y + 64 + extra) >> 7;
            if (((y + 64 + extra) >> 7) != ((y + 64) >> 7)) ++*bumped;
        }
    return out;
}

using OutOfPlace = KivStatus (*)(const Kiv16s*, Kiv32s, Kiv16s*, Kiv32s, KiviSize);
using InPlace = KivStatus (*)(Kiv16s*, Kiv32s, KiviSize);

struct TransformFunction {
    int w, h;
    OutOfPlace out_of_place;
    InPlace in_place;
};

const TransformFunction kTransforms[] = {
    {8, 8, kiviTransform8x8Inv_VC1_16s_C1R, kiviTransform8x8Inv_VC1_16s_C1IR},
    {8, 4, kiviTransform8x4Inv_VC1_16s_C1R, kiviTransform8x4Inv_VC1_16s_C1IR},
    {4, 8, kiviTransform4x8Inv_VC1_16s_C1R, kiviTransform4x8Inv_VC1_16s_C1IR},
    {4, 4, kiviTransform4x4Inv_VC1_16s_C1R, kiviTransform4x4Inv_VC1_16s_C1IR},
};

constexpr int kStep = 24;  // bytes: 12 elements per row, the rest guards

// Runs the transform out of place and in place on the same coefficients;
// both must agree and leave everything outside the block alone.
std::vector<int> run_transform(const TransformFunction& f, const std::vector<int>& coeffs, KiviSize nz) {
    constexpr int kCols = kStep / 2;
    std::vector<Kiv16s> src(kCols * 8, 0x5A5A), dst(kCols * 8, 0x1234), in_place;
    for (int r = 0; r < f.h; ++r)
        for (int c = 0; c < f.w; ++c) src[r * kCols + c] = static_cast<Kiv16s>(coeffs[r * f.w + c]);
    in_place = src;
    const std::vector<Kiv16s> src_before = src;
    EXPECT_EQ(f.out_of_place(src.data(), kStep, dst.data(), kStep, nz), kivStsOk);
    EXPECT_EQ(f.in_place(in_place.data(), kStep, nz), kivStsOk);
    EXPECT_EQ(src, src_before);
    std::vector<int> out(f.w * f.h);
    for (int r = 0; r < 8; ++r)
        for (int c = 0; c < kCols; ++c) {
            const int i = r * kCols + c;
            if (r < f.h && c < f.w) {
                out[r * f.w + c] = dst[i];
                EXPECT_EQ(in_place[i], dst[i]) << "in place differs at " << r << "," << c;
            } else {
                EXPECT_EQ(dst[i], 0x1234) << "guard written at " << r << "," << c;
                EXPECT_EQ(in_place[i], src_before[i]) << "guard written at " << r << "," << c;
            }
        }
    return out;
}

TEST(Vc1Transform, EveryRegionEqualsTheMatricesAndNullsAreRefused) {
    Rng rng(1301);
    for (const auto& f : kTransforms) {
        int bumped = 0;
        // Every region shape that selects a shortcut, and regions larger than
        // the block; the full region also over dense blocks across the whole
        // decoder range.
        for (int nw = 0; nw <= 9; ++nw)
            for (int nh = 0; nh <= 9; ++nh)
                for (int trial = 0; trial < (nw == 8 && nh == 8 ? 300 : 20); ++trial) {
                    std::vector<int> x(f.w * f.h, 0);
                    for (int r = 0; r < std::min(nh, f.h); ++r)
                        for (int c = 0; c < std::min(nw, f.w); ++c)
                            x[r * f.w + c] = trial % 3 == 1 && rng.chance(2) ? 0 : rng.range(-2048, 2047);
                    const auto want = transform_by_matrix(x, f.w, f.h, &bumped);
                    ASSERT_EQ(run_transform(f, x, KiviSize{nw, nh}), want)
                        << f.w << "x" << f.h << " region " << nw << "x" << nh << " trial " << trial;
                }
        // The rounding step of the lower rows has been exercised.
        if (f.h == 8) {
            EXPECT_GT(bumped, 0) << f.w << "x" << f.h;
        }
        // Out-of-range coefficients: row results are saturated to 16 bits on
        // every path, so the DC shortcut still equals the full transform.
        std::vector<int> x(f.w * f.h, 0);
        x[0] = 32767;
        EXPECT_EQ(run_transform(f, x, KiviSize{1, 1}), run_transform(f, x, KiviSize{8, 8}));
        Kiv16s b[64] = {};
        EXPECT_EQ(f.out_of_place(nullptr, 16, b, 16, KiviSize{8, 8}), kivStsNullPointer);
        EXPECT_EQ(f.out_of_place(b, 16, nullptr, 16, KiviSize{8, 8}), kivStsNullPointer);
        EXPECT_EQ(f.in_place(nullptr, 16, KiviSize{8, 8}), kivStsNullPointer);
    }
}

// ---- overlap smoothing ------------------------------------------------------

struct Line {
    int y[4];
};
Line smooth_line(int x0, int x1, int x2, int x3, int picture_row_or_column) {
    const bool odd = picture_row_or_column & 1;
    const int r0 = odd ? 3 : 4, r1 = odd ? 4 : 3;
    return {{(7 * x0 + x3 + r0) >> 3, (-x0 + 7 * x1 + x2 + x3 + r1) >> 3, (x0 + x1 + 7 * x2 - x3 + r0) >> 3,
             (x0 + 7 * x3 + r1) >> 3}};
}

// Two 16-row blocks of 8 columns (the left edge columns are 6 and 7) and a
// picture of 16 rows with the edge between its columns 3 and 4.
struct VerEdge {
    Kiv16s left[16][8], right[16][8];
    Kiv8u picture[16][8];
    void fill(Rng& rng, int lo, int hi) {
        for (int r = 0; r < 16; ++r)
            for (int c = 0; c < 8; ++c) {
                left[r][c] = static_cast<Kiv16s>(rng.range(lo, hi));
                right[r][c] = static_cast<Kiv16s>(rng.range(lo, hi));
                picture[r][c] = static_cast<Kiv8u>(rng.next());
            }
    }
};

int field_row(bool field_ordered, int y) { return field_ordered ? (y & 1 ? 8 + y / 2 : y / 2) : y; }

TEST(Vc1Smoothing, VerticalEdgesEveryFieldModeAndFlag) {
    Rng rng(1303);
    // Mode 5 stands for the chroma function: 8 rows, no modes or flags.
    for (int mode = -1; mode <= 5; ++mode)
        for (Kiv32u flags : {0u, 1u, 2u, 3u, 4u, 8u, 12u, 15u, 16u})
            for (int trial = 0; trial < (mode == 5 ? 12 : 4); ++trial) {
                const bool chroma = mode == 5;
                VerEdge e, want;
                // Out-of-range sources so that both clamps and the unclamped
                // write-back show.
                e.fill(rng, trial % 4 < 2 ? -40 : 0, trial % 4 < 2 ? 300 : 255);
                want = e;
                const bool valid = chroma || (flags != 0 && mode >= 0 && mode <= 3);
                for (int y = 0; valid && y < (chroma ? 8 : 16); ++y) {
                    if (mode == 0 && !(flags & (y < 8 ? 3u : 12u))) continue;
                    const int lr = field_row(mode == 2 || mode == 3, y);
                    const int rr = field_row(mode == 1 || mode == 3, y);
                    const Line s = smooth_line(e.left[lr][6], e.left[lr][7], e.right[rr][0], e.right[rr][1], y);
                    want.left[lr][6] = Kiv16s(s.y[0]), want.left[lr][7] = Kiv16s(s.y[1]);
                    want.right[rr][0] = Kiv16s(s.y[2]), want.right[rr][1] = Kiv16s(s.y[3]);
                    for (int k = 0; k < 4; ++k) want.picture[y][2 + k] = Kiv8u(std::clamp(s.y[k], 0, 255));
                }
                const KivStatus st =
                    chroma ? kiviSmoothingChroma_VerEdge_VC1_16s8u_C1R(&e.left[0][6], 16, &e.right[0][0], 16,
                                                                       &e.picture[0][4], 8)
                           : kiviSmoothingLuma_VerEdge_VC1_16s8u_C1R(&e.left[0][6], 16, &e.right[0][0], 16,
                                                                     &e.picture[0][4], 8, mode, flags);
                ASSERT_EQ(st, kivStsOk);
                ASSERT_EQ(std::memcmp(&e, &want, sizeof e), 0) << "mode " << mode << " flags " << flags;
            }
}

TEST(Vc1Smoothing, HorizontalEdgesWriteOnlyThePicture) {
    Rng rng(1304);
    for (int trial = 0; trial < 50; ++trial) {
        const int lo = trial & 1 ? -60 : 0, hi = trial & 1 ? 320 : 255;
        // Blocks of 4 rows by 16 columns (edge rows 2, 3 of the upper one),
        // picture of 6 rows with the edge between rows 2 and 3.
        Kiv16s upper[4][16], lower[4][16];
        Kiv8u picture[6][16], expected[6][16];
        for (int r = 0; r < 4; ++r)
            for (int c = 0; c < 16; ++c) {
                upper[r][c] = Kiv16s(rng.range(lo, hi));
                lower[r][c] = Kiv16s(rng.range(lo, hi));
            }
        for (int luma = 0; luma < 2; ++luma)
            for (Kiv8u flags : {Kiv8u(0), Kiv8u(1), Kiv8u(8), Kiv8u(15), Kiv8u(0xF0)}) {
                if (!luma && flags) continue;
                for (auto& row : picture)
                    for (auto& v : row) v = Kiv8u(rng.next());
                std::memcpy(expected, picture, sizeof picture);
                for (int c = 0; c < (luma ? 16 : 8); ++c) {
                    if (luma && !(flags & (c < 8 ? 3 : 12))) continue;
                    const Line s = smooth_line(upper[2][c], upper[3][c], lower[0][c], lower[1][c], c);
                    for (int k = 0; k < 4; ++k) expected[1 + k][c] = Kiv8u(std::clamp(s.y[k], 0, 255));
                }
                Kiv16s upper_before[4][16];
                std::memcpy(upper_before, upper, sizeof upper);
                const KivStatus st =
                    luma ? kiviSmoothingLuma_HorEdge_VC1_16s8u_C1R(&upper[2][0], 32, &lower[0][0], 32, &picture[3][0],
                                                                   16, flags)
                         : kiviSmoothingChroma_HorEdge_VC1_16s8u_C1R(&upper[2][0], 32, &lower[0][0], 32,
                                                                     &picture[3][0], 16);
                ASSERT_EQ(st, kivStsOk);
                ASSERT_EQ(std::memcmp(picture, expected, sizeof picture), 0) << "luma " << luma << " flags " << int(flags);
                ASSERT_EQ(std::memcmp(upper, upper_before, sizeof upper), 0);
            }
    }
}

TEST(Vc1Smoothing, NullPointersComeBeforeTheModeCheck) {
    Kiv16s b[64] = {};
    Kiv8u d[64] = {};
    EXPECT_EQ(kiviSmoothingLuma_VerEdge_VC1_16s8u_C1R(nullptr, 16, b, 16, d, 8, 9, 0), kivStsNullPointer);
    EXPECT_EQ(kiviSmoothingLuma_VerEdge_VC1_16s8u_C1R(b, 16, b, 16, nullptr, 8, 0, 1), kivStsNullPointer);
    EXPECT_EQ(kiviSmoothingLuma_HorEdge_VC1_16s8u_C1R(b, 16, nullptr, 16, d, 8, 0), kivStsNullPointer);
    EXPECT_EQ(kiviSmoothingChroma_VerEdge_VC1_16s8u_C1R(b, 16, b, 16, nullptr, 8), kivStsNullPointer);
    EXPECT_EQ(kiviSmoothingChroma_HorEdge_VC1_16s8u_C1R(nullptr, 16, b, 16, d, 8), kivStsNullPointer);
}

}  // namespace
