// Code tables of the MPEG-4 texture coding (ISO/IEC 14496-2 Annex B) and the
// lookup structures built from them at compile time. The inter TCOEF table
// is also the H.263 one. Include from plain (non-SIMD) files only.
#pragma once
#include <cstdint>

namespace kivvc::mpeg4 {

// One row of a run/level/last code table, bits as printed ("0101 01"; the
// sign bit that follows every code is not part of it).
struct TcoefRow {
    std::uint8_t last, run, level;
    const char* bits;
};
struct RunLevel {
    std::uint8_t last, run, level;
};
// One reversible code with its meaning in intra and in inter blocks.
struct RvlcRow {
    const char* bits;
    RunLevel intra, inter;
};

inline constexpr int kTcoefRows = 102;
inline constexpr int kRvlcRows = 169;
extern const TcoefRow kIntraTcoefRows[kTcoefRows];
extern const TcoefRow kInterTcoefRows[kTcoefRows];
extern const RvlcRow kRvlcRowsAll[kRvlcRows];
inline constexpr const char* kTcoefEscapeBits = "0000 011";

// A decoded code. length 0: no code; level kEscape: the escape code;
// length kLink: first-level entry of a two-level table whose `run` names the
// second-level table.
struct Code {
    std::uint8_t last, run, level, length;
};
inline constexpr std::uint8_t kEscape = 0xFF;
inline constexpr std::uint8_t kLink = 0xFF;

// TCOEF codes indexed by the next 12 bits (all codes are 2..12 bits long).
struct TcoefTable {
    Code code[4096];
};
extern const TcoefTable kIntraTcoef;
extern const TcoefTable kInterTcoef;

// RVLC codes (3..15 bits): the next 8 bits, then 7 more for longer codes.
// The backward tables hold the codes read from their end: bit 7 of the first
// index is the last bit of the code.
inline constexpr int kRvlcSubtables = 16;
struct RvlcTable {
    Code first[256];
    Code second[kRvlcSubtables][128];
};
extern const RvlcTable tableB23_Forw_Intra;
extern const RvlcTable tableB23_Forw_Inter;
extern const RvlcTable tableB23_Back_Intra;
extern const RvlcTable tableB23_Back_Inter;

// Encoder side: the code of (last, run, level) or length 0.
struct Vlc {
    std::uint16_t bits;
    std::uint8_t length;
};
struct EncodeTable {
    Vlc code[2][64][32];  // [last][run][level], level < 32
    Vlc find(int last, int run, int level) const {
        return (run < 64 && level < 32) ? code[last][run][level] : Vlc{0, 0};
    }
};
extern const EncodeTable kIntraTcoefCodes;
extern const EncodeTable kInterTcoefCodes;
extern const EncodeTable kIntraRvlcCodes;
extern const EncodeTable kInterRvlcCodes;

// LMAX (largest level of a run) and RMAX + 1 (one more than the largest run
// of a level), per last; 0 outside the tables.
struct RunLevelLimits {
    const std::uint8_t* lmax[2];
    int runs[2];  // entries of lmax
    const std::uint8_t* rmax_plus1[2];
    int levels[2];  // entries of rmax_plus1, indexed by level - 1
    int lmax_of(int last, int run) const { return run < runs[last] ? lmax[last][run] : 0; }
    int rmax_plus1_of(int last, int level) const {
        return level >= 1 && level <= levels[last] ? rmax_plus1[last][level - 1] : 0;
    }
};
extern const RunLevelLimits kIntraLimits;
extern const RunLevelLimits kInterLimits;

// Scan position k to element k: the order of blocks coded without reordering.
extern const std::int32_t kRowMajorOrder[64];

// dct_dc_size: luminance '011' 0, '11' 1, '10' 2, '010' 3, '001' 4, then one
// more leading zero per size up to ten zeros and a one for 12; chrominance
// '11' 0, '10' 1, '01' 2, then one more zero per size up to eleven zeros and a
// one for 12.
struct DcSizeCode {
    std::uint8_t bits, length;
};
extern const DcSizeCode kDcSizeLuma[13];
extern const DcSizeCode kDcSizeChroma[13];

}  // namespace kivvc::mpeg4
