// Exported DV functions: the lookup-table builder, the segment decoders, the
// inverse quantisers and the 2-4-8 to 4x4 reduction.
#include "dv/dv_kernels.h"
#include "dv/dv_segment.h"
#include "kivvc.h"
#include "prepost/prepost_kernels.h"

using namespace kivvc::dv;

namespace {

// Index bits beyond which a level could not be allocated (its size would not
// fit the allocator's 32-bit length).
constexpr int kMaxIndexBits = 24;

// Fills one level from its source: every index whose top L bits equal a
// code receives (length + extra, run, amplitude << 6); later codes win.
void fill_level(Kiv32u* level, const Kiv32s* source, int extra) {
    const int n = source[0];
    for (int i = 0; i < (1 << n); ++i) level[i] = 0xFF;
    const Kiv32s* p = source + 3;
    for (int length = 1; length <= n; ++length) {
        const int count = *p++;
        for (int j = 0; j < count; ++j, p += 3) {
            const Kiv32u code = static_cast<Kiv32u>(p[0]) & ((1u << length) - 1);
            const Kiv32u amplitude = (static_cast<Kiv32u>(p[2]) & 0x3FF) << 6;
            const Kiv32u entry = amplitude << 16 | (static_cast<Kiv32u>(p[1]) & 0xFF) << 8 | Kiv32u(length + extra);
            const Kiv32u first = code << (n - length);
            for (Kiv32u i = 0; i < (1u << (n - length)); ++i) level[first + i] = entry;
        }
    }
}

KivStatus decode_checked(Form form, const Kiv8u* stream, const Kiv32u* zigzag, const Kiv32u* table, Kiv16s* blocks,
                         Kiv32u* params) {
    if (!stream || !blocks || !params || !zigzag || !table) return kivStsNullPointer;
    return decode_segment(form, stream, zigzag, table, blocks, params) == 0 ? kivStsOk : kivStsBadBitstreamCode;
}

KivStatus decode_one_pass_checked(Form form, const Kiv8u* stream, const Kiv32u* zigzag, const Kiv32u* table,
                                  Kiv16s* blocks, Kiv32u* params, Kiv32s limit) {
    if (!stream || !blocks || !params || !zigzag || !table) return kivStsNullPointer;
    decode_segment_one_pass(form, stream, zigzag, table, blocks, params, limit);
    return kivStsOk;
}

// Truncating division by 4 of a sum of four samples.
inline Kiv16s quarter_toward_zero(int sum) { return static_cast<Kiv16s>((sum < 0 ? sum + 3 : sum) >> 2); }

}  // namespace

extern "C" {

KIV_API KivStatus kiviInitAllocHuffmanTable_DV_32u(const Kiv32s* pSrcTable1, const Kiv32s* pSrcTable2,
                                                   Kiv32u** ppHuffTable) {
    if (!pSrcTable1 || !pSrcTable2 || !ppHuffTable) return kivStsNullPointer;
    *ppHuffTable = nullptr;
    const int n1 = pSrcTable1[0], n2 = pSrcTable2[0];
    if (n1 < 0 || n1 > kMaxIndexBits || n2 < 0 || n2 > kMaxIndexBits) return kivStsNoMemory;
    const Kiv32s bytes = 4 * ((1 << n1) + (1 << n2));
    auto* table = reinterpret_cast<Kiv32u*>(kivsMalloc_8s(bytes));
    if (!table) return kivStsNoMemory;
    fill_level(table, pSrcTable1, 0);
    fill_level(table + (1 << n1), pSrcTable2, 4);
    *ppHuffTable = table;
    return kivStsOk;
}

KIV_API KivStatus kiviFreeHuffmanTable_DV_32u(Kiv32u* pHuffTable) {
    if (!pHuffTable) return kivStsNullPointer;
    kiviFree(pHuffTable);
    return kivStsOk;
}

KIV_API KivStatus kiviHuffmanDecodeSegment_DV_8u16s(const Kiv8u* pStream, const Kiv32u* pZigzagTables,
                                                    const Kiv32u* pHuffTable, Kiv16s* pBlock, Kiv32u* pBlockParam) {
    return decode_checked(Form::Sd, pStream, pZigzagTables, pHuffTable, pBlock, pBlockParam);
}

KIV_API KivStatus kiviHuffmanDecodeSegment_DV100_8u16s(const Kiv8u* pStream, const Kiv32u* pZigzagTables,
                                                       const Kiv32u* pHuffTable, Kiv16s* pBlock,
                                                       Kiv32u* pBlockParam) {
    return decode_checked(Form::Dv100, pStream, pZigzagTables, pHuffTable, pBlock, pBlockParam);
}

KIV_API KivStatus kiviHuffmanDecodeSegmentOnePass_DV_8u16s(const Kiv8u* pStream, const Kiv32u* pZigzagTables,
                                                           const Kiv32u* pHuffTable, Kiv16s* pBlock,
                                                           Kiv32u* pBlockParam, Kiv32s nCoeffLimit) {
    return decode_one_pass_checked(Form::Sd, pStream, pZigzagTables, pHuffTable, pBlock, pBlockParam, nCoeffLimit);
}

KIV_API KivStatus kiviHuffmanDecodeSegmentOnePass_DV100_8u16s(const Kiv8u* pStream, const Kiv32u* pZigzagTables,
                                                              const Kiv32u* pHuffTable, Kiv16s* pBlock,
                                                              Kiv32u* pBlockParam, Kiv32s nCoeffLimit) {
    return decode_one_pass_checked(Form::Dv100, pStream, pZigzagTables, pHuffTable, pBlock, pBlockParam,
                                   nCoeffLimit);
}

KIV_API KivStatus kiviQuantInv_DV_16s_C1I(Kiv16s* pSrcDst, const Kiv16s* pDequantTable) {
    if (!pSrcDst || !pDequantTable) return kivStsNullPointer;
    table().quant_inv(pSrcDst, pDequantTable);
    return kivStsOk;
}

KIV_API KivStatus kiviQuantWeightBlockInv_DV_16s_C1I(Kiv16s* pSrcDst, const Kiv16s* pWeightTable1,
                                                     const Kiv16s* pWeightTable2) {
    if (!pSrcDst || !pWeightTable1 || !pWeightTable2) return kivStsNullPointer;
    table().quant_weight(pSrcDst, pWeightTable1, pWeightTable2);
    return kivStsOk;
}

KIV_API KivStatus kiviQuantWeightBlockInv_DV100_16s_C1I(Kiv16s* pSrcDst, const Kiv16s* pWeightTable,
                                                        Kiv16s quantStep) {
    if (!pSrcDst || !pWeightTable) return kivStsNullPointer;
    table().quant_weight_dv100(pSrcDst, pWeightTable, quantStep);
    return kivStsOk;
}

KIV_API KivStatus kiviDCT8x4x2To4x4Inv_DV_16s_C1I(Kiv16s* pSrcDst) {
    if (!pSrcDst) return kivStsNullPointer;
    kivvc::prepost::table().dct2x4x8_inv(pSrcDst);
    Kiv16s out[16];
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) {
            const Kiv16s* p = pSrcDst + 16 * r + 2 * c;
            out[4 * r + c] = quarter_toward_zero(p[0] + p[1] + p[8] + p[9]);
        }
    for (int i = 0; i < 16; ++i) pSrcDst[i] = out[i];
    return kivStsOk;
}

}  // extern "C"
