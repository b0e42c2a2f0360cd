// TCOEFF codes of H.261: the rows as printed and the decoding and encoding
// tables built from them at compile time. Constant data only: any file may
// include this header.
#pragma once
#include <cstdint>

namespace kivvc::h263 {

// One TCOEFF row: the code without its trailing sign bit, spaces ignored.
struct H261Row {
    const char* bits;
    std::uint8_t run, level;
};
inline constexpr int kH261Rows = 63;
inline constexpr H261Row kH261TcoeffRows[kH261Rows] = {
    {"11", 0, 1},
    {"011", 1, 1},
    {"0100", 0, 2},
    {"0101", 2, 1},
    {"0010 1", 0, 3},
    {"0011 1", 3, 1},
    {"0011 0", 4, 1},
    {"0001 10", 1, 2},
    {"0001 11", 5, 1},
    {"0001 01", 6, 1},
    {"0001 00", 7, 1},
    {"0000 110", 0, 4},
    {"0000 100", 2, 2},
    {"0000 111", 8, 1},
    {"0000 101", 9, 1},
    {"0010 0110", 0, 5},
    {"0010 0001", 0, 6},
    {"0010 0101", 1, 3},
    {"0010 0100", 3, 2},
    {"0010 0111", 10, 1},
    {"0010 0011", 11, 1},
    {"0010 0010", 12, 1},
    {"0010 0000", 13, 1},
    {"0000 0010 10", 0, 7},
    {"0000 0011 00", 1, 4},
    {"0000 0010 11", 2, 3},
    {"0000 0011 11", 4, 2},
    {"0000 0010 01", 5, 2},
    {"0000 0011 10", 14, 1},
    {"0000 0011 01", 15, 1},
    {"0000 0010 00", 16, 1},
    {"0000 0001 1101", 0, 8},
    {"0000 0001 1000", 0, 9},
    {"0000 0001 0011", 0, 10},
    {"0000 0001 0000", 0, 11},
    {"0000 0001 1011", 1, 5},
    {"0000 0001 0100", 2, 4},
    {"0000 0001 1100", 3, 3},
    {"0000 0001 0010", 4, 3},
    {"0000 0001 1110", 6, 2},
    {"0000 0001 0101", 7, 2},
    {"0000 0001 0001", 8, 2},
    {"0000 0001 1111", 17, 1},
    {"0000 0001 1010", 18, 1},
    {"0000 0001 1001", 19, 1},
    {"0000 0001 0111", 20, 1},
    {"0000 0001 0110", 21, 1},
    {"0000 0000 1101 0", 0, 12},
    {"0000 0000 1100 1", 0, 13},
    {"0000 0000 1100 0", 0, 14},
    {"0000 0000 1011 1", 0, 15},
    {"0000 0000 1011 0", 1, 6},
    {"0000 0000 1010 1", 1, 7},
    {"0000 0000 1010 0", 2, 5},
    {"0000 0000 1001 1", 3, 4},
    {"0000 0000 1001 0", 5, 3},
    {"0000 0000 1000 1", 9, 2},
    {"0000 0000 1000 0", 10, 2},
    {"0000 0000 1111 1", 22, 1},
    {"0000 0000 1111 0", 23, 1},
    {"0000 0000 1110 1", 24, 1},
    {"0000 0000 1110 0", 25, 1},
    {"0000 0000 1101 1", 26, 1},
};
inline constexpr const char* kH261EndOfBlockBits = "10";
inline constexpr const char* kH261EscapeBits = "0000 01";

// A decoded entry: run, |level| and the code length including the sign bit;
// length 0 marks a value that starts no code. End of block has level 0, run
// kH261EndOfBlockRun and length 2.
struct H261Code {
    std::uint8_t run, level, length;
};
inline constexpr std::uint8_t kH261EndOfBlockRun = 127;

// Lookup by the next 14 bits v (escape, 256 <= v < 512, excluded):
//   v >= 512:        h261_coefTab0[v >> 5]  (codes of up to 9 bits)
//   128 <= v < 256:  h261_coefTab1[v >> 3]  (11 bits, entries 16..31 used)
//   32 <= v < 128:   h261_coefTab2[v]       (13 and 14 bits, entries 32..127)
//   v < 32:          no code.
struct H261DecodeTables {
    H261Code h261_coefTab0[512];
    H261Code h261_coefTab1[32];
    H261Code h261_coefTab2[128];
};
extern const H261DecodeTables kH261Decode;

// Encoding: code with a zero sign bit appended and its length (0: no code).
// codeTab_lev12[level - 1][run] for levels 1 and 2; codeTab_lev345[level -
// 3][run] for levels 3..15 (the table's longest run above level 2 is 5).
struct H261Vlc {
    std::uint16_t code;
    std::uint8_t length;
};
inline constexpr int kH261MaxRunLevel1 = 26;
struct H261EncodeTables {
    H261Vlc codeTab_lev12[2][kH261MaxRunLevel1 + 1];
    H261Vlc codeTab_lev345[13][6];
    H261Vlc find(int run, int level) const {
        if (level <= 2) return run <= kH261MaxRunLevel1 ? codeTab_lev12[level - 1][run] : H261Vlc{0, 0};
        return level <= 15 && run <= 5 ? codeTab_lev345[level - 3][run] : H261Vlc{0, 0};
    }
};
extern const H261EncodeTables kH261Encode;

}  // namespace kivvc::h263
