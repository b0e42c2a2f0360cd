// Exported variable-length-code table builders and the two generic decoders.
#include "kivvc.h"
#include "mpeg2/vlc_table.h"

using kivvc::bits::WordReader;
namespace vlc = kivvc::vlc;

extern "C" {

KIV_API KivStatus kiviHuffmanTableInitAlloc_32s(const Kiv32s* pSrcTable, Kiv32s** ppDstSpec) {
    return vlc::build(pSrcTable, vlc::Kind::SingleValue, ppDstSpec);
}

KIV_API KivStatus kiviHuffmanRunLevelTableInitAlloc_32s(const Kiv32s* pSrcTable, Kiv32s** ppDstSpec) {
    return vlc::build(pSrcTable, vlc::Kind::RunLevel, ppDstSpec);
}

KIV_API KivStatus kiviHuffmanTableFree_32s(Kiv32s* pDecodeTable) {
    if (!pDecodeTable) return kivStsNullPointer;
    kivsFree(pDecodeTable);
    return kivStsOk;
}

KIV_API KivStatus kiviDecodeHuffmanOne_1u32s(Kiv32u** ppBitStream, Kiv32s* pOffset, Kiv32s* pDst,
                                             const Kiv32s* pDecodeTable) {
    if (!ppBitStream || !pOffset || !pDst || !pDecodeTable || !*ppBitStream) return kivStsNullPointer;
    auto r = WordReader::load(*ppBitStream, *pOffset);
    const Kiv32s e = vlc::lookup(r, pDecodeTable);
    const Kiv32s value = vlc::entry_value(e);
    if (value == vlc::kInvalidValue) {
        // The cursor stays after the looked-up bits, without the give-back.
        r.store(ppBitStream, pOffset);
        *pDst = vlc::kInvalidValue;
        return kivStsBadVlcCode;
    }
    r.give_back(vlc::entry_give_back(e));
    r.store(ppBitStream, pOffset);
    *pDst = value;
    return kivStsOk;
}

KIV_API KivStatus kiviDecodeHuffmanPair_1u16s(Kiv32u** ppBitStream, Kiv32s* pOffset, const Kiv32s* pDecodeTable,
                                              Kiv8u* pRun, Kiv16s* pLevel) {
    if (!ppBitStream || !pOffset || !pDecodeTable || !pRun || !pLevel || !*ppBitStream) return kivStsNullPointer;
    auto r = WordReader::load(*ppBitStream, *pOffset);
    const Kiv32s e = vlc::lookup(r, pDecodeTable);
    if (vlc::entry_value(e) == vlc::kInvalidValue) return kivStsBadVlcCode;  // cursor untouched
    r.give_back(vlc::entry_give_back(e));
    r.store(ppBitStream, pOffset);
    *pRun = static_cast<Kiv8u>(vlc::entry_run(e));
    *pLevel = static_cast<Kiv16s>(vlc::entry_level(e));
    return kivStsOk;
}

}  // extern "C"
