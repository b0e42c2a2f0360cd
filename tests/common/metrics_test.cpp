// Block metrics through the exported functions, each checked against a model
// written from its definition: half-sample positions and rounding, the
// variance rules, the edge test's thresholds and early stop, the two paths of
// the forward scan, statuses.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "common/scan_tables.h"
#include "kivvc.h"
#include "support/kernel_case.h"

namespace {

using kivvc::test::Rng;

// A plane of random samples with a generous step (in samples).
template <class T>
struct Samples {
    static constexpr int kStride = 37;
    std::vector<T> v;
    explicit Samples(Rng& rng, int maxValue = -1, int rows = 20) : v(std::size_t(kStride) * rows) {
        for (auto& s : v) s = static_cast<T>(maxValue < 0 ? rng.next() : rng.next() % (unsigned(maxValue) + 1));
    }
    T* data() { return v.data(); }
    int step() const { return kStride * int(sizeof(T)); }
    int at(int x, int y) const { return v[std::size_t(y) * kStride + x]; }
};

// Every half-sample prediction as one formula: the four neighbours selected by
// bits 3 (horizontal) and 2 (vertical), rounding offset 2 - rc.
template <class T>
int predict(const Samples<T>& r, int x, int y, int mcType, int rc) {
    const int h = (mcType >> 3) & 1, v = (mcType >> 2) & 1;
    return (r.at(x, y) + r.at(x + h, y) + r.at(x, y + v) + r.at(x + h, y + v) + 2 - rc) >> 2;
}

template <class T>
using HpMetric = KivStatus (*)(const T*, Kiv32s, const T*, Kiv32s, Kiv32s*, Kiv32s);

template <class T>
struct HpCase {
    HpMetric<T> fn;
    int w, h;
    bool squared;
};

template <class T>
void check_hp_metrics(std::initializer_list<HpCase<T>> cases, int maxValue) {
    Rng rng(11);
    for (const auto& c : cases) {
        // Bits other than 2 and 3 are ignored.
        for (int mcType : {0, 4, 8, 12, 1, 6, 0x1B, 0x10C}) {
            Samples<T> cur(rng, maxValue), ref(rng, maxValue);
            std::int64_t want = 0;
            for (int y = 0; y < c.h; ++y)
                for (int x = 0; x < c.w; ++x) {
                    const int d = cur.at(x, y) - predict(ref, x, y, mcType, 0);
                    want += c.squared ? std::int64_t(d) * d : std::abs(d);
                }
            Kiv32s got = -1;
            ASSERT_EQ(c.fn(cur.data(), cur.step(), ref.data(), ref.step(), &got, mcType), kivStsOk);
            EXPECT_EQ(got, want) << c.w << "x" << c.h << " mcType " << mcType;
            // A block against itself at the full position.
            ASSERT_EQ(c.fn(cur.data(), cur.step(), cur.data(), cur.step(), &got, 0), kivStsOk);
            EXPECT_EQ(got, 0);
            EXPECT_EQ(c.fn(cur.data(), cur.step(), nullptr, ref.step(), &got, 0), kivStsNullPointer);
            EXPECT_EQ(c.fn(cur.data(), cur.step(), ref.data(), ref.step(), nullptr, 0), kivStsNullPointer);
        }
    }
}

TEST(BlockMetrics, SadAndSsdAtEveryPosition) {
    check_hp_metrics<Kiv8u>({{kiviSAD16x16_8u32s, 16, 16, false},
                             {kiviSAD16x8_8u32s_C1R, 16, 8, false},
                             {kiviSAD8x8_8u32s_C1R, 8, 8, false},
                             {kiviSSD8x8_8u32s_C1R, 8, 8, true},
                             {kiviSSD4x4_8u32s_C1R, 4, 4, true}},
                            255);
    // 16-bit samples over the whole range: half-sample sums need 19 bits.
    check_hp_metrics<Kiv16u>({{kiviSAD4x4_16u32s_C1R, 4, 4, false},
                              {kiviSAD8x8_16u32s_C1R, 8, 8, false},
                              {kiviSAD16x16_16u32s_C1R, 16, 16, false}},
                             65535);
}

TEST(BlockMetrics, SqrDiffAcceptsOnlyTheFourPositions) {
    Rng rng(12);
    Samples<Kiv8u> cur(rng), ref(rng), bwd(rng);
    for (int mcType = -1; mcType < 20; ++mcType) {
        Kiv32s got = 12345;
        ASSERT_EQ(kiviSqrDiff16x16_8u32s(cur.data(), cur.step(), ref.data(), ref.step(), mcType, &got), kivStsOk);
        if (mcType < 0 || mcType > 12 || mcType % 4) {
            EXPECT_EQ(got, 12345) << mcType;
            continue;
        }
        std::int64_t want = 0;
        for (int y = 0; y < 16; ++y)
            for (int x = 0; x < 16; ++x) {
                const int d = cur.at(x, y) - predict(ref, x, y, mcType, 0);
                want += d * d;
            }
        EXPECT_EQ(got, want) << mcType;
    }
    // Bidirectional: any mcType, averaged predictions rounding up.
    for (int f : {0, 4, 8, 12, 3}) {
        for (int b : {0, 4, 8, 12, 14}) {
            std::int64_t want = 0;
            for (int y = 0; y < 16; ++y)
                for (int x = 0; x < 16; ++x) {
                    const int d = cur.at(x, y) - ((predict(ref, x, y, f, 0) + predict(bwd, x, y, b, 0) + 1) >> 1);
                    want += d * d;
                }
            Kiv32s got = -1;
            ASSERT_EQ(kiviSqrDiff16x16B_8u32s(cur.data(), cur.step(), ref.data(), ref.step(), f, bwd.data(), bwd.step(),
                                              b, &got),
                      kivStsOk);
            EXPECT_EQ(got, want) << f << "/" << b;
        }
    }
    Kiv32s r;
    EXPECT_EQ(kiviSqrDiff16x16B_8u32s(cur.data(), 16, ref.data(), 16, 0, nullptr, 16, 0, &r), kivStsNullPointer);
    EXPECT_EQ(kiviSqrDiff16x16_8u32s(cur.data(), 16, ref.data(), 16, 2, nullptr), kivStsNullPointer);
}

using GetDiffFn = KivStatus (*)(const Kiv8u*, Kiv32s, const Kiv8u*, Kiv32s, Kiv16s*, Kiv32s, Kiv16s*, Kiv32s, Kiv32s,
                                Kiv32s);
using GetDiffBFn = KivStatus (*)(const Kiv8u*, Kiv32s, const Kiv8u*, Kiv32s, Kiv32s, const Kiv8u*, Kiv32s, Kiv32s,
                                 Kiv16s*, Kiv32s, Kiv32s);

struct GetDiffCase {
    GetDiffFn fn;
    GetDiffBFn bidir;
    int w, h;
};

constexpr int kOutStride = 20;  // samples per output row; everything past w must stay untouched

TEST(BlockMetrics, GetDiffWithRoundingControlAndPredictor) {
    const GetDiffCase cases[] = {{kiviGetDiff16x16_8u16s_C1, kiviGetDiff16x16B_8u16s_C1, 16, 16},
                                 {kiviGetDiff16x8_8u16s_C1, kiviGetDiff16x8B_8u16s_C1, 16, 8},
                                 {kiviGetDiff8x16_8u16s_C1, kiviGetDiff8x16B_8u16s_C1, 8, 16},
                                 {kiviGetDiff8x8_8u16s_C1, kiviGetDiff8x8B_8u16s_C1, 8, 8},
                                 {kiviGetDiff8x4_8u16s_C1, kiviGetDiff8x4B_8u16s_C1, 8, 4}};
    Rng rng(13);
    for (const auto& c : cases) {
        for (int mcType : {0, 4, 8, 12}) {
            for (int roundControl : {0, 1, 2, 3}) {  // bit 0 only
                const int rc = roundControl & 1;
                Samples<Kiv8u> cur(rng), ref(rng), bwd(rng);
                for (bool withPred : {false, true}) {
                    std::vector<Kiv16s> diff(kOutStride * 17, 777), pred(kOutStride * 17, 777);
                    ASSERT_EQ(c.fn(cur.data(), cur.step(), ref.data(), ref.step(), diff.data(), kOutStride * 2,
                                   withPred ? pred.data() : nullptr, kOutStride * 2, mcType, roundControl),
                              kivStsOk);
                    for (int y = 0; y < 17; ++y)
                        for (int x = 0; x < kOutStride; ++x) {
                            const bool in = x < c.w && y < c.h;
                            const int p = in ? predict(ref, x, y, mcType, rc) : 777;
                            ASSERT_EQ(diff[y * kOutStride + x], in ? cur.at(x, y) - p : 777)
                                << c.w << "x" << c.h << " mcType " << mcType << " rc " << rc << " at " << x << "," << y;
                            ASSERT_EQ(pred[y * kOutStride + x], withPred ? p : 777);
                        }
                }
                // Bidirectional, the backward position paired with each forward one.
                const int f = (mcType + 4 * roundControl) & 12;
                std::vector<Kiv16s> diff(kOutStride * 17, 777);
                ASSERT_EQ(c.bidir(cur.data(), cur.step(), ref.data(), ref.step(), f, bwd.data(), bwd.step(), mcType,
                                  diff.data(), kOutStride * 2, roundControl),
                          kivStsOk);
                for (int y = 0; y < 17; ++y)
                    for (int x = 0; x < kOutStride; ++x) {
                        const bool in = x < c.w && y < c.h;
                        const int b = in ? (predict(ref, x, y, f, rc) + predict(bwd, x, y, mcType, rc) + 1) >> 1 : 0;
                        ASSERT_EQ(diff[y * kOutStride + x], in ? cur.at(x, y) - b : 777)
                            << "bidirectional " << f << "/" << mcType << " rc " << rc;
                    }
            }
        }
        Kiv16s d[256];
        Kiv8u s[300] = {};
        EXPECT_EQ(c.fn(s, 16, s, 16, nullptr, 32, d, 32, 0, 0), kivStsNullPointer);
        EXPECT_EQ(c.bidir(s, 16, nullptr, 16, 0, s, 16, 0, d, 32, 0), kivStsNullPointer);
    }
}

TEST(BlockMetrics, HalfSampleRoundingExamples) {
    // Columns alternate 0 and 255: HF gives 128 rounding up, 127 rounding down.
    std::array<Kiv8u, 9 * 9> ref{}, cur{};
    for (int i = 0; i < 81; ++i) ref[i] = (i % 9) & 1 ? 255 : 0;
    std::array<Kiv16s, 64> diff{}, pred{};
    ASSERT_EQ(kiviGetDiff8x8_8u16s_C1(cur.data(), 9, ref.data(), 9, diff.data(), 16, pred.data(), 16, 8, 0), kivStsOk);
    EXPECT_EQ(pred[0], 128);
    EXPECT_EQ(diff[0], -128);
    ASSERT_EQ(kiviGetDiff8x8_8u16s_C1(cur.data(), 9, ref.data(), 9, diff.data(), 16, pred.data(), 16, 8, 1), kivStsOk);
    EXPECT_EQ(pred[0], 127);
    // The metrics always round up.
    Kiv32s sad = 0;
    ASSERT_EQ(kiviSAD8x8_8u32s_C1R(cur.data(), 9, ref.data(), 9, &sad, 8), kivStsOk);
    EXPECT_EQ(sad, 64 * 128);
}

TEST(BlockMetrics, Differences) {
    Rng rng(14);
    Samples<Kiv8u> a(rng), b(rng);
    std::vector<Kiv16s> out(kOutStride * 16);
    Kiv32s sad = 0;
    ASSERT_EQ(kiviSubSAD8x8_8u16s_C1R(a.data(), a.step(), b.data(), b.step(), out.data(), kOutStride * 2, &sad),
              kivStsOk);
    int want = 0;
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            EXPECT_EQ(out[y * kOutStride + x], a.at(x, y) - b.at(x, y));
            want += std::abs(a.at(x, y) - b.at(x, y));
        }
    EXPECT_EQ(sad, want);
    ASSERT_EQ(kiviSub16x16_8u16s_C1R(a.data(), a.step(), b.data(), b.step(), out.data(), kOutStride * 2), kivStsOk);
    EXPECT_EQ(out[15 * kOutStride + 15], a.at(15, 15) - b.at(15, 15));
    ASSERT_EQ(kiviGetDiff4x4_8u16s_C1(a.data(), a.step(), b.data(), b.step(), out.data(), 8), kivStsOk);
    EXPECT_EQ(out[3 * 4 + 3], a.at(3, 3) - b.at(3, 3));
    // 16-bit differences wrap to 16 bits.
    const Kiv16u hi[16] = {65535, 40000, 1, 0}, lo[16] = {0, 0, 2, 65535};
    Kiv16s d[16];
    ASSERT_EQ(kiviSub4x4_16u16s_C1R(hi, 8, lo, 8, d, 8), kivStsOk);
    EXPECT_EQ(d[0], -1);
    EXPECT_EQ(d[1], 40000 - 65536);
    EXPECT_EQ(d[2], -1);
    EXPECT_EQ(d[3], 1);
    EXPECT_EQ(kiviSubSAD8x8_8u16s_C1R(a.data(), 8, b.data(), 8, out.data(), 16, nullptr), kivStsNullPointer);
}

TEST(BlockMetrics, Variances) {
    std::array<Kiv8u, 256> white{};
    white.fill(255);
    Kiv32s var = -1, sum = -1;
    ASSERT_EQ(kiviVariance16x16_8u32s(white.data(), 16, &var), kivStsOk);
    EXPECT_EQ(var, 0);  // s^2 = 4,261,478,400 must not overflow
    std::array<Kiv8u, 64> flat{};
    flat.fill(100);
    ASSERT_EQ(kiviVarMean8x8_8u32s_C1R(flat.data(), 8, &var, &sum), kivStsOk);
    EXPECT_EQ(var, 0);
    EXPECT_EQ(sum, 6400);

    Rng rng(15);
    for (int run = 0; run < 50; ++run) {
        Samples<Kiv8u> s(rng, run % 2 ? 255 : 3);
        std::int64_t s1 = 0, s2 = 0;
        for (int y = 0; y < 16; ++y)
            for (int x = 0; x < 16; ++x) s1 += s.at(x, y), s2 += s.at(x, y) * s.at(x, y);
        ASSERT_EQ(kiviVariance16x16_8u32s(s.data(), s.step(), &var), kivStsOk);
        EXPECT_EQ(var, s2 - s1 * s1 / 256);

        // The single-precision rule and its integer identity for 8-bit input.
        s1 = s2 = 0;
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 8; ++x) s1 += s.at(x, y), s2 += s.at(x, y) * s.at(x, y);
        ASSERT_EQ(kiviVarSum8x8_8u32s_C1R(s.data(), s.step(), &var, &sum), kivStsOk);
        EXPECT_EQ(var, (64 * s2 - s1 * s1) >> 12);
        EXPECT_EQ(sum, s1);
    }
    // 16-bit signed input: the float rule evaluated in extended precision,
    // the sum of squares wrapping at 32 bits for large samples.
    for (int run = 0; run < 50; ++run) {
        const int limit = run < 25 ? 300 : 32768;
        std::array<Kiv16s, 64> s{};
        for (auto& v : s) v = static_cast<Kiv16s>(run == 49 ? -32768 : rng.range(-limit, limit - 1));
        std::uint32_t q = 0;
        std::int32_t t = 0;
        for (Kiv16s v : s) t += v, q += std::uint32_t(v * v);
        const long double fs = static_cast<float>(t), fq = static_cast<float>(static_cast<std::int32_t>(q));
        const auto want = static_cast<Kiv32s>(fq * 0.015625L - (fs * 0.015625L) * (fs * 0.015625L));
        Kiv32s mean = -1;
        ASSERT_EQ(kiviVarMean8x8_16s32s_C1R(s.data(), 16, &var, &mean), kivStsOk);
        EXPECT_EQ(var, want) << run;
        EXPECT_EQ(mean, t);
        ASSERT_EQ(kiviVarSum8x8_16s32s_C1R(s.data(), 16, &var, &mean), kivStsOk);
        EXPECT_EQ(var, want) << run;
    }
    EXPECT_EQ(kiviVarMean8x8_8u32s_C1R(flat.data(), 8, &var, nullptr), kivStsNullPointer);
}

TEST(BlockMetrics, VarMeanDiffPerBlock) {
    Rng rng(16);
    for (int mcType : {0, 4, 8, 12}) {
        for (int rows : {16, 8}) {
            Samples<Kiv8u> cur(rng), ref(rng);
            const int blocks = rows / 4;
            std::int64_t squares[4] = {}, preds[4] = {};
            Kiv32s sums[4] = {};
            for (int y = 0; y < rows; ++y)
                for (int x = 0; x < 16; ++x) {
                    const int p = predict(ref, x, y, mcType, 0), b = x / 8 + 2 * (y / 8);
                    squares[b] += (cur.at(x, y) - p) * (cur.at(x, y) - p);
                    preds[b] += p;
                    sums[b] += cur.at(x, y);
                }
            sums[0] += 5;  // not a multiple of 8: the mean truncates toward zero
            Kiv32s var[4] = {-1, -1, -1, -1}, mean[4] = {-1, -1, -1, -1};
            const auto fn = rows == 16 ? kiviVarMeanDiff16x16_8u32s_C1R : kiviVarMeanDiff16x8_8u32s_C1R;
            ASSERT_EQ(fn(cur.data(), cur.step(), ref.data(), ref.step(), sums, var, mean, mcType), kivStsOk);
            for (int b = 0; b < 4; ++b) {
                if (b >= blocks) {
                    EXPECT_EQ(var[b], -1);
                    continue;
                }
                const std::int64_t m = (sums[b] - preds[b]) / 8;
                EXPECT_EQ(mean[b], m) << b;
                EXPECT_EQ(var[b], squares[b] > m * m ? (squares[b] - m * m) / 64 : 0) << b;
            }
        }
    }
    // The caller's sums are arbitrary: a large mean makes the variance 0.
    std::array<Kiv8u, 17 * 17> zero{};
    const Kiv32s sums[4] = {80000, -80000, 8, 0};
    Kiv32s var[4], mean[4];
    ASSERT_EQ(kiviVarMeanDiff16x16_8u32s_C1R(zero.data(), 17, zero.data(), 17, sums, var, mean, 12), kivStsOk);
    EXPECT_EQ(mean[0], 10000);
    EXPECT_EQ(mean[1], -10000);
    EXPECT_EQ(mean[2], 1);
    EXPECT_EQ(var[0], 0);
    EXPECT_EQ(var[2], 0);
}

TEST(BlockMetrics, MeanAbsDevAndFrameField) {
    std::array<Kiv8u, 64> half{};
    for (int i = 32; i < 64; ++i) half[i] = 1;
    Kiv32s r = -1;
    ASSERT_EQ(kiviMeanAbsDev8x8_8u32s_C1R(half.data(), 8, &r), kivStsOk);
    EXPECT_EQ(r, 32);  // mean 0.5 rounds up to 1

    Rng rng(17);
    Samples<Kiv8u> s(rng);
    int sum = 0, dev = 0;
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x) sum += s.at(x, y);
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x) dev += std::abs(s.at(x, y) - ((sum + 128) >> 8));
    ASSERT_EQ(kiviMeanAbsDev16x16_8u32s_C1R(s.data(), s.step(), &r), kivStsOk);
    EXPECT_EQ(r, dev);

    // Frame pairs skip rows 7/8; field pairs are two rows apart.
    Samples<Kiv16s> w(rng);
    Kiv32s frame = -1, field = -1;
    for (int pass = 0; pass < 2; ++pass) {
        const auto at = [&](int x, int y) { return pass ? w.at(x, y) : s.at(x, y); };
        std::int64_t fr = 0, fi = 0;
        for (int y = 0; y < 15; ++y)
            for (int x = 0; x < 16; ++x) {
                if (y != 7) fr += std::abs(at(x, y) - at(x, y + 1));
                if (y < 14) fi += std::abs(at(x, y) - at(x, y + 2));
            }
        ASSERT_EQ(pass ? kiviFrameFieldSAD16x16_16s32s_C1R(w.data(), w.step(), &frame, &field)
                       : kiviFrameFieldSAD16x16_8u32s_C1R(s.data(), s.step(), &frame, &field),
                  kivStsOk);
        EXPECT_EQ(frame, fr);
        EXPECT_EQ(field, fi);
    }
    std::array<Kiv8u, 256> split{};
    std::fill(split.begin() + 128, split.end(), 200);
    ASSERT_EQ(kiviFrameFieldSAD16x16_8u32s_C1R(split.data(), 16, &frame, &field), kivStsOk);
    EXPECT_EQ(frame, 0);
    EXPECT_EQ(field, 2 * 16 * 200);
}

TEST(BlockMetrics, SadOfSubBlocks) {
    Rng rng(18);
    Samples<Kiv8u> a(rng), b(rng);
    Samples<Kiv16u> c(rng), d(rng);
    for (int size : {8, 4}) {
        const int n = 16 / size;
        std::array<Kiv16u, 16> s8{};
        std::array<Kiv32u, 16> s16{};
        s8.fill(9);
        s16.fill(9);
        ASSERT_EQ((size == 8 ? kiviSAD16x16Blocks8x8_8u16u : kiviSAD16x16Blocks4x4_8u16u)(a.data(), a.step(), b.data(),
                                                                                          b.step(), s8.data()),
                  kivStsOk);
        ASSERT_EQ((size == 8 ? kiviSAD16x16Blocks8x8_16u32u_C1R : kiviSAD16x16Blocks4x4_16u32u_C1R)(
                      c.data(), c.step(), d.data(), d.step(), s16.data()),
                  kivStsOk);
        std::array<std::int64_t, 16> w8{}, w16{};
        for (int y = 0; y < 16; ++y)
            for (int x = 0; x < 16; ++x) {
                w8[y / size * n + x / size] += std::abs(a.at(x, y) - b.at(x, y));
                w16[y / size * n + x / size] += std::abs(c.at(x, y) - d.at(x, y));
            }
        for (int i = 0; i < 16; ++i) {
            EXPECT_EQ(s8[i], i < n * n ? w8[i] : 9) << size << " " << i;
            EXPECT_EQ(s16[i], i < n * n ? w16[i] : 9) << size << " " << i;
        }
    }
}

TEST(BlockMetrics, EdgesDetect) {
    std::array<Kiv8u, 256> p{};
    p.fill(90);
    Kiv8u res = 9;
    for (int td : {0, 50, 126}) {
        ASSERT_EQ(kiviEdgesDetect16x16_8u_C1R(p.data(), 16, Kiv8u(td), 0, &res), kivStsOk);
        EXPECT_EQ(res, 0);
    }
    // Thresholds of 128 and above read as negative: every position counts.
    ASSERT_EQ(kiviEdgesDetect16x16_8u_C1R(p.data(), 16, 200, 224, &res), kivStsOk);
    EXPECT_EQ(res, 1);
    ASSERT_EQ(kiviEdgesDetect16x16_8u_C1R(p.data(), 16, 200, 225, &res), kivStsOk);
    EXPECT_EQ(res, 0);  // 15 x 15 positions

    // One step of exactly Td does not count, Td + 1 does; steps into row or
    // column 15 count for their row-0..14 neighbour.
    for (int td : {10, 100}) {
        struct Step {
            int x, y, size;
            Kiv8u want;
        };
        const Step steps[] = {{5, 3, td, 0}, {5, 3, td + 1, 1}, {15, 4, td + 1, 1}, {3, 15, td + 1, 1}};
        for (const Step& s : steps) {
            p.fill(90);
            p[s.y * 16 + s.x] = static_cast<Kiv8u>(90 + s.size);
            ASSERT_EQ(kiviEdgesDetect16x16_8u_C1R(p.data(), 16, Kiv8u(td), 0, &res), kivStsOk);
            EXPECT_EQ(res, s.want) << td << " at " << s.x << "," << s.y << " step " << s.size;
        }
    }
    // Differences cap at 127: a 255 step never beats a threshold of 127.
    p.fill(0);
    p[3 * 16 + 3] = 255;
    ASSERT_EQ(kiviEdgesDetect16x16_8u_C1R(p.data(), 16, 127, 0, &res), kivStsOk);
    EXPECT_EQ(res, 0);
    // The count threshold compares the running count with ">".
    ASSERT_EQ(kiviEdgesDetect16x16_8u_C1R(p.data(), 16, 100, 1, &res), kivStsOk);
    EXPECT_EQ(res, 1);  // (3,3) steps right and down, (2,3) and (3,2) step into it: 3 positions
    ASSERT_EQ(kiviEdgesDetect16x16_8u_C1R(p.data(), 16, 100, 3, &res), kivStsOk);
    EXPECT_EQ(res, 0);

    // Early stop: once row 0 decides, rows 2..15 are never read (the buffer
    // ends after row 1; an address sanitizer build would catch a read).
    std::vector<Kiv8u> two(32);
    for (int i = 0; i < 32; ++i) two[i] = static_cast<Kiv8u>(i & 1 ? 200 : 0);
    ASSERT_EQ(kiviEdgesDetect16x16_8u_C1R(two.data(), 16, 50, 10, &res), kivStsOk);
    EXPECT_EQ(res, 1);
    EXPECT_EQ(kiviEdgesDetect16x16_8u_C1R(p.data(), 16, 1, 1, nullptr), kivStsNullPointer);
}

TEST(BlockMetrics, CountZerosAndScans) {
    std::array<Kiv16s, 64> c{};
    Kiv32u n = 0;
    ASSERT_EQ(kiviCountZeros8x8_16s_C1(c.data(), &n), kivStsOk);
    EXPECT_EQ(n, 64u);
    c[0] = 1, c[17] = -1, c[63] = -32768;
    ASSERT_EQ(kiviCountZeros8x8_16s_C1(c.data(), &n), kivStsOk);
    EXPECT_EQ(n, 61u);
    EXPECT_EQ(kiviCountZeros8x8_16s_C1(nullptr, &n), kivStsNullPointer);

    std::array<Kiv16s, 64> raster{}, scanned{}, back{};
    for (int i = 0; i < 64; ++i) raster[i] = static_cast<Kiv16s>(i % 3 ? i + 1 : 0);
    const std::int32_t* scans[] = {kivvc::ownvc_Zigzag, kivvc::ownvc_AltScanV, kivvc::ownvc_AltScanH};
    for (int sel = 0; sel < 3; ++sel) {
        const std::int32_t* t = scans[sel];
        // Count 20 and above: a plain permutation, whatever the count says.
        ASSERT_EQ(kiviScanFwd_16s_C1(raster.data(), scanned.data(), 20, sel), kivStsOk);
        for (int i = 0; i < 64; ++i) ASSERT_EQ(scanned[i], raster[t[i]]) << sel << " " << i;
        ASSERT_EQ(kiviScanInv_16s_C1(scanned.data(), back.data(), 63, sel), kivStsOk);
        EXPECT_EQ(back, raster);
        // Below 20: nonzero values up to the count-th, later ones dropped.
        ASSERT_EQ(kiviScanFwd_16s_C1(raster.data(), scanned.data(), 5, sel), kivStsOk);
        int kept = 0;
        for (int i = 0; i < 64; ++i) {
            const bool keep = raster[t[i]] != 0 && kept < 5;
            kept += keep;
            ASSERT_EQ(scanned[i], keep ? raster[t[i]] : 0) << sel << " " << i;
        }
        // Inverse with index 0: only the first coefficient.
        back.fill(5);
        ASSERT_EQ(kiviScanInv_16s_C1(scanned.data(), back.data(), 0, sel), kivStsOk);
        for (int i = 0; i < 64; ++i) ASSERT_EQ(back[i], i == 0 ? scanned[0] : 0);
    }
    scanned.fill(3);
    EXPECT_EQ(kiviScanFwd_16s_C1(raster.data(), scanned.data(), 7, 9), kivStsOk);  // unknown selector: zigzag
    EXPECT_EQ(scanned[2], raster[8]);
    scanned.fill(3);
    EXPECT_EQ(kiviScanFwd_16s_C1(raster.data(), scanned.data(), 0, 0), kivStsOutOfRange);
    EXPECT_EQ(kiviScanFwd_16s_C1(raster.data(), scanned.data(), 65, 0), kivStsOutOfRange);
    EXPECT_EQ(kiviScanInv_16s_C1(raster.data(), scanned.data(), -1, 0), kivStsOutOfRange);
    EXPECT_EQ(kiviScanInv_16s_C1(raster.data(), scanned.data(), 64, 0), kivStsOutOfRange);
    EXPECT_EQ(scanned[0], 3);
    EXPECT_EQ(kiviScanFwd_16s_C1(raster.data(), nullptr, 0, 0), kivStsNullPointer);  // pointers first
    EXPECT_EQ(kiviScanInv_16s_C1(nullptr, scanned.data(), 64, 0), kivStsNullPointer);
}

}  // namespace
