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

// Built decoder and encoder tables shared by the tests, released at exit.
struct Tables {
    Kiv32s *dc_luma = nullptr, *zero = nullptr, *one = nullptr;  // decoding
    Kiv32s *encode_zero = nullptr, *encode_one = nullptr;
    Kiv32s encode_dc[2 * 12];  // (code, length) per size
    Tables() {
        kiviHuffmanTableInitAlloc_32s(source_table(codes_of(kDcLuma), {5, 5}, false).data(), &dc_luma);
        kiviHuffmanRunLevelTableInitAlloc_32s(coefficient_source(false).data(), &zero);
        kiviHuffmanRunLevelTableInitAlloc_32s(coefficient_source(true).data(), &one);
        kiviCreateRLEncodeTable(coefficient_source(false).data(), &encode_zero);
        kiviCreateRLEncodeTable(coefficient_source(true).data(), &encode_one);
        for (int s = 0; s < 12; ++s) {
            const Code c = parse(kDcLuma[s]);
            encode_dc[2 * s] = Kiv32s(c.bits);
            encode_dc[2 * s + 1] = c.length;
        }
    }
    ~Tables() {
        for (Kiv32s* t : {dc_luma, zero, one}) kiviHuffmanTableFree_32s(t);
        kivsFree(encode_zero);
        kivsFree(encode_one);
    }
    static const Tables& get() {
        static const Tables t;
        return t;
    }
};

class CodeBook {
public:
    explicit CodeBook(bool table_one) {
        for (const auto& c : coefficient_codes(table_one)) {
            if (c.run == kEndOfBlockRun)
                eob_ = c;
            else if (c.run == kEscapeRun)
                escape_ = c;
            else
                map_[{c.run, c.level}] = c;
        }
    }
    static const CodeBook& get(bool table_one) {
        static const CodeBook zero(false), one(true);
        return table_one ? one : zero;
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
    } else {
        w.put(level > 0 ? 0 : 0x80, 8);
        w.put(std::uint32_t(level > 0 ? level : level + 256), 8);
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

// One block through the library's decoder of that standard and kind; the
// alternative table is taken for intra blocks only.
inline KivStatus decode_block(Standard s, bool intra, bool table_one, Kiv32u** p, Kiv32s* off, const Kiv32s* scan,
                              int q, Kiv16s* matrix, Kiv16s* pred, int dc_shift, Kiv16s* block, Kiv32s* size) {
    const auto& t = Tables::get();
    const Kiv32s* ac = table_one ? t.one : t.zero;
    Kiv32s* sc = const_cast<Kiv32s*>(scan);
    if (s == Standard::Mpeg1)
        return intra ? kiviReconstructDCTBlockIntra_MPEG1_32s(p, off, t.dc_luma, ac, sc, q, matrix, pred, block, size)
                     : kiviReconstructDCTBlock_MPEG1_32s(p, off, t.zero, ac, sc, q, matrix, block, size);
    return intra ? kiviReconstructDCTBlockIntra_MPEG2_32s(p, off, t.dc_luma, ac, sc, q, matrix, pred, dc_shift, block,
                                                          size)
                 : kiviReconstructDCTBlock_MPEG2_32s(p, off, t.zero, ac, sc, q, matrix, block, size);
}

}  // namespace kivvc::test::mpeg2
