// Fixed tables of the CAVLC level and chroma DC decoding.
#pragma once
#include <array>
#include <cstdint>

namespace kivvc::h264::cavlc {

// Magnitude above which suffixLength grows, by suffixLength 0..5.
inline constexpr std::int32_t vlc_inc[6] = {0, 3, 6, 12, 24, 48};
inline constexpr const auto& h264_table_vlc_inc = vlc_inc;
// Extra term of the escape levelCode, by suffixLength.
inline constexpr std::int32_t sadd[7] = {15, 0, 0, 0, 0, 0, 0};

namespace detail {
// Suffix bits of level_prefix 0..15 at suffixLength s.
consteval int suffix_bits(int s, int prefix) {
    if (prefix == 15) return 12;
    if (s == 0) return prefix == 14 ? 4 : 0;
    return s;
}
// Base magnitude of level_prefix 0..15 at suffixLength s.
consteval int base_magnitude(int s, int prefix) {
    if (s == 0) return prefix < 14 ? 1 : prefix == 14 ? 8 : 16;
    return (prefix << (s - 1)) + 1;
}
enum class Column { SuffixBits, BaseMagnitude };
template <class T, Column C>
consteval std::array<std::array<T, 16>, 7> by_suffix_and_prefix() {
    std::array<std::array<T, 16>, 7> t{};
    for (int s = 0; s < 7; ++s)
        for (int p = 0; p < 16; ++p)
            t[s][p] = static_cast<T>(C == Column::SuffixBits ? suffix_bits(s, p) : base_magnitude(s, p));
    return t;
}
}  // namespace detail

// [suffixLength 0..6][level_prefix 0..15]: suffix bits to read and base magnitude.
inline constexpr auto bitsToGetTbl16s = detail::by_suffix_and_prefix<std::int16_t, detail::Column::SuffixBits>();
inline constexpr auto addOffsetTbl16s = detail::by_suffix_and_prefix<std::int16_t, detail::Column::BaseMagnitude>();
// The same as 8-bit counts and 16-bit bases, for the 4x4 decoders.
inline constexpr auto h264_table_bits_to_get = detail::by_suffix_and_prefix<std::uint8_t, detail::Column::SuffixBits>();
inline constexpr auto h264_table_add_offset = detail::by_suffix_and_prefix<std::int16_t, detail::Column::BaseMagnitude>();

// 1 << n, n = 0..23: the escape term 1 << (level_prefix - 3).
inline constexpr auto h264_table_shifted_one = []() consteval {
    std::array<std::int32_t, 24> t{};
    for (int n = 0; n < 24; ++n) t[n] = std::int32_t{1} << n;
    return t;
}();

// Signs of up to three trailing ones from the next three bits: row r,
// element j is -1 when bit (2 - j) of r is set.
inline constexpr auto h264_table_trailing_ones = []() consteval {
    std::array<std::array<std::int16_t, 4>, 8> t{};
    for (int r = 0; r < 8; ++r)
        for (int j = 0; j < 3; ++j) t[r][j] = (r >> (2 - j)) & 1 ? -1 : 1;
    return t;
}();

// 4:2:0 chroma DC with one trailing one, indexed by the three bits after
// the sign: (raster position, bits taken in all).
inline constexpr std::uint8_t ChromaDCRunTable[8][2] = {{3, 5}, {2, 5}, {1, 4}, {1, 4}, {0, 3}, {0, 3}, {0, 3}, {0, 3}};

// Scan position to raster index of the 2-wide, 4-high 4:2:2 chroma DC block.
inline constexpr std::int32_t ChromaDC422RasterScan[8] = {0, 2, 1, 4, 6, 3, 5, 7};

// Largest level_prefix accepted: its escape suffix has 23 bits, the last
// entry of h264_table_shifted_one. Longer runs of zeros are corrupt.
inline constexpr int kMaxLevelPrefix = 26;

}  // namespace kivvc::h264::cavlc
