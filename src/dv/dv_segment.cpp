// DV segment decoding. Every block area is a bit source; sources are linked
// into chains so that a block can run on into the spare bits of others
// without copying them: pass 1 decodes each block in its own area, pass 2
// continues each unfinished block in the spare bits of its macroblock, pass 3
// in what is left over in the whole segment.
#include <climits>

#include "dv/dv_segment.h"

namespace kivvc::dv {
namespace {

// A run of bits read most significant first: up to 32 bits cached
// (left-aligned), then the bytes next..end, then the linked source.
struct Source {
    u32 cache = 0;
    int count = 0;
    const u8* next = nullptr;
    const u8* end = nullptr;
    Source* link = nullptr;

    int bits() const { return count + 8 * int(end - next); }
    void refill() {
        while (count <= 24 && next < end) {
            cache |= u32{*next++} << (24 - count);
            count += 8;
        }
    }
    void clear() {
        cache = 0;
        count = 0;
        next = end;
    }
};

// Reading position in a chain of sources, with the bits left in it.
struct Chain {
    Source* head;
    int avail;

    explicit Chain(Source* first) : head(first), avail(0) {
        for (const Source* s = first; s; s = s->link) avail += s->bits();
    }

    // The next n bits (n <= 16), left-aligned in n bits: zeros stand in for
    // bits past the end of the chain.
    u32 peek(int n) {
        head->refill();
        if (head->count >= n) return head->cache >> (32 - n);
        u32 acc = 0;
        int have = 0;
        for (Source* s = head; s && have < n; s = s->link) {
            s->refill();
            const int take = s->count < n - have ? s->count : n - have;
            if (take == 0) continue;
            acc = (acc << take) | (s->cache >> (32 - take));
            have += take;
        }
        return acc << (n - have);
    }

    // Consumes n bits (n <= avail, n <= 16).
    void drop(int n) {
        avail -= n;
        while (n > 0) {
            head->refill();
            if (head->count >= n) {
                head->cache <<= n;
                head->count -= n;
                return;
            }
            // A refilled source short of n bits has no bytes left.
            n -= head->count;
            head->clear();
            head = head->link;
        }
    }

    // The first source that still holds bits, or null.
    Source* rest() const {
        Source* s = head;
        while (s && s->bits() == 0) s = s->link;
        return s;
    }

    // Moves the bits left in the chain (fewer than 16) into `own`, so that a
    // code cut off here resumes with them followed by other blocks' bits.
    void keep_in(Source& own) {
        const int n = avail;
        const u32 left = n > 0 ? peek(n) : 0;
        for (Source* s = head; s; s = s->link) s->clear();
        own.cache = n > 0 ? left << (32 - n) : 0;
        own.count = n;
        avail = 0;
    }
};

enum class Result { Complete, Incomplete, Error };

struct Block {
    Source own;
    int k = 1;  // next scan position
    const u32* zigzag = nullptr;
    s16* coef = nullptr;
};

constexpr int kEndOfBlock = 0x6;  // 0110, the top four of nine peeked bits
constexpr int kEscape = 0x7F;     // 1111111, the top seven

inline int entry_length(u32 e) { return int(e & 0xFF); }
inline int entry_run(u32 e) { return int((e >> 8) & 0xFF); }
inline s16 entry_amplitude(u32 e) { return static_cast<s16>(e >> 16); }

// Decodes AC codes of block b from chain c until the end of block, the end
// of the chain (Incomplete, the unfinished code's bits kept in b.own) or a
// position past 63 (Error). With a limit, stops once k reaches it, or when
// fewer than three bits remain (one-pass use; its outcome is then ignored).
template <bool Limited>
Result decode_block(Chain& c, Block& b, const u32* table, int limit) {
    const u32* second = table + 512;
    for (;;) {
        if constexpr (Limited) {
            if (b.k >= limit || c.avail < 3) return Result::Incomplete;
        }
        const int avail = c.avail;
        const u32 bits9 = c.peek(9);
        if ((bits9 >> 5) == kEndOfBlock) {
            if (avail < 4) break;
            c.drop(4);
            return Result::Complete;
        }
        u32 e = table[bits9];
        int length = entry_length(e);
        if (avail < 9 && avail < length) break;
        if (length > 9) {
            if ((bits9 >> 2) == kEscape) {
                if (avail < 16) break;
                const u32 bits16 = c.peek(16);
                if (b.k > 63) return Result::Error;
                const int amplitude = int((bits16 >> 1) & 0xFF) * 64;
                b.coef[b.zigzag[b.k] & 63] = static_cast<s16>((bits16 & 1) ? -amplitude : amplitude);
                ++b.k;
                c.drop(16);
                if (c.avail == 0) break;
                continue;
            }
            e = second[c.peek(13) & 0x1FF];
            length = entry_length(e);
            if (avail < 13 && avail < length) break;
            // Second-level lengths include the four prefix bits; anything
            // beyond 13 (no code here) would run past the chain.
            if (length > 13) return Result::Error;
        }
        b.k += entry_run(e);
        if (b.k > 63) return Result::Error;
        b.coef[b.zigzag[b.k] & 63] = entry_amplitude(e);
        ++b.k;
        c.drop(length);
        if (c.avail == 0) break;
    }
    c.keep_in(b.own);
    return Result::Incomplete;
}

template <Form F>
struct Layout;
template <>
struct Layout<Form::Sd> {
    static constexpr int kBlocks = 6;
    static constexpr const int* kLengths = nDVSD_BitSequenceLengths;
    static constexpr bool kModeSelectsZigzag = true;
};
template <>
struct Layout<Form::Dv100> {
    static constexpr int kBlocks = 8;
    static constexpr const int* kLengths = nDV100_BitSequenceLengths;
    static constexpr bool kModeSelectsZigzag = false;
};

// Writes the parameter word and DC of one block and sets its source up after
// the 12 header bits.
template <Form F>
void start_block(Block& b, const u8* area, int length, u8 sta_qno, const u32* zigzag, s16* coef, u32* param) {
    const u32 header = u32{area[0]} << 8 | area[1];
    *param = u32{sta_qno} << 16 | header;
    coef[0] = static_cast<s16>(header & 0xFF80);
    b.own.cache = u32{area[1]} << 28;
    b.own.count = 4;
    b.own.next = area + 2;
    b.own.end = area + length;
    b.own.link = nullptr;
    b.k = 1;
    b.zigzag = zigzag + ((Layout<F>::kModeSelectsZigzag && (header & 0x40)) ? 64 : 0);
    b.coef = coef;
}

// Calls start(block, area, length, sta_qno, block index) for every block in
// stream order.
template <Form F, class Start>
void for_each_block(const u8* stream, Start start) {
    using L = Layout<F>;
    for (int mb = 0; mb < kMacroblocks; ++mb) {
        const u8* m = stream + mb * kMacroblockBytes;
        const u8* area = m + 4;
        for (int i = 0; i < L::kBlocks; ++i) {
            start(area, L::kLengths[i], m[3], mb * L::kBlocks + i);
            area += L::kLengths[i];
        }
    }
}

template <Form F>
int decode_three_pass(const u8* stream, const u32* zigzag, const u32* table, s16* blocks, u32* params) {
    using L = Layout<F>;
    constexpr int kTotal = kMacroblocks * L::kBlocks;
    Block block[kTotal];
    int incomplete[kMacroblocks][L::kBlocks];
    int incomplete_count[kMacroblocks] = {};
    Source* spare[kMacroblocks] = {};  // first source of each macroblock's spare chain
    Source** spare_tail[kMacroblocks];
    for (int mb = 0; mb < kMacroblocks; ++mb) spare_tail[mb] = &spare[mb];

    // Pass 1: each block in its own area.
    bool error = false;
    for_each_block<F>(stream, [&](const u8* area, int length, u8 sta_qno, int n) {
        if (error) return;
        Block& b = block[n];
        start_block<F>(b, area, length, sta_qno, zigzag, blocks + 64 * n, params + n);
        Chain c(&b.own);
        switch (decode_block<false>(c, b, table, INT_MAX)) {
            case Result::Complete:
                *spare_tail[n / L::kBlocks] = &b.own;
                spare_tail[n / L::kBlocks] = &b.own.link;
                break;
            case Result::Incomplete: {
                const int mb = n / L::kBlocks;
                incomplete[mb][incomplete_count[mb]++] = n;
                break;
            }
            case Result::Error: error = true; break;
        }
    });
    if (error) return -191;

    // Pass 2: within each macroblock, in the spare bits of its complete blocks.
    int left[kTotal];
    int left_count = 0;
    Source* segment_head = nullptr;
    Source** segment_tail = &segment_head;
    for (int mb = 0; mb < kMacroblocks; ++mb) {
        Source* chain = spare[mb];
        for (int i = 0; i < incomplete_count[mb]; ++i) {
            Block& b = block[incomplete[mb][i]];
            if (!chain && b.own.bits() == 0) {
                left[left_count++] = incomplete[mb][i];
                continue;
            }
            b.own.link = chain;
            Chain c(&b.own);
            const Result r = decode_block<false>(c, b, table, INT_MAX);
            if (r == Result::Error) return -191;
            if (r == Result::Incomplete) left[left_count++] = incomplete[mb][i];
            // What is left starts at the first source with bits, possibly
            // this block's own (still linked to the rest).
            chain = r == Result::Complete ? c.rest() : nullptr;
        }
        if (chain) {
            *segment_tail = chain;
            Source* s = chain;
            while (s->link) s = s->link;
            segment_tail = &s->link;
        }
    }

    // Pass 3: across the segment, in what the macroblocks left over.
    Source* chain = segment_head;
    for (int i = 0; i < left_count; ++i) {
        Block& b = block[left[i]];
        b.own.link = chain;
        Chain c(&b.own);
        const Result r = decode_block<false>(c, b, table, INT_MAX);
        if (r == Result::Error) return -191;
        if (r == Result::Incomplete) return 0;
        chain = c.rest();
    }
    return 0;
}

template <Form F>
void decode_one_pass(const u8* stream, const u32* zigzag, const u32* table, s16* blocks, u32* params, int limit) {
    for_each_block<F>(stream, [&](const u8* area, int length, u8 sta_qno, int n) {
        Block b;
        start_block<F>(b, area, length, sta_qno, zigzag, blocks + 64 * n, params + n);
        Chain c(&b.own);
        decode_block<true>(c, b, table, limit);
    });
}

}  // namespace

int decode_segment(Form form, const u8* stream, const u32* zigzag, const u32* table, s16* blocks, u32* params) {
    return form == Form::Sd ? decode_three_pass<Form::Sd>(stream, zigzag, table, blocks, params)
                            : decode_three_pass<Form::Dv100>(stream, zigzag, table, blocks, params);
}

void decode_segment_one_pass(Form form, const u8* stream, const u32* zigzag, const u32* table, s16* blocks,
                             u32* params, int limit) {
    if (form == Form::Sd)
        decode_one_pass<Form::Sd>(stream, zigzag, table, blocks, params, limit);
    else
        decode_one_pass<Form::Dv100>(stream, zigzag, table, blocks, params, limit);
}

}  // namespace kivvc::dv
