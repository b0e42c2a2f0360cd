// MPEG-4 coefficient decoding: the intra DC, forward VLC and RVLC block
// decoders, the backward RVLC decoder and the combined inter decode and
// inverse quantisation.
//
// The forward readers look at most four bytes past the byte holding the next
// unread bit (so at most four past the last bit they consume); the backward
// reader loads only bytes holding the bits it examines, at most two bytes
// before the first bit it consumes. A failing call leaves the cursor as it
// was.
#include <algorithm>
#include <cstring>

#include "common/scan_tables.h"
#include "kivvc.h"
#include "mpeg4/coeff_reader.h"
#include "mpeg4/quant_kernels.h"

namespace kivvc::mpeg4 {

KivStatus check_inverse_inter(const void* spec, int qp);

namespace {

using bits::ByteReader;

constexpr KivStatus kBad = kivStsBadBitstreamCode;

// One coefficient of a VLC block: a table code, or an escape in one of its
// three modes. False for a bad code, a second escape, a zero marker bit or a
// forbidden fixed-length level.
bool read_vlc(ByteReader& r, const TcoefTable& t, const RunLevelLimits& lim, bool intra, Coefficient& out) {
    const Code c = peek_tcoef(r, t);
    if (c.length == 0) return false;
    if (c.level != kEscape) {
        out = take_tcoef(r, c);
        return true;
    }
    r.skip(7);
    const std::uint32_t mode = r.peek(2);
    if (mode != 3) {
        r.skip(mode == 2 ? 2 : 1);
        const Code d = peek_tcoef(r, t);
        if (d.length == 0 || d.level == kEscape) return false;
        out = take_tcoef(r, d);
        const int magnitude = out.level < 0 ? -out.level : out.level;
        if (mode < 2) {
            const int level = magnitude + lim.lmax_of(out.last, out.run);
            out.level = out.level < 0 ? -level : level;
        } else {
            out.run += lim.rmax_plus1_of(out.last, magnitude);
        }
        return true;
    }
    r.skip(2);
    // last (1), run (6), marker, level (12, two's complement), marker.
    const std::uint32_t f = r.read(21);
    if (!(f & 1) || !((f >> 13) & 1)) return false;
    const int level = static_cast<int>((f >> 1) & 0xFFF) - ((f & 0x1000) ? 4096 : 0);
    if (level == -2048 || (intra && level == 0)) return false;
    out = {static_cast<int>(f >> 20), static_cast<int>((f >> 14) & 63), level};
    return true;
}

// One forward RVLC coefficient, with the 30-bit escape.
bool read_rvlc(ByteReader& r, const RvlcTable& t, Coefficient& out) {
    const std::uint32_t head = r.peek(8);
    if (head < 8) return false;
    if (head < 16) {
        r.skip(5);
        // last, run (6), marker, level (11), marker, '0000', sign.
        const std::uint32_t f = r.peek(25);
        const int level = static_cast<int>((f >> 6) & 2047);
        if (!((f >> 17) & 1) || !((f >> 5) & 1) || level == 0 || (f & 30) != 0) return false;
        r.skip(25);
        out = {static_cast<int>(f >> 24), static_cast<int>((f >> 18) & 63), (f & 1) ? -level : level};
        return true;
    }
    Code c = t.first[head];
    if (c.length == kLink) c = t.second[c.run][r.peek(15) & 127];
    if (c.length == 0) return false;
    out = take_tcoef(r, c);
    return true;
}

// The forward block loop: position p advances by run + 1; `store(position,
// level)` places each coefficient. Stops after last = 1 (true) or on an error
// (false) with p the position of the last coefficient stored.
template <class Read, class Store>
bool decode_forward(ByteReader& r, int& p, Read read, Store store) {
    for (;;) {
        Coefficient c;
        if (!read(r, c)) return false;
        const int q = p + c.run + 1;
        if (q >= 64) return false;
        store(q, c.level);
        p = q;
        if (c.last) return true;
    }
}

KivStatus finish(bool ok, const ByteReader& r, std::uint8_t** pp, int* offset) {
    if (!ok) return kBad;
    r.store(pp, offset);
    return kivStsOk;
}

// Checks shared by every decoder: pointers, then the bit offset.
KivStatus check_cursor(Kiv8u** pp, int* offset) {
    if (!*pp) return kivStsNullPointer;
    if (*offset < 0 || *offset > 7) return kivStsBadBitOffset;
    return kivStsOk;
}

// Clears the block (keeping element 0 when the DC is present) and presets the
// last position.
void prepare(Kiv16s* block, int* last, bool dc_present) {
    std::memset(block + (dc_present ? 1 : 0), 0, sizeof(Kiv16s) * (dc_present ? 63 : 64));
    *last = dc_present ? 0 : -1;
}

// A forward decode through a scan table with the given coefficient reader.
template <class Read>
KivStatus decode_scanned(Kiv8u** pp, int* offset, Kiv16s* block, int* last, const std::int32_t* scan, Read read) {
    ByteReader r{*pp, *offset};
    const bool ok =
        decode_forward(r, *last, read, [&](int q, int level) { block[scan[q]] = static_cast<Kiv16s>(level); });
    return finish(ok, r, pp, offset);
}

}  // namespace

KivStatus ownpmp4_DecodeCoeffsIntra_MPEG4_1u16s(Kiv8u** pp, int* offset, Kiv16s* block, int* last,
                                                const std::int32_t* scan) {
    return decode_scanned(pp, offset, block, last, scan, [](ByteReader& r, Coefficient& c) {
        return read_vlc(r, kIntraTcoef, kIntraLimits, true, c);
    });
}

KivStatus ownpmp4_DecodeCoeffsInter_MPEG4_1u16s(Kiv8u** pp, int* offset, Kiv16s* block, int* last,
                                                const std::int32_t* scan) {
    return decode_scanned(pp, offset, block, last, scan, [](ByteReader& r, Coefficient& c) {
        return read_vlc(r, kInterTcoef, kInterLimits, false, c);
    });
}

KivStatus ownpmp4_DecodeRVLCF_MPEG4_1u16s(Kiv8u** pp, int* offset, Kiv16s* block, int* last, const RvlcTable& t,
                                          const std::int32_t* scan) {
    return decode_scanned(pp, offset, block, last, scan,
                          [&t](ByteReader& r, Coefficient& c) { return read_rvlc(r, t, c); });
}

// Backward RVLC: the cursor names the sign bit of the block's last code.
// Coefficients are collected from element 63 down, then moved so that the
// block starts at start + run + 1. A block whose runs would carry it past 63
// is refused like a forward position beyond 63.
KivStatus ownpmp4_DecodeRVLCB_MPEG4_1u16s(Kiv8u** pp, int* offset, Kiv16s* block, int* last, const RvlcTable& t) {
    const std::uint8_t* base = *pp;
    long s = *offset;  // the sign bit of the current code, relative to base
    const int start = *last;
    int fill = 63;
    for (bool first = true;; first = false) {
        const std::uint32_t w = bits_before(base, s, 8);
        int code_last, run, level, length;
        if (w & 15) {
            Code c = t.first[reverse_bits(w, 8)];
            if (c.length == kLink) c = t.second[c.run][reverse_bits(bits_before(base, s - 8, 7), 7)];
            if (c.length == 0) break;
            code_last = c.last;
            run = c.run;
            level = c.level;
            length = c.length;
        } else {
            // From the end: '0000', marker, level (11), marker, last, run (6), '00001'.
            if (!((w >> 4) & 1)) break;
            const std::uint32_t lv = bits_before(base, s - 5, 12);
            if (!(lv >> 11) || (lv & 2047) == 0) break;
            const std::uint32_t head = bits_before(base, s - 17, 12);
            if ((head >> 7) != 1) break;
            code_last = static_cast<int>((head >> 6) & 1);
            run = static_cast<int>(head & 63);
            level = static_cast<int>(lv & 2047);
            length = 29;
        }
        if (first != (code_last == 1)) {
            if (first) break;
            // The last code of the preceding block: not consumed.
            const int shift = fill - start;
            if (shift < 0) break;
            std::memmove(block + start + 1, block + fill + 1, sizeof(Kiv16s) * std::size_t(63 - fill));
            std::memset(block + 64 - shift, 0, sizeof(Kiv16s) * std::size_t(shift));
            *last = 63 - shift;
            *pp = const_cast<Kiv8u*>(base + (s >> 3));
            *offset = static_cast<int>(s & 7);
            return kivStsOk;
        }
        if (fill <= start) break;
        const int negative = static_cast<int>(bits_before(base, s + 1, 1));
        block[fill] = static_cast<Kiv16s>(negative ? -level : level);
        fill -= run + 1;
        s -= length + 1;
    }
    *last = fill;
    return kBad;
}

// Inter VLC decoding with each level reconstructed as it is stored.
KivStatus ownpmp4_ReconstructCoeffsInter_MPEG4_1u16s(Kiv8u** pp, int* offset, Kiv16s* block, int* last,
                                                     const std::int32_t* scan, const QuantInvRecord& rec, int qp) {
    ByteReader r{*pp, *offset};
    const int v = _p_QuantInvClip[rec.bits - kMinBits];
    const auto read = [](ByteReader& rd, Coefficient& c) { return read_vlc(rd, kInterTcoef, kInterLimits, false, c); };
    bool ok;
    if (rec.matrix) {
        int sum = 0;
        ok = decode_forward(r, *last, read, [&](int q, int level) {
            const int k = scan[q];
            block[k] = static_cast<Kiv16s>(limit_reconstructed(inverse_mpeg_inter(level, rec.weights[k], qp), v));
            sum += block[k];
        });
        if (ok && (sum & 1) == 0) block[63] = static_cast<Kiv16s>(block[63] ^ 1);
    } else {
        ok = decode_forward(r, *last, read, [&](int q, int level) {
            block[scan[q]] = static_cast<Kiv16s>(limit_reconstructed(inverse_h263(level, qp), v));
        });
    }
    return finish(ok, r, pp, offset);
}

}  // namespace kivvc::mpeg4

using namespace kivvc;
using namespace kivvc::mpeg4;

extern "C" {

KIV_API KivStatus kiviDecodeDCIntra_MPEG4_1u16s(Kiv8u** ppBitStream, int* pBitOffset, Kiv16s* pDC, int blockType) {
    if (!ppBitStream || !pBitOffset || !pDC) return kivStsNullPointer;
    if (const KivStatus s = check_cursor(ppBitStream, pBitOffset)) return s;
    ByteReader r{*ppBitStream, *pBitOffset};
    const DcSizeCode* codes = blockType == 0 ? kDcSizeLuma : kDcSizeChroma;
    // Size prefix (at most 12 bits), value (at most 12) and marker: 25 bits.
    const std::uint32_t w = r.peek(25);
    int size = 0;
    while (size < 13 && (w >> (25 - codes[size].length)) != codes[size].bits) ++size;
    if (size == 13) return kBad;
    int used = codes[size].length;
    int dc = 0;
    if (size > 0) {
        const int v = static_cast<int>((w >> (25 - used - size)) & ((1u << size) - 1));
        dc = (v >> (size - 1)) ? v : v - (1 << size) + 1;
        used += size;
    }
    *pDC = static_cast<Kiv16s>(dc);
    if (size > 8) {
        if (!((w >> (24 - used)) & 1)) return kBad;
        ++used;
    }
    r.skip(used);
    r.store(ppBitStream, pBitOffset);
    return kivStsOk;
}

KIV_API KivStatus kiviDecodeCoeffsIntra_MPEG4_1u16s(Kiv8u** ppBitStream, int* pBitOffset, Kiv16s* pCoeffs,
                                                    int* pIndxLastNonZero, int rvlcFlag, int noDCFlag, int scan) {
    if (!ppBitStream || !pBitOffset || !pCoeffs || !pIndxLastNonZero) return kivStsNullPointer;
    if (const KivStatus s = check_cursor(ppBitStream, pBitOffset)) return s;
    prepare(pCoeffs, pIndxLastNonZero, noDCFlag != 0);
    const std::int32_t* order = (scan >= 0 && scan <= 2) ? scan_for(scan) : kRowMajorOrder;
    if (rvlcFlag)
        return ownpmp4_DecodeRVLCF_MPEG4_1u16s(ppBitStream, pBitOffset, pCoeffs, pIndxLastNonZero, tableB23_Forw_Intra,
                                               order);
    return ownpmp4_DecodeCoeffsIntra_MPEG4_1u16s(ppBitStream, pBitOffset, pCoeffs, pIndxLastNonZero, order);
}

KIV_API KivStatus kiviDecodeCoeffsInter_MPEG4_1u16s(Kiv8u** ppBitStream, int* pBitOffset, Kiv16s* pCoeffs,
                                                    int* pIndxLastNonZero, int rvlcFlag, int scan) {
    if (!ppBitStream || !pBitOffset || !pCoeffs || !pIndxLastNonZero) return kivStsNullPointer;
    if (const KivStatus s = check_cursor(ppBitStream, pBitOffset)) return s;
    prepare(pCoeffs, pIndxLastNonZero, false);
    const std::int32_t* order = (scan == 0 || scan == 1) ? scan_for(scan) : kRowMajorOrder;
    if (rvlcFlag)
        return ownpmp4_DecodeRVLCF_MPEG4_1u16s(ppBitStream, pBitOffset, pCoeffs, pIndxLastNonZero, tableB23_Forw_Inter,
                                               order);
    return ownpmp4_DecodeCoeffsInter_MPEG4_1u16s(ppBitStream, pBitOffset, pCoeffs, pIndxLastNonZero, order);
}

KIV_API KivStatus kiviDecodeCoeffsIntraRVLCBack_MPEG4_1u16s(Kiv8u** ppBitStream, int* pBitOffset, Kiv16s* pCoeffs,
                                                            int* pIndxLastNonZero, int noDCFlag) {
    if (!ppBitStream || !pBitOffset || !pCoeffs || !pIndxLastNonZero) return kivStsNullPointer;
    if (const KivStatus s = check_cursor(ppBitStream, pBitOffset)) return s;
    prepare(pCoeffs, pIndxLastNonZero, noDCFlag != 0);
    return ownpmp4_DecodeRVLCB_MPEG4_1u16s(ppBitStream, pBitOffset, pCoeffs, pIndxLastNonZero, tableB23_Back_Intra);
}

KIV_API KivStatus kiviDecodeCoeffsInterRVLCBack_MPEG4_1u16s(Kiv8u** ppBitStream, int* pBitOffset, Kiv16s* pCoeffs,
                                                            int* pIndxLastNonZero) {
    if (!ppBitStream || !pBitOffset || !pCoeffs || !pIndxLastNonZero) return kivStsNullPointer;
    if (const KivStatus s = check_cursor(ppBitStream, pBitOffset)) return s;
    prepare(pCoeffs, pIndxLastNonZero, false);
    return ownpmp4_DecodeRVLCB_MPEG4_1u16s(ppBitStream, pBitOffset, pCoeffs, pIndxLastNonZero, tableB23_Back_Inter);
}

KIV_API KivStatus kiviReconstructCoeffsInter_MPEG4_1u16s(Kiv8u** ppBitStream, int* pBitOffset, Kiv16s* pCoeffs,
                                                         int* pIndxLastNonZero, int rvlcFlag, int scan,
                                                         const KiviQuantInvInterSpec_MPEG4* pQuantInvInterSpec,
                                                         int QP) {
    if (!ppBitStream || !pBitOffset || !pCoeffs || !pIndxLastNonZero) return kivStsNullPointer;
    if (const KivStatus s = check_cursor(ppBitStream, pBitOffset)) return s;
    const std::int32_t* order = scan_for(scan == 1 ? 1 : 0);
    if (rvlcFlag) {
        prepare(pCoeffs, pIndxLastNonZero, false);
        const KivStatus s = ownpmp4_DecodeRVLCF_MPEG4_1u16s(ppBitStream, pBitOffset, pCoeffs, pIndxLastNonZero,
                                                            tableB23_Forw_Inter, order);
        if (s != kivStsOk) return s;
        return kiviQuantInvInter_MPEG4_16s_C1I(pCoeffs, 63, pQuantInvInterSpec, QP);
    }
    if (!pQuantInvInterSpec) return kivStsNullPointer;
    if (const KivStatus s = check_inverse_inter(pQuantInvInterSpec, QP)) return s;
    prepare(pCoeffs, pIndxLastNonZero, false);
    const auto* rec = aligned_record<const QuantInvRecord>(const_cast<KiviQuantInvInterSpec_MPEG4*>(pQuantInvInterSpec));
    return ownpmp4_ReconstructCoeffsInter_MPEG4_1u16s(ppBitStream, pBitOffset, pCoeffs, pIndxLastNonZero, order, *rec,
                                                      QP);
}

}  // extern "C"
