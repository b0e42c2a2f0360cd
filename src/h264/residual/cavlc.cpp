// H.264 CAVLC residual decoding and the Exp-Golomb reader.
//
// One block decoder serves every block kind; what differs between the
// exported functions is a policy: the stream reader (a 64-bit window for the
// hot 4x4 16-bit decoder, the plain word cursor otherwise), how an escape
// levelCode is reduced, what a run_before larger than zerosLeft means, and
// where the cursor is left after an error.
//
// Bounds for corrupt streams (every one returns kivStsBadVlcCode):
//   - a coeff_token value with TotalCoeff above the block's coefficient count,
//     TrailingOnes above 3 or above TotalCoeff;
//   - level_prefix above kMaxLevelPrefix (26);
//   - total_zeros + TotalCoeff above the block's coefficient count;
//   - run_before above zerosLeft (except in the 4x4 16-bit decoder, which
//     keeps zerosLeft as it was).
// So every position stays inside the block and its scan table, and a block
// consumes a bounded number of bits.
#include <cstring>

#include "core/bitstream.h"
#include "h264/residual/cavlc_tables.h"
#include "kivvc.h"

namespace kivvc::h264::cavlc {
namespace {

using u32 = std::uint32_t;
using u64 = std::uint64_t;
using s16 = std::int16_t;
using s32 = std::int32_t;

constexpr s32 kInvalidValue = 0xF0F1;
constexpr s32 kLinkFlag = 0x80;

// A 64-bit window over two stream words: `pos` bits of it are consumed. The
// next word is loaded only when a read needs it, so nothing beyond the word
// after the one holding the last bit consumed is touched.
struct Window64 {
    const u32* word;
    u64 bits;
    int pos;

    static Window64 load(const u32* p, s32 offset) {
        return {p, (u64{p[0]} << 32) | p[1], 31 - static_cast<int>(offset & 31)};
    }
    void store(u32** pp, s32* po) const {
        const int words = pos >> 5;
        *pp = const_cast<u32*>(word + words);
        *po = 31 - (pos & 31);
    }
    // The next n bits (1..32).
    u32 peek(int n) {
        if (pos + n > 64) {
            ++word;
            bits = (bits << 32) | word[1];
            pos -= 32;
        }
        return static_cast<u32>((bits << pos) >> (64 - n));
    }
    void skip(int n) { pos += n; }
    u32 read(int n) {
        const u32 v = peek(n);
        skip(n);
        return v;
    }
    void give_back(int k) { pos -= k; }
    int leading_zeros() {
        const u32 v = peek(32);
        return v ? __builtin_clz(v) : 32;
    }
};

// The plain word cursor with the same interface.
struct WordCursor {
    bits::WordReader r;

    static WordCursor load(const u32* p, s32 offset) { return {bits::WordReader::load(p, offset)}; }
    void store(u32** pp, s32* po) const { r.store(pp, po); }
    u32 peek(int n) const { return r.peek(n); }
    void skip(int n) { r.skip(n); }
    u32 read(int n) { return r.read(n); }
    void give_back(int k) { r.give_back(k); }
    int leading_zeros() const { return r.leading_zeros(); }
};

// Walks a decoding table; the reader is left after the bits of the lookups
// (before the give-back).
template <class R>
s32 lookup(R& r, const s32* table) {
    s32 e = table[1 + r.peek(table[0])];
    r.skip(table[0]);
    while (e & kLinkFlag) {
        const s32* sub = table + (e >> 8);
        e = sub[1 + r.peek(sub[0])];
        r.skip(sub[0]);
    }
    return e;
}

enum class Outcome { Ok, Invalid, InvalidRestore, NullTable };

// Reads one code; Invalid leaves the reader after the lookups.
template <class R>
Outcome read_code(R& r, const s32* table, s32& value) {
    if (!table) return Outcome::NullTable;
    const s32 e = lookup(r, table);
    value = e >> 8;
    if (value == kInvalidValue) return Outcome::Invalid;
    r.give_back(e & 0xFF);
    return Outcome::Ok;
}

struct Policy16 {  // the 4x4 16-bit decoder
    static constexpr bool kFullEscape = true;      // level from the whole levelCode
    static constexpr bool kKeepOnLongRun = true;   // run_before > zerosLeft leaves zerosLeft
    static constexpr bool kRestoreAlways = true;   // every error leaves the cursor as at the call
};
struct PolicyOther {
    static constexpr bool kFullEscape = false;
    static constexpr bool kKeepOnLongRun = false;
    static constexpr bool kRestoreAlways = false;
};

// A block's layout: `count` coded coefficients, `size` elements written, and
// the raster index of each scan position from (16 - count) or 0 on.
struct Shape {
    int count;
    int size;
    const s32* positions;  // indexed from `first`
    int first;
};

// Decodes everything after coeff_token. Levels go into `out` (size elements,
// zeroed first). Returns Ok or the kind of error.
template <class Policy, class R, class Coeff>
Outcome decode_levels(R& r, int total, int trailing, const Shape& shape, const s32* const* totalZeros,
                      const s32* const* runBefore, Coeff* out) {
    if (total > shape.count || trailing > 3 || trailing > total) return Outcome::InvalidRestore;
    s32 levels[16];
    if (trailing) {
        const auto& signs = h264_table_trailing_ones[r.peek(3)];
        for (int i = 0; i < trailing; ++i) levels[i] = signs[i];
        r.skip(trailing);
    }
    std::memset(out, 0, sizeof(Coeff) * shape.size);

    int suffix = (total > 10 && trailing < 3) ? 1 : 0;
    for (int i = trailing; i < total; ++i) {
        const int prefix = r.leading_zeros();
        if (prefix > kMaxLevelPrefix) return Outcome::Invalid;
        r.skip(prefix + 1);
        const bool first = i == trailing;
        const int bump = (first && trailing < 3) ? 1 : 0;
        s32 level;
        if (prefix <= 15) {
            const int n = h264_table_bits_to_get[suffix][prefix];
            const s32 u = n ? static_cast<s32>(r.read(n)) : prefix;
            const s32 magnitude = h264_table_add_offset[suffix][prefix] + (u >> 1) + bump;
            level = (u & 1) ? -magnitude : magnitude;
        } else {
            const s32 s = static_cast<s32>(r.read(prefix - 3));
            s32 code = sadd[suffix] + (15 << suffix) + s + h264_table_shifted_one[prefix - 3] - 4096 + 2 * bump;
            if constexpr (!Policy::kFullEscape) code &= 0xFFFF;
            level = (code & 1) ? -((code + 1) >> 1) : (code + 2) >> 1;
        }
        levels[i] = level;
        const s32 magnitude = (level < 0 ? -level : level) & 0xFFFF;  // compared as 16 bits
        if (first) {
            suffix = magnitude > 3 ? 2 : (suffix > 1 ? suffix : 1);
        } else if (suffix < 6 && magnitude > vlc_inc[suffix]) {
            ++suffix;
        }
    }

    s32 zeros = 0;
    if (total < shape.count) {
        const Outcome o = read_code(r, totalZeros[total], zeros);
        if (o != Outcome::Ok) return o;
        if (zeros < 0 || zeros + total > shape.count) return Outcome::Invalid;
    }

    const s32* positions = shape.positions + shape.first;
    for (int i = 0; i < total; ++i) {
        const int left = total - i;
        out[positions[zeros + left - 1]] = static_cast<Coeff>(levels[i]);
        if (left > 1 && zeros > 0) {
            s32 run;
            const Outcome o = read_code(r, runBefore[zeros], run);
            if (o != Outcome::Ok) return o;
            if (run < 0 || run > zeros) {
                if constexpr (!Policy::kKeepOnLongRun) return Outcome::Invalid;
            } else {
                zeros -= run;
            }
        }
    }
    return Outcome::Ok;
}

KivStatus status_of(Outcome o) { return o == Outcome::NullTable ? kivStsNullPointer : kivStsBadVlcCode; }

// The shared tail of every decoder: decode, then write back the cursor and
// advance the coefficient pointer as the policy says.
template <class Policy, class R, class Coeff>
KivStatus finish(R& r, const R& start, Kiv32u** ppBitStream, Kiv32s* pOffset, Kiv16s* pNumCoeff, int total,
                 int trailing, const Shape& shape, const s32* const* totalZeros, const s32* const* runBefore,
                 Coeff** ppCoeff) {
    *pNumCoeff = static_cast<Kiv16s>(total);
    if (total == 0) {
        r.store(ppBitStream, pOffset);
        return kivStsOk;
    }
    const Outcome o = decode_levels<Policy>(r, total, trailing, shape, totalZeros, runBefore, *ppCoeff);
    if (o == Outcome::Ok) {
        r.store(ppBitStream, pOffset);
        *ppCoeff += shape.size;
        return kivStsOk;
    }
    if (!Policy::kRestoreAlways) (o == Outcome::InvalidRestore ? start : r).store(ppBitStream, pOffset);
    return status_of(o);
}

constexpr s32 kIdentity[8] = {0, 1, 2, 3, 4, 5, 6, 7};

template <class Policy, class R, class Coeff>
KivStatus decode4x4(Kiv32u** ppBitStream, Kiv32s* pOffset, Kiv16s* pNumCoeff, Coeff** ppCoeff, Kiv32s nC,
                    Kiv16s maxCoeff, const Kiv32s** ppTblCoeffToken, const Kiv32s** ppTblTotalZeros,
                    const Kiv32s** ppTblRunBefore, const Kiv32s* pScan) {
    R r = R::load(*ppBitStream, *pOffset);
    const R start = r;
    int total, trailing;
    if (nC >= 8) {
        const u32 v = r.read(6);
        total = v == 3 ? 0 : static_cast<int>(v >> 2) + 1;
        trailing = v == 3 ? 0 : static_cast<int>(v & 3);
    } else {
        s32 value;
        const Outcome o = read_code(r, ppTblCoeffToken[nC < 4 ? nC >> 1 : 2], value);
        if (o != Outcome::Ok) {
            if (o == Outcome::NullTable && !Policy::kRestoreAlways) r.store(ppBitStream, pOffset);
            return status_of(o);
        }
        trailing = value & 0xFF;
        total = (value >> 8) & 0xFF;
    }
    const Shape shape{maxCoeff, 16, pScan, 16 - maxCoeff};
    return finish<Policy>(r, start, ppBitStream, pOffset, pNumCoeff, total, trailing, shape, ppTblTotalZeros,
                          ppTblRunBefore, ppCoeff);
}

// Chroma DC blocks (4 or 8 coefficients) through the word cursor.
template <class Coeff>
KivStatus decode_chroma_dc(Kiv32u** ppBitStream, Kiv32s* pOffset, Kiv16s* pNumCoeff, Coeff** ppCoeff,
                           const Kiv32s* pTblCoeffToken, const Kiv32s** ppTblTotalZeros,
                           const Kiv32s** ppTblRunBefore, const Shape& shape) {
    WordCursor r = WordCursor::load(*ppBitStream, *pOffset);
    const WordCursor start = r;
    s32 value;
    const Outcome o = read_code(r, pTblCoeffToken, value);
    if (o != Outcome::Ok) return kivStsBadVlcCode;  // the cursor stays as it was
    return finish<PolicyOther>(r, start, ppBitStream, pOffset, pNumCoeff, (value >> 8) & 0xFF, value & 0xFF, shape,
                               ppTblTotalZeros, ppTblRunBefore, ppCoeff);
}

constexpr Shape kChroma420{4, 4, kIdentity, 0};
constexpr Shape kChroma422{8, 8, ChromaDC422RasterScan, 0};

// Both 4:2:2 decoders: all seven pointers, then the current word and write pointers.
template <class Coeff>
KivStatus decode_chroma422(Kiv32u** ppBitStream, Kiv32s* pOffset, Kiv16s* pNumCoeff, Coeff** ppPosCoefbuf,
                           const Kiv32s* pTblCoeffToken, const Kiv32s** ppTblTotalZeros,
                           const Kiv32s** ppTblRunBefore) {
    if (!ppBitStream || !pOffset || !pNumCoeff || !ppPosCoefbuf || !pTblCoeffToken || !ppTblTotalZeros ||
        !ppTblRunBefore)
        return kivStsNullPointer;
    if (!*ppBitStream || !*ppPosCoefbuf) return kivStsNullPointer;
    return decode_chroma_dc(ppBitStream, pOffset, pNumCoeff, ppPosCoefbuf, pTblCoeffToken, ppTblTotalZeros,
                            ppTblRunBefore, kChroma422);
}

}  // namespace
}  // namespace kivvc::h264::cavlc

using namespace kivvc::h264::cavlc;

extern "C" {

KIV_API KivStatus kiviDecodeCAVLCCoeffs_H264_1u16s(Kiv32u** ppBitStream, Kiv32s* pOffset, Kiv16s* pNumCoeff,
                                                  Kiv16s** ppPosCoefbuf, Kiv32s nC, Kiv16s maxCoeff,
                                                  const Kiv32s** ppTblCoeffToken, const Kiv32s** ppTblTotalZeros,
                                                  const Kiv32s** ppTblRunBefore, const Kiv32s* pScanMatrix) {
    if (!ppBitStream || !pOffset || !ppPosCoefbuf || !pNumCoeff || !ppTblCoeffToken || !ppTblTotalZeros)
        return kivStsNullPointer;
    if (!ppTblRunBefore) return kivStsNullPointer;
    if (!pScanMatrix) return kivStsNullPointer;
    if (!*ppBitStream || !*ppPosCoefbuf) return kivStsNullPointer;
    if (maxCoeff != 16 && maxCoeff != 15) return kivStsOutOfRange;
    if (nC < 0) return kivStsOutOfRange;
    return decode4x4<Policy16, Window64>(ppBitStream, pOffset, pNumCoeff, ppPosCoefbuf, nC, maxCoeff, ppTblCoeffToken,
                                        ppTblTotalZeros, ppTblRunBefore, pScanMatrix);
}

KIV_API KivStatus kiviDecodeCAVLCCoeffs_H264_1u32s(Kiv32u** ppBitStream, Kiv32s* pOffset, Kiv16s* pNumCoeff,
                                                  Kiv32s** ppPosCoefbuf, Kiv32s nC, Kiv16s maxCoeff,
                                                  const Kiv32s** ppTblCoeffToken, const Kiv32s** ppTblTotalZeros,
                                                  const Kiv32s** ppTblRunBefore, const Kiv32s* pScanMatrix) {
    if (!ppBitStream || !pOffset || !ppPosCoefbuf || !pNumCoeff || !ppTblCoeffToken || !ppTblTotalZeros ||
        !ppTblRunBefore || !pScanMatrix)
        return kivStsNullPointer;
    if (!*ppBitStream || !*ppPosCoefbuf) return kivStsNullPointer;
    if (maxCoeff != 16 && maxCoeff != 15) return kivStsOutOfRange;
    if (nC < 0) return kivStsOutOfRange;
    return decode4x4<PolicyOther, WordCursor>(ppBitStream, pOffset, pNumCoeff, ppPosCoefbuf, nC, maxCoeff,
                                             ppTblCoeffToken, ppTblTotalZeros, ppTblRunBefore, pScanMatrix);
}

KIV_API KivStatus kiviDecodeCAVLCChromaDcCoeffs_H264_1u16s(Kiv32u** ppBitStream, Kiv32s* pOffset, Kiv16s* pNumCoeff,
                                                          Kiv16s** ppPosCoefbuf, const Kiv32s* pTblCoeffToken,
                                                          const Kiv32s** ppTblTotalZeros,
                                                          const Kiv32s** ppTblRunBefore) {
    if (!ppBitStream || !pOffset || !pNumCoeff) return kivStsNullPointer;
    if (!*ppBitStream) return kivStsNullPointer;
    auto r = kivvc::bits::WordReader::load(*ppBitStream, *pOffset);
    const Kiv32u head = r.peek(5);
    if (head & 0x10) {  // TotalCoeff 1, TrailingOnes 1: sign, then total_zeros
        if (!ppPosCoefbuf || !*ppPosCoefbuf) return kivStsNullPointer;
        const auto& entry = ChromaDCRunTable[head & 7];
        Kiv16s* out = *ppPosCoefbuf;
        std::memset(out, 0, 4 * sizeof(Kiv16s));
        out[entry[0]] = (head & 8) ? -1 : 1;
        *pNumCoeff = 1;
        *ppPosCoefbuf += 4;
        r.skip(entry[1]);
        r.store(ppBitStream, pOffset);
        return kivStsOk;
    }
    if (head >> 3 == 1) {  // TotalCoeff 0
        *pNumCoeff = 0;
        r.skip(2);
        r.store(ppBitStream, pOffset);
        return kivStsOk;
    }
    if (!ppPosCoefbuf || !pTblCoeffToken || !ppTblTotalZeros || !ppTblRunBefore || !*ppPosCoefbuf)
        return kivStsNullPointer;
    return decode_chroma_dc(ppBitStream, pOffset, pNumCoeff, ppPosCoefbuf, pTblCoeffToken, ppTblTotalZeros,
                            ppTblRunBefore, kChroma420);
}

KIV_API KivStatus kiviDecodeCAVLCChromaDcCoeffs_H264_1u32s(Kiv32u** ppBitStream, Kiv32s* pOffset, Kiv16s* pNumCoeff,
                                                          Kiv32s** ppPosCoefbuf, const Kiv32s* pTblCoeffToken,
                                                          const Kiv32s** ppTblTotalZeros,
                                                          const Kiv32s** ppTblRunBefore) {
    if (!ppBitStream || !pOffset || !pNumCoeff || !ppPosCoefbuf || !pTblCoeffToken || !ppTblTotalZeros ||
        !ppTblRunBefore || !*ppPosCoefbuf)
        return kivStsNullPointer;
    if (!*ppBitStream) return kivStsNullPointer;
    return decode_chroma_dc(ppBitStream, pOffset, pNumCoeff, ppPosCoefbuf, pTblCoeffToken, ppTblTotalZeros,
                            ppTblRunBefore, kChroma420);
}

KIV_API KivStatus kiviDecodeCAVLCChroma422DcCoeffs_H264_1u16s(Kiv32u** ppBitStream, Kiv32s* pOffset,
                                                             Kiv16s* pNumCoeff, Kiv16s** ppPosCoefbuf,
                                                             const Kiv32s* pTblCoeffToken,
                                                             const Kiv32s** ppTblTotalZeros,
                                                             const Kiv32s** ppTblRunBefore) {
    return decode_chroma422(ppBitStream, pOffset, pNumCoeff, ppPosCoefbuf, pTblCoeffToken, ppTblTotalZeros,
                            ppTblRunBefore);
}

KIV_API KivStatus kiviDecodeCAVLCChroma422DcCoeffs_H264_1u32s(Kiv32u** ppBitStream, Kiv32s* pOffset,
                                                             Kiv16s* pNumCoeff, Kiv32s** ppPosCoefbuf,
                                                             const Kiv32s* pTblCoeffToken,
                                                             const Kiv32s** ppTblTotalZeros,
                                                             const Kiv32s** ppTblRunBefore) {
    return decode_chroma422(ppBitStream, pOffset, pNumCoeff, ppPosCoefbuf, pTblCoeffToken, ppTblTotalZeros,
                            ppTblRunBefore);
}

KIV_API KivStatus kiviDecodeExpGolombOne_H264_1u16s(Kiv32u** ppBitStream, Kiv32s* pOffset, Kiv16s* pDst,
                                                   Kiv8u isSigned) {
    if (!ppBitStream || !pOffset || !pDst || !*ppBitStream) return kivStsNullPointer;
    if (*pOffset < 0 || *pOffset > 31) return kivStsBadArgument;
    auto r = kivvc::bits::WordReader::load(*ppBitStream, *pOffset);
    const int zeros = r.leading_zeros();
    if (zeros == 32) return kivStsBadVlcCode;  // no terminating 1 within 32 bits
    r.skip(zeros);
    const Kiv32u code = r.read(zeros + 1) - 1;  // codeNum
    Kiv32u value = code;
    if (isSigned) value = (code & 1) ? (code >> 1) + 1 : 0u - (code >> 1);
    *pDst = static_cast<Kiv16s>(static_cast<Kiv16u>(value));
    r.store(ppBitStream, pOffset);
    return kivStsOk;
}

}  // extern "C"
