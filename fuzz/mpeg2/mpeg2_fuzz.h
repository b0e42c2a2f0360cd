// Shared parts of the MPEG-1/2 fuzz targets: tables built from the fuzz
// input or from the standard code tables, and a bitstream buffer whose
// allocation ends exactly where a call starting inside the data may stop
// reading (the data, the most bits one call can consume, one word of
// look-ahead), padded by repeating the data.
#pragma once
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "../tests/mpeg2/code_tables.h"
#include "fuzz_input.h"
#include "kivvc.h"

namespace kivvc::fuzz {

inline std::vector<std::uint32_t> padded_stream(Input& in, std::size_t pad_bits) {
    std::vector<std::uint32_t> data = in.rest_words(0);
    const std::size_t n = data.size();
    std::vector<std::uint32_t> w(n + (pad_bits + 31) / 32 + 1);
    for (std::size_t i = 0; i < w.size(); ++i) w[i] = i < n ? data[i] : (n ? data[i % n] : 0xA5A5A5A5u);
    return w;
}

// Runs `call` while the cursor is inside the first data_words words; stops
// at the first error or when the cursor stops moving.
template <class F>
void run_calls(std::vector<std::uint32_t>& w, std::size_t data_words, int offset, F call) {
    Kiv32u* p = w.data();
    Kiv32s off = offset;
    for (int guard = 0; guard < 4096; ++guard) {
        if (std::size_t(p - w.data()) >= data_words) return;
        Kiv32u* before = p;
        const Kiv32s off_before = off;
        if (call(&p, &off) != kivStsOk) return;
        if (p == before && off == off_before) return;
        if (p < w.data() || std::size_t(p - w.data()) >= w.size()) std::abort();
    }
}

// A run/level source table from the input: 1..4 levels of 1..8 bits and
// arbitrary, possibly overlapping codes. `total` receives the sum of widths.
inline std::vector<Kiv32s> random_source(Input& in, int& total) {
    const int levels = in.range(1, 4);
    std::vector<Kiv32s> src{0, levels};
    total = 0;
    for (int k = 0; k < levels; ++k) {
        src.push_back(in.range(1, 8));
        total += src.back();
    }
    const int lengths = in.range(1, total + 2);
    for (int n = 1; n <= lengths; ++n) {
        const int count = in.range(0, 3);
        src.push_back(count);
        for (int i = 0; i < count; ++i) {
            src.push_back(Kiv32s(in.byte()) | Kiv32s(in.byte()) << 8 | Kiv32s(in.byte()) << 16);
            src.push_back(in.range(0, 255));
            src.push_back(Kiv32s(in.byte()) - 128);
        }
    }
    src.push_back(-1);
    return src;
}

// The same list as (code, value) pairs, value = level * 256 + run (never the
// invalid-code marker, whose level part would be 240).
inline std::vector<Kiv32s> single_value_view(const std::vector<Kiv32s>& src) {
    const std::size_t head = 2 + std::size_t(src[1]);
    std::vector<Kiv32s> single{src.begin(), src.begin() + std::ptrdiff_t(head)};
    for (std::size_t i = head; i < src.size();) {
        const Kiv32s count = src[i++];
        single.push_back(count);
        if (count < 0) break;
        for (Kiv32s j = 0; j < count; ++j, i += 3) {
            single.push_back(src[i]);
            single.push_back(src[i + 2] * 256 + src[i + 1]);
        }
    }
    return single;
}

struct Built {
    Kiv32s* table = nullptr;
    ~Built() {
        if (table) kiviHuffmanTableFree_32s(table);
    }
};

// Tables of the standard codes, built once.
struct StandardTables {
    Built dc, zero, one;
    StandardTables() {
        using namespace kivvc::test::mpeg2;
        kiviHuffmanTableInitAlloc_32s(source_table(codes_of(kDcLuma), {5, 5}, false).data(), &dc.table);
        kiviHuffmanRunLevelTableInitAlloc_32s(coefficient_source(false).data(), &zero.table);
        kiviHuffmanRunLevelTableInitAlloc_32s(coefficient_source(true).data(), &one.table);
    }
};

// Parameters of one block-decoder run, drawn from the input.
struct BlockParams {
    const Kiv32s* dc;
    const Kiv32s* ac;
    Kiv32s scan[64];
    Kiv16s matrix[64];
    Kiv32s q;
    Kiv32s dc_shift;
    Kiv16s predictor;
    int offset;
};

// Most bits one block call can consume: DC (10-bit lookup, 11 bits), then at
// most 64 coefficient codes and an end of block, each a 17-bit lookup plus
// at most a 22-bit escape.
inline constexpr std::size_t kBlockBits = 10 + 11 + 65 * (17 + 22);

// Decodes blocks with `decode(p, off, params, block, size)` over the rest of
// the input and checks the block size of every success.
template <class F>
void fuzz_blocks(const std::uint8_t* data, std::size_t size, F decode) {
    static const StandardTables tables;
    Input in(data, size);
    BlockParams bp;
    bp.dc = tables.dc.table;
    bp.ac = in.byte() & 1 ? tables.one.table : tables.zero.table;
    for (auto& s : bp.scan) s = in.byte();
    for (auto& m : bp.matrix) m = Kiv16s(in.byte() | in.byte() << 8);
    bp.q = Kiv32s(in.byte()) | Kiv32s(in.byte()) << 24;
    bp.dc_shift = in.range(0, 3);
    bp.predictor = Kiv16s(in.byte() << 8 | in.byte());
    bp.offset = in.range(0, 31);
    auto words = padded_stream(in, kBlockBits);
    const std::size_t data_words = words.size() - (kBlockBits + 31) / 32 - 1;
    run_calls(words, data_words, bp.offset, [&](Kiv32u** p, Kiv32s* o) {
        Kiv16s block[64];
        Kiv32s n = -1;
        const KivStatus st = decode(p, o, bp, block, &n);
        if (st == kivStsOk && (n < 0 || n > 63)) std::abort();
        return st;
    });
}

}  // namespace kivvc::fuzz
