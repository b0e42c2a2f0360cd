// Multi-level variable-length-code tables: the builder and the lookup.
//
// Built table (an array of 32-bit words from kivsMalloc_8u):
//   word 0            width w0 of the root table
//   words 1..2^w0     root entries, indexed by the next w0 stream bits
//   then              sub-tables in order of creation: one width word, then
//                     2^w entries
// Entry forms (low byte = bits given back after the lookup, bit 7 = link):
//   link              (offset of the sub-table's width word << 8) | 0x80
//   single value      (value << 8) | s                value in 24 signed bits
//   run/level         (level << 16) | (run << 8) | s  level in 16 signed bits
//   empty             0x00F0F101: value 0xF0F1 / run 0xF1, level 0xF0, s = 1
//
// Source table: [0] unused, [1] L levels, [2..L+1] level widths, then for code
// lengths 1, 2, 3, ...: a count followed by that many (code, value) pairs or
// (code, run, level) triples; a negative count ends the list.
//
// Include only from files built without extra target flags.
#pragma once
#include <cstdint>

#include "core/bitstream.h"
#include "kivvc.h"

namespace kivvc::vlc {

inline constexpr std::int32_t kEmptyEntry = 0x00F0F101;
// Value of an empty entry seen by the single-value decoder: an invalid code.
inline constexpr std::int32_t kInvalidValue = 0xF0F1;
inline constexpr std::int32_t kLinkFlag = 0x80;
// Widest level the builder accepts (a root of 2^20 words is 4 MiB).
inline constexpr int kMaxLevelWidth = 20;

enum class Kind { SingleValue, RunLevel };

// Builds a table from `source` into a new kivsMalloc_8u block stored in
// *table. Statuses: NullPointer (source, table), BadArgument (fewer than one
// level, or a level width outside 1..kMaxLevelWidth), NoMemory (nothing is
// left allocated and *table is not written).
KivStatus build(const std::int32_t* source, Kind kind, std::int32_t** table);

// Terminal entries as the builder stores them.
constexpr std::int32_t single_entry(std::int32_t value, int give_back) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(value) << 8) | give_back;
}
constexpr std::int32_t run_level_entry(int run, int level, int give_back) {
    return static_cast<std::int32_t>((static_cast<std::uint32_t>(level) << 16) |
                                     ((static_cast<std::uint32_t>(run) & 0xFF) << 8) |
                                     static_cast<std::uint32_t>(give_back));
}
constexpr int entry_run(std::int32_t e) { return (e >> 8) & 0xFF; }
constexpr int entry_level(std::int32_t e) { return e >> 16; }
constexpr std::int32_t entry_value(std::int32_t e) { return e >> 8; }
constexpr int entry_give_back(std::int32_t e) { return e & 0xFF; }

// Walks the table from the root: one fixed-width read per level. Returns the
// terminal entry; the reader is left after the bits read by the lookups,
// before the give-back (entry_give_back(e) bits). Reads at most one word past
// the last bit taken.
inline std::int32_t lookup(bits::WordReader& r, const std::int32_t* table) {
    int width = table[0];
    std::int32_t e = table[1 + r.read(width)];
    while (e & kLinkFlag) {
        const std::int32_t* sub = table + (e >> 8);
        width = sub[0];
        e = sub[1 + r.read(width)];
    }
    return e;
}

}  // namespace kivvc::vlc
