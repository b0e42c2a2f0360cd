// Test-side block coding, written independently of the library: a code
// writer over the typed tables and the dequantisation formulas, used by the
// decoder and round-trip tests.
#pragma once
#include <cstdint>
#include <cstdlib>
#include <map>
#include <utility>
#include <vector>

#include "core/bitstream.h"
#include "kivvc.h"
#include "mpeg2/code_tables.h"
#include "support/kernel_case.h"

namespace kivvc::test::mpeg2 {

enum class Standard { Mpeg1, Mpeg2 };

// Built tables shared by the tests, released at exit.
struct Tables {
    Kiv32s* dc_luma = nullptr;
    Kiv32s* zero = nullptr;
    Kiv32s* one = nullptr;
    Tables() {
        kiviHuffmanTableInitAlloc_32s(dc_luma_source().data(), &dc_luma);
        kiviHuffmanRunLevelTableInitAlloc_32s(table_zero_source().data(), &zero);
        kiviHuffmanRunLevelTableInitAlloc_32s(table_one_source().data(), &one);
    }
    ~Tables() {
        kiviHuffmanTableFree_32s(dc_luma);
        kiviHuffmanTableFree_32s(zero);
        kiviHuffmanTableFree_32s(one);
    }
    static const Tables& get() {
        static const Tables t;
        return t;
    }
};

class CodeBook {
public:
    explicit CodeBook(const std::vector<Code>& codes) {
        for (const auto& c : codes) {
            if (c.run == kEndOfBlockRun)
                eob_ = c;
            else if (c.run == kEscapeRun)
                escape_ = c;
            else
                map_[{c.run, c.level}] = c;
        }
    }
    const Code* find(int run, int level) const {
        auto it = map_.find({run, level});
        return it == map_.end() ? nullptr : &it->second;
    }
    const Code& eob() const { return eob_; }
    const Code& escape() const { return escape_; }

private:
    std::map<std::pair<int, int>, Code> map_;
    Code eob_{}, escape_{};
};

inline const CodeBook& book_zero() {
    static const CodeBook b(table_zero_codes());
    return b;
}
inline const CodeBook& book_one() {
    static const CodeBook b(table_one_codes());
    return b;
}

// Writes (run, level) as a table code or an escape of the standard.
inline void put_pair(bits::WordWriter& w, const CodeBook& book, Standard s, int run, int level) {
    if (const Code* c = book.find(run, level)) {
        w.put(c->bits, c->length);
        return;
    }
    w.put(book.escape().bits, book.escape().length);
    w.put(std::uint32_t(run), 6);
    if (s == Standard::Mpeg2) {
        w.put(std::uint32_t(level) & 0xFFF, 12);
    } else if (level >= -127 && level <= 127) {
        w.put(std::uint32_t(level) & 0xFF, 8);
    } else if (level > 0) {
        w.put(0, 8);
        w.put(std::uint32_t(level), 8);
    } else {
        w.put(0x80, 8);
        w.put(std::uint32_t(level + 256), 8);
    }
}

inline void put_dc(bits::WordWriter& w, int d) {
    int size = 0;
    while ((std::abs(d) >> size) != 0) ++size;
    const Code c = parse(kDcLuma[size]);
    w.put(c.bits, c.length);
    if (size) w.put(std::uint32_t(d > 0 ? d : d + (1 << size) - 1), size);
}

inline int sign(long long v) { return (v > 0) - (v < 0); }
inline int clamp12(long long v) { return v < -2048 ? -2048 : v > 2047 ? 2047 : int(v); }

// Reconstruction of one AC level, straight from the formulas.
inline int dequant(Standard s, bool intra, int level, int w, int q) {
    const long long l = intra ? 2LL * level : 2LL * level + sign(level);
    if (s == Standard::Mpeg2) return clamp12(l * w * q / 32);
    long long c = l * w * q / 16;
    if (c % 2 == 0) c -= sign(c);
    return clamp12(c);
}

inline void mismatch(Kiv16s* b) {
    int sum = 0;
    for (int i = 0; i < 64; ++i) sum += b[i];
    if (sum % 2 == 0) b[63] = Kiv16s(b[63] ^ 1);
}

// A random scan order (a permutation of 0..63).
inline std::vector<Kiv32s> random_scan(Rng& rng) {
    std::vector<Kiv32s> s(64);
    for (int i = 0; i < 64; ++i) s[i] = i;
    for (int i = 63; i > 0; --i) std::swap(s[i], s[rng.range(0, i)]);
    return s;
}

}  // namespace kivvc::test::mpeg2
