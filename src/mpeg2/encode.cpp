// Encoder side: forward quantisers, the run/level encode table and the two
// block writers.
#include <climits>
#include <cstdlib>
#include <cstring>

#include "core/bitstream.h"
#include "kivvc.h"
#include "mpeg2/mpeg2_kernels.h"

namespace kivvc::mpeg2 {

// Reciprocals of the default intra weighting matrix, raster order.
const float DefaultIntraQuantMatrix[64] = {
    1.0f / 8,  1.0f / 16, 1.0f / 19, 1.0f / 22, 1.0f / 26, 1.0f / 27, 1.0f / 29, 1.0f / 34, 1.0f / 16, 1.0f / 16,
    1.0f / 22, 1.0f / 24, 1.0f / 27, 1.0f / 29, 1.0f / 34, 1.0f / 37, 1.0f / 19, 1.0f / 22, 1.0f / 26, 1.0f / 27,
    1.0f / 29, 1.0f / 34, 1.0f / 34, 1.0f / 38, 1.0f / 22, 1.0f / 22, 1.0f / 26, 1.0f / 27, 1.0f / 29, 1.0f / 34,
    1.0f / 37, 1.0f / 40, 1.0f / 22, 1.0f / 26, 1.0f / 27, 1.0f / 29, 1.0f / 32, 1.0f / 35, 1.0f / 40, 1.0f / 48,
    1.0f / 26, 1.0f / 27, 1.0f / 29, 1.0f / 32, 1.0f / 35, 1.0f / 40, 1.0f / 48, 1.0f / 58, 1.0f / 26, 1.0f / 27,
    1.0f / 29, 1.0f / 34, 1.0f / 38, 1.0f / 46, 1.0f / 56, 1.0f / 69, 1.0f / 27, 1.0f / 29, 1.0f / 35, 1.0f / 38,
    1.0f / 46, 1.0f / 56, 1.0f / 69, 1.0f / 83,
};

namespace {

using bits::WordWriter;
using u32 = std::uint32_t;

// ---- quantisers ---------------------------------------------------------------

// Truncation toward zero limited to -2047..2047 (NaN gives 0).
int truncate_limited(float v) {
    if (v != v) return 0;
    if (v >= 2047.0f) return 2047;
    if (v <= -2047.0f) return -2047;
    return static_cast<int>(v);
}

// Every product is rounded to single precision on its own (no fused
// multiply-add: this file is built for the baseline instruction set).
template <bool Intra>
KivStatus quantise(s16* block, s32 q, const float* matrix, s32* count) {
    if (!block || !count) return kivStsNullPointer;
    if (q == 0) return kivStsDivByZero;
    const float r = 1.0f / static_cast<float>(q);
    int n = 0;
    for (int i = Intra ? 1 : 0; i < 64; ++i) {
        float v;
        if (matrix) {
            const float scaled = static_cast<float>(block[i] * 16) * r;
            v = scaled * matrix[i];
        } else {
            v = static_cast<float>(block[i]) * r;
        }
        const int c = truncate_limited(v);
        block[i] = static_cast<s16>(c);
        n += c != 0;
    }
    *count = n;
    return kivStsOk;
}

// ---- run/level encode table -----------------------------------------------------

constexpr int kEndOfBlock = 254;
constexpr int kEscape = 255;
constexpr int kMaxRun = 253;

// Walks (code, length, run, level) entries of a source table.
template <class F>
void for_each_entry(const s32* source, F f) {
    std::int64_t pos = 2 + std::int64_t{source[1]};
    for (int length = 1;; ++length) {
        const s32 count = source[pos++];
        if (count < 0) return;
        for (s32 i = 0; i < count; ++i, pos += 3)
            f(static_cast<u32>(source[pos]), length, source[pos + 1], source[pos + 2]);
    }
}

bool codes_a_pair(int run, int level) {
    return run >= 0 && run <= kMaxRun && level != 0 && level >= -32768 && level <= 32767;
}

u32 short_code(u32 code, int length) { return ((code << 4) | static_cast<u32>(length & 15)) & 0x3FF; }

KivStatus create_encode_table(const s32* source, s32** out) {
    if (!source || !out) return kivStsNullPointer;
    std::int64_t entries = 0;
    u32 escape = 0, eob = 0;
    int max_run = 0;
    int per_run[kMaxRun + 1] = {}, largest[kMaxRun + 1] = {};
    for_each_entry(source, [&](u32 code, int length, s32 run, s32 level) {
        ++entries;
        if (run == kEscape) {
            escape = short_code(code, length);
        } else if (run == kEndOfBlock) {
            eob = short_code(code, length);
        } else if (codes_a_pair(run, level)) {
            ++per_run[run];
            const int a = std::abs(level);
            if (a > largest[run]) largest[run] = a;
            if (run > max_run) max_run = run;
        }
    });
    const std::int64_t words = entries + 2 * max_run + 3;
    if (words * 4 > INT_MAX) return kivStsNoMemory;
    auto* t = reinterpret_cast<s32*>(kivsMalloc_8u(static_cast<Kiv32s>(words * 4)));
    if (!t) return kivStsNoMemory;
    std::memset(t, 0, static_cast<std::size_t>(words) * 4);
    t[0] = static_cast<s32>(escape | (eob << 10) | (static_cast<u32>(max_run) << 20));
    // Centre words; a section holds e(r) / 2 levels on each side, and the
    // centre never claims more (only a source without both signs of every
    // level would make it).
    std::int64_t centre = per_run[0] / 2 + max_run + 2;
    for (int r = 0; r <= max_run; ++r) {
        if (r > 0) centre += per_run[r - 1] / 2 + per_run[r] / 2 + 1;
        t[1 + r] = static_cast<s32>(centre * 4);
        const int half = per_run[r] / 2;
        t[centre] = largest[r] < half ? largest[r] : half;
    }
    for_each_entry(source, [&](u32 code, int length, s32 run, s32 level) {
        if (!codes_a_pair(run, level) || run > max_run) return;
        const s32* c = t + t[1 + run] / 4;
        if (std::abs(level) > *c) return;
        const_cast<s32*>(c)[level] = static_cast<s32>((code << 16) | static_cast<u32>(length));
    });
    *out = t;
    return kivStsOk;
}

// ---- block writers -------------------------------------------------------------

// Lengths outside 1..32 write nothing.
void put(WordWriter& w, u32 code, s32 length) {
    if (length >= 1 && length <= 32) w.put(code, length);
}

void put_pair(WordWriter& w, const s32* table, int run, int level) {
    const int max_run = static_cast<int>(static_cast<u32>(table[0]) >> 20);
    if (run <= max_run) {
        const s32* centre = table + table[1 + run] / 4;
        if (std::abs(level) <= *centre) {
            const u32 e = static_cast<u32>(centre[level]);
            if (e & 0xFFFF) {
                w.put(e >> 16, static_cast<int>(e & 0xFFFF) > 32 ? 32 : static_cast<int>(e & 0xFFFF));
                return;
            }
        }
    }
    w.put(1, 6);
    w.put(static_cast<u32>(run), 6);
    w.put(static_cast<u32>(level) & 0xFFF, 12);
}

// Pairs from scan index `from` on, the zero count starting at `zeros`, until
// `remaining` nonzero coefficients are written (or the block ends).
void put_pairs(WordWriter& w, const s16* block, const s32* table, const s32* scan, int from, int zeros, int remaining) {
    for (int i = from; i < 64 && remaining > 0; ++i) {
        const int v = block[scan[i] & 63];
        if (v == 0) {
            ++zeros;
            continue;
        }
        put_pair(w, table, zeros, v);
        zeros = 0;
        --remaining;
    }
}

}  // namespace
}  // namespace kivvc::mpeg2

using namespace kivvc::mpeg2;

extern "C" {

KIV_API KivStatus kiviQuantIntra_MPEG2_16s_C1I(Kiv16s* pSrcDst, Kiv32s QP, const float* pQPMatrix, Kiv32s* pCount) {
    return quantise<true>(pSrcDst, QP, pQPMatrix ? pQPMatrix : DefaultIntraQuantMatrix, pCount);
}

KIV_API KivStatus kiviQuant_MPEG2_16s_C1I(Kiv16s* pSrcDst, Kiv32s QP, const float* pQPMatrix, Kiv32s* pCount) {
    return quantise<false>(pSrcDst, QP, pQPMatrix, pCount);
}

KIV_API KivStatus kiviCreateRLEncodeTable(const Kiv32s* pSrcTable, Kiv32s** ppDstSpec) {
    return create_encode_table(pSrcTable, ppDstSpec);
}

KIV_API KivStatus kiviPutIntraBlock(Kiv32u** ppBitStream, Kiv32s* pOffset, const Kiv16s* pSrcBlock, Kiv32s* pDCPred,
                                    const Kiv32s* pDCSizeTable, const Kiv32s* pACTable, const Kiv32s* pScanMatrix,
                                    Kiv32s EOBLen, Kiv32s EOBCode, Kiv32s count) {
    if (!ppBitStream || !pOffset || !pSrcBlock || !*ppBitStream || !pDCPred || !pDCSizeTable || !pACTable ||
        !pScanMatrix)
        return kivStsNullPointer;
    auto w = kivvc::bits::WordWriter::load(*ppBitStream, *pOffset);
    const s32 d = static_cast<s32>(static_cast<std::uint32_t>(pSrcBlock[0]) - static_cast<std::uint32_t>(*pDCPred));
    *pDCPred = pSrcBlock[0];
    int size = 0;
    for (s32 a = d < 0 ? -d : d; a; a >>= 1) ++size;
    put(w, static_cast<std::uint32_t>(pDCSizeTable[2 * size]), pDCSizeTable[2 * size + 1]);
    if (size > 0) w.put(static_cast<std::uint32_t>(d > 0 ? d : d + (1 << size) - 1), size);
    put_pairs(w, pSrcBlock, pACTable, pScanMatrix, 1, 0, count);
    put(w, static_cast<std::uint32_t>(EOBCode), EOBLen);
    w.store(ppBitStream, pOffset);
    return kivStsOk;
}

KIV_API KivStatus kiviPutNonIntraBlock(Kiv32u** ppBitStream, Kiv32s* pOffset, const Kiv16s* pSrcBlock,
                                       const Kiv32s* pACTable, const Kiv32s* pScanMatrix, Kiv32s EOBLen, Kiv32s EOBCode,
                                       Kiv32s count) {
    if (!ppBitStream || !pOffset || !pSrcBlock || !pACTable || !pScanMatrix || !*ppBitStream) return kivStsNullPointer;
    auto w = kivvc::bits::WordWriter::load(*ppBitStream, *pOffset);
    const int first = pSrcBlock[0];
    if (first == 1 || first == -1) {
        w.put(first == 1 ? 2u : 3u, 2);
    } else if (first != 0) {
        put_pair(w, pACTable, 0, first);
    }
    put_pairs(w, pSrcBlock, pACTable, pScanMatrix, 1, first == 0 ? 1 : 0, count - (first != 0));
    put(w, static_cast<std::uint32_t>(EOBCode), EOBLen);
    w.store(ppBitStream, pOffset);
    return kivStsOk;
}

}  // extern "C"
