// Exported H.261 functions: loop filter, TCOEFF decoders, encoders and
// reconstructions.
#include <cstdint>

#include "common/scan_tables.h"
#include "h263/coding.h"
#include "h263/h261_kernels.h"
#include "h263/h261_tables.h"
#include "kivvc.h"

namespace kivvc::h263 {
namespace {

using bits::ByteReader;
using bits::ByteWriter;

inline H261Code lookup(std::uint32_t v) {
    if (v >= 512) return kH261Decode.h261_coefTab0[v >> 5];
    if (v >= 128) return kH261Decode.h261_coefTab1[v >> 3];
    if (v >= 32) return kH261Decode.h261_coefTab2[v];
    return {0, 0, 0};
}

// Decodes codes after position p up to end of block, handing each (position,
// level) to `store`. On success the reader is past end of block; *last gets
// the last position stored (p if none).
template <class Store>
KivStatus ownDecodeCoeffs_H261(ByteReader& r, int p, int* last, Store store) {
    for (;;) {
        const std::uint32_t v = r.peek(14);
        int run, level;
        if ((v >> 8) == 1) {
            run = static_cast<int>((v >> 2) & 63);
            level = signed8(r.peek(20) & 255);
            if (level == 0 || level == -128) break;
            r.skip(20);
        } else {
            const H261Code c = lookup(v);
            if (c.length == 0) break;
            r.skip(c.length);
            if (c.run == kH261EndOfBlockRun) {
                *last = p;
                return kivStsOk;
            }
            run = c.run;
            level = ((v >> (14 - c.length)) & 1) ? -int{c.level} : int{c.level};
        }
        if (p + run + 1 > 63) break;
        p += run + 1;
        store(p, level);
    }
    *last = p;
    return kivStsBadBitstreamCode;
}

const std::int32_t* order_for(int scan) { return scan == -1 ? kRowMajor : ownvc_Zigzag; }

KivStatus check_decoder(Kiv8u** pp, int* po, const Kiv16s* block, const int* last) {
    if (!pp || !po) return kivStsNullPointer;
    if (!*pp || !block || !last) return kivStsNullPointer;
    if (!cursor_offset_valid(po)) return kivStsBadBitOffset;
    return kivStsOk;
}

KivStatus decode_intra(Kiv8u** pp, int* po, Kiv16s* block, int* last, int scan) {
    if (const KivStatus s = check_decoder(pp, po, block, last)) return s;
    clear_block(block);
    ByteReader r{*pp, *po};
    const std::uint32_t dc = r.peek(8);
    if (!intradc_valid(dc)) {
        *last = -1;
        return kivStsBadBitstreamCode;
    }
    r.skip(8);
    const ByteReader after_dc = r;
    const std::int32_t* order = order_for(scan);
    const KivStatus s = ownDecodeCoeffs_H261(r, 0, last, [&](int p, int level) { block[order[p]] = static_cast<Kiv16s>(level); });
    block[0] = static_cast<Kiv16s>(intradc_level(dc));
    (s == kivStsOk ? r : after_dc).store(pp, po);
    return s;
}

// The inter first coefficient: '1s' at the start of the block is run 0, level
// +-1. Returns the position reached (0 or -1).
inline int first_coefficient(ByteReader& r, int* level) {
    const std::uint32_t v = r.peek(2);
    if (v < 2) return -1;
    r.skip(2);
    *level = (v & 1) ? -1 : 1;
    return 0;
}

KivStatus decode_inter(Kiv8u** pp, int* po, Kiv16s* block, int* last, int scan) {
    if (const KivStatus s = check_decoder(pp, po, block, last)) return s;
    clear_block(block);
    ByteReader r{*pp, *po};
    const std::int32_t* order = order_for(scan);
    int first = 0;
    const int p = first_coefficient(r, &first);
    if (p == 0) block[order[0]] = static_cast<Kiv16s>(first);
    const KivStatus s = ownDecodeCoeffs_H261(r, p, last, [&](int q, int level) { block[order[q]] = static_cast<Kiv16s>(level); });
    if (s == kivStsOk) r.store(pp, po);
    return s;
}

KivStatus reconstruct(Kiv8u** pp, int* po, Kiv16s* block, int* last, int quant, bool intra) {
    if (const KivStatus s = check_decoder(pp, po, block, last)) return s;
    if (quant < 1 || quant > 31) return kivStsBadQp;
    clear_block(block);
    ByteReader r{*pp, *po};
    int p = 0;
    if (intra) {
        const std::uint32_t dc = r.peek(8);
        if (!intradc_valid(dc)) {
            *last = -1;
            return kivStsBadBitstreamCode;
        }
        r.skip(8);
        block[0] = static_cast<Kiv16s>(8 * intradc_level(dc));
    } else {
        int first = 0;
        p = first_coefficient(r, &first);
        if (p == 0) block[0] = static_cast<Kiv16s>(dequant_odd(first, quant));
    }
    const KivStatus s = ownDecodeCoeffs_H261(r, p, last, [&](int q, int level) {
        block[ownvc_Zigzag[q]] = static_cast<Kiv16s>(limit_2048(dequant_odd(level, quant)));
    });
    if (s == kivStsOk) r.store(pp, po);
    return s;
}

// Writes one (run, level) with its code and sign, or with the escape.
inline void put_tcoeff(ByteWriter& w, int run, int level) {
    const int magnitude = level < 0 ? -level : level;
    const H261Vlc c = magnitude <= 15 ? kH261Encode.find(run, magnitude) : H261Vlc{0, 0};
    if (c.length)
        w.put(c.code | (level < 0 ? 1u : 0u), c.length);
    else
        w.put((1u << 14) | (static_cast<std::uint32_t>(run) << 8) | (static_cast<std::uint32_t>(level) & 255u), 20);
}

KivStatus encode(const Kiv16s* block, Kiv8u** pp, int* po, int count, int scan, bool intra) {
    if (!block || !pp || !po) return kivStsNullPointer;
    if (!*pp) return kivStsNullPointer;
    if (!cursor_offset_valid(po)) return kivStsBadBitOffset;
    if (count < 1 || count > 64) return kivStsOutOfRange;
    ByteWriter w = ByteWriter::load(*pp, *po);
    const std::int32_t* order = order_for(scan);
    int coded = 0, start = 0;
    if (intra) {
        w.put(intradc_code(block[0]), 8);
        coded = 1;
        start = 1;
    } else if (const int first = block[order[0]]) {
        if (first == 1 || first == -1)
            w.put(first < 0 ? 3u : 2u, 2);
        else
            put_tcoeff(w, 0, first);
        coded = 1;
        start = 1;
    }
    int run = 0;
    for (int k = start; k < 64 && coded < count; ++k) {
        const int level = block[order[k]];
        if (level == 0) {
            ++run;
            continue;
        }
        put_tcoeff(w, run, level);
        run = 0;
        ++coded;
    }
    w.put(2u, 2);  // end of block
    w.finish(pp, po);
    return kivStsOk;
}

}  // namespace
}  // namespace kivvc::h263

using namespace kivvc::h263;

extern "C" {

KIV_API KivStatus kiviFilter8x8_H261_8u_C1R(const Kiv8u* pSrc, int srcStep, Kiv8u* pDst, int dstStep) {
    if (!pSrc || !pDst) return kivStsNullPointer;
    h261_table().filter8x8(pSrc, srcStep, pDst, dstStep);
    return kivStsOk;
}

KIV_API KivStatus kiviDecodeCoeffsIntra_H261_1u16s(Kiv8u** ppBitStream, int* pBitOffset, Kiv16s* pCoef,
                                                   int* pIndxLastNonZero, int scan) {
    return decode_intra(ppBitStream, pBitOffset, pCoef, pIndxLastNonZero, scan);
}

KIV_API KivStatus kiviDecodeCoeffsInter_H261_1u16s(Kiv8u** ppBitStream, int* pBitOffset, Kiv16s* pCoef,
                                                   int* pIndxLastNonZero, int scan) {
    return decode_inter(ppBitStream, pBitOffset, pCoef, pIndxLastNonZero, scan);
}

KIV_API KivStatus kiviEncodeCoeffsIntra_H261_16s1u(const Kiv16s* pQCoef, Kiv8u** ppBitStream, int* pBitOffset,
                                                   int countNonZero, int scan) {
    return encode(pQCoef, ppBitStream, pBitOffset, countNonZero, scan, true);
}

KIV_API KivStatus kiviEncodeCoeffsInter_H261_16s1u(const Kiv16s* pQCoef, Kiv8u** ppBitStream, int* pBitOffset,
                                                   int countNonZero, int scan) {
    return encode(pQCoef, ppBitStream, pBitOffset, countNonZero, scan, false);
}

KIV_API KivStatus kiviReconstructCoeffsIntra_H261_1u16s(Kiv8u** ppBitStream, int* pBitOffset, Kiv16s* pCoef,
                                                        int* pIndxLastNonZero, int QUANT) {
    return reconstruct(ppBitStream, pBitOffset, pCoef, pIndxLastNonZero, QUANT, true);
}

KIV_API KivStatus kiviReconstructCoeffsInter_H261_1u16s(Kiv8u** ppBitStream, int* pBitOffset, Kiv16s* pCoef,
                                                        int* pIndxLastNonZero, int QUANT) {
    return reconstruct(ppBitStream, pBitOffset, pCoef, pIndxLastNonZero, QUANT, false);
}

}  // extern "C"
