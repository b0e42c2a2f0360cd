// Reading the run/level/last codes of the texture coding through the byte
// cursor: shared by the MPEG-4 decoders and usable by the H.263 family (whose
// TCOEF table is the inter one). Include from plain (non-SIMD) files only.
#pragma once
#include <cstdint>

#include "core/bitstream.h"
#include "mpeg4/coeff_tables.h"

namespace kivvc::mpeg4 {
namespace {

// A decoded coefficient: last flag, run of zeros before it, signed level.
struct Coefficient {
    int last, run, level;
};

// Looks up the TCOEF code at the cursor (12 bits of look-ahead). Returns the
// entry, length 0 when the bits are no code.
inline Code peek_tcoef(const bits::ByteReader& r, const TcoefTable& t) {
    const std::uint32_t v = r.peek(12);
    return v < 8 ? Code{0, 0, 0, 0} : t.code[v];
}

// Consumes a regular TCOEF code and its sign bit.
inline Coefficient take_tcoef(bits::ByteReader& r, Code c) {
    r.skip(c.length);
    const int negative = static_cast<int>(r.read(1));
    return {c.last, c.run, negative ? -int{c.level} : int{c.level}};
}

// The bits of stream positions p - n .. p - 1 (n <= 16) relative to the bit 7
// of base[0], first bit in the most significant place; reads only the bytes
// that hold them (p - n may be negative).
inline std::uint32_t bits_before(const std::uint8_t* base, long p, int n) {
    const long lo = (p - n) >> 3;
    const long hi = (p - 1) >> 3;
    std::uint32_t acc = 0;
    for (long i = lo; i <= hi; ++i) acc = (acc << 8) | base[i];
    const int tail = static_cast<int>((hi + 1) * 8 - p);
    return (acc >> tail) & ((1u << n) - 1);
}

// Bit reversal of an n-bit value.
inline std::uint32_t reverse_bits(std::uint32_t v, int n) {
    std::uint32_t r = 0;
    for (int i = 0; i < n; ++i) r |= ((v >> i) & 1u) << (n - 1 - i);
    return r;
}

}  // namespace
}  // namespace kivvc::mpeg4
