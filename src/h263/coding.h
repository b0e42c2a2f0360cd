// Pieces shared by the H.261 and H.263 coefficient coders. Include from
// plain (non-SIMD) files only: it pulls in the byte cursor.
#pragma once
#include <cstdint>

#include "core/bitstream.h"
#include "kivvc.h"

namespace kivvc::h263 {
namespace {

// Scan position k to element k.
constexpr std::int32_t kRowMajor[64] = {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15,
                                        16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31,
                                        32, 33, 34, 35, 36, 37, 38, 39, 40, 41, 42, 43, 44, 45, 46, 47,
                                        48, 49, 50, 51, 52, 53, 54, 55, 56, 57, 58, 59, 60, 61, 62, 63};

inline void clear_block(std::int16_t* block) {
    for (int i = 0; i < 64; ++i) block[i] = 0;
}

// INTRADC: 8 bits, 0 and 128 forbidden, 255 standing for the level 128.
inline bool intradc_valid(std::uint32_t v) { return v != 0 && v != 128; }
inline int intradc_level(std::uint32_t v) { return v == 255 ? 128 : static_cast<int>(v); }
inline std::uint32_t intradc_code(int level) { return level == 128 ? 255u : static_cast<std::uint32_t>(level) & 255u; }

// The odd-offset inverse quantiser: sign(L) (2 QP |L| + q), q = QP for odd
// QP, QP - 1 for even; before any limit (|L| <= 1023 keeps it within 64538).
inline int dequant_odd(int level, int qp) {
    if (level == 0) return 0;
    const int m = 2 * qp * (level < 0 ? -level : level) + ((qp & 1) ? qp : qp - 1);
    return level < 0 ? -m : m;
}
inline int limit_2048(int v) { return v < -2048 ? -2048 : (v > 2047 ? 2047 : v); }

// An 8-bit two's complement field.
inline int signed8(std::uint32_t v) { return v >= 128 ? static_cast<int>(v) - 256 : static_cast<int>(v); }

// The argument checks every cursor user shares: null pointers, then offset.
inline bool cursor_offset_valid(const int* offset) { return *offset >= 0 && *offset <= 7; }

}  // namespace
}  // namespace kivvc::h263
