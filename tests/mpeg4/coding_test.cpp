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
#include "support/kernel_case.h"

namespace {

using Block = std::array<Kiv16s, 64>;
using kivvc::test::Rng;

// Bytes from a string of '0'/'1' (spaces ignored), zero-padded, plus slack.
std::vector<Kiv8u> bytes_of(const std::string& bits, std::size_t slack = 8) {
    std::vector<Kiv8u> out(slack, 0);
    std::size_t n = 0;
    for (char c : bits) {
        if (c == ' ') continue;
        if (n / 8 >= out.size() - 4) out.resize(out.size() + 1, 0);
        if (c == '1') out[n / 8] |= Kiv8u(0x80 >> (n % 8));
        ++n;
    }
    out.resize(out.size() + slack, 0);
    return out;
}

std::string bits_of(const std::vector<Kiv8u>& bytes, std::size_t from, std::size_t count) {
    std::string s;
    for (std::size_t i = from; i < from + count; ++i) s += char('0' + ((bytes[i / 8] >> (7 - i % 8)) & 1));
    return s;
}

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

TEST(Mpeg4Coding, RandomBlocksRoundTripForward) {
    Rng rng(2024);
    for (int iter = 0; iter < 3000; ++iter) {
        const bool intra = rng.chance(2), rvlc = rng.chance(2), dc_separate = intra && rng.chance(2);
        // Encoder scan -1 is row-major; the decoders call that "no reordering" (3).
        const int scan = rng.range(-1, intra ? 2 : 1);
        const int dec_scan = scan < 0 ? 3 : scan;
        const std::int32_t* order = decoder_scan_table(scan);
        Block b = random_block(rng, rng.range(1, 8));
        const int start = dc_separate ? 1 : 0;
        int last_pos;
        const int n = count_levels(b, order, start, &last_pos);
        if (n == 0) continue;
        Stream out(512);
        out.offset = rng.range(0, 7);
        out.buf[0] = 0xA5;
        const int first_offset = out.offset;
        const KivStatus es = intra ? kiviEncodeCoeffsIntra_MPEG4_16s1u(b.data(), &out.p, &out.offset, n, rvlc, dc_separate, scan)
                                   : kiviEncodeCoeffsInter_MPEG4_16s1u(b.data(), &out.p, &out.offset, n, rvlc, scan);
        ASSERT_EQ(es, kivStsOk);
        EXPECT_EQ(out.buf[0] >> (8 - first_offset), 0xA5 >> (8 - first_offset)) << "leading bits kept";
        const long end = out.position();
        Stream in(out.buf);
        in.offset = first_offset;
        Block d;
        d.fill(123);
        d[0] = 77;
        int last = -5;
        const KivStatus ds = intra ? kiviDecodeCoeffsIntra_MPEG4_1u16s(&in.p, &in.offset, d.data(), &last, rvlc, dc_separate, dec_scan)
                                   : kiviDecodeCoeffsInter_MPEG4_1u16s(&in.p, &in.offset, d.data(), &last, rvlc, dec_scan);
        ASSERT_EQ(ds, kivStsOk) << "iter " << iter << " intra " << intra << " rvlc " << rvlc << " scan " << scan;
        EXPECT_EQ(in.position(), end);
        EXPECT_EQ(last, last_pos);
        Block want = b;
        if (dc_separate) want[0] = 77;
        EXPECT_EQ(d, want) << "iter " << iter;
    }
}

TEST(Mpeg4Coding, RandomBlocksRoundTripBackward) {
    Rng rng(77);
    for (int iter = 0; iter < 1000; ++iter) {
        const bool intra = rng.chance(2), dc_separate = intra && rng.chance(2);
        const int start = dc_separate ? 1 : 0;
        // Three blocks written back to back; the first only ends with last = 1.
        Block blocks[3];
        int counts[3], last_pos[3];
        long ends[3];
        Stream out(1024);
        out.p += 2;  // the backward reader may look two bytes before a code
        out.offset = rng.range(0, 7);
        for (int k = 0; k < 3; ++k) {
            do {
                blocks[k] = random_block(rng, rng.range(1, 6));
                counts[k] = count_levels(blocks[k], decoder_scan_table(-1), start, &last_pos[k]);
            } while (counts[k] == 0);
            ASSERT_EQ(intra ? kiviEncodeCoeffsIntra_MPEG4_16s1u(blocks[k].data(), &out.p, &out.offset, counts[k], 1,
                                                                 dc_separate, -1)
                            : kiviEncodeCoeffsInter_MPEG4_16s1u(blocks[k].data(), &out.p, &out.offset, counts[k], 1, -1),
                      kivStsOk);
            ends[k] = out.position();
        }
        // Backward from the sign bit of the last block's last code.
        Stream in(out.buf);
        in.p = in.buf.data() + (ends[2] - 1) / 8;
        in.offset = static_cast<int>((ends[2] - 1) % 8);
        for (int k = 2; k >= 1; --k) {
            Block d;
            d.fill(-9);
            d[0] = 55;
            int last = 99;
            const KivStatus s = intra ? kiviDecodeCoeffsIntraRVLCBack_MPEG4_1u16s(&in.p, &in.offset, d.data(), &last, dc_separate)
                                      : kiviDecodeCoeffsInterRVLCBack_MPEG4_1u16s(&in.p, &in.offset, d.data(), &last);
            ASSERT_EQ(s, kivStsOk) << "iter " << iter << " block " << k;
            Block want = blocks[k];
            if (dc_separate) want[0] = 55;
            EXPECT_EQ(d, want) << "iter " << iter << " block " << k;
            EXPECT_EQ(last, last_pos[k]);
            EXPECT_EQ(in.position(), ends[k - 1] - 1) << "left on the preceding block's sign bit";
        }
    }
}

TEST(Mpeg4Coding, EscapeModesAreChosenInOrder) {
    struct Case {
        int run, level;
        bool intra;
        const char* bits;  // expected stream, last = 1
    };
    const Case cases[] = {
        // Inter (last 1, run 0) has LMAX 3: level 4 takes mode 1 with level 1.
        {0, 4, false, "0000011 0 0111 0"},
        {0, -4, false, "0000011 0 0111 1"},
        // Level 7 exceeds 2 LMAX; RMAX(1, 7) is beyond the table: mode 3.
        {0, 7, false, "0000011 11 1 000000 1 000000000111 1"},
        // Intra (last 1, level 1): RMAX 20; run 25 reduces to 4: mode 2.
        {25, 1, true, "0000011 10 0010000 0"},
        // Intra (last 1, run 0): LMAX 8, level 9 mode 1 (level 1).
        {0, 9, true, "0000011 0 0111 0"},
        // Intra run 45 leaves no reduced run: mode 3, negative level.
        {45, -1, true, "0000011 11 1 101101 1 111111111111 1"},
    };
    for (const auto& c : cases) {
        Block b{};
        b[kivvc::ownvc_Zigzag[c.run]] = static_cast<Kiv16s>(c.level);
        Stream out(64);
        ASSERT_EQ(c.intra ? kiviEncodeCoeffsIntra_MPEG4_16s1u(b.data(), &out.p, &out.offset, 1, 0, 0, 0)
                          : kiviEncodeCoeffsInter_MPEG4_16s1u(b.data(), &out.p, &out.offset, 1, 0, 0),
                  kivStsOk);
        std::string want;
        for (const char* s = c.bits; *s; ++s)
            if (*s != ' ') want += *s;
        EXPECT_EQ(out.position(), long(want.size())) << c.bits;
        EXPECT_EQ(bits_of(out.buf, 0, want.size()), want);
        // The unwritten low bits of the last byte are zero.
        EXPECT_EQ(bits_of(out.buf, want.size(), 8 - want.size() % 8), std::string(8 - want.size() % 8, '0'));
    }
    // RVLC escape for a level beyond the table: '00001', last, run, marker,
    // level (11), marker, '0000', sign.
    Block b{};
    b[0] = -300;
    Stream out(64);
    ASSERT_EQ(kiviEncodeCoeffsInter_MPEG4_16s1u(b.data(), &out.p, &out.offset, 1, 1, 0), kivStsOk);
    EXPECT_EQ(bits_of(out.buf, 0, 30), "00001" "1" "000000" "1" "00100101100" "1" "0000" "1");
}

TEST(Mpeg4Coding, CountDecidesTheLastCode) {
    Block b{};
    b[0] = 1;
    b[1] = 1;
    b[8] = 1;
    Stream out(64);
    ASSERT_EQ(kiviEncodeCoeffsInter_MPEG4_16s1u(b.data(), &out.p, &out.offset, 2, 0, -1), kivStsOk);
    // (0, 0, 1) '10' s, then (1, 0, 1) '0111' s; element 8 is not coded.
    EXPECT_EQ(bits_of(out.buf, 0, out.position()), "100" "01110");
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
        std::string want;
        for (const char* s = c.bits; *s; ++s)
            if (*s != ' ') want += *s;
        Stream out(16);
        ASSERT_EQ(kiviEncodeDCIntra_MPEG4_16s1u(static_cast<Kiv16s>(c.dc), &out.p, &out.offset, c.type), kivStsOk);
        EXPECT_EQ(bits_of(out.buf, 0, out.position()), want) << c.dc;
        // The decoder's block type: 0 luminance, anything else chrominance.
        Stream in(bytes_of(want));
        Kiv16s dc = 9;
        ASSERT_EQ(kiviDecodeDCIntra_MPEG4_1u16s(&in.p, &in.offset, &dc, c.type == 1 ? 1 : 0), kivStsOk) << c.dc;
        EXPECT_EQ(dc, c.dc);
        EXPECT_EQ(in.position(), long(want.size()));
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

TEST(Mpeg4Coding, DcDecoderErrors) {
    // Luminance: ten zeros and a one is size 12; eleven zeros are no code.
    Stream s12(bytes_of("00000000001 100000000000 1"));
    Kiv16s dc = 0;
    ASSERT_EQ(kiviDecodeDCIntra_MPEG4_1u16s(&s12.p, &s12.offset, &dc, 0), kivStsOk);
    EXPECT_EQ(dc, 2048);
    EXPECT_EQ(s12.position(), 24);
    Stream bad(bytes_of("00000000000 1"));
    dc = 5;
    EXPECT_EQ(kiviDecodeDCIntra_MPEG4_1u16s(&bad.p, &bad.offset, &dc, 0), kivStsBadBitstreamCode);
    EXPECT_EQ(dc, 5);
    EXPECT_EQ(bad.position(), 0);
    // Chrominance accepts eleven zeros and a one.
    Stream c12(bytes_of("000000000001 011111111111 1"));
    ASSERT_EQ(kiviDecodeDCIntra_MPEG4_1u16s(&c12.p, &c12.offset, &dc, 1), kivStsOk);
    EXPECT_EQ(dc, -2048);
    // Size 9 with a zero marker: DC written, cursor unchanged.
    Stream m(bytes_of("1 00000001 100000001 0"));
    m.offset = 1;
    dc = 0;
    EXPECT_EQ(kiviDecodeDCIntra_MPEG4_1u16s(&m.p, &m.offset, &dc, 0), kivStsBadBitstreamCode);
    EXPECT_EQ(dc, 257);
    EXPECT_EQ(m.position(), 1);
}

TEST(Mpeg4Coding, DecoderEdgeCases) {
    Block d;
    int last = 0;
    // Fixed-length level 0: refused in intra, accepted (and stored) in inter.
    const std::string zero = "0000011 11 1 000010 1 000000000000 1";
    Stream a(bytes_of(zero));
    EXPECT_EQ(kiviDecodeCoeffsIntra_MPEG4_1u16s(&a.p, &a.offset, d.data(), &last, 0, 0, 0), kivStsBadBitstreamCode);
    EXPECT_EQ(a.position(), 0);
    EXPECT_EQ(last, -1);
    d.fill(7);
    ASSERT_EQ(kiviDecodeCoeffsInter_MPEG4_1u16s(&a.p, &a.offset, d.data(), &last, 0, 0), kivStsOk);
    EXPECT_EQ(last, 2);
    EXPECT_EQ(d, Block{});
    // -2048 is refused by both; a zero marker too.
    Stream m(bytes_of("0000011 11 1 000000 1 100000000000 1"));
    EXPECT_EQ(kiviDecodeCoeffsInter_MPEG4_1u16s(&m.p, &m.offset, d.data(), &last, 0, 0), kivStsBadBitstreamCode);
    Stream mk(bytes_of("0000011 11 1 000000 1 000000000001 0"));
    EXPECT_EQ(kiviDecodeCoeffsInter_MPEG4_1u16s(&mk.p, &mk.offset, d.data(), &last, 0, 0), kivStsBadBitstreamCode);
    // An escape inside an escape.
    Stream ee(bytes_of("0000011 0 0000011"));
    EXPECT_EQ(kiviDecodeCoeffsInter_MPEG4_1u16s(&ee.p, &ee.offset, d.data(), &last, 0, 0), kivStsBadBitstreamCode);

    // Scan 3: no reordering (intra and inter); scan 2 in the inter decoder too.
    // Codes: inter (0, 1, 1) '110' s; (1, 0, 1) '0111' s.
    const std::string two = "110 0 0111 1";
    for (int scan : {2, 3}) {
        Stream s(bytes_of(two));
        ASSERT_EQ(kiviDecodeCoeffsInter_MPEG4_1u16s(&s.p, &s.offset, d.data(), &last, 0, scan), kivStsOk);
        EXPECT_EQ(d[1], 1);
        EXPECT_EQ(d[2], -1);
        EXPECT_EQ(last, 2);
    }
    // Scans 0 and 1 place scan positions through their tables.
    for (int scan : {0, 1}) {
        Stream s(bytes_of(two));
        ASSERT_EQ(kiviDecodeCoeffsInter_MPEG4_1u16s(&s.p, &s.offset, d.data(), &last, 0, scan), kivStsOk);
        const std::int32_t* t = kivvc::scan_for(scan);
        EXPECT_EQ(d[t[1]], 1);
        EXPECT_EQ(d[t[2]], -1);
    }
    // DC present: element 0 survives, run 0 lands at position 1. Intra
    // (1, 0, 1) is '0111' as well.
    d.fill(3);
    Stream s(bytes_of("0111 0"));
    ASSERT_EQ(kiviDecodeCoeffsIntra_MPEG4_1u16s(&s.p, &s.offset, d.data(), &last, 0, 1, 3), kivStsOk);
    EXPECT_EQ(d[0], 3);
    EXPECT_EQ(d[1], 1);
    EXPECT_EQ(last, 1);
    // A run carrying the position to 64: the coefficients before stay.
    // Inter (0, 0, 1) then escape mode 3 with last 1, run 63.
    Stream r(bytes_of("10 0 0000011 11 1 111111 1 000000000001 1"));
    EXPECT_EQ(kiviDecodeCoeffsInter_MPEG4_1u16s(&r.p, &r.offset, d.data(), &last, 0, 3), kivStsBadBitstreamCode);
    EXPECT_EQ(d[0], 1);
    EXPECT_EQ(last, 0);
    EXPECT_EQ(r.position(), 0);
    // Backward: a block whose last code does not have last = 1.
    // (Two bytes before the code: the backward reader may look at them.)
    Stream b(bytes_of("00000000 00000000 110 0"));  // RVLC (0, 0, 1)
    b.p += 2;
    b.offset = 3;
    EXPECT_EQ(kiviDecodeCoeffsInterRVLCBack_MPEG4_1u16s(&b.p, &b.offset, d.data(), &last), kivStsBadBitstreamCode);
    EXPECT_EQ(b.p, b.buf.data() + 2);
    EXPECT_EQ(b.offset, 3);
}

TEST(Mpeg4Coding, ReconstructEqualsDecodeThenQuantise) {
    Rng rng(31);
    std::array<Kiv8u, 64> matrix;
    for (auto& w : matrix) w = static_cast<Kiv8u>(rng.range(1, 255));
    std::vector<Kiv8u> mem(200);
    auto* spec = reinterpret_cast<KiviQuantInvInterSpec_MPEG4*>(mem.data() + 5);
    for (int iter = 0; iter < 1500; ++iter) {
        const int bits = rng.range(4, 12);
        const bool mpeg = rng.chance(2);
        ASSERT_EQ(kiviQuantInvInterInit_MPEG4(mpeg ? matrix.data() : nullptr, spec, bits), kivStsOk);
        const int qp = rng.range(1, (1 << (bits - 3)) - 1);
        const bool rvlc = rng.chance(3);
        const int scan = rng.range(0, 3);
        Block b = random_block(rng, rng.range(1, 8));
        int last_pos;
        const int n = count_levels(b, kivvc::scan_for(scan == 1 ? 1 : 0), 0, &last_pos);
        if (n == 0) continue;
        Stream out(512);
        ASSERT_EQ(kiviEncodeCoeffsInter_MPEG4_16s1u(b.data(), &out.p, &out.offset, n, rvlc, scan == 1 ? 1 : 0), kivStsOk);
        Stream in1(out.buf), in2(out.buf);
        Block want, got;
        int l1, l2;
        ASSERT_EQ(kiviDecodeCoeffsInter_MPEG4_1u16s(&in1.p, &in1.offset, want.data(), &l1, rvlc, scan == 1 ? 1 : 0), kivStsOk);
        ASSERT_EQ(kiviQuantInvInter_MPEG4_16s_C1I(want.data(), 63, spec, qp), kivStsOk);
        ASSERT_EQ(kiviReconstructCoeffsInter_MPEG4_1u16s(&in2.p, &in2.offset, got.data(), &l2, rvlc, scan, spec, qp), kivStsOk);
        EXPECT_EQ(got, want) << "iter " << iter << " mpeg " << mpeg << " bits " << bits << " qp " << qp;
        EXPECT_EQ(l1, l2);
        EXPECT_EQ(in1.position(), in2.position());
    }
    // Mismatch control in the combined path: one level 1, W 16, QP 3 gives 9
    // (odd: untouched); level 2 gives 15; 9 + 15 even: element 63 toggled.
    std::array<Kiv8u, 64> flat;
    flat.fill(16);
    ASSERT_EQ(kiviQuantInvInterInit_MPEG4(flat.data(), spec, 8), kivStsOk);
    Stream one(bytes_of("0111 0"));
    Block d;
    int last;
    ASSERT_EQ(kiviReconstructCoeffsInter_MPEG4_1u16s(&one.p, &one.offset, d.data(), &last, 0, 0, spec, 3), kivStsOk);
    EXPECT_EQ(d[0], 9);
    EXPECT_EQ(d[63], 0);
    Stream pair(bytes_of("10 0 000011001 0"));  // (0, 0, 1), then (1, 0, 2)
    ASSERT_EQ(kiviReconstructCoeffsInter_MPEG4_1u16s(&pair.p, &pair.offset, d.data(), &last, 0, 3, spec, 3), kivStsOk);
    EXPECT_EQ(d[0], 9);
    EXPECT_EQ(d[1], 15);
    EXPECT_EQ(d[63], 1);
}

TEST(Mpeg4Coding, ArgumentChecks) {
    Block b{};
    b[0] = 1;
    Stream s(64);
    Kiv8u* null_byte = nullptr;
    int off = 0, last = 0;
    Kiv16s dc;
    EXPECT_EQ(kiviDecodeDCIntra_MPEG4_1u16s(nullptr, &off, &dc, 0), kivStsNullPointer);
    EXPECT_EQ(kiviDecodeDCIntra_MPEG4_1u16s(&s.p, &off, nullptr, 0), kivStsNullPointer);
    EXPECT_EQ(kiviDecodeDCIntra_MPEG4_1u16s(&null_byte, &off, &dc, 0), kivStsNullPointer);
    EXPECT_EQ(kiviDecodeCoeffsIntra_MPEG4_1u16s(&s.p, &off, b.data(), nullptr, 0, 0, 0), kivStsNullPointer);
    EXPECT_EQ(kiviDecodeCoeffsInterRVLCBack_MPEG4_1u16s(&null_byte, &off, b.data(), &last), kivStsNullPointer);
    EXPECT_EQ(kiviEncodeCoeffsInter_MPEG4_16s1u(nullptr, &s.p, &off, 1, 0, 0), kivStsNullPointer);
    EXPECT_EQ(kiviEncodeCoeffsInter_MPEG4_16s1u(b.data(), &null_byte, &off, 1, 0, 0), kivStsNullPointer);
    for (int bad : {-1, 8}) {
        off = bad;
        b.fill(1);
        EXPECT_EQ(kiviDecodeCoeffsInter_MPEG4_1u16s(&s.p, &off, b.data(), &last, 0, 0), kivStsBadBitOffset);
        EXPECT_EQ(kiviDecodeCoeffsIntraRVLCBack_MPEG4_1u16s(&s.p, &off, b.data(), &last, 0), kivStsBadBitOffset);
        EXPECT_EQ(b[5], 1) << "nothing cleared";
        EXPECT_EQ(kiviEncodeDCIntra_MPEG4_16s1u(3, &s.p, &off, 0), kivStsBadBitOffset);
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
    Stream in(bytes_of("0111 0"));
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
