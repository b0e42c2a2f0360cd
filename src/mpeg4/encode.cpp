// MPEG-4 coefficient encoding: the intra DC differential and the run/level
// codes of intra and inter blocks, with the three escape modes or with
// reversible codes.
#include <cstdlib>

#include "common/scan_tables.h"
#include "core/bitstream.h"
#include "kivvc.h"
#include "mpeg4/coeff_tables.h"

namespace kivvc::mpeg4 {
namespace {

using bits::ByteWriter;

// Largest level magnitude any escape can carry.
constexpr int kCodableLevel = 2047;

void put_code(ByteWriter& w, Vlc c, int negative) {
    w.put((std::uint32_t{c.bits} << 1) | static_cast<std::uint32_t>(negative), c.length + 1);
}

// One coefficient with a TCOEF code, escape mode 1, 2 or 3, tried in that
// order.
void put_vlc(ByteWriter& w, const EncodeTable& codes, const RunLevelLimits& lim, int last, int run, int level) {
    const int magnitude = std::abs(level);
    const int negative = level < 0;
    const int lmax = lim.lmax_of(last, run);
    if (magnitude <= lmax) {
        put_code(w, codes.find(last, run, magnitude), negative);
        return;
    }
    if (magnitude <= 2 * lmax) {
        w.put(0x3u << 1, 8);  // escape, '0'
        put_code(w, codes.find(last, run, magnitude - lmax), negative);
        return;
    }
    const int rmax_plus1 = lim.rmax_plus1_of(last, magnitude);
    const int reduced = run - rmax_plus1;
    if (rmax_plus1 > 0 && reduced >= 0 && reduced < rmax_plus1) {
        w.put((0x3u << 2) | 2u, 9);  // escape, '10'
        put_code(w, codes.find(last, reduced, magnitude), negative);
        return;
    }
    // Escape, '11', last, run (6), marker, level (12, two's complement), marker.
    w.put((0x3u << 2) | 3u, 9);
    w.put((std::uint32_t(last) << 20) | (std::uint32_t(run) << 14) | (1u << 13) |
              ((static_cast<std::uint32_t>(level) & 0xFFF) << 1) | 1u,
          21);
}

// One coefficient with a reversible code, or the 30-bit RVLC escape.
void put_rvlc(ByteWriter& w, const EncodeTable& codes, int last, int run, int level) {
    const int magnitude = std::abs(level);
    const int negative = level < 0;
    const Vlc c = codes.find(last, run, magnitude);
    if (c.length) {
        put_code(w, c, negative);
        return;
    }
    // '00001', last, run (6), marker, level (11), marker, '0000', sign.
    w.put((1u << 25) | (std::uint32_t(last) << 24) | (std::uint32_t(run) << 18) | (1u << 17) |
              (std::uint32_t(magnitude & 2047) << 6) | (1u << 5) | static_cast<std::uint32_t>(negative),
          30);
}

KivStatus check_cursor(Kiv8u** pp, int* offset, const void* block) {
    if (!pp || !offset || !block || !*pp) return kivStsNullPointer;
    if (*offset < 0 || *offset > 7) return kivStsBadBitOffset;
    return kivStsOk;
}

// Codes `count` nonzero levels from position `start` on through `scan`, the
// last of them with last = 1. Levels beyond any escape are refused before
// anything is written.
KivStatus encode_block(const Kiv16s* block, Kiv8u** pp, int* offset, int count, int start, const std::int32_t* scan,
                       bool rvlc, bool intra) {
    int seen = 0;
    for (int p = start; p < 64 && seen < count; ++p) {
        const int level = block[scan[p]];
        if (level == 0) continue;
        ++seen;
        if (std::abs(level) > kCodableLevel) return kivStsOutOfRange;
    }
    ByteWriter w = ByteWriter::load(*pp, *offset);
    const EncodeTable& codes = rvlc ? (intra ? kIntraRvlcCodes : kInterRvlcCodes)
                                    : (intra ? kIntraTcoefCodes : kInterTcoefCodes);
    const RunLevelLimits& lim = intra ? kIntraLimits : kInterLimits;
    int run = 0, coded = 0;
    for (int p = start; p < 64; ++p) {
        const int level = block[scan[p]];
        if (level == 0) {
            ++run;
            continue;
        }
        const int last = ++coded == count;
        if (rvlc)
            put_rvlc(w, codes, last, run, level);
        else
            put_vlc(w, codes, lim, last, run, level);
        if (last) break;
        run = 0;
    }
    w.finish(pp, offset);
    return kivStsOk;
}

const std::int32_t* encoder_scan(int scan, bool intra) {
    if (scan == -1) return kRowMajorOrder;
    if (scan == 1 || (scan == 2 && intra)) return scan_for(scan);
    return scan_for(0);
}

}  // namespace
}  // namespace kivvc::mpeg4

using namespace kivvc;
using namespace kivvc::mpeg4;

extern "C" {

KIV_API KivStatus kiviEncodeDCIntra_MPEG4_16s1u(Kiv16s dcCoeff, Kiv8u** ppBitStream, int* pBitOffset, int blockType) {
    if (!ppBitStream || !pBitOffset || !*ppBitStream) return kivStsNullPointer;
    if (*pBitOffset < 0 || *pBitOffset > 7) return kivStsBadBitOffset;
    const int d = dcCoeff;
    const int magnitude = std::abs(d);
    if (magnitude > 4095) return kivStsOutOfRange;
    int size = 0;
    while ((magnitude >> size) != 0) ++size;
    const DcSizeCode c = (blockType == 1 ? kDcSizeChroma : kDcSizeLuma)[size];
    ByteWriter w = ByteWriter::load(*ppBitStream, *pBitOffset);
    w.put(c.bits, c.length);
    if (size > 0) w.put(static_cast<std::uint32_t>(d > 0 ? d : d + (1 << size) - 1), size);
    if (size > 8) w.put(1, 1);
    w.finish(ppBitStream, pBitOffset);
    return kivStsOk;
}

KIV_API KivStatus kiviEncodeCoeffsIntra_MPEG4_16s1u(const Kiv16s* pCoeffs, Kiv8u** ppBitStream, int* pBitOffset,
                                                    int countNonZero, int rvlcFlag, int noDCFlag, int scan) {
    if (const KivStatus s = check_cursor(ppBitStream, pBitOffset, pCoeffs)) return s;
    if (countNonZero < 1 || countNonZero > (noDCFlag ? 63 : 64)) return kivStsOutOfRange;
    return encode_block(pCoeffs, ppBitStream, pBitOffset, countNonZero, noDCFlag ? 1 : 0, encoder_scan(scan, true),
                        rvlcFlag != 0, true);
}

KIV_API KivStatus kiviEncodeCoeffsInter_MPEG4_16s1u(const Kiv16s* pCoeffs, Kiv8u** ppBitStream, int* pBitOffset,
                                                    int countNonZero, int rvlcFlag, int scan) {
    if (const KivStatus s = check_cursor(ppBitStream, pBitOffset, pCoeffs)) return s;
    if (countNonZero < 1 || countNonZero > 64) return kivStsOutOfRange;
    return encode_block(pCoeffs, ppBitStream, pBitOffset, countNonZero, 0, encoder_scan(scan, false), rvlcFlag != 0,
                        false);
}

}  // extern "C"
