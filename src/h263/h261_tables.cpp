// The H.261 TCOEFF rows and the tables built from them.
#include "h263/code_bits.h"
#include "h263/h261_tables.h"

namespace kivvc::h263 {

namespace {

// Every 14-bit value that starts with `b` gets `c`.
constexpr void fill(H261DecodeTables& t, Bits b, H261Code c) {
    const std::uint32_t first = b.value << (14 - b.length);
    for (std::uint32_t v = first; v < first + (1u << (14 - b.length)); ++v) {
        if (v >= 512)
            t.h261_coefTab0[v >> 5] = c;
        else if (v >= 256)
            continue;  // escape
        else if (v >= 128)
            t.h261_coefTab1[v >> 3] = c;
        else if (v >= 32)
            t.h261_coefTab2[v] = c;
    }
}

constexpr H261DecodeTables make_decode() {
    H261DecodeTables t{};
    fill(t, parse(kH261EndOfBlockBits), {kH261EndOfBlockRun, 0, 2});
    for (const H261Row& r : kH261TcoeffRows) {
        const Bits b = parse(r.bits);
        fill(t, b, {r.run, r.level, static_cast<std::uint8_t>(b.length + 1)});
    }
    return t;
}

constexpr H261EncodeTables make_encode() {
    H261EncodeTables t{};
    for (const H261Row& r : kH261TcoeffRows) {
        const Bits b = parse(r.bits);
        const H261Vlc v{static_cast<std::uint16_t>(b.value << 1), static_cast<std::uint8_t>(b.length + 1)};
        if (r.level <= 2)
            t.codeTab_lev12[r.level - 1][r.run] = v;
        else
            t.codeTab_lev345[r.level - 3][r.run] = v;
    }
    return t;
}

}  // namespace

constexpr H261DecodeTables kDecodeBuilt = make_decode();
constexpr H261EncodeTables kEncodeBuilt = make_encode();
const H261DecodeTables kH261Decode = kDecodeBuilt;
const H261EncodeTables kH261Encode = kEncodeBuilt;

}  // namespace kivvc::h263
