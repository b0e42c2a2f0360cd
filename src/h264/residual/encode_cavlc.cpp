// Exported CAVLC symbol analysis: a quantised block reduced to the symbols a
// CAVLC writer codes (TrailingOnes and their signs, TotalCoeff, total_zeros,
// the remaining levels and the runs before each level).
#include <array>

#include "h264/residual/fwd_kernels.h"
#include "kivvc.h"

using namespace kivvc::h264;

namespace {

struct Symbols {
    Kiv8u* trailingOnes;
    Kiv8u* signs;
    Kiv8u* total;
    Kiv8u* totalZeros;
    Kiv8u* runs;
};

// Walks the levels given by level(i) for i = n - 1 down to 0 (highest
// frequency first) and stores the symbols.
template <class Level, class Get>
void analyse(int n, Get level, Level* levelsOut, const Symbols& out) {
    int run = 0, count = 0, trailing = 0, zeros = 0;
    unsigned signs = 0;
    bool collecting = true;
    for (int i = n - 1; i >= 0; --i) {
        const Level c = level(i);
        if (c == 0) {
            ++run;
            continue;
        }
        if (collecting && (c == 1 || c == -1)) {
            ++trailing;
            signs = (signs << 1) | (c < 0 ? 1u : 0u);
            if (trailing == 3) collecting = false;
        } else {
            levelsOut[count - trailing] = c;
            collecting = false;
        }
        if (count > 0) {
            out.runs[count - 1] = Kiv8u(run);
            zeros += run;
        }
        ++count;
        run = 0;
    }
    *out.trailingOnes = Kiv8u(trailing);
    *out.signs = Kiv8u(signs);
    *out.total = Kiv8u(count);
    *out.totalZeros = Kiv8u(zeros + run);
}

template <class Level>
KivStatus block_call(const Level* src, Kiv8u first, const Kiv32s* scan, Kiv8u lastPos, Kiv8u* trailingOnes,
                     Kiv8u* signs, Kiv8u* total, Kiv8u* totalZeros, Level* levels, Kiv8u* runs) {
    if (!src || !scan || !trailingOnes || !signs || !total || !totalZeros || !levels || !runs) return kivStsNullPointer;
    if (lastPos > 15 || first > lastPos) return kivStsOutOfRange;
    // Scan entries index a 4x4 block; anything else is taken modulo 16.
    analyse(lastPos - first + 1, [&](int i) { return src[scan[first + i] & 15]; }, levels,
            Symbols{trailingOnes, signs, total, totalZeros, runs});
    return kivStsOk;
}

// Raster positions of the 4:2:2 chroma DC block in coding order, from the
// steps of scan_chroma2x4.
constexpr auto kChroma2x4Order = [] {
    std::array<int, 8> order{};
    int pos = 0;
    for (int i = 0; i < 8; ++i) order[std::size_t(i)] = pos += scan_chroma2x4[i];
    return order;
}();

// Chroma DC blocks of N values (4 or 8), in coding order.
template <int N, class Level>
KivStatus chroma_call(const Level* src, Kiv8u* trailingOnes, Kiv8u* signs, Kiv8u* total, Kiv8u* totalZeros,
                      Level* levels, Kiv8u* runs) {
    if (!src || !trailingOnes || !signs || !total || !totalZeros || !levels || !runs) return kivStsNullPointer;
    analyse(N, [&](int i) { return src[N == 4 ? i : kChroma2x4Order[std::size_t(i)]]; }, levels,
            Symbols{trailingOnes, signs, total, totalZeros, runs});
    return kivStsOk;
}

}  // namespace

extern "C" {

KIV_API KivStatus kiviEncodeCoeffsCAVLC_H264_16s(const Kiv16s* pSrc, Kiv8u AC, const Kiv32s* pScanMatrix, Kiv8u Count,
                                                Kiv8u* pTrailingOnes, Kiv8u* pTrailingOneSigns, Kiv8u* pNumOutCoeffs,
                                                Kiv8u* pTotalZeros, Kiv16s* pLevels, Kiv8u* pRuns) {
    return block_call(pSrc, AC, pScanMatrix, Count, pTrailingOnes, pTrailingOneSigns, pNumOutCoeffs, pTotalZeros,
                      pLevels, pRuns);
}

KIV_API KivStatus kiviEncodeCoeffsCAVLC_H264_32s(const Kiv32s* pSrc, Kiv8u AC, const Kiv32s* pScanMatrix, Kiv8u Count,
                                                Kiv8u* pTrailingOnes, Kiv8u* pTrailingOneSigns, Kiv8u* pNumOutCoeffs,
                                                Kiv8u* pTotalZeros, Kiv32s* pLevels, Kiv8u* pRuns) {
    return block_call(pSrc, AC, pScanMatrix, Count, pTrailingOnes, pTrailingOneSigns, pNumOutCoeffs, pTotalZeros,
                      pLevels, pRuns);
}

KIV_API KivStatus kiviEncodeChromaDcCoeffsCAVLC_H264_16s(const Kiv16s* pSrc, Kiv8u* pTrailingOnes,
                                                        Kiv8u* pTrailingOneSigns, Kiv8u* pNumOutCoeffs,
                                                        Kiv8u* pTotalZeros, Kiv16s* pLevels, Kiv8u* pRuns) {
    return chroma_call<4>(pSrc, pTrailingOnes, pTrailingOneSigns, pNumOutCoeffs, pTotalZeros, pLevels, pRuns);
}

KIV_API KivStatus kiviEncodeCoeffsCAVLCChromaDC2x2_H264_32s(const Kiv32s* pSrc, Kiv8u* pTrailingOnes,
                                                           Kiv8u* pTrailingOneSigns, Kiv8u* pNumOutCoeffs,
                                                           Kiv8u* pTotalZeros, Kiv32s* pLevels, Kiv8u* pRuns) {
    return chroma_call<4>(pSrc, pTrailingOnes, pTrailingOneSigns, pNumOutCoeffs, pTotalZeros, pLevels, pRuns);
}

KIV_API KivStatus kiviEncodeCoeffsCAVLCChromaDC2x4_H264_16s(const Kiv16s* pSrc, Kiv8u* pTrailingOnes,
                                                           Kiv8u* pTrailingOneSigns, Kiv8u* pNumOutCoeffs,
                                                           Kiv8u* pTotalZeros, Kiv16s* pLevels, Kiv8u* pRuns) {
    return chroma_call<8>(pSrc, pTrailingOnes, pTrailingOneSigns, pNumOutCoeffs, pTotalZeros, pLevels, pRuns);
}

KIV_API KivStatus kiviEncodeCoeffsCAVLCChromaDC2x4_H264_32s(const Kiv32s* pSrc, Kiv8u* pTrailingOnes,
                                                           Kiv8u* pTrailingOneSigns, Kiv8u* pNumOutCoeffs,
                                                           Kiv8u* pTotalZeros, Kiv32s* pLevels, Kiv8u* pRuns) {
    return chroma_call<8>(pSrc, pTrailingOnes, pTrailingOneSigns, pNumOutCoeffs, pTotalZeros, pLevels, pRuns);
}

}  // extern "C"
