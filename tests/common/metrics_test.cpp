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

// Sum over a w x h block of f(x, y).
template <class F>
std::int64_t block_sum(int w, int h, F f) {
    std::int64_t s = 0;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) s += f(x, y);
    return s;
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
        SCOPED_TRACE(testing::Message() << c.w << "x" << c.h << (c.squared ? " SSD" : " SAD"));
        // Bits other than 2 and 3 are ignored.
        for (int mcType : {0, 4, 8, 12, 1, 6, 0x1B, 0x10C}) {
            Samples<T> cur(rng, maxValue), ref(rng, maxValue);
            const auto want = block_sum(c.w, c.h, [&](int x, int y) {
                const std::int64_t d = cur.at(x, y) - predict(ref, x, y, mcType, 0);
                return c.squared ? d * d : std::abs(d);
            });
            Kiv32s got = -1;
            ASSERT_EQ(c.fn(cur.data(), cur.step(), ref.data(), ref.step(), &got, mcType), kivStsOk);
            EXPECT_EQ(got, want) << "mcType " << mcType;
        }
        Kiv32s got;
        T b[20 * 20] = {};
        EXPECT_EQ(c.fn(b, 40, nullptr, 40, &got, 0), kivStsNullPointer);
    }
}

TEST(BlockMetrics, SadAndSsdAtEveryPosition) {
    check_hp_metrics<Kiv8u>({{kiviSAD16x16_8u32s, 16, 16, false},
                             {kiviSAD16x8_8u32s_C1R, 16, 8, false},
                             {kiviSAD8x8_8u32s_C1R, 8, 8, false},
                             {kiviSSD8x8_8u32s_C1R, 8, 8, true},
                             {kiviSSD4x4_8u32s_C1R, 4, 4, true}},
                            255);
    check_hp_metrics<Kiv16u>({{kiviSAD4x4_16u32s_C1R, 4, 4, false},
                              {kiviSAD8x8_16u32s_C1R, 8, 8, false},
                              {kiviSAD16x16_16u32s_C1R, 16, 16, false}},
                             65535);
}

TEST(BlockMetrics, SqrDiffAcceptsOnlyTheFourPositions) {
    Rng rng(12);
    Samples<Kiv8u> cur(rng), ref(rng), bwd(rng);
    for (int mcType = -1; mcType < 20; ++mcType) {
        const bool valid = mcType >= 0 && mcType <= 12 && mcType % 4 == 0;
        Kiv32s got = 12345;
        ASSERT_EQ(kiviSqrDiff16x16_8u32s(cur.data(), cur.step(), ref.data(), ref.step(), mcType, &got), kivStsOk);
        EXPECT_EQ(got, !valid ? 12345 : block_sum(16, 16, [&](int x, int y) {
            const std::int64_t d = cur.at(x, y) - predict(ref, x, y, mcType, 0);
            return d * d;
        })) << mcType;
    }
    // Bidirectional: any mcType, averaged predictions rounding up.
    for (int f : {0, 4, 8, 12, 3})
        for (int b : {0, 4, 8, 12, 14}) {
            Kiv32s got = -1;
            ASSERT_EQ(kiviSqrDiff16x16B_8u32s(cur.data(), cur.step(), ref.data(), ref.step(), f, bwd.data(), bwd.step(),
                                              b, &got),
                      kivStsOk);
            EXPECT_EQ(got, block_sum(16, 16, [&](int x, int y) {
                const std::int64_t d = cur.at(x, y) - ((predict(ref, x, y, f, 0) + predict(bwd, x, y, b, 0) + 1) >> 1);
                return d * d;
            })) << f << "/" << b;
        }
    Kiv32s r;
    EXPECT_EQ(kiviSqrDiff16x16B_8u32s(cur.data(), 16, ref.data(), 16, 0, nullptr, 16, 0, &r), kivStsNullPointer);
    EXPECT_EQ(kiviSqrDiff16x16_8u32s(cur.data(), 16, ref.data(), 16, 2, nullptr), kivStsNullPointer);
}

// A 16-bit output of 17 rows by 20 samples pre-filled with 777.
struct Out16 {
    static constexpr int kStride = 20, kStep = 2 * kStride;
    std::vector<Kiv16s> v = std::vector<Kiv16s>(kStride * 17, 777);
    Kiv16s* data() { return v.data(); }
    // The w x h block holds want(x, y) and everything else still 777.
    template <class Want>
    testing::AssertionResult holds(int w, int h, Want want) const {
        for (int y = 0; y < 17; ++y)
            for (int x = 0; x < kStride; ++x) {
                const int expected = x < w && y < h ? want(x, y) : 777;
                if (v[std::size_t(y) * kStride + x] != expected)
                    return testing::AssertionFailure() << "at " << x << "," << y << ": " << v[std::size_t(y) * kStride + x]
                                                       << " instead of " << expected;
            }
        return testing::AssertionSuccess();
    }
};

using GetDiffFn = KivStatus (*)(const Kiv8u*, Kiv32s, const Kiv8u*, Kiv32s, Kiv16s*, Kiv32s, Kiv16s*, Kiv32s, Kiv32s,
                                Kiv32s);
using GetDiffBFn = KivStatus (*)(const Kiv8u*, Kiv32s, const Kiv8u*, Kiv32s, Kiv32s, const Kiv8u*, Kiv32s, Kiv32s,
                                 Kiv16s*, Kiv32s, Kiv32s);

TEST(BlockMetrics, GetDiffWithRoundingControlAndPredictor) {
    const struct {
        GetDiffFn fn;
        GetDiffBFn bidir;
        int w, h;
    } cases[] = {{kiviGetDiff16x16_8u16s_C1, kiviGetDiff16x16B_8u16s_C1, 16, 16},
                 {kiviGetDiff16x8_8u16s_C1, kiviGetDiff16x8B_8u16s_C1, 16, 8},
                 {kiviGetDiff8x16_8u16s_C1, kiviGetDiff8x16B_8u16s_C1, 8, 16},
                 {kiviGetDiff8x8_8u16s_C1, kiviGetDiff8x8B_8u16s_C1, 8, 8},
                 {kiviGetDiff8x4_8u16s_C1, kiviGetDiff8x4B_8u16s_C1, 8, 4}};
    Rng rng(13);
    for (const auto& c : cases) {
        for (int mcType : {0, 4, 8, 12})
            for (int roundControl : {0, 1, 2, 3}) {  // bit 0 only
                SCOPED_TRACE(testing::Message() << c.w << "x" << c.h << " mcType " << mcType << " rc " << roundControl);
                const int rc = roundControl & 1;
                Samples<Kiv8u> cur(rng), ref(rng), bwd(rng);
                for (bool withPred : {false, true}) {
                    Out16 diff, pred;
                    ASSERT_EQ(c.fn(cur.data(), cur.step(), ref.data(), ref.step(), diff.data(), Out16::kStep,
                                   withPred ? pred.data() : nullptr, Out16::kStep, mcType, roundControl),
                              kivStsOk);
                    ASSERT_TRUE(diff.holds(c.w, c.h, [&](int x, int y) { return cur.at(x, y) - predict(ref, x, y, mcType, rc); }));
                    ASSERT_TRUE(pred.holds(withPred ? c.w : 0, c.h, [&](int x, int y) { return predict(ref, x, y, mcType, rc); }));
                }
                // Bidirectional, the backward position paired with each forward one.
                const int f = (mcType + 4 * roundControl) & 12;
                Out16 diff;
                ASSERT_EQ(c.bidir(cur.data(), cur.step(), ref.data(), ref.step(), f, bwd.data(), bwd.step(), mcType,
                                  diff.data(), Out16::kStep, roundControl),
                          kivStsOk);
                ASSERT_TRUE(diff.holds(c.w, c.h, [&](int x, int y) {
                    return cur.at(x, y) - ((predict(ref, x, y, f, rc) + predict(bwd, x, y, mcType, rc) + 1) >> 1);
                })) << "bidirectional, forward " << f;
            }
        Kiv16s d[256];
        Kiv8u s[300] = {};
        EXPECT_EQ(c.fn(s, 16, s, 16, nullptr, 32, d, 32, 0, 0), kivStsNullPointer);
        EXPECT_EQ(c.bidir(s, 16, nullptr, 16, 0, s, 16, 0, d, 32, 0), kivStsNullPointer);
    }
}

// Plain differences at the full position: the Sub, SubSAD and 4x4 GetDiff
// forms of every size; 16-bit differences wrap to 16 bits.
template <class T>
using SubFn = KivStatus (*)(const T*, Kiv32s, const T*, Kiv32s, Kiv16s*, Kiv32s);

template <class T>
void check_subs(std::initializer_list<std::pair<SubFn<T>, int>> cases, int maxValue) {
    Rng rng(14);
    for (const auto& [fn, n] : cases) {
        Samples<T> a(rng, maxValue), b(rng, maxValue);
        Out16 out;
        ASSERT_EQ(fn(a.data(), a.step(), b.data(), b.step(), out.data(), Out16::kStep), kivStsOk);
        ASSERT_TRUE(out.holds(n, n, [&](int x, int y) { return Kiv16s(a.at(x, y) - b.at(x, y)); })) << n << "x" << n;
        EXPECT_EQ(fn(a.data(), a.step(), b.data(), b.step(), nullptr, Out16::kStep), kivStsNullPointer);
    }
}

TEST(BlockMetrics, Differences) {
    check_subs<Kiv8u>({{kiviSub4x4_8u16s_C1R, 4}, {kiviSub8x8_8u16s_C1R, 8}, {kiviSub16x16_8u16s_C1R, 16},
                       {kiviGetDiff4x4_8u16s_C1, 4}},
                      255);
    check_subs<Kiv16u>({{kiviSub4x4_16u16s_C1R, 4}, {kiviSub8x8_16u16s_C1R, 8}}, 65535);

    Rng rng(15);
    Samples<Kiv8u> a(rng), b(rng);
    Out16 out;
    Kiv32s sad = 0, sad4 = 0;
    ASSERT_EQ(kiviSubSAD8x8_8u16s_C1R(a.data(), a.step(), b.data(), b.step(), out.data(), Out16::kStep, &sad), kivStsOk);
    EXPECT_TRUE(out.holds(8, 8, [&](int x, int y) { return a.at(x, y) - b.at(x, y); }));
    EXPECT_EQ(sad, block_sum(8, 8, [&](int x, int y) { return std::abs(a.at(x, y) - b.at(x, y)); }));
    ASSERT_EQ(kiviSAD4x4_8u32s(a.data(), a.step(), b.data(), b.step(), &sad4), kivStsOk);
    EXPECT_EQ(sad4, block_sum(4, 4, [&](int x, int y) { return std::abs(a.at(x, y) - b.at(x, y)); }));
    EXPECT_EQ(kiviSubSAD8x8_8u16s_C1R(a.data(), 8, b.data(), 8, out.data(), 16, nullptr), kivStsNullPointer);
}

TEST(BlockMetrics, Variances) {
    std::array<Kiv8u, 256> white{};
    white.fill(255);
    Kiv32s var = -1, sum = -1;
    ASSERT_EQ(kiviVariance16x16_8u32s(white.data(), 16, &var), kivStsOk);
    EXPECT_EQ(var, 0);  // s^2 = 4,261,478,400 must not overflow
    Rng rng(15);
    for (int run = 0; run < 50; ++run) {
        Samples<Kiv8u> s(rng, run % 2 ? 255 : 3);
        const auto s1 = [&](int n) { return block_sum(n, n, [&](int x, int y) { return s.at(x, y); }); };
        const auto s2 = [&](int n) { return block_sum(n, n, [&](int x, int y) { return s.at(x, y) * s.at(x, y); }); };
        ASSERT_EQ(kiviVariance16x16_8u32s(s.data(), s.step(), &var), kivStsOk);
        EXPECT_EQ(var, s2(16) - s1(16) * s1(16) / 256);
        // The single-precision rule and its integer identity for 8-bit input.
        for (auto fn : {kiviVarMean8x8_8u32s_C1R, kiviVarSum8x8_8u32s_C1R}) {
            ASSERT_EQ(fn(s.data(), s.step(), &var, &sum), kivStsOk);
            EXPECT_EQ(var, (64 * s2(8) - s1(8) * s1(8)) >> 12);
            EXPECT_EQ(sum, s1(8));
        }
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
        for (auto fn : {kiviVarMean8x8_16s32s_C1R, kiviVarSum8x8_16s32s_C1R}) {
            ASSERT_EQ(fn(s.data(), 16, &var, &sum), kivStsOk);
            EXPECT_EQ(var, want) << run;
            EXPECT_EQ(sum, t);
        }
    }
    EXPECT_EQ(kiviVarMean8x8_8u32s_C1R(white.data(), 8, &var, nullptr), kivStsNullPointer);
}

TEST(BlockMetrics, VarMeanDiffPerBlock) {
    Rng rng(16);
    for (int mcType : {0, 4, 8, 12})
        for (int rows : {16, 8}) {
            Samples<Kiv8u> cur(rng), ref(rng);
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
            sums[1] += mcType & 4 ? 400000 : -400000;  // arbitrary caller sums: mean^2 beyond 32 bits, variance 0
            Kiv32s var[4] = {-1, -1, -1, -1}, mean[4] = {-1, -1, -1, -1};
            const auto fn = rows == 16 ? kiviVarMeanDiff16x16_8u32s_C1R : kiviVarMeanDiff16x8_8u32s_C1R;
            ASSERT_EQ(fn(cur.data(), cur.step(), ref.data(), ref.step(), sums, var, mean, mcType), kivStsOk);
            for (int b = 0; b < 4; ++b) {
                const std::int64_t m = (sums[b] - preds[b]) / 8;
                EXPECT_EQ(mean[b], b < rows / 4 ? m : -1) << b;
                EXPECT_EQ(var[b], b >= rows / 4 ? -1 : squares[b] > m * m ? (squares[b] - m * m) / 64 : 0) << b;
            }
        }
}

TEST(BlockMetrics, MeanAbsDevAndFrameField) {
    Rng rng(17);
    for (int run = 0; run < 40; ++run)
        for (int n : {8, 16}) {
            Samples<Kiv8u> s(rng);
            const auto sum = [&] { return int(block_sum(n, n, [&](int x, int y) { return s.at(x, y); })); };
            if (run % 2) {
                // The mean exactly half-way between two integers: it rounds up.
                int v = s.v[0] + n * n / 2 - sum() % (n * n);
                s.v[0] = Kiv8u(v < 0 ? v + n * n : v > 255 ? v - n * n : v);
            }
            const int mean = (sum() + n * n / 2) / (n * n);
            Kiv32s r = -1;
            ASSERT_EQ((n == 8 ? kiviMeanAbsDev8x8_8u32s_C1R : kiviMeanAbsDev16x16_8u32s_C1R)(s.data(), s.step(), &r),
                      kivStsOk);
            EXPECT_EQ(r, block_sum(n, n, [&](int x, int y) { return std::abs(s.at(x, y) - mean); })) << n;
        }
    // Frame pairs skip rows 7/8; field pairs are two rows apart.
    Samples<Kiv8u> s(rng);
    Samples<Kiv16s> w(rng);
    for (int pass = 0; pass < 2; ++pass) {
        const auto at = [&](int x, int y) { return pass ? w.at(x, y) : s.at(x, y); };
        Kiv32s frame = -1, field = -1;
        ASSERT_EQ(pass ? kiviFrameFieldSAD16x16_16s32s_C1R(w.data(), w.step(), &frame, &field)
                       : kiviFrameFieldSAD16x16_8u32s_C1R(s.data(), s.step(), &frame, &field),
                  kivStsOk);
        EXPECT_EQ(frame, block_sum(16, 15, [&](int x, int y) { return y == 7 ? 0 : std::abs(at(x, y) - at(x, y + 1)); }));
        EXPECT_EQ(field, block_sum(16, 14, [&](int x, int y) { return std::abs(at(x, y) - at(x, y + 2)); }));
    }
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
        for (int i = 0; i < 16; ++i) {
            const auto sad = [&](const auto& p, const auto& q) {
                return block_sum(size, size, [&](int x, int y) {
                    const int u = i % n * size + x, v = i / n * size + y;
                    return std::abs(p.at(u, v) - q.at(u, v));
                });
            };
            EXPECT_EQ(s8[i], i < n * n ? sad(a, b) : 9) << size << " " << i;
            EXPECT_EQ(s16[i], i < n * n ? sad(c, d) : 9) << size << " " << i;
        }
    }
}

// The edge test as stated: rows 0..14 in order, a decision after each.
int edges_model(const Samples<Kiv8u>& s, int diffThreshold, int countThreshold) {
    const int t = static_cast<std::int8_t>(diffThreshold);
    int count = 0;
    for (int y = 0; y < 15; ++y) {
        for (int x = 0; x < 15; ++x) {
            const int right = std::min(127, std::abs(s.at(x, y) - s.at(x + 1, y)));
            const int down = std::min(127, std::abs(s.at(x, y) - s.at(x, y + 1)));
            count += right > t || down > t;
        }
        if (count > countThreshold) return 1;
    }
    return 0;
}

TEST(BlockMetrics, EdgesDetect) {
    Rng rng(19);
    const int diff_thresholds[] = {0, 1, 10, 50, 100, 126, 127, 128, 200, 255};
    const int count_thresholds[] = {0, 1, 2, 3, 10, 40, 224, 225, 255};
    int ones = 0;
    for (int run = 0; run < 3000; ++run) {
        // A flat block with sparse steps of any size; steps at threshold
        // distance, and the extremes whose difference is capped.
        Samples<Kiv8u> s(rng);
        const int level = rng.range(0, 255), density = rng.range(2, 60);
        for (auto& v : s.v) v = Kiv8u(rng.chance(density) ? (run % 3 ? rng.range(0, 255) : 255 * rng.range(0, 1)) : level);
        const int td = diff_thresholds[run % 10], tc = count_thresholds[rng.range(0, 8)];
        Kiv8u res = 9;
        ASSERT_EQ(kiviEdgesDetect16x16_8u_C1R(s.data(), s.step(), Kiv8u(td), Kiv8u(tc), &res), kivStsOk);
        ASSERT_EQ(res, edges_model(s, td, tc)) << "run " << run << " thresholds " << td << ", " << tc;
        ones += res;
    }
    EXPECT_GT(ones, 300);
    EXPECT_LT(ones, 2700);

    // Early stop: once row 0 decides, rows 2..15 are never read (the buffer
    // ends after row 1; an address sanitizer build would catch a read).
    std::vector<Kiv8u> two(32);
    for (int i = 0; i < 32; ++i) two[i] = static_cast<Kiv8u>(i & 1 ? 200 : 0);
    Kiv8u res = 9;
    ASSERT_EQ(kiviEdgesDetect16x16_8u_C1R(two.data(), 16, 50, 10, &res), kivStsOk);
    EXPECT_EQ(res, 1);
    EXPECT_EQ(kiviEdgesDetect16x16_8u_C1R(two.data(), 16, 1, 1, nullptr), kivStsNullPointer);
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
