// The two bitstream cursors: word cursor (32-bit words, host order, first
// bit = bit 31 of the first word) and byte cursor (bytes, first bit = bit 7).
// Families load a cursor into one of these on entry, work on the local copy
// and write it back once on success.
//
// Include only from files built without extra target flags (the member
// functions are inline with external linkage).
#pragma once
#include <cstdint>

namespace kivvc::bits {

inline std::uint32_t load_be32(const std::uint8_t* p) {
    return (std::uint32_t{p[0]} << 24) | (std::uint32_t{p[1]} << 16) | (std::uint32_t{p[2]} << 8) | p[3];
}

// Word cursor, reading. `offset` is the index (31..0) of the next unread bit
// of *word. Every peek looks at the current and the next word, so the buffer
// must be readable one word beyond the last code.
struct WordReader {
    const std::uint32_t* word;
    int offset;

    // Offsets outside 0..31 are taken modulo 32.
    static WordReader load(const std::uint32_t* word, std::int32_t offset) {
        return {word, static_cast<int>(offset & 31)};
    }
    void store(std::uint32_t** pp, std::int32_t* po) const {
        *pp = const_cast<std::uint32_t*>(word);
        *po = offset;
    }

    // The next 32 stream bits, first bit in bit 31.
    std::uint32_t peek32() const {
        const std::uint64_t v = (std::uint64_t{word[0]} << 32) | word[1];
        return static_cast<std::uint32_t>(v >> (offset + 1));
    }
    // The next n bits (1..32) as an unsigned value.
    std::uint32_t peek(int n) const { return peek32() >> (32 - n); }
    // Consumes n bits (0..32).
    void skip(int n) {
        offset -= n;
        if (offset < 0) {
            offset += 32;
            ++word;
        }
    }
    std::uint32_t read(int n) {
        const std::uint32_t v = peek(n);
        skip(n);
        return v;
    }
    // Gives back k bits (0..32) that a fixed-width table read took too many.
    void give_back(int k) {
        offset += k;
        if (offset > 31) {
            offset -= 32;
            --word;
        }
    }
    // Leading zero bits of the next 32 stream bits (32 when all are zero).
    int leading_zeros() const {
        const std::uint32_t v = peek32();
        return v ? __builtin_clz(v) : 32;
    }
};

// Word cursor, writing. `free_bits` is the number of free bits (32..1) of the
// current word. Codes are ORed into the current word; a word entered by an
// exact fill is not touched, one entered by a straddling code is stored.
struct WordWriter {
    std::uint32_t* word;
    int free_bits;

    // A free count outside 1..32 is reduced into that range (0 means 32).
    static WordWriter load(std::uint32_t* word, std::int32_t offset) {
        return {word, static_cast<int>(((offset - 1) & 31) + 1)};
    }
    void store(std::uint32_t** pp, std::int32_t* po) const {
        *pp = word;
        *po = free_bits;
    }
    // Writes the low n bits (1..32) of code.
    void put(std::uint32_t code, int n) {
        const std::uint32_t c = n == 32 ? code : code & ((1u << n) - 1);
        const int r = free_bits - n;
        if (r > 0) {
            *word |= c << r;
            free_bits = r;
        } else if (r == 0) {
            *word |= c;
            ++word;
            free_bits = 32;
        } else {
            *word |= c >> -r;
            ++word;
            *word = c << (32 + r);
            free_bits = r + 32;
        }
    }
};

// Byte cursor, reading. `offset` (0..7) counts the bits of *byte already
// consumed. peek() looks at most four bytes from the current byte on;
// peek_long() takes a fifth only when the code reaches into it.
struct ByteReader {
    const std::uint8_t* byte;
    int offset;

    void store(std::uint8_t** pp, int* po) const {
        *pp = const_cast<std::uint8_t*>(byte);
        *po = offset;
    }
    // The next 32 - offset (at least 25) stream bits, first bit in bit 31.
    std::uint32_t window() const { return load_be32(byte) << offset; }
    // The next n bits, 1 <= n <= 25.
    std::uint32_t peek(int n) const { return window() >> (32 - n); }
    // The next n bits, 1 <= n <= 32.
    std::uint32_t peek_long(int n) const {
        std::uint64_t v = std::uint64_t{load_be32(byte)} << 8;
        if (offset + n > 32) v |= byte[4];
        return static_cast<std::uint32_t>(((v << offset) & 0xFFFFFFFFFFull) >> (40 - n));
    }
    void skip(int n) {
        const int p = offset + n;
        byte += p >> 3;
        offset = p & 7;
    }
    std::uint32_t read(int n) {
        const std::uint32_t v = peek(n);
        skip(n);
        return v;
    }
    std::uint32_t read_long(int n) {
        const std::uint32_t v = peek_long(n);
        skip(n);
        return v;
    }
};

// Byte cursor, writing. The first byte keeps its top `offset` bits; every
// further byte is stored whole; finish() leaves the cursor on the byte that
// holds the next free bit, with that byte's unwritten low bits zero.
struct ByteWriter {
    std::uint8_t* byte;
    std::uint64_t pending;  // bits not yet stored, right-aligned
    int count;              // how many bits `pending` holds (0..7 between calls)

    static ByteWriter load(std::uint8_t* byte, int offset) {
        return {byte, offset ? std::uint64_t{byte[0]} >> (8 - offset) : 0u, offset};
    }
    // Writes the low n bits (1..32) of code.
    void put(std::uint32_t code, int n) {
        const std::uint64_t c = code & (n == 32 ? 0xFFFFFFFFu : (1u << n) - 1);
        pending = (pending << n) | c;
        count += n;
        while (count >= 8) {
            count -= 8;
            *byte++ = static_cast<std::uint8_t>(pending >> count);
        }
        pending &= (std::uint64_t{1} << count) - 1;
    }
    // Stores the partial byte (if any) and writes the cursor back.
    void finish(std::uint8_t** pp, int* po) {
        if (count) *byte = static_cast<std::uint8_t>(pending << (8 - count));
        *pp = byte;
        *po = count;
    }
};

}  // namespace kivvc::bits
