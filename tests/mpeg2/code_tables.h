// MPEG-1/2 variable-length code tables for tests: DC size (luminance and
// chrominance) and the two DCT coefficient tables (table zero, used by MPEG-1
// and by MPEG-2 non-intra blocks; table one, the alternative MPEG-2 intra
// table), written as code strings and turned into source tables of the
// builder's format. Coefficient codes are listed without their sign bit; the
// source table holds both signs (last bit 0 positive, 1 negative), end of
// block as run 254 and escape as run 255.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

namespace kivvc::test::mpeg2 {

struct CodeString {
    const char* bits;  // '0'/'1', spaces ignored
    int run, level;    // DC tables: run = size, level unused
};

inline constexpr int kEndOfBlockRun = 254;
inline constexpr int kEscapeRun = 255;

inline constexpr CodeString kDcLuma[] = {
    {"100", 0, 0},     {"00", 1, 0},       {"01", 2, 0},         {"101", 3, 0},
    {"110", 4, 0},     {"1110", 5, 0},     {"11110", 6, 0},      {"111110", 7, 0},
    {"1111110", 8, 0}, {"11111110", 9, 0}, {"111111110", 10, 0}, {"111111111", 11, 0},
};

inline constexpr CodeString kDcChroma[] = {
    {"00", 0, 0},       {"01", 1, 0},        {"10", 2, 0},          {"110", 3, 0},
    {"1110", 4, 0},     {"11110", 5, 0},     {"111110", 6, 0},      {"1111110", 7, 0},
    {"11111110", 8, 0}, {"111111110", 9, 0}, {"1111111110", 10, 0}, {"1111111111", 11, 0},
};

// Codes from 0000 0000 1 on, and the 0000 0001 codes listed here, are the same in both
// coefficient tables.
inline constexpr CodeString kCoeffSharedLong[] = {
    {"0000 0000 1111 1", 22, 1}, {"0000 0000 1111 0", 23, 1}, {"0000 0000 1110 1", 24, 1}, {"0000 0000 1110 0", 25, 1},
    {"0000 0000 1101 1", 26, 1}, {"0000 0000 1011 0", 1, 6}, {"0000 0000 1010 1", 1, 7}, {"0000 0000 1010 0", 2, 5},
    {"0000 0000 1001 1", 3, 4}, {"0000 0000 1001 0", 5, 3}, {"0000 0000 1000 1", 9, 2}, {"0000 0000 1000 0", 10, 2},
    {"0000 0000 0111 11", 0, 16}, {"0000 0000 0111 10", 0, 17}, {"0000 0000 0111 01", 0, 18},
    {"0000 0000 0111 00", 0, 19}, {"0000 0000 0110 11", 0, 20}, {"0000 0000 0110 10", 0, 21},
    {"0000 0000 0110 01", 0, 22}, {"0000 0000 0110 00", 0, 23}, {"0000 0000 0101 11", 0, 24},
    {"0000 0000 0101 10", 0, 25}, {"0000 0000 0101 01", 0, 26}, {"0000 0000 0101 00", 0, 27},
    {"0000 0000 0100 11", 0, 28}, {"0000 0000 0100 10", 0, 29}, {"0000 0000 0100 01", 0, 30},
    {"0000 0000 0100 00", 0, 31}, {"0000 0000 0011 000", 0, 32}, {"0000 0000 0010 111", 0, 33},
    {"0000 0000 0010 110", 0, 34}, {"0000 0000 0010 101", 0, 35}, {"0000 0000 0010 100", 0, 36},
    {"0000 0000 0010 011", 0, 37}, {"0000 0000 0010 010", 0, 38}, {"0000 0000 0010 001", 0, 39},
    {"0000 0000 0010 000", 0, 40}, {"0000 0000 0011 111", 1, 8}, {"0000 0000 0011 110", 1, 9},
    {"0000 0000 0011 101", 1, 10}, {"0000 0000 0011 100", 1, 11}, {"0000 0000 0011 011", 1, 12},
    {"0000 0000 0011 010", 1, 13}, {"0000 0000 0011 001", 1, 14}, {"0000 0000 0001 0011", 1, 15},
    {"0000 0000 0001 0010", 1, 16}, {"0000 0000 0001 0001", 1, 17}, {"0000 0000 0001 0000", 1, 18},
    {"0000 0000 0001 0100", 6, 3}, {"0000 0000 0001 1010", 11, 2}, {"0000 0000 0001 1001", 12, 2},
    {"0000 0000 0001 1000", 13, 2}, {"0000 0000 0001 0111", 14, 2}, {"0000 0000 0001 0110", 15, 2},
    {"0000 0000 0001 0101", 16, 2}, {"0000 0000 0001 1111", 27, 1}, {"0000 0000 0001 1110", 28, 1},
    {"0000 0000 0001 1101", 29, 1}, {"0000 0000 0001 1100", 30, 1}, {"0000 0000 0001 1011", 31, 1},
    {"0000 0001 1100", 3, 3}, {"0000 0001 0010", 4, 3}, {"0000 0001 1110", 6, 2}, {"0000 0001 0101", 7, 2},
    {"0000 0001 0001", 8, 2}, {"0000 0001 1111", 17, 1}, {"0000 0001 1010", 18, 1}, {"0000 0001 1001", 19, 1},
    {"0000 0001 0111", 20, 1}, {"0000 0001 0110", 21, 1},
};

// Table zero: end of block "10", run 0 level 1 "11s" (a first coefficient
// "1s" is read by the block decoders before the table is consulted).
inline constexpr CodeString kCoeffTableZero[] = {
    {"10", kEndOfBlockRun, 0}, {"000001", kEscapeRun, 0}, {"11", 0, 1}, {"011", 1, 1},
    {"0100", 0, 2}, {"0101", 2, 1}, {"0010 1", 0, 3}, {"0011 1", 3, 1},
    {"0011 0", 4, 1}, {"0001 10", 1, 2}, {"0001 11", 5, 1}, {"0001 01", 6, 1},
    {"0001 00", 7, 1}, {"0000 110", 0, 4}, {"0000 100", 2, 2}, {"0000 111", 8, 1},
    {"0000 101", 9, 1}, {"0010 0110", 0, 5}, {"0010 0001", 0, 6}, {"0010 0101", 1, 3},
    {"0010 0100", 3, 2}, {"0010 0111", 10, 1}, {"0010 0011", 11, 1}, {"0010 0010", 12, 1},
    {"0010 0000", 13, 1}, {"0000 0010 10", 0, 7}, {"0000 0011 00", 1, 4}, {"0000 0010 11", 2, 3},
    {"0000 0011 11", 4, 2}, {"0000 0010 01", 5, 2}, {"0000 0011 10", 14, 1}, {"0000 0011 01", 15, 1},
    {"0000 0010 00", 16, 1}, {"0000 0001 1101", 0, 8}, {"0000 0001 1000", 0, 9}, {"0000 0001 0011", 0, 10},
    {"0000 0001 0000", 0, 11}, {"0000 0001 1011", 1, 5}, {"0000 0001 0100", 2, 4}, {"0000 0000 1101 0", 0, 12},
    {"0000 0000 1100 1", 0, 13}, {"0000 0000 1100 0", 0, 14}, {"0000 0000 1011 1", 0, 15},
};

// Table one: end of block "0110", run 0 level 1 "10s".
inline constexpr CodeString kCoeffTableOne[] = {
    {"0110", kEndOfBlockRun, 0}, {"000001", kEscapeRun, 0}, {"10", 0, 1}, {"010", 1, 1},
    {"110", 0, 2}, {"0010 1", 2, 1}, {"0111", 0, 3}, {"0011 1", 3, 1},
    {"0001 10", 4, 1}, {"0011 0", 1, 2}, {"0001 11", 5, 1}, {"0000 110", 6, 1},
    {"0000 100", 7, 1}, {"1110 0", 0, 4}, {"0000 111", 2, 2}, {"0000 101", 8, 1},
    {"1111 000", 9, 1}, {"1110 1", 0, 5}, {"0001 01", 0, 6}, {"1111 001", 1, 3},
    {"0010 0110", 3, 2}, {"1111 010", 10, 1}, {"0010 0001", 11, 1}, {"0010 0101", 12, 1},
    {"0010 0100", 13, 1}, {"0001 00", 0, 7}, {"0010 0111", 1, 4}, {"1111 1100", 2, 3},
    {"1111 1101", 4, 2}, {"0000 0010 0", 5, 2}, {"0000 0010 1", 14, 1}, {"0000 0011 1", 15, 1},
    {"0000 0011 01", 16, 1}, {"1111 011", 0, 8}, {"1111 100", 0, 9}, {"0010 0011", 0, 10},
    {"0010 0010", 0, 11}, {"0010 0000", 1, 5}, {"0000 0011 00", 2, 4}, {"1111 1010", 0, 12},
    {"1111 1011", 0, 13}, {"1111 1110", 0, 14}, {"1111 1111", 0, 15},
};

// One code after sign expansion.
struct Code {
    std::uint32_t bits;
    int length;
    int run, level;
};

inline Code parse(const CodeString& c) {
    Code r{0, 0, c.run, c.level};
    for (const char* p = c.bits; *p; ++p)
        if (*p != ' ') r.bits = (r.bits << 1) | std::uint32_t(*p == '1'), ++r.length;
    return r;
}

// The codes of a table; with `sign`, coefficient codes get their sign bit
// appended (end of block and escape stay as they are).
template <std::size_t N>
std::vector<Code> codes_of(const CodeString (&table)[N], bool sign = false) {
    std::vector<Code> out;
    for (const auto& s : table) {
        const Code c = parse(s);
        if (!sign || c.run >= kEndOfBlockRun) {
            out.push_back(c);
            continue;
        }
        out.push_back({c.bits << 1, c.length + 1, c.run, c.level});
        out.push_back({(c.bits << 1) | 1, c.length + 1, c.run, -c.level});
    }
    return out;
}
// The complete coefficient tables, signs expanded.
inline std::vector<Code> coefficient_codes(bool table_one) {
    auto v = table_one ? codes_of(kCoeffTableOne, true) : codes_of(kCoeffTableZero, true);
    const auto tail = codes_of(kCoeffSharedLong, true);
    v.insert(v.end(), tail.begin(), tail.end());
    return v;
}

// Source table: [0] 0, [1] levels, widths, then per length a count and the
// entries: (code, value=run) when `run_level` is false, (code, run, level)
// otherwise.
inline std::vector<std::int32_t> source_table(const std::vector<Code>& codes, const std::vector<int>& widths,
                                              bool run_level) {
    std::vector<std::int32_t> s{0, std::int32_t(widths.size())};
    s.insert(s.end(), widths.begin(), widths.end());
    int longest = 0;
    for (const auto& c : codes) longest = c.length > longest ? c.length : longest;
    for (int n = 1; n <= longest; ++n) {
        const std::size_t at = s.size();
        s.push_back(0);
        for (const auto& c : codes) {
            if (c.length != n) continue;
            ++s[at];
            s.insert(s.end(), {std::int32_t(c.bits), c.run});
            if (run_level) s.push_back(c.level);
        }
    }
    s.push_back(-1);
    return s;
}
inline std::vector<std::int32_t> coefficient_source(bool table_one, const std::vector<int>& widths = {8, 5, 4}) {
    return source_table(coefficient_codes(table_one), widths, true);
}

}  // namespace kivvc::test::mpeg2
