// Test-side DV segment writer: codes blocks with the shipped code, fills
// each block's area and spills what does not fit into the spare bits of the
// other blocks of its macroblock, then of the segment, in the order the
// decoders take them back. It also records what a decoder must write.
#pragma once
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

#include "dv/dv_vlc_source.h"
#include "support/kernel_case.h"

namespace kivvc::test::dv {

struct Code {
    std::uint32_t bits;
    int length;
    int run, amplitude;  // amplitude signed
};

// The codes of one source table level, after `prefix_bits` bits of `prefix`.
inline std::vector<Code> level_codes(const Kiv32s* src, std::uint32_t prefix, int prefix_bits) {
    std::vector<Code> out;
    const Kiv32s* p = src + 3;
    for (int length = 1; length <= src[0]; ++length)
        for (int i = 0, count = *p++; i < count; ++i, p += 3)
            out.push_back({(prefix << length) | std::uint32_t(p[0]), length + prefix_bits, p[1], p[2]});
    return out;
}
// The shipped code: the first level, then the second after 1111.
inline std::vector<Code> shipped_codes() {
    auto all = level_codes(kivDvCodeFirstLevel, 0, 0);
    const auto second = level_codes(kivDvCodeSecondLevel, 0xF, 4);
    all.insert(all.end(), second.begin(), second.end());
    return all;
}

// (run, amplitude) -> code.
class Codebook {
public:
    Codebook() {
        for (const Code& c : shipped_codes()) codes_[{c.run, c.amplitude}] = c;
    }
    const Code* find(int run, int amplitude) const {
        const auto it = codes_.find({run, amplitude});
        return it == codes_.end() ? nullptr : &it->second;
    }

private:
    std::map<std::pair<int, int>, Code> codes_;
};

inline const Codebook& codebook() {
    static const Codebook book;
    return book;
}

// One block to be coded: header fields and the AC codes as (run, amplitude,
// escape) events; the writer appends the end of block unless told not to.
struct BlockPlan {
    int dc = 0;  // -256..255
    int mode = 0, cls = 0;
    struct Event {
        int run, amplitude;
        bool escape;  // amplitude escape (run 0, |amplitude| <= 255)
    };
    std::vector<Event> events;
    bool end_of_block = true;
};

// Picks a random coding of random coefficients: mostly short codes, some
// zero runs, some escapes (also for small amplitudes), density by `fill`.
inline BlockPlan random_block(Rng& rng, int fill) {
    BlockPlan b;
    b.dc = rng.range(-256, 255);
    b.mode = rng.range(0, 1);
    b.cls = rng.range(0, 3);
    int k = 1;
    while (k < 64 && rng.range(0, 99) < fill) {
        BlockPlan::Event e{};
        const int kind = rng.range(0, 9);
        if (kind == 0) {
            e = {0, rng.range(1, 255) * (rng.chance(2) ? 1 : -1), true};
            if (rng.chance(8)) e.amplitude = 0;
        } else if (kind == 1) {
            e = {rng.range(0, 63 - k), 0, false};
        } else {
            // A (run, amplitude) pair that has a code.
            for (;;) {
                const int run = rng.chance(2) ? 0 : rng.range(0, 14);
                const int amp = (rng.chance(2) ? rng.range(1, 3) : rng.range(1, 22)) * (rng.chance(2) ? 1 : -1);
                if (codebook().find(run, amp)) {
                    e = {run, amp, false};
                    break;
                }
            }
        }
        if (k + e.run > 63) break;
        b.events.push_back(e);
        k += e.run + 1;
    }
    return b;
}

class BitString {
public:
    void put(std::uint32_t value, int n) {
        for (int i = n - 1; i >= 0; --i) bits_.push_back((value >> i) & 1);
    }
    int size() const { return int(bits_.size()); }
    bool operator[](int i) const { return bits_[std::size_t(i)]; }

private:
    std::vector<bool> bits_;
};

inline BitString code_block(const BlockPlan& b) {
    BitString s;
    for (const auto& e : b.events) {
        if (e.escape) {
            s.put(0x7F, 7);
            s.put(std::uint32_t(e.amplitude < 0 ? -e.amplitude : e.amplitude), 8);
            s.put(e.amplitude < 0 ? 1 : 0, 1);
        } else {
            const Code* c = codebook().find(e.run, e.amplitude);
            s.put(c->bits, c->length);
        }
    }
    if (b.end_of_block) s.put(0x6, 4);
    return s;
}

// What a decoder writes for the block: DC * 128 at 0, each event's amplitude
// * 64 at zigzag[k]; untouched positions keep `background`.
inline std::vector<Kiv16s> expected_block(const BlockPlan& b, const Kiv32u* zigzag, Kiv16s background,
                                          std::size_t events = SIZE_MAX) {
    std::vector<Kiv16s> out(64, background);
    out[0] = static_cast<Kiv16s>(b.dc * 128);
    int k = 1;
    for (std::size_t i = 0; i < b.events.size() && i < events; ++i) {
        k += b.events[i].run;
        out[zigzag[k]] = static_cast<Kiv16s>(b.events[i].amplitude * 64);
        ++k;
    }
    return out;
}

struct Segment {
    std::vector<Kiv8u> bytes = std::vector<Kiv8u>(400);
    bool fits = true;  // every block's bits found room
};

// Writes a segment of 5 macroblocks of `per_mb` blocks with area lengths
// `lengths`, spilling as the decoders read back. Unused bits are random.
inline Segment write_segment(const std::vector<BlockPlan>& blocks, int per_mb, const int* lengths,
                             const Kiv8u sta_qno[5], Rng& rng) {
    Segment seg;
    for (auto& v : seg.bytes) v = static_cast<Kiv8u>(rng.next());
    auto set_bit = [&](int pos, bool bit) {
        Kiv8u& byte = seg.bytes[std::size_t(pos / 8)];
        const int shift = 7 - pos % 8;
        byte = static_cast<Kiv8u>((byte & ~(1 << shift)) | (int(bit) << shift));
    };
    struct Area {
        int pos, end;  // bit positions in the segment: next free, end
    };
    const int total = 5 * per_mb;
    std::vector<Area> area(std::size_t(total) + 0);
    std::vector<BitString> code(std::size_t(total) + 0);
    std::vector<int> done(std::size_t(total) + 0);  // bits of the block already placed
    for (int mb = 0; mb < 5; ++mb) {
        seg.bytes[std::size_t(mb * 80 + 3)] = sta_qno[mb];
        int byte = mb * 80 + 4;
        for (int i = 0; i < per_mb; ++i) {
            const int n = mb * per_mb + i;
            const BlockPlan& b = blocks[std::size_t(n)];
            const std::uint32_t header = (std::uint32_t(b.dc) & 0x1FF) << 3 | std::uint32_t(b.mode) << 2 | std::uint32_t(b.cls);
            for (int j = 0; j < 12; ++j) set_bit(byte * 8 + j, (header >> (11 - j)) & 1);
            area[std::size_t(n)] = Area{byte * 8 + 12, (byte + lengths[i]) * 8};
            code[std::size_t(n)] = code_block(b);
            byte += lengths[i];
        }
    }
    // Places bits of block n into the areas listed, in order.
    auto place = [&](int n, std::vector<int>& spares) {
        BitString& s = code[std::size_t(n)];
        int& d = done[std::size_t(n)];
        for (int a : spares) {
            Area& ar = area[std::size_t(a)];
            while (d < s.size() && ar.pos < ar.end) set_bit(ar.pos++, s[d++]);
            if (d == s.size()) return;
        }
    };
    // Pass 1: own areas. A block is complete when all its bits fit.
    std::vector<int> spare_mb[5];
    std::vector<int> waiting_mb[5];
    for (int n = 0; n < total; ++n) {
        std::vector<int> own{n};
        place(n, own);
        const bool complete = done[std::size_t(n)] == code[std::size_t(n)].size();
        std::vector<int>& list = complete ? spare_mb[n / per_mb] : waiting_mb[n / per_mb];
        list.push_back(n);
    }
    // Pass 2: the macroblock's spare bits; pass 3: the segment's.
    std::vector<int> waiting, spare_segment;
    for (int mb = 0; mb < 5; ++mb) {
        for (int n : waiting_mb[mb]) {
            place(n, spare_mb[mb]);
            if (done[std::size_t(n)] < code[std::size_t(n)].size()) waiting.push_back(n);
        }
        for (int a : spare_mb[mb]) spare_segment.push_back(a);
    }
    for (int n : waiting) {
        place(n, spare_segment);
        if (done[std::size_t(n)] < code[std::size_t(n)].size()) seg.fits = false;
    }
    return seg;
}

}  // namespace kivvc::test::dv
