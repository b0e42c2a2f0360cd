// Exported H.263 quantisers and coefficient coders.
#include <cstdint>

#include "common/scan_tables.h"
#include "core/arith.h"
#include "h263/coding.h"
#include "h263/h263_tables.h"
#include "h263/quant_kernels.h"
#include "kivvc.h"

namespace kivvc::h263 {
namespace {

using bits::ByteReader;
using bits::ByteWriter;

// ---- Quantisation ----

KivStatus quant_intra(Kiv16s* block, int qp, int* count, bool adv, bool modq) {
    if (!block) return kivStsNullPointer;
    if (qp < 1 || qp > 31) return kivStsBadQp;
    const QuantTable& t = quant_table();
    if (adv) {
        const int n = (modq ? t.ownph263_QuantAdvIntraNoClip_16s_I : t.ownph263_QuantAdvIntra_16s_I)(block, qp);
        if (count) *count = n;
        return kivStsOk;
    }
    const int dc = block[0];
    block[0] = 32767;  // counts as nonzero
    const bool clip = qp < 8 && !modq;
    const int n = (clip ? t.ownph263_QuantIntra_16s_I : t.ownph263_QuantIntraNoClip_16s_I)(block, qp);
    int level = shift_right_floor(dc + 4, 3);
    level = level == 0 ? 1 : (level == 255 ? 254 : level);
    block[0] = static_cast<Kiv16s>(level);
    if (count) *count = n;
    return kivStsOk;
}

KivStatus quant_inter(Kiv16s* block, int qp, int* count, bool modq) {
    if (!block) return kivStsNullPointer;
    if (qp < 1 || qp > 31) return kivStsBadQp;
    const QuantTable& t = quant_table();
    const int n = (qp < 8 && !modq ? t.ownph263_QuantInter_16s_I : t.ownph263_QuantInterNoClip_16s_I)(block, qp);
    if (count) *count = n;
    return kivStsOk;
}

KivStatus quant_inv(Kiv16s* block, int last, int qp, bool intra, bool adv, bool modq) {
    if (!block) return kivStsNullPointer;
    if (qp < 1 || qp > 31) return kivStsBadQp;
    if (last < 0) return kivStsOutOfRange;
    last = last > 63 ? 63 : last;
    const QuantTable& t = quant_table();
    if (intra && adv) {
        t.ownph263_QuantInv_AdvIntra_16s_I(block, last, qp);
        return kivStsOk;
    }
    const QuantInvFn fn = modq ? t.ownph263_QuantInv_ModQ_16s_I : t.ownph263_QuantInv_16s_I;
    if (!intra) {
        fn(block, last, qp);
        return kivStsOk;
    }
    const int dc = block[0];
    if (last > 0) fn(block, last, qp);
    block[0] = wrap_s16(8 * dc);
    return kivStsOk;
}

// ---- Coefficient codes ----

struct Event {
    int last, run, level;
};

// Reads one TCOEF event or escape; false (nothing consumed) when the bits
// start no code or the escape carries a forbidden level.
template <bool ModQ>
bool read_event(ByteReader& r, const mpeg4::Code* table, Event* e) {
    const std::uint32_t v = r.peek(13);
    if ((v >> 6) == 3) {  // escape "0000 011"
        const std::uint32_t f = r.peek(22);
        const int level = signed8(f & 255);
        e->last = static_cast<int>((f >> 14) & 1);
        e->run = static_cast<int>((f >> 8) & 63);
        if (level == 0) return false;
        if (level == -128) {
            if (!ModQ) return false;
            ByteReader ext = r;
            ext.skip(22);
            const std::uint32_t x = ext.read(11);
            const int low = static_cast<int>(x >> 6);
            const int high = signed8((x & 63) << 2) >> 2;  // 6-bit two's complement
            e->level = high * 32 + low;
            r = ext;
            return true;
        }
        e->level = level;
        r.skip(22);
        return true;
    }
    if (v < 16) return false;
    const mpeg4::Code c = table[v >> 1];
    const bool negative = (v >> (12 - c.length)) & 1;
    r.skip(c.length + 1);
    *e = {c.last, c.run, negative ? -int{c.level} : int{c.level}};
    return true;
}

// Decodes events after position p until one with last = 1, handing each
// (position, level) to `store`. On an error nothing is written back by the
// caller and *last holds the position reached.
template <bool ModQ, class Store>
KivStatus decode_events(ByteReader& r, const mpeg4::Code* table, int p, int* last, Store store) {
    for (;;) {
        Event e;
        if (!read_event<ModQ>(r, table, &e)) break;
        if (p + e.run + 1 > 63) break;
        p += e.run + 1;
        store(p, e.level);
        if (e.last) {
            *last = p;
            return kivStsOk;
        }
    }
    *last = p;
    return kivStsBadBitstreamCode;
}

template <class Store>
KivStatus ownDecodeCoeffs_H263(ByteReader& r, const mpeg4::Code* table, int p, int* last, Store store) {
    return decode_events<false>(r, table, p, last, store);
}
template <class Store>
KivStatus ownDecodeCoeffs_ModQ_H263(ByteReader& r, const mpeg4::Code* table, int p, int* last, Store store) {
    return decode_events<true>(r, table, p, last, store);
}
template <class Store>
KivStatus decode_any(bool modq, ByteReader& r, const mpeg4::Code* table, int p, int* last, Store store) {
    return modq ? ownDecodeCoeffs_ModQ_H263(r, table, p, last, store) : ownDecodeCoeffs_H263(r, table, p, last, store);
}

const std::int32_t* order_for(int scan) { return (scan >= 0 && scan <= 2) ? scan_for(scan) : kRowMajor; }

KivStatus check_decoder(Kiv8u** pp, int* po, const void* block, const int* last) {
    if (!pp || !po) return kivStsNullPointer;
    if (!*pp || !block || !last) return kivStsNullPointer;
    if (!cursor_offset_valid(po)) return kivStsBadBitOffset;
    return kivStsOk;
}

KivStatus decode_coeffs(Kiv8u** pp, int* po, Kiv16s* block, int* last, bool intra, bool adv, bool modq, int scan) {
    if (const KivStatus s = check_decoder(pp, po, block, last)) return s;
    const bool keep_dc = intra && !adv;
    const Kiv16s dc = block[0];
    clear_block(block);
    if (keep_dc) block[0] = dc;
    ByteReader r{*pp, *po};
    const std::int32_t* order = order_for(scan);
    const mpeg4::Code* table = intra && adv ? kH263Tables.h263_advCoefTab0 : kH263Tables.h263_coefTab0;
    const KivStatus s = decode_any(modq, r, table, keep_dc ? 0 : -1, last,
                                   [&](int p, int level) { block[order[p]] = static_cast<Kiv16s>(level); });
    if (s == kivStsOk) r.store(pp, po);
    return s;
}

// Writes one event with its code and sign bit, or with the escape (the
// extended form for |level| >= 128 with modified quantisation).
void put_event(ByteWriter& w, const mpeg4::EncodeTable& t, bool modq, int last, int run, int level) {
    const int m = level < 0 ? -level : level;
    const mpeg4::Vlc c = t.find(last, run, m);
    if (c.length) {
        w.put((std::uint32_t{c.bits} << 1) | (level < 0 ? 1u : 0u), c.length + 1);
        return;
    }
    const std::uint32_t head = (3u << 7) | (static_cast<std::uint32_t>(last) << 6) | static_cast<std::uint32_t>(run);
    if (modq && m >= 128) {
        const auto v = static_cast<std::uint32_t>(level);
        w.put((head << 8) | 0x80u, 22);
        w.put(((v & 31u) << 6) | ((v >> 5) & 63u), 11);
        return;
    }
    w.put((head << 8) | (static_cast<std::uint32_t>(level) & 255u), 22);
}

KivStatus encode_coeffs(const Kiv16s* block, Kiv8u** pp, int* po, int count, bool intra, bool adv, bool modq, int scan) {
    if (!pp || !po || !block) return kivStsNullPointer;
    if (!*pp) return kivStsNullPointer;
    if (!cursor_offset_valid(po)) return kivStsBadBitOffset;
    if (count < 1 || count > 64) return kivStsOutOfRange;
    const mpeg4::EncodeTable& t = *(intra && adv ? kH263Tables.h263_advVLCParams : kH263Tables.h263_VLCParams);
    const std::int32_t* order = order_for(scan);
    ByteWriter w = ByteWriter::load(*pp, *po);
    int run = 0, coded = 0;
    for (int k = intra && !adv ? 1 : 0; k < 64 && coded < count; ++k) {
        const int level = block[order[k]];
        if (level == 0) {
            ++run;
            continue;
        }
        ++coded;
        put_event(w, t, modq, coded == count, run, level);
        run = 0;
    }
    w.finish(pp, po);
    return kivStsOk;
}

// The odd-offset reconstruction of the combined decoders.
inline Kiv16s reconstruct_level(int level, int qp, bool modq) {
    const int v = dequant_odd(level, qp);
    return modq ? wrap_s16(v) : static_cast<Kiv16s>(limit_2048(v));
}

KivStatus reconstruct_intra(Kiv8u** pp, int* po, Kiv16s* block, int* last, int coded, int qp, bool adv, int scan, bool modq) {
    if (!pp || !po) return kivStsNullPointer;
    if (!*pp || !block || !last) return kivStsNullPointer;
    if (!cursor_offset_valid(po)) return kivStsBadBitOffset;
    if (qp < 1 || qp > 31) return kivStsBadQp;
    ByteReader r{*pp, *po};
    if (adv) {
        clear_block(block);
        const std::int32_t* order = scan_for(scan);
        const KivStatus s = decode_any(modq, r, kH263Tables.h263_advCoefTab0, -1, last,
                                       [&](int p, int level) { block[order[p]] = wrap_s16(2 * qp * level); });
        if (s == kivStsOk) r.store(pp, po);
        return s;
    }
    const std::uint32_t dc = r.peek(8);
    if (!intradc_valid(dc)) {
        *last = -1;
        return kivStsBadBitstreamCode;
    }
    r.skip(8);
    const ByteReader after_dc = r;
    KivStatus s = kivStsOk;
    if (coded) {
        clear_block(block);
        s = decode_any(modq, r, kH263Tables.h263_coefTab0, 0, last,
                       [&](int p, int level) { block[ownvc_Zigzag[p]] = reconstruct_level(level, qp, modq); });
    } else {
        *last = 0;
    }
    block[0] = static_cast<Kiv16s>(8 * intradc_level(dc));
    (s == kivStsOk ? r : after_dc).store(pp, po);
    return s;
}

KivStatus reconstruct_inter(Kiv8u** pp, int* po, Kiv16s* block, int* last, int qp, bool modq) {
    if (!pp || !po) return kivStsNullPointer;
    if (!*pp || !block || !last) return kivStsNullPointer;
    if (!cursor_offset_valid(po)) return kivStsBadBitOffset;
    if (qp < 1 || qp > 31) return kivStsBadQp;
    clear_block(block);
    ByteReader r{*pp, *po};
    const KivStatus s = decode_any(modq, r, kH263Tables.h263_coefTab0, -1, last,
                                   [&](int p, int level) { block[ownvc_Zigzag[p]] = reconstruct_level(level, qp, modq); });
    if (s == kivStsOk) r.store(pp, po);
    return s;
}

}  // namespace
}  // namespace kivvc::h263

using namespace kivvc::h263;

extern "C" {

KIV_API KivStatus kiviQuantIntra_H263_16s_C1I(Kiv16s* pSrcDst, int QP, int* pCount, int advIntraFlag, int modQuantFlag) {
    return quant_intra(pSrcDst, QP, pCount, advIntraFlag != 0, modQuantFlag != 0);
}

KIV_API KivStatus kiviQuantInter_H263_16s_C1I(Kiv16s* pSrcDst, int QP, int* pCount, int modQuantFlag) {
    return quant_inter(pSrcDst, QP, pCount, modQuantFlag != 0);
}

KIV_API KivStatus kiviQuantInvIntra_H263_16s_C1I(Kiv16s* pSrcDst, int indxLastNonZero, int QP, int advIntraFlag, int modQuantFlag) {
    return quant_inv(pSrcDst, indxLastNonZero, QP, true, advIntraFlag != 0, modQuantFlag != 0);
}

KIV_API KivStatus kiviQuantInvInter_H263_16s_C1I(Kiv16s* pSrcDst, int indxLastNonZero, int QP, int modQuantFlag) {
    return quant_inv(pSrcDst, indxLastNonZero, QP, false, false, modQuantFlag != 0);
}

KIV_API KivStatus kiviDecodeDCIntra_H263_1u16s(Kiv8u** ppBitStream, int* pBitOffset, Kiv16s* pDC) {
    if (!ppBitStream || !pBitOffset) return kivStsNullPointer;
    if (!*ppBitStream || !pDC) return kivStsNullPointer;
    if (!cursor_offset_valid(pBitOffset)) return kivStsBadBitOffset;
    ByteReader r{*ppBitStream, *pBitOffset};
    const std::uint32_t v = r.peek(8);
    if (!intradc_valid(v)) return kivStsBadBitstreamCode;
    *pDC = static_cast<Kiv16s>(intradc_level(v));
    r.skip(8);
    r.store(ppBitStream, pBitOffset);
    return kivStsOk;
}

KIV_API KivStatus kiviEncodeDCIntra_H263_16s1u(Kiv16s qDC, Kiv8u** ppBitStream, int* pBitOffset) {
    if (!ppBitStream || !pBitOffset) return kivStsNullPointer;
    if (!*ppBitStream) return kivStsNullPointer;
    if (!cursor_offset_valid(pBitOffset)) return kivStsBadBitOffset;
    ByteWriter w = ByteWriter::load(*ppBitStream, *pBitOffset);
    w.put(intradc_code(qDC), 8);
    w.finish(ppBitStream, pBitOffset);
    return kivStsOk;
}

KIV_API KivStatus kiviDecodeCoeffsIntra_H263_1u16s(Kiv8u** ppBitStream, int* pBitOffset, Kiv16s* pCoef, int* pIndxLastNonZero,
                                                   int advIntraFlag, int modQuantFlag, int scan) {
    return decode_coeffs(ppBitStream, pBitOffset, pCoef, pIndxLastNonZero, true, advIntraFlag != 0, modQuantFlag != 0, scan);
}

KIV_API KivStatus kiviDecodeCoeffsInter_H263_1u16s(Kiv8u** ppBitStream, int* pBitOffset, Kiv16s* pCoef, int* pIndxLastNonZero,
                                                   int modQuantFlag, int scan) {
    return decode_coeffs(ppBitStream, pBitOffset, pCoef, pIndxLastNonZero, false, false, modQuantFlag != 0, scan);
}

KIV_API KivStatus kiviEncodeCoeffsIntra_H263_16s1u(const Kiv16s* pQCoef, Kiv8u** ppBitStream, int* pBitOffset, int countNonZero,
                                                   int advIntraFlag, int modQuantFlag, int scan) {
    return encode_coeffs(pQCoef, ppBitStream, pBitOffset, countNonZero, true, advIntraFlag != 0, modQuantFlag != 0, scan);
}

KIV_API KivStatus kiviEncodeCoeffsInter_H263_16s1u(const Kiv16s* pQCoef, Kiv8u** ppBitStream, int* pBitOffset, int countNonZero,
                                                   int modQuantFlag, int scan) {
    return encode_coeffs(pQCoef, ppBitStream, pBitOffset, countNonZero, false, false, modQuantFlag != 0, scan);
}

KIV_API KivStatus kiviReconstructCoeffsIntra_H263_1u16s(Kiv8u** ppBitStream, int* pBitOffset, Kiv16s* pCoef, int* pIndxLastNonZero,
                                                        int cbp, int QP, int advIntraFlag, int scan, int modQuantFlag) {
    return reconstruct_intra(ppBitStream, pBitOffset, pCoef, pIndxLastNonZero, cbp, QP, advIntraFlag != 0, scan, modQuantFlag != 0);
}

KIV_API KivStatus kiviReconstructCoeffsInter_H263_1u16s(Kiv8u** ppBitStream, int* pBitOffset, Kiv16s* pCoef, int* pIndxLastNonZero,
                                                        int QP, int modQuantFlag) {
    return reconstruct_inter(ppBitStream, pBitOffset, pCoef, pIndxLastNonZero, QP, modQuantFlag != 0);
}

}  // extern "C"
