// MPEG-4 quantisation records and quantisers: record layout and checks, the
// rounding rules that a round trip cannot see, and quantise-then-reconstruct
// within one step for both methods and bit-depth regimes.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "kivvc.h"
#include "support/kernel_case.h"

namespace {

using Block = std::array<Kiv16s, 64>;

// Record memory deliberately misaligned by `skew` bytes.
struct Memory {
    explicit Memory(int bytes, int skew = 3) : mem(std::size_t(bytes) + 32), skew(skew) {}
    std::vector<Kiv8u> mem;
    int skew;
    Kiv8u* raw() {
        const auto base = reinterpret_cast<std::uintptr_t>(mem.data());
        return mem.data() + ((16 - base % 16) % 16) + skew;
    }
    template <class T>
    T* as() { return reinterpret_cast<T*>(raw()); }
    // The aligned record start.
    Kiv8u* aligned() { return raw() + ((16 - skew % 16) % 16); }
};

std::array<Kiv8u, 64> test_matrix(int seed, int lo = 1, int hi = 255) {
    kivvc::test::Rng rng(seed);
    std::array<Kiv8u, 64> m{};
    for (auto& w : m) w = static_cast<Kiv8u>(rng.range(lo, hi));
    return m;
}

TEST(Mpeg4QuantRecord, SizesLayoutAndIdentifiers) {
    int size = 0;
    EXPECT_EQ(kiviQuantIntraGetSize_MPEG4(&size), kivStsOk);
    EXPECT_EQ(size, 412);
    EXPECT_EQ(kiviQuantInterGetSize_MPEG4(&size), kivStsOk);
    EXPECT_EQ(size, 412);
    EXPECT_EQ(kiviQuantInvIntraGetSize_MPEG4(&size), kivStsOk);
    EXPECT_EQ(size, 156);
    EXPECT_EQ(kiviQuantInvInterGetSize_MPEG4(&size), kivStsOk);
    EXPECT_EQ(size, 156);
    EXPECT_EQ(kiviQuantIntraGetSize_MPEG4(nullptr), kivStsNullPointer);
    EXPECT_EQ(kiviQuantInvInterGetSize_MPEG4(nullptr), kivStsNullPointer);

    const auto m = test_matrix(1);
    for (int skew = 0; skew < 16; skew += 5) {
        // Forward, 8 bits: halved weights and reciprocals; 9 bits: weights as given.
        Memory f(412, skew);
        ASSERT_EQ(kiviQuantIntraInit_MPEG4(m.data(), f.as<KiviQuantIntraSpec_MPEG4>(), 8), kivStsOk);
        const Kiv8u* r = f.aligned();
        for (int i = 0; i < 64; ++i) {
            Kiv16u w;
            Kiv32u rc;
            std::memcpy(&w, r + 2 * i, 2);
            std::memcpy(&rc, r + 128 + 4 * i, 4);
            EXPECT_EQ(w, m[i] >> 1);
            EXPECT_EQ(rc, 65536u / m[i] + 1);
        }
        Kiv32s fields[3];
        std::memcpy(fields, r + 384, 12);
        EXPECT_EQ(fields[0], 8);
        EXPECT_EQ(fields[1], 1);
        EXPECT_EQ(std::memcmp(r + 392, "TAMC", 4), 0);
        ASSERT_EQ(kiviQuantInterInit_MPEG4(m.data(), f.as<KiviQuantInterSpec_MPEG4>(), 9), kivStsOk);
        Kiv16u w0;
        std::memcpy(&w0, r, 2);
        EXPECT_EQ(w0, m[0]);
        EXPECT_EQ(std::memcmp(r + 392, "UAMC", 4), 0);

        Memory v(156, skew);
        ASSERT_EQ(kiviQuantInvIntraInit_MPEG4(nullptr, v.as<KiviQuantInvIntraSpec_MPEG4>(), 12), kivStsOk);
        std::memcpy(fields, v.aligned() + 128, 12);
        EXPECT_EQ(fields[0], 12);
        EXPECT_EQ(fields[1], 0);
        EXPECT_EQ(std::memcmp(v.aligned() + 136, "RAMC", 4), 0);
        ASSERT_EQ(kiviQuantInvInterInit_MPEG4(m.data(), v.as<KiviQuantInvInterSpec_MPEG4>(), 4), kivStsOk);
        EXPECT_EQ(std::memcmp(v.aligned() + 136, "SAMC", 4), 0);
    }
}

TEST(Mpeg4QuantRecord, InitChecks) {
    auto m = test_matrix(2);
    EXPECT_EQ(kiviQuantIntraInit_MPEG4(m.data(), nullptr, 8), kivStsNullPointer);
    EXPECT_EQ(kiviQuantInvInterInit_MPEG4(m.data(), nullptr, 99), kivStsNullPointer);
    // Bits outside 4..12 are refused by every Init before anything is written.
    for (int bits : {3, 13, -1}) {
        Memory f(412), v(156);
        std::memset(f.mem.data(), 0xAB, f.mem.size());
        std::memset(v.mem.data(), 0xAB, v.mem.size());
        const auto fb = f.mem, vb = v.mem;
        EXPECT_EQ(kiviQuantIntraInit_MPEG4(m.data(), f.as<KiviQuantIntraSpec_MPEG4>(), bits), kivStsOutOfRange);
        EXPECT_EQ(kiviQuantInterInit_MPEG4(nullptr, f.as<KiviQuantInterSpec_MPEG4>(), bits), kivStsOutOfRange);
        EXPECT_EQ(kiviQuantInvIntraInit_MPEG4(m.data(), v.as<KiviQuantInvIntraSpec_MPEG4>(), bits), kivStsOutOfRange);
        EXPECT_EQ(kiviQuantInvInterInit_MPEG4(nullptr, v.as<KiviQuantInvInterSpec_MPEG4>(), bits), kivStsOutOfRange);
        EXPECT_EQ(f.mem, fb);
        EXPECT_EQ(v.mem, vb);
    }
    // A zero weight stops Init: identifier valid, matrix flag clear.
    m[10] = 0;
    Memory v(156);
    EXPECT_EQ(kiviQuantInvInterInit_MPEG4(m.data(), v.as<KiviQuantInvInterSpec_MPEG4>(), 8), kivStsBadQp);
    Kiv32s flag;
    std::memcpy(&flag, v.aligned() + 132, 4);
    EXPECT_EQ(flag, 0);
    EXPECT_EQ(std::memcmp(v.aligned() + 136, "SAMC", 4), 0);
    Memory f(412);
    EXPECT_EQ(kiviQuantIntraInit_MPEG4(m.data(), f.as<KiviQuantIntraSpec_MPEG4>(), 8), kivStsBadQp);
}

TEST(Mpeg4Quant, ArgumentChecksInOrder) {
    // Inverse records in forward-sized memory: a forward quantiser reads the
    // identifier where a forward record keeps it.
    Memory fi(412), fe(412), vi(412), ve(412);
    auto* intra = fi.as<KiviQuantIntraSpec_MPEG4>();
    auto* inter = fe.as<KiviQuantInterSpec_MPEG4>();
    auto* inv_intra = vi.as<KiviQuantInvIntraSpec_MPEG4>();
    auto* inv_inter = ve.as<KiviQuantInvInterSpec_MPEG4>();
    ASSERT_EQ(kiviQuantIntraInit_MPEG4(nullptr, intra, 7), kivStsOk);
    ASSERT_EQ(kiviQuantInterInit_MPEG4(nullptr, inter, 8), kivStsOk);
    ASSERT_EQ(kiviQuantInvIntraInit_MPEG4(nullptr, inv_intra, 8), kivStsOk);
    ASSERT_EQ(kiviQuantInvInterInit_MPEG4(nullptr, inv_inter, 12), kivStsOk);
    Block b{};
    int count = 0;
    EXPECT_EQ(kiviQuantIntra_MPEG4_16s_C1I(nullptr, intra, 1, &count, 0), kivStsNullPointer);
    EXPECT_EQ(kiviQuantIntra_MPEG4_16s_C1I(b.data(), intra, 1, nullptr, 0), kivStsNullPointer);
    EXPECT_EQ(kiviQuantInter_MPEG4_16s_C1I(b.data(), nullptr, 0, &count), kivStsNullPointer);
    EXPECT_EQ(kiviQuantInvIntra_MPEG4_16s_C1I(b.data(), 63, nullptr, 1, 0), kivStsNullPointer);
    // Every kind of record refused by the others, before QP is looked at.
    EXPECT_EQ(kiviQuantInvInter_MPEG4_16s_C1I(b.data(), 63, reinterpret_cast<KiviQuantInvInterSpec_MPEG4*>(inv_intra), 0),
              kivStsContextMismatch);
    EXPECT_EQ(kiviQuantInvIntra_MPEG4_16s_C1I(b.data(), 63, reinterpret_cast<KiviQuantInvIntraSpec_MPEG4*>(intra), 1, 0),
              kivStsContextMismatch);
    EXPECT_EQ(kiviQuantIntra_MPEG4_16s_C1I(b.data(), reinterpret_cast<KiviQuantIntraSpec_MPEG4*>(inter), 1, &count, 0),
              kivStsContextMismatch);
    EXPECT_EQ(kiviQuantInter_MPEG4_16s_C1I(b.data(), reinterpret_cast<KiviQuantInterSpec_MPEG4*>(inv_inter), 1, &count),
              kivStsContextMismatch);
    // QP ranges: 7 bits stop at 15, 8 bits at 31, 12 bits at 511.
    EXPECT_EQ(kiviQuantIntra_MPEG4_16s_C1I(b.data(), intra, 15, &count, 0), kivStsOk);
    EXPECT_EQ(kiviQuantIntra_MPEG4_16s_C1I(b.data(), intra, 31, &count, 0), kivStsBadQp);
    EXPECT_EQ(kiviQuantInter_MPEG4_16s_C1I(b.data(), inter, 31, &count), kivStsOk);
    EXPECT_EQ(kiviQuantInter_MPEG4_16s_C1I(b.data(), inter, 32, &count), kivStsBadQp);
    EXPECT_EQ(kiviQuantInter_MPEG4_16s_C1I(b.data(), inter, 0, &count), kivStsBadQp);
    EXPECT_EQ(kiviQuantInvInter_MPEG4_16s_C1I(b.data(), 63, inv_inter, 511), kivStsOk);
    EXPECT_EQ(kiviQuantInvInter_MPEG4_16s_C1I(b.data(), 63, inv_inter, 512), kivStsBadQp);
    EXPECT_EQ(kiviQuantInvIntra_MPEG4_16s_C1I(b.data(), 63, inv_intra, 32, 0), kivStsBadQp);
    // A failed check leaves the block alone.
    Block c{};
    c.fill(77);
    EXPECT_EQ(kiviQuantInvIntra_MPEG4_16s_C1I(c.data(), 63, inv_intra, 0, 0), kivStsBadQp);
    EXPECT_EQ(c[0], 77);
    EXPECT_EQ(c[63], 77);
}

// A record of each kind for one method and bit depth.
struct Records {
    Memory fi{412}, fe{412}, vi{156}, ve{156, 9};
    Records(const Kiv8u* matrix, int bits) {
        EXPECT_EQ(kiviQuantIntraInit_MPEG4(matrix, intra(), bits), kivStsOk);
        EXPECT_EQ(kiviQuantInterInit_MPEG4(matrix, inter(), bits), kivStsOk);
        EXPECT_EQ(kiviQuantInvIntraInit_MPEG4(matrix, inv_intra(), bits), kivStsOk);
        EXPECT_EQ(kiviQuantInvInterInit_MPEG4(matrix, inv_inter(), bits), kivStsOk);
    }
    KiviQuantIntraSpec_MPEG4* intra() { return fi.as<KiviQuantIntraSpec_MPEG4>(); }
    KiviQuantInterSpec_MPEG4* inter() { return fe.as<KiviQuantInterSpec_MPEG4>(); }
    KiviQuantInvIntraSpec_MPEG4* inv_intra() { return vi.as<KiviQuantInvIntraSpec_MPEG4>(); }
    KiviQuantInvInterSpec_MPEG4* inv_inter() { return ve.as<KiviQuantInvInterSpec_MPEG4>(); }
};

TEST(Mpeg4Quant, RoundingRules) {
    Records h263(nullptr, 8);
    Block b{};
    int count = 0;
    // The reciprocal form is part of the result: QP 31, |c| 1115 gives 18.
    b[5] = 1115;
    b[6] = -1115;
    b[7] = 1;
    ASSERT_EQ(kiviQuantIntra_MPEG4_16s_C1I(b.data(), h263.intra(), 31, &count, 0), kivStsOk);
    EXPECT_EQ(b[5], 18);
    EXPECT_EQ(b[6], -18);
    EXPECT_EQ(count, 2);
    // QP 1 halves, truncating toward zero.
    b = {};
    b[1] = -7;
    b[2] = 7;
    ASSERT_EQ(kiviQuantInter_MPEG4_16s_C1I(b.data(), h263.inter(), 1, &count), kivStsOk);
    EXPECT_EQ(b[1], -3);
    EXPECT_EQ(b[2], 3);
    EXPECT_EQ(count, 2);
    // Intra DC with QP 3, luminance: scaler 8, rounding to nearest.
    for (auto [c0, want] : {std::pair{12, 2}, {11, 1}, {-12, -2}, {3, 0}}) {
        b = {};
        b[0] = static_cast<Kiv16s>(c0);
        ASSERT_EQ(kiviQuantIntra_MPEG4_16s_C1I(b.data(), h263.intra(), 3, &count, 0), kivStsOk);
        EXPECT_EQ(b[0], want) << c0;
        EXPECT_EQ(count, want != 0);
    }
    // Chrominance QP 30: scaler 24; luminance QP 30: 44. Limited to 2047.
    b = {};
    b[0] = 30000;
    ASSERT_EQ(kiviQuantIntra_MPEG4_16s_C1I(b.data(), h263.intra(), 30, &count, 1), kivStsOk);
    EXPECT_EQ(b[0], 1250);
    b[0] = 30000;
    ASSERT_EQ(kiviQuantIntra_MPEG4_16s_C1I(b.data(), h263.intra(), 30, &count, 0), kivStsOk);
    EXPECT_EQ(b[0], 682);
    b[0] = 30000;
    ASSERT_EQ(kiviQuantIntra_MPEG4_16s_C1I(b.data(), h263.intra(), 1, &count, 0), kivStsOk);
    EXPECT_EQ(b[0], 2047);

    // H.263 inverse: QP 4 gives 11 and -19, QP 5 gives 15; the 8-bit range.
    b = {};
    b[0] = 1;
    b[1] = -2;
    b[2] = 200;
    b[3] = -200;
    ASSERT_EQ(kiviQuantInvInter_MPEG4_16s_C1I(b.data(), 3, h263.inv_inter(), 4), kivStsOk);
    EXPECT_EQ(b[0], 11);
    EXPECT_EQ(b[1], -19);
    EXPECT_EQ(b[2], 1603);
    EXPECT_EQ(b[3], -1603);
    EXPECT_EQ(b[63], 0);
    b = {};
    b[0] = 1;
    b[1] = 300;
    b[2] = -300;
    ASSERT_EQ(kiviQuantInvInter_MPEG4_16s_C1I(b.data(), 63, h263.inv_inter(), 5), kivStsOk);
    EXPECT_EQ(b[0], 15);
    EXPECT_EQ(b[1], 2047);
    EXPECT_EQ(b[2], -2048);
    // QP 1 at the edge of saturation: 2 * 1024 + 1 is limited on both sides.
    b = {};
    b[0] = 1023;
    b[1] = -1023;
    b[2] = 1024;
    b[3] = -1024;
    b[4] = -32768;
    ASSERT_EQ(kiviQuantInvInter_MPEG4_16s_C1I(b.data(), 4, h263.inv_inter(), 1), kivStsOk);
    EXPECT_EQ(b[0], 2047);
    EXPECT_EQ(b[1], -2047);
    EXPECT_EQ(b[2], 2047);
    EXPECT_EQ(b[3], -2048);
    EXPECT_EQ(b[4], -2048);
    // Intra: DC by the scaler, AC as inter; chroma QP 20 scaler 16.
    b = {};
    b[0] = -3;
    b[9] = 2;
    ASSERT_EQ(kiviQuantInvIntra_MPEG4_16s_C1I(b.data(), 9, h263.inv_intra(), 20, 2), kivStsOk);
    EXPECT_EQ(b[0], -48);
    EXPECT_EQ(b[9], 2 * 20 * 2 + 19);
}

TEST(Mpeg4Quant, MismatchControl) {
    std::array<Kiv8u, 64> flat;
    flat.fill(16);
    Records mpeg(flat.data(), 8);
    Block b{};
    // Intra, DC only and even: element 63 becomes 1; odd: untouched.
    b[0] = 2;
    ASSERT_EQ(kiviQuantInvIntra_MPEG4_16s_C1I(b.data(), 0, mpeg.inv_intra(), 3, 0), kivStsOk);
    EXPECT_EQ(b[0], 16);
    EXPECT_EQ(b[63], 1);
    b = {};
    b[0] = 2;
    ASSERT_EQ(kiviQuantInvIntra_MPEG4_16s_C1I(b.data(), 0, mpeg.inv_intra(), 5, 0), kivStsOk);
    EXPECT_EQ(b[0], 20);
    EXPECT_EQ(b[63], 1);
    b = {};
    b[0] = 1;
    ASSERT_EQ(kiviQuantInvIntra_MPEG4_16s_C1I(b.data(), 0, mpeg.inv_intra(), 9, 1), kivStsOk);
    EXPECT_EQ(b[0], 11);  // chroma scaler (9 + 13) / 2
    EXPECT_EQ(b[63], 0);
    // Intra AC: (L W QP) / 8 toward zero; DC + sum decides.
    b = {};
    b[0] = 1;   // DC 8
    b[1] = -1;  // -16 * 3 / 8 = -6
    b[63] = 3;  // 18, sum 20 even: 18 -> 19
    ASSERT_EQ(kiviQuantInvIntra_MPEG4_16s_C1I(b.data(), 63, mpeg.inv_intra(), 3, 0), kivStsOk);
    EXPECT_EQ(b[1], -6);
    EXPECT_EQ(b[63], 19);
    // Inter: ((2L + sign) W QP) / 16; odd sum untouched, even sum toggles.
    b = {};
    b[0] = 1;  // 3 * 16 * 3 / 16 = 9, odd
    ASSERT_EQ(kiviQuantInvInter_MPEG4_16s_C1I(b.data(), 0, mpeg.inv_inter(), 3), kivStsOk);
    EXPECT_EQ(b[0], 9);
    EXPECT_EQ(b[63], 0);
    b = {};
    b[0] = 1;
    b[63] = -1;  // -9: sum 0, even: -9 -> -10
    ASSERT_EQ(kiviQuantInvInter_MPEG4_16s_C1I(b.data(), 63, mpeg.inv_inter(), 3), kivStsOk);
    EXPECT_EQ(b[63], -10);
    // A negative last index: empty sum, element 63 set.
    b = {};
    ASSERT_EQ(kiviQuantInvInter_MPEG4_16s_C1I(b.data(), -1, mpeg.inv_inter(), 3), kivStsOk);
    EXPECT_EQ(b[63], 1);
    // The H.263 method has no mismatch control.
    Records h263(nullptr, 8);
    b = {};
    ASSERT_EQ(kiviQuantInvInter_MPEG4_16s_C1I(b.data(), 63, h263.inv_inter(), 3), kivStsOk);
    EXPECT_EQ(b[63], 0);
    // Values are limited before they are summed: 12 bits, QP 511, W 255.
    std::array<Kiv8u, 64> heavy;
    heavy.fill(255);
    Records big(heavy.data(), 12);
    b = {};
    b[0] = 32767;  // far beyond 32767 before the limit
    b[1] = -32768;
    ASSERT_EQ(kiviQuantInvInter_MPEG4_16s_C1I(b.data(), 1, big.inv_inter(), 511), kivStsOk);
    EXPECT_EQ(b[0], 32767);
    EXPECT_EQ(b[1], -32768);
    EXPECT_EQ(b[63], 0);  // sum -1: odd
}

// Quantise then reconstruct: every coefficient within one quantiser step.
TEST(Mpeg4Quant, QuantiseThenReconstructWithinAStep) {
    kivvc::test::Rng rng(99);
    const auto matrix = test_matrix(5, 8, 64);
    for (int bits : {4, 6, 8, 9, 10, 12}) {
        const int range = 1 << (bits + 3);
        const int qp_max = (1 << (bits - 3)) - 1;
        for (const Kiv8u* m : {static_cast<const Kiv8u*>(nullptr), matrix.data()}) {
            Records r(m, bits);
            for (int iter = 0; iter < 200; ++iter) {
                const int qp = rng.range(1, qp_max);
                const bool intra = rng.chance(2);
                // Inside the range and below the largest level (2047 steps).
                const int amplitude = std::min(range / 2 - 1, 2000 * 2 * qp * (m ? 8 : 16) / 16);
                Block c{}, q{};
                for (auto& v : c) v = static_cast<Kiv16s>(rng.range(-amplitude, amplitude));
                q = c;
                int count = 0;
                if (intra) {
                    ASSERT_EQ(kiviQuantIntra_MPEG4_16s_C1I(q.data(), r.intra(), qp, &count, 0), kivStsOk);
                } else {
                    ASSERT_EQ(kiviQuantInter_MPEG4_16s_C1I(q.data(), r.inter(), qp, &count), kivStsOk);
                }
                int nonzero = 0;
                for (auto v : q) nonzero += v != 0;
                EXPECT_EQ(count, nonzero);
                Block d = q;
                if (intra) {
                    ASSERT_EQ(kiviQuantInvIntra_MPEG4_16s_C1I(d.data(), 63, r.inv_intra(), qp, 0), kivStsOk);
                } else {
                    ASSERT_EQ(kiviQuantInvInter_MPEG4_16s_C1I(d.data(), 63, r.inv_inter(), qp), kivStsOk);
                }
                for (int i = 0; i < 64; ++i) {
                    const int w = m ? m[i] : 16;
                    const int step = (intra && i == 0) ? 8 + 2 * qp : (2 * qp * w + 15) / 16;
                    // One step, plus the dead zone of inter blocks and the
                    // mismatch correction of element 63.
                    const int slack = step + (intra ? 0 : qp) + 2;
                    EXPECT_LE(std::abs(d[i] - c[i]), slack)
                        << "bits " << bits << " qp " << qp << " intra " << intra << " matrix " << (m != nullptr)
                        << " i " << i << " c " << c[i] << " q " << q[i] << " d " << d[i];
                }
            }
        }
    }
}

}  // namespace
