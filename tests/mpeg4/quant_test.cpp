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
#include "mpeg4/bit_text.h"
#include "support/kernel_case.h"

namespace {

using Block = std::array<Kiv16s, 64>;
using kivvc::test::block_of;
using kivvc::test::Entries;

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

template <class T>
T read(const Kiv8u* p) {
    T v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

std::array<Kiv8u, 64> test_matrix(int seed, int lo = 1, int hi = 255) {
    kivvc::test::Rng rng(seed);
    std::array<Kiv8u, 64> m{};
    for (auto& w : m) w = static_cast<Kiv8u>(rng.range(lo, hi));
    return m;
}

TEST(Mpeg4QuantRecord, SizesLayoutAndIdentifiers) {
    for (auto [get_size, want] : {std::pair{&kiviQuantIntraGetSize_MPEG4, 412}, {&kiviQuantInterGetSize_MPEG4, 412},
                                  {&kiviQuantInvIntraGetSize_MPEG4, 156}, {&kiviQuantInvInterGetSize_MPEG4, 156}}) {
        int size = 0;
        EXPECT_EQ(get_size(&size), kivStsOk);
        EXPECT_EQ(size, want);
    }
    EXPECT_EQ(kiviQuantIntraGetSize_MPEG4(nullptr), kivStsNullPointer);
    EXPECT_EQ(kiviQuantInvInterGetSize_MPEG4(nullptr), kivStsNullPointer);

    const auto m = test_matrix(1);
    for (int skew = 0; skew < 16; skew += 5) {
        // Forward, 8 bits: halved weights and reciprocals; 9 bits: weights as given.
        Memory f(412, skew);
        ASSERT_EQ(kiviQuantIntraInit_MPEG4(m.data(), f.as<KiviQuantIntraSpec_MPEG4>(), 8), kivStsOk);
        const Kiv8u* r = f.aligned();
        for (int i = 0; i < 64; ++i) {
            EXPECT_EQ(read<Kiv16u>(r + 2 * i), m[i] >> 1);
            EXPECT_EQ(read<Kiv32u>(r + 128 + 4 * i), 65536u / m[i] + 1);
        }
        EXPECT_EQ(read<Kiv32s>(r + 384), 8);
        EXPECT_EQ(read<Kiv32s>(r + 388), 1);
        EXPECT_EQ(std::memcmp(r + 392, "TAMC", 4), 0);
        ASSERT_EQ(kiviQuantInterInit_MPEG4(m.data(), f.as<KiviQuantInterSpec_MPEG4>(), 9), kivStsOk);
        EXPECT_EQ(read<Kiv16u>(r), m[0]);
        EXPECT_EQ(std::memcmp(r + 392, "UAMC", 4), 0);

        Memory v(156, skew);
        ASSERT_EQ(kiviQuantInvIntraInit_MPEG4(nullptr, v.as<KiviQuantInvIntraSpec_MPEG4>(), 12), kivStsOk);
        EXPECT_EQ(read<Kiv32s>(v.aligned() + 128), 12);
        EXPECT_EQ(read<Kiv32s>(v.aligned() + 132), 0);
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
        EXPECT_EQ(kiviQuantInvInterInit_MPEG4(nullptr, v.as<KiviQuantInvInterSpec_MPEG4>(), bits), kivStsOutOfRange);
        EXPECT_EQ(f.mem, fb);
        EXPECT_EQ(v.mem, vb);
    }
    // A zero weight stops Init: identifier valid, matrix flag clear.
    m[10] = 0;
    Memory v(156);
    EXPECT_EQ(kiviQuantInvInterInit_MPEG4(m.data(), v.as<KiviQuantInvInterSpec_MPEG4>(), 8), kivStsBadQp);
    EXPECT_EQ(read<Kiv32s>(v.aligned() + 132), 0);
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
    EXPECT_EQ(kiviQuantInter_MPEG4_16s_C1I(b.data(), nullptr, 0, &count), kivStsNullPointer);
    EXPECT_EQ(kiviQuantInvIntra_MPEG4_16s_C1I(b.data(), 63, nullptr, 1, 0), kivStsNullPointer);
    // Every kind of record refused by the others, before QP is looked at.
    EXPECT_EQ(kiviQuantInvInter_MPEG4_16s_C1I(b.data(), 63, reinterpret_cast<KiviQuantInvInterSpec_MPEG4*>(inv_intra), 0),
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

// The rounding rules, limits and mismatch control a round trip cannot see.
// Each row starts from a zero block holding `in`; `out` lists the elements
// that change.
TEST(Mpeg4Quant, RoundingRulesLimitsAndMismatchControl) {
    std::array<Kiv8u, 64> flat, heavy;
    flat.fill(16);
    heavy.fill(255);
    Records h263(nullptr, 8), mpeg(flat.data(), 8), big(heavy.data(), 12);
    enum class Op { Intra, Inter, InvIntra, InvInter };
    const struct {
        Op op;
        Records* r;
        int qp, last, type;  // last: inverse only; type: intra only
        Entries in, out;
        int count;  // forward only
    } rows[] = {
        // The reciprocal form is part of the result: QP 31, |c| 1115 gives 18.
        {Op::Intra, &h263, 31, 0, 0, {{5, 1115}, {6, -1115}, {7, 1}}, {{5, 18}, {6, -18}, {7, 0}}, 2},
        // QP 1 halves, truncating toward zero.
        {Op::Inter, &h263, 1, 0, 0, {{1, -7}, {2, 7}}, {{1, -3}, {2, 3}}, 2},
        // Intra DC with QP 3, luminance: scaler 8, rounding to nearest.
        {Op::Intra, &h263, 3, 0, 0, {{0, 12}}, {{0, 2}}, 1},
        {Op::Intra, &h263, 3, 0, 0, {{0, 11}}, {{0, 1}}, 1},
        {Op::Intra, &h263, 3, 0, 0, {{0, -12}}, {{0, -2}}, 1},
        {Op::Intra, &h263, 3, 0, 0, {{0, 3}}, {{0, 0}}, 0},
        // Chrominance QP 30: scaler 24; luminance QP 30: 44. Limited to 2047.
        {Op::Intra, &h263, 30, 0, 1, {{0, 30000}}, {{0, 1250}}, 1},
        {Op::Intra, &h263, 30, 0, 0, {{0, 30000}}, {{0, 682}}, 1},
        {Op::Intra, &h263, 1, 0, 0, {{0, 30000}}, {{0, 2047}}, 1},
        // H.263 inverse: QP 4 gives 11 and -19, QP 5 gives 15; the 8-bit range.
        {Op::InvInter, &h263, 4, 3, 0, {{0, 1}, {1, -2}, {2, 200}, {3, -200}},
         {{0, 11}, {1, -19}, {2, 1603}, {3, -1603}}, 0},
        {Op::InvInter, &h263, 5, 63, 0, {{0, 1}, {1, 300}, {2, -300}}, {{0, 15}, {1, 2047}, {2, -2048}}, 0},
        // QP 1 at the edge of saturation: 2 * 1024 + 1 is limited on both sides.
        {Op::InvInter, &h263, 1, 4, 0, {{0, 1023}, {1, -1023}, {2, 1024}, {3, -1024}, {4, -32768}},
         {{0, 2047}, {1, -2047}, {2, 2047}, {3, -2048}, {4, -2048}}, 0},
        // Intra: DC by the scaler, AC as inter; chroma QP 20 scaler 16.
        {Op::InvIntra, &h263, 20, 9, 2, {{0, -3}, {9, 2}}, {{0, -48}, {9, 2 * 20 * 2 + 19}}, 0},
        // No mismatch control in the H.263 method.
        {Op::InvInter, &h263, 3, 63, 0, {}, {}, 0},
        // MPEG intra, DC only: an even sum sets element 63, an odd one does not
        // (chroma scaler (9 + 13) / 2).
        {Op::InvIntra, &mpeg, 3, 0, 0, {{0, 2}}, {{0, 16}, {63, 1}}, 0},
        {Op::InvIntra, &mpeg, 5, 0, 0, {{0, 2}}, {{0, 20}, {63, 1}}, 0},
        {Op::InvIntra, &mpeg, 9, 0, 1, {{0, 1}}, {{0, 11}}, 0},
        // Intra AC: (L W QP) / 8 toward zero; DC 8 - 6 + 18 even: 18 -> 19.
        {Op::InvIntra, &mpeg, 3, 63, 0, {{0, 1}, {1, -1}, {63, 3}}, {{0, 8}, {1, -6}, {63, 19}}, 0},
        // Inter: ((2L + sign) W QP) / 16; odd sum untouched, even sum toggles.
        {Op::InvInter, &mpeg, 3, 0, 0, {{0, 1}}, {{0, 9}}, 0},
        {Op::InvInter, &mpeg, 3, 63, 0, {{0, 1}, {63, -1}}, {{0, 9}, {63, -10}}, 0},
        // A negative last index: empty sum, element 63 set.
        {Op::InvInter, &mpeg, 3, -1, 0, {}, {{63, 1}}, 0},
        // Values are limited before they are summed (sum -1, odd): 12 bits, QP 511, W 255.
        {Op::InvInter, &big, 511, 1, 0, {{0, 32767}, {1, -32768}}, {}, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << "row " << (&row - rows));
        Block b = block_of(row.in), want = block_of(row.in, row.out);
        int count = 0;
        const KivStatus st =
            row.op == Op::Intra  ? kiviQuantIntra_MPEG4_16s_C1I(b.data(), row.r->intra(), row.qp, &count, row.type)
            : row.op == Op::Inter ? kiviQuantInter_MPEG4_16s_C1I(b.data(), row.r->inter(), row.qp, &count)
            : row.op == Op::InvIntra
                ? kiviQuantInvIntra_MPEG4_16s_C1I(b.data(), row.last, row.r->inv_intra(), row.qp, row.type)
                : kiviQuantInvInter_MPEG4_16s_C1I(b.data(), row.last, row.r->inv_inter(), row.qp);
        ASSERT_EQ(st, kivStsOk);
        EXPECT_EQ(b, want);
        EXPECT_EQ(count, row.count);
    }
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
