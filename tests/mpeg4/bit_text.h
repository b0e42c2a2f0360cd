// Test inputs written compactly, for the MPEG-4 and H.263 tests: streams and
// code sets as '0'/'1' text (other characters ignored), blocks as (index,
// value) lists.
#pragma once
#include <array>
#include <cstdint>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "kivvc.h"

namespace kivvc::test {

inline std::string strip(const char* bits) {
    std::string s;
    for (; *bits; ++bits)
        if (*bits == '0' || *bits == '1') s += *bits;
    return s;
}

inline std::uint32_t value_of(const std::string& bits) { return bits.empty() ? 0 : std::stoul(bits, nullptr, 2); }

// The text placed `offset` bits into the first byte, followed by `padding`
// zero bytes for the readers' look-ahead.
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
    return out;
}

// `count` bits of `bytes` from bit `from`, as text.
inline std::string text_of(const std::vector<std::uint8_t>& bytes, std::size_t from, std::size_t count) {
    std::string s;
    for (std::size_t i = from; i < from + count; ++i) s += char('0' + ((bytes[i / 8] >> (7 - i % 8)) & 1));
    return s;
}

// Status and bit position after one reader call on a text stream that
// starts `offset` bits into its first byte.
struct Outcome {
    KivStatus status;
    long position;
    bool operator==(const Outcome&) const = default;
};
inline std::ostream& operator<<(std::ostream& o, const Outcome& r) { return o << r.status << " at bit " << r.position; }

template <class Call>
Outcome read_text(const std::string& text, Call call, int offset = 0) {
    auto s = stream_of(text, offset);
    Kiv8u* p = s.data();
    int o = offset;
    const KivStatus st = call(&p, &o);
    return {st, (p - s.data()) * 8L + o};
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

using Entries = std::vector<std::pair<int, int>>;

// A zero block holding `entries`, then `changes` on top.
inline std::array<Kiv16s, 64> block_of(const Entries& entries, const Entries& changes = {}) {
    std::array<Kiv16s, 64> b{};
    for (const Entries* list : {&entries, &changes})
        for (auto [i, v] : *list) b[std::size_t(i)] = static_cast<Kiv16s>(v);
    return b;
}

}  // namespace kivvc::test
