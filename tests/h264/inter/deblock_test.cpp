// Deblocking filter against a line-by-line model written from the H.264
// filtering equations, at 8 bits and 9 to 14, with any step at 8 bits;
// argument checks and early returns.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <algorithm>
#include <utility>
#include <vector>

#include "kivvc.h"
#include "support/kernel_case.h"

namespace {

using kivvc::test::Rng;

enum class Rule { OwnBs, StrongIfFirst4, StrongIfAll4 };

// One function under test: geometry and the entries each line uses.
struct Kind {
    const char* name;
    bool luma, vertical;
    int width, height;  // the block, in samples
    int edges, lines;
    int (*bs_index)(int c, int i);
    int (*tc_index)(int c, int i);
    Rule rule;
};

int luma_bs(int c, int i) { return 4 * c + (i >> 2); }
int c420_bs(int c, int i) { return 8 * c + (i >> 1); }
int c420_tc(int c, int i) { return 4 * c + (i >> 1); }
int c422v_bs(int c, int i) { return 8 * c + (i >> 2); }
int c422v_tc(int c, int i) { return 4 * c + (i >> 2); }
int c422h_bs(int c, int i) { return 4 * c + (i >> 1); }
int mbaff_luma(int, int i) { return i >> 1; }
int mbaff_chroma(int, int i) { return i; }

const Kind kLumaV{"luma ver", true, true, 16, 16, 4, 16, luma_bs, luma_bs, Rule::OwnBs};
const Kind kLumaH{"luma hor", true, false, 16, 16, 4, 16, luma_bs, luma_bs, Rule::OwnBs};
const Kind kChromaV{"chroma ver", false, true, 8, 8, 2, 8, c420_bs, c420_tc, Rule::OwnBs};
const Kind kChromaH8{"chroma hor 8u", false, false, 8, 8, 2, 8, c420_bs, c420_tc, Rule::StrongIfAll4};
const Kind kChromaH16{"chroma hor 16u", false, false, 8, 8, 2, 8, c420_bs, c420_tc, Rule::StrongIfFirst4};
const Kind kC422V{"chroma422 ver", false, true, 8, 16, 2, 16, c422v_bs, c422v_tc, Rule::OwnBs};
const Kind kC422H{"chroma422 hor", false, false, 8, 16, 4, 8, c422h_bs, c422h_bs, Rule::StrongIfFirst4};
const Kind kLumaMbaff{"luma mbaff", true, true, 4, 8, 1, 8, mbaff_luma, mbaff_luma, Rule::OwnBs};
const Kind kChromaMbaff{"chroma mbaff", false, true, 2, 4, 1, 4, mbaff_chroma, mbaff_chroma, Rule::OwnBs};

// How often each branch of the model ran: the samples must make the
// filters switch on.
struct Coverage {
    long skipped = 0, normal = 0, normal_p1 = 0, strong_full = 0, strong_3tap = 0, chroma_strong = 0;
};

// The filtering equations for one line; s(k) is p(-1-k) for k < 0, q(k) else.
template <class F>
void model_line(F s, bool luma, int mode /*0 skip, 1 normal, 2 strong*/, int alpha, int beta, int tc0, int maxv,
                Coverage& cov) {
    const int p0 = s(-1), p1 = s(-2), p2 = s(-3), p3 = s(-4);
    const int q0 = s(0), q1 = s(1), q2 = s(2), q3 = s(3);
    const bool on = mode != 0 && std::abs(p0 - q0) < alpha && std::abs(p1 - p0) < beta && std::abs(q1 - q0) < beta;
    if (!on) {
        ++cov.skipped;
        return;
    }
    const int ap = std::abs(p2 - p0), aq = std::abs(q2 - q0);
    auto clip3 = [](int lo, int hi, int v) { return v < lo ? lo : v > hi ? hi : v; };
    if (mode == 1) {
        ++cov.normal;
        const int tc = luma ? tc0 + (ap < beta ? 1 : 0) + (aq < beta ? 1 : 0) : tc0 + 1;
        const int delta = clip3(-tc, tc, ((q0 - p0) * 4 + (p1 - q1) + 4) >> 3);
        s(-1) = clip3(0, maxv, p0 + delta);
        s(0) = clip3(0, maxv, q0 - delta);
        if (luma && ap < beta) s(-2) = p1 + clip3(-tc0, tc0, (p2 + ((p0 + q0 + 1) >> 1) - p1 * 2) >> 1);
        if (luma && aq < beta) s(1) = q1 + clip3(-tc0, tc0, (q2 + ((p0 + q0 + 1) >> 1) - q1 * 2) >> 1);
        if (luma && (ap < beta || aq < beta)) ++cov.normal_p1;
        return;
    }
    const bool near = std::abs(p0 - q0) < (alpha >> 2) + 2;
    if (luma && ap < beta && near) {
        ++cov.strong_full;
        s(-1) = (p2 + 2 * p1 + 2 * p0 + 2 * q0 + q1 + 4) >> 3;
        s(-2) = (p2 + p1 + p0 + q0 + 2) >> 2;
        s(-3) = (2 * p3 + 3 * p2 + p1 + p0 + q0 + 4) >> 3;
    } else {
        if (luma) ++cov.strong_3tap;
        else ++cov.chroma_strong;
        s(-1) = (2 * p1 + p0 + q1 + 2) >> 2;
    }
    if (luma && aq < beta && near) {
        s(0) = (p1 + 2 * p0 + 2 * q0 + 2 * q1 + q2 + 4) >> 3;
        s(1) = (p0 + q0 + q1 + q2 + 2) >> 2;
        s(2) = (2 * q3 + 3 * q2 + q1 + q0 + p0 + 4) >> 3;
    } else {
        s(0) = (2 * q1 + q0 + p1 + 2) >> 2;
    }
}

constexpr int kMargin = 4;

// A test picture: the block plus kMargin samples on every side.
template <class T>
struct Picture {
    int stride, rows;
    std::vector<T> v;
    Picture(int w, int h) : stride(w + 2 * kMargin), rows(h + 2 * kMargin), v(std::size_t(stride) * rows) {}
    T& at(int x, int y) { return v[std::size_t(y + kMargin) * stride + x + kMargin]; }
    T* origin() { return &at(0, 0); }
    // The same picture upside down in memory, and where its block origin lies.
    Picture mirrored() const {
        Picture m = *this;
        for (int y = 0; y < rows; ++y)
            std::copy_n(&v[std::size_t(y) * stride], stride, &m.v[std::size_t(rows - 1 - y) * stride]);
        return m;
    }
    T* mirrored_origin() { return &v[std::size_t(rows - 1 - kMargin) * stride + kMargin]; }
};

// Blocky content that keeps the filters busy: one level per 4x4 tile, small
// noise, occasionally pinned to the ends of the range.
template <class T>
void fill_blocky(Picture<T>& pic, Rng& rng, int maxv, int scale) {
    const int spread = (rng.chance(3) ? 40 : rng.chance(2) ? 10 : 3) * scale;
    const int noise = rng.range(0, 3) * scale;
    const int base = rng.chance(4) ? (rng.chance(2) ? 0 : maxv) : rng.range(0, maxv);
    std::vector<int> tile(64);
    for (int& t : tile) t = rng.range(-spread, spread);
    for (int y = -kMargin; y < pic.rows - kMargin; ++y)
        for (int x = -kMargin; x < pic.stride - kMargin; ++x) {
            const int v = base + tile[((y + 8) / 4) * 8 + (x + 8) / 4] + rng.range(-noise, noise);
            pic.at(x, y) = static_cast<T>(v < 0 ? 0 : v > maxv ? maxv : v);
        }
}

// Arguments of one call, in the units of the sample width.
template <class T>
struct Args {
    T alpha[2], beta[2], tc0[16];
    std::uint8_t bs[16];
};

// Random thresholds in the ranges a decoder uses at 8 bits (alpha up to 255,
// beta up to 18, tC0 up to 25; outer and inner edges differ), scaled to the
// depth; tC0 now and then the depth's largest value. A bS pattern that mixes
// 0, 1..3, 4 and, rarely, corrupt values above 4 within an edge.
template <class T>
Args<T> draw_args(const Kind& k, Rng& rng, int bits) {
    const int scale = 1 << (bits - 8), maxv = (1 << bits) - 1;
    Args<T> a{};
    for (int e = 0; e < 2; ++e) {
        a.alpha[e] = static_cast<T>((rng.chance(20) ? 0 : rng.range(0, 255)) * scale);
        a.beta[e] = static_cast<T>((rng.chance(20) ? 0 : rng.range(0, 18)) * scale);
    }
    for (int c = 0; c < 4; ++c) {
        const int kind = rng.range(0, 5);  // all zero, all four, or mixed
        for (int j = 0; j < 4; ++j) {
            const int b = kind == 0 ? 0 : kind == 1 ? 4 : rng.chance(50) ? rng.range(5, 255) : rng.range(0, 4);
            a.bs[4 * c + j] = static_cast<std::uint8_t>(b);
        }
    }
    const bool huge = rng.chance(10);
    for (int c = 0; c < k.edges; ++c)
        for (int i = 0; i < k.lines; ++i) a.tc0[k.tc_index(c, i)] = static_cast<T>(huge ? maxv : rng.range(0, 25) * scale);
    return a;
}

// Runs the model over every edge of the kind, in edge order; lines are rows
// for vertical edges, columns for horizontal ones.
template <class T>
void model(const Kind& k, Picture<T>& pic, const Args<T>& a, int maxv, Coverage& cov) {
    for (int c = 0; c < k.edges; ++c) {
        const std::uint8_t* eb = a.bs + k.bs_index(c, 0);
        bool edge_strong = false;
        if (k.rule == Rule::StrongIfFirst4) edge_strong = eb[0] == 4;
        if (k.rule == Rule::StrongIfAll4) edge_strong = eb[0] == 4 && eb[1] == 4 && eb[2] == 4 && eb[3] == 4;
        for (int i = 0; i < k.lines; ++i) {
            const int b = a.bs[k.bs_index(c, i)];
            const int mode = k.rule == Rule::OwnBs ? (b == 0 ? 0 : b == 4 ? 2 : 1) : edge_strong ? 2 : b ? 1 : 0;
            auto at = [&](int j) -> T& { return k.vertical ? pic.at(4 * c + j, i) : pic.at(i, 4 * c + j); };
            int line[8];
            for (int j = -4; j < 4; ++j) line[j + 4] = at(j);
            model_line([&](int j) -> int& { return line[j + 4]; }, k.luma, mode, a.alpha[c ? 1 : 0],
                       a.beta[c ? 1 : 0], a.tc0[k.tc_index(c, i)], maxv, cov);
            for (int j = -4; j < 4; ++j) at(j) = static_cast<T>(line[j + 4]);
        }
    }
}

// A function under test, called on the block at p with row step `step`.
template <class T>
using Call = KivStatus (*)(T* p, int step, const Args<T>& a, int bits);

template <class T>
void check_against_model(const Kind& k, Call<T> call, int bits, int rounds) {
    const int maxv = (1 << bits) - 1;
    Rng rng(0x5eed0000u + bits * 131u + static_cast<unsigned>(k.width * 7 + k.edges));
    Coverage cov;
    for (int r = 0; r < rounds; ++r) {
        const Args<T> a = draw_args<T>(k, rng, bits);
        Picture<T> got(k.width, k.height);
        fill_blocky(got, rng, maxv, 1 << (bits - 8));
        Picture<T> want = got;
        ASSERT_EQ(call(got.origin(), got.stride, a, bits), kivStsOk);
        if (sizeof(T) == 1 && r % 4 == 0) {
            // The 8-bit functions take any step: with a negative one the rows
            // run upwards in memory and the result is the mirrored picture.
            Picture<T> down = want.mirrored();
            ASSERT_EQ(call(down.mirrored_origin(), -down.stride, a, bits), kivStsOk);
            ASSERT_EQ(down.mirrored().v, got.v) << k.name << " with a negative step, round " << r;
        }
        model(k, want, a, maxv, cov);
        for (int y = -kMargin; y < k.height + kMargin; ++y)
            for (int x = -kMargin; x < k.width + kMargin; ++x) {
                ASSERT_EQ(int(got.at(x, y)), int(want.at(x, y)))
                    << k.name << " at " << bits << " bits, round " << r << ", sample (" << x << ", " << y << ")";
                ASSERT_LE(int(got.at(x, y)), maxv);
            }
    }
    SCOPED_TRACE(k.name);
    EXPECT_GT(cov.skipped, 0);
    EXPECT_GT(cov.normal, 0);
    EXPECT_GT(k.luma ? cov.normal_p1 * cov.strong_full * cov.strong_3tap : cov.chroma_strong, 0);
}

template <auto F>
KivStatus separate(Kiv8u* p, int step, const Args<Kiv8u>& a, int) {
    return F(p, step, a.alpha, a.beta, a.tc0, a.bs);
}
template <auto F>
KivStatus mbaff(Kiv8u* p, int step, const Args<Kiv8u>& a, int) {
    return F(p, step, a.alpha[0], a.beta[0], a.tc0, a.bs);
}
template <auto F>
KivStatus record8(Kiv8u* p, int step, const Args<Kiv8u>& a, int) {
    const KivDeblockingParams_8u r{p, step, a.alpha, a.beta, a.tc0, a.bs};
    return F(&r);
}
template <auto F>
KivStatus record16(Kiv16u* p, int step, const Args<Kiv16u>& a, int bits) {
    const KivDeblockingParams_16u r{p, step, a.alpha, a.beta, a.tc0, a.bs, bits};
    return F(&r);
}

const std::pair<const Kind*, Call<Kiv8u>> kCases8[] = {
    {&kLumaV, separate<kiviFilterDeblockingLuma_VerEdge_H264_8u_C1IR>},
    {&kLumaH, separate<kiviFilterDeblockingLuma_HorEdge_H264_8u_C1IR>},
    {&kChromaV, separate<kiviFilterDeblockingChroma_VerEdge_H264_8u_C1IR>},
    {&kChromaH8, separate<kiviFilterDeblockingChroma_HorEdge_H264_8u_C1IR>},
    {&kC422V, record8<kiviFilterDeblockingChroma422VerEdge_H264_8u_C1IR>},
    {&kC422H, record8<kiviFilterDeblockingChroma422HorEdge_H264_8u_C1IR>},
    {&kLumaMbaff, mbaff<kiviFilterDeblockingLuma_VerEdge_MBAFF_H264_8u_C1IR>},
    {&kChromaMbaff, mbaff<kiviFilterDeblockingChroma_VerEdge_MBAFF_H264_8u_C1IR>},
};

const std::pair<const Kind*, Call<Kiv16u>> kCases16[] = {
    {&kLumaV, record16<kiviFilterDeblockingLumaVerEdge_H264_16u_C1IR>},
    {&kLumaH, record16<kiviFilterDeblockingLumaHorEdge_H264_16u_C1IR>},
    {&kChromaV, record16<kiviFilterDeblockingChromaVerEdge_H264_16u_C1IR>},
    {&kChromaH16, record16<kiviFilterDeblockingChromaHorEdge_H264_16u_C1IR>},
    {&kC422V, record16<kiviFilterDeblockingChroma422VerEdge_H264_16u_C1IR>},
    {&kC422H, record16<kiviFilterDeblockingChroma422HorEdge_H264_16u_C1IR>},
    {&kLumaMbaff, record16<kiviFilterDeblockingLumaVerEdgeMBAFF_H264_16u_C1IR>},
    {&kChromaMbaff, record16<kiviFilterDeblockingChromaVerEdgeMBAFF_H264_16u_C1IR>},
};

TEST(Deblock8u, EveryFunctionMatchesTheLineModel) {
    for (const auto& [kind, call] : kCases8) check_against_model<Kiv8u>(*kind, call, 8, 2000);
}

// 9 to 14 bits: thresholds scaled by the depth, results exact and in range.
TEST(Deblock16u, EveryFunctionMatchesTheLineModelAt9To14Bits) {
    for (int bits = 9; bits <= 14; ++bits)
        for (const auto& [kind, call] : kCases16) check_against_model<Kiv16u>(*kind, call, bits, 400);
}

// Depths outside 0..16 count as the nearest end.
TEST(Deblock16u, BitDepthOutsideTheSampleRange) {
    const Kiv16u alpha[2] = {4000, 4000}, tc0[16] = {3000, 3000, 3000, 3000};
    const Kiv8u bs[16] = {2, 2, 2, 2};
    for (auto [depth, same_as] : {std::pair{20, 16}, std::pair{-3, 0}}) {
        Picture<Kiv16u> a(16, 16);
        for (std::size_t i = 0; i < a.v.size(); ++i) a.v[i] = static_cast<Kiv16u>((i % 5) * 700 + 60000 * (i % 2));
        Picture<Kiv16u> b = a;
        KivDeblockingParams_16u r{a.origin(), a.stride, alpha, alpha, tc0, bs, depth};
        ASSERT_EQ(kiviFilterDeblockingLumaHorEdge_H264_16u_C1IR(&r), kivStsOk);
        r.pSrcDstPlane = b.origin();
        r.bitDepth = same_as;
        ASSERT_EQ(kiviFilterDeblockingLumaHorEdge_H264_16u_C1IR(&r), kivStsOk);
        EXPECT_EQ(a.v, b.v) << depth;
    }
}

// The record with its i-th pointer (plane, alpha, beta, tC0, bS) null.
template <class R>
R without(R r, int i) {
    if (i == 0) r.pSrcDstPlane = nullptr;
    if (i == 1) r.pAlpha = nullptr;
    if (i == 2) r.pBeta = nullptr;
    if (i == 3) r.pThresholds = nullptr;
    if (i == 4) r.pBs = nullptr;
    return r;
}

TEST(DeblockChecks, PointersFirstThenStepThenEarlyReturns) {
    // Pictures every filter would change: refused calls and early returns must leave them alone.
    Picture<Kiv8u> pic(16, 16);
    Picture<Kiv16u> pic16(16, 16);
    std::fill(pic.v.begin(), pic.v.end(), Kiv8u{100});
    std::fill(pic16.v.begin(), pic16.v.end(), Kiv16u{400});
    pic.at(0, 0) = 104;
    pic16.at(0, 0) = pic16.at(0, 1) = 410;
    const auto before = pic.v;
    const auto before16 = pic16.v;
    Kiv8u ab[2] = {255, 255}, tc[16] = {}, bs[16], none[16] = {};
    Kiv16u ab16[2] = {1000, 1000}, zero16[2] = {}, tc16[16] = {};
    std::fill_n(bs, 16, Kiv8u{4});
    const int s = pic.stride;
    const KivDeblockingParams_8u ok8{pic.origin(), s, ab, ab, tc, bs};
    for (int i = 0; i < 5; ++i) {
        const KivDeblockingParams_8u r = without(ok8, i);
        for (auto* f : {kiviFilterDeblockingLuma_VerEdge_H264_8u_C1IR, kiviFilterDeblockingLuma_HorEdge_H264_8u_C1IR,
                        kiviFilterDeblockingChroma_VerEdge_H264_8u_C1IR, kiviFilterDeblockingChroma_HorEdge_H264_8u_C1IR})
            EXPECT_EQ(f(r.pSrcDstPlane, s, r.pAlpha, r.pBeta, r.pThresholds, r.pBs), kivStsNullPointer) << i;
        for (auto* f : {kiviFilterDeblockingChroma422VerEdge_H264_8u_C1IR, kiviFilterDeblockingChroma422HorEdge_H264_8u_C1IR})
            EXPECT_EQ(f(&r), kivStsNullPointer) << i;
        // The MBAFF forms take alpha and beta by value; their pointers come before the alpha-0 return.
        for (auto* f : {kiviFilterDeblockingLuma_VerEdge_MBAFF_H264_8u_C1IR,
                        kiviFilterDeblockingChroma_VerEdge_MBAFF_H264_8u_C1IR})
            EXPECT_EQ(f(r.pSrcDstPlane, s, 0, 255, r.pThresholds, r.pBs), i == 1 || i == 2 ? kivStsOk : kivStsNullPointer);
    }
    for (auto* f : {kiviFilterDeblockingLuma_VerEdge_MBAFF_H264_8u_C1IR,
                    kiviFilterDeblockingChroma_VerEdge_MBAFF_H264_8u_C1IR}) {
        EXPECT_EQ(f(pic.origin(), s, 0, 255, tc, bs), kivStsOk);
        EXPECT_EQ(f(pic.origin(), s, 255, 255, tc, none), kivStsOk);
    }
    EXPECT_EQ(kiviFilterDeblockingChroma422VerEdgeMBAFF_H264_8u_C1IR(nullptr), kivStsNotImplemented);
    EXPECT_EQ(kiviFilterDeblockingChroma422VerEdgeMBAFF_H264_8u_C1IR(&ok8), kivStsNotImplemented);
    EXPECT_EQ(pic.v, before);

    const KivDeblockingParams_16u ok{pic16.origin(), pic16.stride, ab16, ab16, tc16, bs, 10};
    using F16 = KivStatus (*)(const KivDeblockingParams_16u*);
    for (F16 f : {kiviFilterDeblockingLumaVerEdge_H264_16u_C1IR, kiviFilterDeblockingLumaHorEdge_H264_16u_C1IR,
                  kiviFilterDeblockingChromaVerEdge_H264_16u_C1IR, kiviFilterDeblockingChromaHorEdge_H264_16u_C1IR,
                  kiviFilterDeblockingChroma422VerEdge_H264_16u_C1IR, kiviFilterDeblockingChroma422HorEdge_H264_16u_C1IR,
                  kiviFilterDeblockingLumaVerEdgeMBAFF_H264_16u_C1IR, kiviFilterDeblockingChromaVerEdgeMBAFF_H264_16u_C1IR}) {
        EXPECT_EQ(f(nullptr), kivStsNullPointer);
        for (int i = 0; i < 5; ++i) {
            KivDeblockingParams_16u r = without(ok, i);
            r.srcDstStep = 0;  // pointers come first
            EXPECT_EQ(f(&r), kivStsNullPointer) << i;
        }
        KivDeblockingParams_16u r = ok;
        r.srcDstStep = -pic16.stride;
        r.pAlpha = zero16;  // the MBAFF luma function checks the step before alpha
        EXPECT_EQ(f(&r), f == kiviFilterDeblockingChromaVerEdgeMBAFF_H264_16u_C1IR ? kivStsOk : kivStsBadStep);
    }
    KivDeblockingParams_16u r = ok;
    r.pBs = none;
    EXPECT_EQ(kiviFilterDeblockingLumaVerEdgeMBAFF_H264_16u_C1IR(&r), kivStsOk);
    EXPECT_EQ(kiviFilterDeblockingChromaVerEdgeMBAFF_H264_16u_C1IR(&r), kivStsOk);
    EXPECT_EQ(kiviFilterDeblockingChroma422VerEdgeMBAFF_H264_16u_C1IR(nullptr), kivStsNotImplemented);
    EXPECT_EQ(kiviFilterDeblockingChroma422VerEdgeMBAFF_H264_16u_C1IR(&ok), kivStsNotImplemented);
    EXPECT_EQ(pic16.v, before16);
    // The same arguments with nothing wrong do filter: the early returns above were not vacuous.
    EXPECT_EQ(kiviFilterDeblockingLumaVerEdgeMBAFF_H264_16u_C1IR(&ok), kivStsOk);
    EXPECT_NE(pic16.v, before16);
    EXPECT_EQ(kiviFilterDeblockingLuma_VerEdge_MBAFF_H264_8u_C1IR(pic.origin(), s, 255, 255, tc, bs), kivStsOk);
    EXPECT_NE(pic.v, before);
}

}  // namespace
