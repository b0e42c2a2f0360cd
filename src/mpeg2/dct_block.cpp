// Whole-block decoders: variable-length codes, inverse quantisation with
// MPEG-1 oddification or MPEG-2 mismatch control, block size.
#include <cstring>

#include "kivvc.h"
#include "mpeg2/dequant.h"
#include "mpeg2/mpeg2_kernels.h"
#include "mpeg2/vlc_table.h"

namespace kivvc::mpeg2 {

const s16 Qmatrix[64] = {16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16,
                         16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16,
                         16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16};

namespace {

using bits::WordReader;
using u32 = std::uint32_t;

enum class Std { Mpeg1, Mpeg2 };

constexpr int kEndOfBlock = 254;
constexpr int kEscape = 255;

// Products are formed in 32 bits and wrap like the registers they model.
constexpr s32 product32(s32 a, s32 b, s32 c) {
    return static_cast<s32>(static_cast<u32>(a) * static_cast<u32>(b) * static_cast<u32>(c));
}
constexpr int saturate12(s32 c) { return c < -2048 ? -2048 : (c > 2047 ? 2047 : c); }

template <Std S, bool Intra>
int dequantise(int level, int w, s32 q) {
    const s32 l = Intra ? 2 * level : 2 * level + sign_of(level);
    if constexpr (S == Std::Mpeg1) {
        s32 c = product32(l, w, q) / 16;
        if (!(c & 1)) c -= sign_of(c);  // oddification; 0 stays 0
        return saturate12(c);
    } else {
        return saturate12(product32(l, w, q) / 32);
    }
}

struct RunLevel {
    int run, level;
};

// Run and level of an escape, after the escape code.
template <Std S>
RunLevel read_escape(WordReader& r) {
    if constexpr (S == Std::Mpeg1) {
        const int run = static_cast<int>(r.read(6));
        const int b = static_cast<int>(r.read(8));
        if (b & 127) return {run, static_cast<std::int8_t>(b)};
        const int m = static_cast<int>(r.read(8));
        return {run, b == 0 ? m : m - 256};
    } else {
        const u32 v = r.read(18);
        const int level = static_cast<int>(v & 0x7FF) - static_cast<int>(v & 0x800);
        return {static_cast<int>(v >> 12), level};
    }
}

// One code of a run/level table, escapes expanded; run 254 is end of block.
template <Std S>
RunLevel read_coefficient(WordReader& r, const s32* table) {
    const s32 e = vlc::lookup(r, table);
    r.give_back(vlc::entry_give_back(e));
    const int run = vlc::entry_run(e);
    if (run == kEscape) return read_escape<S>(r);
    return {run, vlc::entry_level(e)};
}

struct Args {
    Kiv32u** ppBitStream;
    Kiv32s* pOffset;
    const s32* dc_table;  // intra: DC sizes; non-intra: first-coefficient table
    const s32* coeff_table;
    const s32* scan;
    s32 q;
    const s16* matrix;
    s16* predictor;
    s32 dc_shift;
    s16* block;
    s32* block_size;
};

template <Std S, bool Intra>
KivStatus decode(const Args& a) {
    std::memset(a.block, 0, 64 * sizeof(s16));
    auto r = WordReader::load(*a.ppBitStream, *a.pOffset);
    auto fail = [&] {
        r.store(a.ppBitStream, a.pOffset);
        return kivStsBadVlcCode;
    };
    auto put = [&](int i, int level) {
        const int p = a.scan[i] & 63;
        a.block[p] = static_cast<s16>(dequantise<S, Intra>(level, a.matrix[p], a.q));
    };

    int i;
    if constexpr (Intra) {
        const s32 e = vlc::lookup(r, a.dc_table);
        const s32 size = vlc::entry_value(e);
        if (size == vlc::kInvalidValue || size < 0 || size > 31) return fail();  // no give-back, as the single decoder
        r.give_back(vlc::entry_give_back(e));
        s32 d = 0;
        if (size > 0) {
            const u32 v = r.read(size);
            d = (v >> (size - 1)) & 1 ? static_cast<s32>(v) : static_cast<s32>(v + 1 - (u32{1} << size));
        }
        s16 t;
        if constexpr (S == Std::Mpeg1) {
            t = static_cast<s16>(static_cast<u32>(*a.predictor) + 8 * static_cast<u32>(d));
            a.block[0] = t;
        } else {
            t = static_cast<s16>(static_cast<u32>(*a.predictor) + static_cast<u32>(d));
            a.block[0] = static_cast<s16>(static_cast<u32>(t) << (a.dc_shift & 31));
        }
        *a.predictor = t;
        i = 0;
    } else {
        RunLevel c;
        if (r.peek(1)) {
            c = {0, r.read(2) & 1 ? -1 : 1};
        } else {
            c = read_coefficient<S>(r, a.dc_table);
        }
        if (c.run > 63) return fail();
        i = c.run;
        put(i, c.level);
    }

    for (;;) {
        const RunLevel c = read_coefficient<S>(r, a.coeff_table);
        if (c.run == kEndOfBlock) break;
        i += c.run + 1;
        if (i > 63) return fail();
        put(i, c.level);
    }

    if constexpr (S == Std::Mpeg2) mismatch_control(a.block);
    r.store(a.ppBitStream, a.pOffset);
    *a.block_size = (S == Std::Mpeg2 && !Intra && i == 0) ? 1 : i;
    return kivStsOk;
}

}  // namespace
}  // namespace kivvc::mpeg2

using namespace kivvc::mpeg2;

extern "C" {

KIV_API KivStatus kiviReconstructDCTBlock_MPEG1_32s(Kiv32u** ppBitStream, Kiv32s* pOffset, const Kiv32s* pDCSizeTable,
                                                    const Kiv32s* pACTable, Kiv32s* pScanMatrix, Kiv32s QP,
                                                    Kiv16s* pQPMatrix, Kiv16s* pDstBlock, Kiv32s* pDstSize) {
    if (!ppBitStream || !pOffset || !pDCSizeTable || !pACTable || !pDstBlock || !pQPMatrix || !*ppBitStream ||
        !pDstSize || !pScanMatrix)
        return kivStsNullPointer;
    return decode<Std::Mpeg1, false>(
        {ppBitStream, pOffset, pDCSizeTable, pACTable, pScanMatrix, QP, pQPMatrix, nullptr, 0, pDstBlock, pDstSize});
}

KIV_API KivStatus kiviReconstructDCTBlockIntra_MPEG1_32s(Kiv32u** ppBitStream, Kiv32s* pOffset,
                                                         const Kiv32s* pDCSizeTable, const Kiv32s* pACTable,
                                                         Kiv32s* pScanMatrix, Kiv32s QP, Kiv16s* pQPMatrix,
                                                         Kiv16s* pDCPred, Kiv16s* pDstBlock, Kiv32s* pDstSize) {
    if (!ppBitStream || !pOffset || !pDCSizeTable || !*ppBitStream || !pACTable || !pQPMatrix || !pDCPred ||
        !pDstSize || !pDstBlock || !pScanMatrix)
        return kivStsNullPointer;
    return decode<Std::Mpeg1, true>(
        {ppBitStream, pOffset, pDCSizeTable, pACTable, pScanMatrix, QP, pQPMatrix, pDCPred, 0, pDstBlock, pDstSize});
}

KIV_API KivStatus kiviReconstructDCTBlock_MPEG2_32s(Kiv32u** ppBitStream, Kiv32s* pOffset, const Kiv32s* pDCSizeTable,
                                                    const Kiv32s* pACTable, Kiv32s* pScanMatrix, Kiv32s QP,
                                                    Kiv16s* pQPMatrix, Kiv16s* pDstBlock, Kiv32s* pDstSize) {
    if (!ppBitStream || !pOffset || !pDCSizeTable || !pACTable || !pDstBlock || !pDstSize || !*ppBitStream ||
        !pScanMatrix)
        return kivStsNullPointer;
    return decode<Std::Mpeg2, false>({ppBitStream, pOffset, pDCSizeTable, pACTable, pScanMatrix, QP,
                                      pQPMatrix ? pQPMatrix : Qmatrix, nullptr, 0, pDstBlock, pDstSize});
}

KIV_API KivStatus kiviReconstructDCTBlockIntra_MPEG2_32s(Kiv32u** ppBitStream, Kiv32s* pOffset,
                                                         const Kiv32s* pDCSizeTable, const Kiv32s* pACTable,
                                                         Kiv32s* pScanMatrix, Kiv32s QP, Kiv16s* pQPMatrix,
                                                         Kiv16s* pDCPred, Kiv32s shiftDCVal, Kiv16s* pDstBlock,
                                                         Kiv32s* pDstSize) {
    if (!ppBitStream || !pOffset || !pDCSizeTable || !*ppBitStream || !pACTable || !pQPMatrix || !pDCPred ||
        !pDstSize || !pDstBlock || !pScanMatrix)
        return kivStsNullPointer;
    return decode<Std::Mpeg2, true>({ppBitStream, pOffset, pDCSizeTable, pACTable, pScanMatrix, QP, pQPMatrix, pDCPred,
                                     shiftDCVal, pDstBlock, pDstSize});
}

}  // extern "C"
