// Test streams written as '0'/'1' text (spaces ignored), padded with zero
// bytes for the readers' look-ahead.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

namespace kivvc::test::h263 {

inline std::vector<std::uint8_t> stream_of(const std::string& text, int offset = 0, int padding = 4) {
    std::vector<std::uint8_t> out;
    int n = offset;
    for (char ch : text) {
        if (ch != '0' && ch != '1') continue;
        if (n / 8 >= static_cast<int>(out.size())) out.push_back(0);
        if (ch == '1') out[n / 8] |= static_cast<std::uint8_t>(0x80 >> (n % 8));
        ++n;
    }
    out.resize((n + 7) / 8 + padding, 0);
    if (out.empty()) out.push_back(0);
    return out;
}

// Length in bits of a text stream.
inline int bit_count(const std::string& text) {
    int n = 0;
    for (char ch : text) n += ch == '0' || ch == '1';
    return n;
}

// Prefix-freedom and Kraft sum (in units of 2^-max_len) of a set of codes.
struct CodeSetCheck {
    bool prefix_free = true;
    std::uint64_t kraft = 0;
};
inline CodeSetCheck check_codes(const std::vector<std::string>& codes, int max_len) {
    CodeSetCheck c;
    for (std::size_t i = 0; i < codes.size(); ++i) {
        c.kraft += std::uint64_t{1} << (max_len - static_cast<int>(codes[i].size()));
        for (std::size_t j = 0; j < codes.size(); ++j)
            if (i != j && codes[j].compare(0, codes[i].size(), codes[i]) == 0) c.prefix_free = false;
    }
    return c;
}
inline std::string strip(const char* bits) {
    std::string s;
    for (; *bits; ++bits)
        if (*bits == '0' || *bits == '1') s += *bits;
    return s;
}

}  // namespace kivvc::test::h263
