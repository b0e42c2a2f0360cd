// MPEG-4 coefficient coding: random blocks round-trip through the encoders
// and every decoder (VLC with each escape mode, RVLC forward and backward,
// intra and inter, every scan), the combined decode-and-reconstruct agrees
// with decode-then-quantise, and the bit-exact cases a round trip cannot see
// (escape choice, DC layout, error states, argument checks).
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "common/scan_tables.h"
#include "kivvc.h"
#include "mpeg4/bit_text.h"
#include "support/kernel_case.h"

namespace {

using Block = std::array<Kiv16s, 64>;
using namespace kivvc::test;

// A stream buffer with its cursor.
struct Stream {
    std::vector<Kiv8u> buf;
    Kiv8u* p;
    int offset = 0;
    explicit Stream(std::vector<Kiv8u> b) : buf(std::move(b)), p(buf.data()) {}
    explicit Stream(std::size_t n) : buf(n, 0), p(buf.data()) {}
    long position() const { return (p - buf.data()) * 8L + offset; }
};

// A random block: mostly zero, small levels, some beyond the tables and up to
// the largest codable level.
Block random_block(Rng& rng, int density) {
    Block b{};
    for (auto& v : b) {
        if (!rng.chance(density)) continue;
        const int kind = rng.range(0, 9);
        int m = kind < 6 ? rng.range(1, 3) : kind < 8 ? rng.range(4, 40) : rng.range(41, 2047);
        v = static_cast<Kiv16s>(rng.chance(2) ? -m : m);
    }
    return b;
}

const std::int32_t* decoder_scan_table(int scan) {
    static std::int32_t identity[64];
    for (int i = 0; i < 64; ++i) identity[i] = i;
    return scan < 0 ? identity : kivvc::scan_for(scan);
}

// Nonzero levels from `start` and the scan position of the last one.
int count_levels(const Block& b, const std::int32_t* scan, int start, int* last_pos) {
    int n = 0;
    *last_pos = start - 1;
    for (int p = start; p < 64; ++p)
        if (b[scan[p]] != 0) {
            ++n;
            *last_pos = p;
        }
    return n;
}

// A reader positioned at bit `bit` of `buf`.
Stream at(const std::vector<Kiv8u>& buf, long bit) {
    Stream s(buf);
    s.p += bit / 8;
    s.offset = static_cast<int>(bit % 8);
    return s;
}

TEST(Mpeg4Coding, RandomBlocksRoundTrip) {
    Rng rng(2024);
    std::array<Kiv8u, 64> matrix;
    for (auto& w : matrix) w = static_cast<Kiv8u>(rng.range(1, 255));
    std::vector<Kiv8u> mem(200);
    auto* spec = reinterpret_cast<KiviQuantInvInterSpec_MPEG4*>(mem.data() + 5);  // misaligned
    const int zigzag_scans[] = {0, 2, 3};  // the combined decoder reads 2 and 3 as zigzag
    for (int iter = 0; iter < 1500; ++iter) {
        const bool intra = rng.chance(2), rvlc = rng.chance(2), dc_separate = intra && rng.chance(2);
        // Encoder scan -1 is row-major; the decoders call that "no reordering"
        // (3); the backward decoders read row-major RVLC streams.
        const int scan = rvlc && rng.chance(2) ? -1 : rng.range(-1, intra ? 2 : 1);
        const int dec_scan = scan < 0 ? 3 : scan, start = dc_separate ? 1 : 0;
        // Three blocks back to back from a random offset, after two bytes
        // the backward reader may look at.
        Block blocks[3];
        int last_pos[3];
        long ends[3];
        Stream out(1024);
        out.buf[2] = 0xA5;
        out.p += 2;
        out.offset = rng.range(0, 7);
        const long begin = out.position();
        for (int k = 0; k < 3; ++k) {
            int n;
            do {
                blocks[k] = random_block(rng, rng.range(1, 8));
                n = count_levels(blocks[k], decoder_scan_table(scan), start, &last_pos[k]);
            } while (n == 0);
            ASSERT_EQ(intra ? kiviEncodeCoeffsIntra_MPEG4_16s1u(blocks[k].data(), &out.p, &out.offset, n, rvlc,
                                                                 dc_separate, scan)
                            : kiviEncodeCoeffsInter_MPEG4_16s1u(blocks[k].data(), &out.p, &out.offset, n, rvlc, scan),
                      kivStsOk);
            ends[k] = out.position();
        }
        const int lead = 8 - int(begin % 8);
        EXPECT_EQ(out.buf[2] >> lead, 0xA5 >> lead) << "leading bits kept";
        Stream in = at(out.buf, begin);
        for (int k = 0; k < 3; ++k) {
            SCOPED_TRACE(testing::Message() << "iter " << iter << " block " << k << " intra " << intra << " rvlc "
                                            << rvlc << " scan " << scan);
            Block d;
            d.fill(123);
            d[0] = 77;
            int last = -5;
            ASSERT_EQ(intra ? kiviDecodeCoeffsIntra_MPEG4_1u16s(&in.p, &in.offset, d.data(), &last, rvlc, dc_separate,
                                                                 dec_scan)
                            : kiviDecodeCoeffsInter_MPEG4_1u16s(&in.p, &in.offset, d.data(), &last, rvlc, dec_scan),
                      kivStsOk);
            EXPECT_EQ(in.position(), ends[k]);
            EXPECT_EQ(last, last_pos[k]);
            Block want = blocks[k];
            if (dc_separate) want[0] = 77;
            EXPECT_EQ(d, want);
            if (intra || scan < 0) continue;
            // The combined decode-and-reconstruct equals decode, then quantise.
            const int bits = rng.range(4, 12), qp = rng.range(1, (1 << (bits - 3)) - 1);
            ASSERT_EQ(kiviQuantInvInterInit_MPEG4(rng.chance(2) ? matrix.data() : nullptr, spec, bits), kivStsOk);
            ASSERT_EQ(kiviQuantInvInter_MPEG4_16s_C1I(want.data(), 63, spec, qp), kivStsOk);
            Stream again = at(out.buf, k ? ends[k - 1] : begin);
            ASSERT_EQ(kiviReconstructCoeffsInter_MPEG4_1u16s(&again.p, &again.offset, d.data(), &last, rvlc,
                                                             scan ? 1 : zigzag_scans[rng.range(0, 2)], spec, qp),
                      kivStsOk);
            EXPECT_EQ(d, want) << "bits " << bits << " qp " << qp;
            EXPECT_EQ(last, last_pos[k]);
            EXPECT_EQ(again.position(), ends[k]);
        }
        if (!rvlc || scan >= 0) continue;
        // Backward from the sign bit of the last block's last code; each block
        // leaves the reader on the preceding block's sign bit (the first block
        // only ends the second).
        Stream back = at(out.buf, ends[2] - 1);
        for (int k = 2; k >= 1; --k) {
            Block d;
            d.fill(-9);
            d[0] = 55;
            int last = 99;
            ASSERT_EQ(intra ? kiviDecodeCoeffsIntraRVLCBack_MPEG4_1u16s(&back.p, &back.offset, d.data(), &last,
                                                                         dc_separate)
                            : kiviDecodeCoeffsInterRVLCBack_MPEG4_1u16s(&back.p, &back.offset, d.data(), &last),
                      kivStsOk)
                << "iter " << iter << " block " << k;
            Block want = blocks[k];
            if (dc_separate) want[0] = 55;
            EXPECT_EQ(d, want) << "iter " << iter << " block " << k;
            EXPECT_EQ(last, last_pos[k]);
            EXPECT_EQ(back.position(), ends[k - 1] - 1);
        }
    }
}

// Bit patterns the encoders must write, each ending the block (last = 1):
// the escape mode is chosen in order (1, then 2, then 3), and the count
// decides which code is the last.
TEST(Mpeg4Coding, EncoderBitPatterns) {
    const struct {
        bool intra, rvlc;
        int scan, count;
        Entries coefficients;  // (block position, level)
        const char* bits;
    } rows[] = {
        // Inter (last 1, run 0) has LMAX 3: level 4 takes mode 1 with level 1.
        {false, false, 0, 1, {{0, 4}}, "0000011 0 0111 0"},
        {false, false, 0, 1, {{0, -4}}, "0000011 0 0111 1"},
        // Level 7 exceeds 2 LMAX; RMAX(1, 7) is beyond the table: mode 3.
        {false, false, 0, 1, {{0, 7}}, "0000011 11 1 000000 1 000000000111 1"},
        // Intra (last 1, level 1): RMAX 20; run 25 reduces to 4: mode 2.
        {true, false, 0, 1, {{kivvc::ownvc_Zigzag[25], 1}}, "0000011 10 0010000 0"},
        // Intra (last 1, run 0): LMAX 8, level 9 mode 1 (level 1).
        {true, false, 0, 1, {{0, 9}}, "0000011 0 0111 0"},
        // Intra run 45 leaves no reduced run: mode 3, negative level.
        {true, false, 0, 1, {{kivvc::ownvc_Zigzag[45], -1}}, "0000011 11 1 101101 1 111111111111 1"},
        // RVLC escape: '00001', last, run, marker, level (11), marker, '0000', sign.
        {false, true, 0, 1, {{0, -300}}, "00001 1 000000 1 00100101100 1 0000 1"},
        // (0, 0, 1) '10' s, then (1, 0, 1) '0111' s; element 8 is beyond the count.
        {false, false, -1, 2, {{0, 1}, {1, 1}, {8, 1}}, "100 01110"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.bits);
        Block b = block_of(row.coefficients);
        Stream out(64);
        ASSERT_EQ(row.intra ? kiviEncodeCoeffsIntra_MPEG4_16s1u(b.data(), &out.p, &out.offset, row.count, 0, 0, 0)
                            : kiviEncodeCoeffsInter_MPEG4_16s1u(b.data(), &out.p, &out.offset, row.count, row.rvlc,
                                                                row.scan),
                  kivStsOk);
        const std::string want = strip(row.bits);
        EXPECT_EQ(out.position(), long(want.size()));
        // The unwritten low bits of the last byte are zero.
        EXPECT_EQ(text_of(out.buf, 0, (want.size() + 7) / 8 * 8), want + std::string((8 - want.size() % 8) % 8, '0'));
    }
}

TEST(Mpeg4Coding, DcDifferentials) {
    struct Case {
        int dc, type;
        const char* bits;
    } cases[] = {
        {0, 0, "011"}, {0, 1, "11"}, {-1, 0, "11 0"}, {1, 1, "10 1"}, {3, 0, "10 11"},
        {-3, 0, "10 00"}, {256, 0, "00000001 100000000 1"}, {-4095, 1, "000000000001 000000000000 1"},
        {255, 5, "0000001 11111111"},
    };
    for (const auto& c : cases) {
        const std::string want = strip(c.bits);
        Stream out(16);
        ASSERT_EQ(kiviEncodeDCIntra_MPEG4_16s1u(static_cast<Kiv16s>(c.dc), &out.p, &out.offset, c.type), kivStsOk);
        EXPECT_EQ(text_of(out.buf, 0, out.position()), want) << c.dc;
        // The decoder's block type: 0 luminance, anything else chrominance.
        Kiv16s dc = 9;
        auto decode = [&](Kiv8u** p, int* o) { return kiviDecodeDCIntra_MPEG4_1u16s(p, o, &dc, c.type == 1); };
        EXPECT_EQ(read_text(c.bits, decode), (Outcome{kivStsOk, long(want.size())}));
        EXPECT_EQ(dc, c.dc);
    }
    Stream out(16);
    EXPECT_EQ(kiviEncodeDCIntra_MPEG4_16s1u(4096, &out.p, &out.offset, 0), kivStsOutOfRange);
    // Every value of every size round-trips, at every offset.
    for (int type = 0; type < 2; ++type)
        for (int dc = -4095; dc <= 4095; dc += 7) {
            Stream o(16);
            o.offset = dc & 7;
            ASSERT_EQ(kiviEncodeDCIntra_MPEG4_16s1u(static_cast<Kiv16s>(dc), &o.p, &o.offset, type), kivStsOk);
            Stream in(o.buf);
            in.offset = dc & 7;
            Kiv16s got = 0;
            ASSERT_EQ(kiviDecodeDCIntra_MPEG4_1u16s(&in.p, &in.offset, &got, type), kivStsOk);
            EXPECT_EQ(got, dc);
            EXPECT_EQ(in.position(), o.position());
        }
}

TEST(Mpeg4Coding, DecoderEdgeCases) {
    const KivStatus bad = kivStsBadBitstreamCode;
    Kiv16s dc = 0;
    auto dc_of = [&](int type) {
        return [&dc, type](Kiv8u** p, int* o) { return kiviDecodeDCIntra_MPEG4_1u16s(p, o, &dc, type); };
    };
    // Luminance: ten zeros and a one is size 12; eleven zeros are no code
    // (the DC stays); chrominance accepts eleven zeros and a one.
    EXPECT_EQ(read_text("00000000001 100000000000 1", dc_of(0)), (Outcome{kivStsOk, 24}));
    EXPECT_EQ(dc, 2048);
    EXPECT_EQ(read_text("00000000000 1", dc_of(0)), (Outcome{bad, 0}));
    EXPECT_EQ(dc, 2048);
    EXPECT_EQ(read_text("000000000001 011111111111 1", dc_of(1)), (Outcome{kivStsOk, 25}));
    EXPECT_EQ(dc, -2048);
    // Size 9 with a zero marker: DC written, cursor unchanged.
    EXPECT_EQ(read_text("00000001 100000001 0", dc_of(0), 1), (Outcome{bad, 1}));
    EXPECT_EQ(dc, 257);

    Block d;
    int last = 0;
    auto inter = [&](int scan) {
        return [&, scan](Kiv8u** p, int* o) {
            return kiviDecodeCoeffsInter_MPEG4_1u16s(p, o, d.data(), &last, 0, scan);
        };
    };
    // Fixed-length level 0: refused in intra, accepted (and stored) in inter.
    const char* zero = "0000011 11 1 000010 1 000000000000 1";
    EXPECT_EQ(read_text(zero, [&](Kiv8u** p, int* o) {
                  return kiviDecodeCoeffsIntra_MPEG4_1u16s(p, o, d.data(), &last, 0, 0, 0);
              }),
              (Outcome{bad, 0}));
    EXPECT_EQ(last, -1);
    d.fill(7);
    EXPECT_EQ(read_text(zero, inter(0)), (Outcome{kivStsOk, 30}));
    EXPECT_EQ(last, 2);
    EXPECT_EQ(d, Block{});
    // -2048, a zero marker and an escape inside an escape are refused.
    for (const char* bits : {"0000011 11 1 000000 1 100000000000 1", "0000011 11 1 000000 1 000000000001 0",
                             "0000011 0 0000011"})
        EXPECT_EQ(read_text(bits, inter(0)).status, bad) << bits;
    // Scans 2 and 3 (no reordering) in the inter decoder; 0 and 1 place scan
    // positions through their tables. Inter (0, 1, 1) '110' s; (1, 0, 1) '0111' s.
    for (int scan : {0, 1, 2, 3}) {
        EXPECT_EQ(read_text("110 0 0111 1", inter(scan)), (Outcome{kivStsOk, 9}));
        const std::int32_t* t = decoder_scan_table(scan < 2 ? scan : -1);
        EXPECT_EQ(d[t[1]], 1) << scan;
        EXPECT_EQ(d[t[2]], -1) << scan;
        EXPECT_EQ(last, 2);
    }
    // A run carrying the position to 64: the coefficients before stay.
    // Inter (0, 0, 1) then escape mode 3 with last 1, run 63.
    EXPECT_EQ(read_text("10 0 0000011 11 1 111111 1 000000000001 1", inter(3)), (Outcome{bad, 0}));
    EXPECT_EQ(d[0], 1);
    EXPECT_EQ(last, 0);
    // Backward: a block whose last code does not have last = 1.
    // (Two bytes before the code: the backward reader may look at them.)
    Stream b(stream_of("00000000 00000000 110 0"));  // RVLC (0, 0, 1)
    b.p += 2;
    b.offset = 3;
    EXPECT_EQ(kiviDecodeCoeffsInterRVLCBack_MPEG4_1u16s(&b.p, &b.offset, d.data(), &last), bad);
    EXPECT_EQ(b.p, b.buf.data() + 2);
    EXPECT_EQ(b.offset, 3);
}

TEST(Mpeg4Coding, ArgumentChecks) {
    Block b{};
    b[0] = 1;
    Stream s(64);
    Kiv8u* null_byte = nullptr;
    int off = 0, last = 0;
    Kiv16s dc;
    EXPECT_EQ(kiviDecodeDCIntra_MPEG4_1u16s(&s.p, &off, nullptr, 0), kivStsNullPointer);
    EXPECT_EQ(kiviDecodeDCIntra_MPEG4_1u16s(&null_byte, &off, &dc, 0), kivStsNullPointer);
    EXPECT_EQ(kiviDecodeCoeffsIntra_MPEG4_1u16s(&s.p, &off, b.data(), nullptr, 0, 0, 0), kivStsNullPointer);
    EXPECT_EQ(kiviDecodeCoeffsInterRVLCBack_MPEG4_1u16s(&null_byte, &off, b.data(), &last), kivStsNullPointer);
    EXPECT_EQ(kiviEncodeCoeffsInter_MPEG4_16s1u(b.data(), &null_byte, &off, 1, 0, 0), kivStsNullPointer);
    for (int bad : {-1, 8}) {
        off = bad;
        b.fill(1);
        EXPECT_EQ(kiviDecodeCoeffsInter_MPEG4_1u16s(&s.p, &off, b.data(), &last, 0, 0), kivStsBadBitOffset);
        EXPECT_EQ(b[5], 1) << "nothing cleared";
        EXPECT_EQ(kiviReconstructCoeffsInter_MPEG4_1u16s(&s.p, &off, b.data(), &last, 0, 0, nullptr, 1), kivStsBadBitOffset);
    }
    off = 0;
    EXPECT_EQ(s.p, s.buf.data());
    EXPECT_EQ(kiviEncodeCoeffsIntra_MPEG4_16s1u(b.data(), &s.p, &off, 64, 0, 1, 0), kivStsOutOfRange);
    EXPECT_EQ(kiviEncodeCoeffsIntra_MPEG4_16s1u(b.data(), &s.p, &off, 64, 0, 0, 0), kivStsOk);
    EXPECT_EQ(kiviEncodeCoeffsInter_MPEG4_16s1u(b.data(), &s.p, &off, 0, 0, 0), kivStsOutOfRange);
    EXPECT_EQ(kiviEncodeCoeffsInter_MPEG4_16s1u(b.data(), &s.p, &off, 65, 0, 0), kivStsOutOfRange);
    b[3] = 2048;
    Kiv8u* before = s.p;
    EXPECT_EQ(kiviEncodeCoeffsInter_MPEG4_16s1u(b.data(), &s.p, &off, 64, 1, 0), kivStsOutOfRange);
    EXPECT_EQ(s.p, before);
    // The record is checked before decoding only without RVLC.
    std::vector<Kiv8u> mem(200);
    auto* spec = reinterpret_cast<KiviQuantInvInterSpec_MPEG4*>(mem.data());
    Stream in(stream_of("0111 0"));
    EXPECT_EQ(kiviReconstructCoeffsInter_MPEG4_1u16s(&in.p, &in.offset, b.data(), &last, 0, 0, nullptr, 1), kivStsNullPointer);
    EXPECT_EQ(kiviReconstructCoeffsInter_MPEG4_1u16s(&in.p, &in.offset, b.data(), &last, 0, 0, spec, 1), kivStsContextMismatch);
    ASSERT_EQ(kiviQuantInvInterInit_MPEG4(nullptr, spec, 8), kivStsOk);
    EXPECT_EQ(kiviReconstructCoeffsInter_MPEG4_1u16s(&in.p, &in.offset, b.data(), &last, 0, 0, spec, 32), kivStsBadQp);
    EXPECT_EQ(in.position(), 0);
    // With RVLC the quantiser's status arrives after decoding, with the
    // cursor advanced.
    Stream rv(64);
    Block one{};
    one[0] = 1;
    ASSERT_EQ(kiviEncodeCoeffsInter_MPEG4_16s1u(one.data(), &rv.p, &rv.offset, 1, 1, 0), kivStsOk);
    Stream rin(rv.buf);
    EXPECT_EQ(kiviReconstructCoeffsInter_MPEG4_1u16s(&rin.p, &rin.offset, b.data(), &last, 1, 0, spec, 32), kivStsBadQp);
    EXPECT_EQ(rin.position(), rv.position());
    EXPECT_EQ(b[0], 1);
}

}  // namespace
