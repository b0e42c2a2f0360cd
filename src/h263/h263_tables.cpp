// The alternative INTRA tables built at compile time, and the views of the
// shared ordinary table.
#include "h263/code_bits.h"
#include "h263/h263_tables.h"

namespace kivvc::h263 {
namespace {

constexpr void fill(mpeg4::TcoefTable& t, Bits b, mpeg4::Code c) {
    const std::uint32_t first = b.value << (12 - b.length);
    for (std::uint32_t v = first; v < first + (1u << (12 - b.length)); ++v) t.code[v] = c;
}

constexpr mpeg4::TcoefTable make_decode() {
    mpeg4::TcoefTable t{};
    for (const auto& r : kAdvIntraTcoefRows) {
        const Bits b = parse(r.bits);
        fill(t, b, {r.last, r.run, r.level, static_cast<std::uint8_t>(b.length)});
    }
    const Bits e = parse(mpeg4::kTcoefEscapeBits);
    fill(t, e, {0, 0, mpeg4::kEscape, static_cast<std::uint8_t>(e.length)});
    return t;
}

constexpr mpeg4::EncodeTable make_encode() {
    mpeg4::EncodeTable t{};
    for (const auto& r : kAdvIntraTcoefRows) {
        const Bits b = parse(r.bits);
        t.code[r.last][r.run][r.level] = {static_cast<std::uint16_t>(b.value), static_cast<std::uint8_t>(b.length)};
    }
    return t;
}

constexpr mpeg4::TcoefTable kAdvDecode = make_decode();
constexpr mpeg4::EncodeTable kAdvEncode = make_encode();

}  // namespace

const H263CodeTables kH263Tables = {
    mpeg4::kInterTcoef.code, mpeg4::kInterTcoef.code, mpeg4::kInterTcoef.code,
    kAdvDecode.code,         kAdvDecode.code,         kAdvDecode.code,
    &mpeg4::kInterTcoefCodes, &kAdvEncode,
};

}  // namespace kivvc::h263
