// Variable-length-code table builder: measure, allocate once, fill.
#include "mpeg2/vlc_table.h"

#include <climits>
#include <cstring>

namespace kivvc::vlc {
namespace {

struct Code {
    std::uint32_t bits;  // the code word in the low `length` bits
    int length;
    std::int32_t a, b;  // value, or run and level
};

// Reads the source table one code at a time.
class SourceWalker {
public:
    SourceWalker(const std::int32_t* source, Kind kind) : p_(source), kind_(kind) {
        pos_ = 2 + source[1];
        remaining_ = 0;
        length_ = 0;
    }
    // False at the end of the list.
    bool next(Code& c) {
        while (remaining_ == 0) {
            const std::int32_t count = p_[pos_++];
            if (count < 0) return false;
            remaining_ = count;
            ++length_;
        }
        --remaining_;
        c.length = length_;
        c.bits = static_cast<std::uint32_t>(p_[pos_]);
        if (length_ < 32) c.bits &= (1u << length_) - 1;
        c.a = p_[pos_ + 1];
        c.b = kind_ == Kind::RunLevel ? p_[pos_ + 2] : 0;
        pos_ += kind_ == Kind::RunLevel ? 3 : 2;
        return true;
    }

private:
    const std::int32_t* p_;
    Kind kind_;
    std::int64_t pos_;
    std::int32_t remaining_;
    int length_;
};

// The top `width` bits of a code of `length` bits (width < length).
constexpr std::uint32_t prefix(std::uint32_t bits, int length, int width) {
    return (bits >> (length - width)) & ((1u << width) - 1);
}

struct Levels {
    const std::int32_t* width;  // width[k] for k = 0..count-1
    int count;
    int total;  // sum of widths, capped at 33: longer codes do not exist
};

bool placeable(const Code& c, const Levels& lv) { return c.length <= 32 && c.length <= lv.total; }

std::int32_t terminal_entry(const Code& c, Kind kind, int give_back) {
    return kind == Kind::SingleValue ? single_entry(c.a, give_back) : run_level_entry(c.a, c.b, give_back);
}

}  // namespace

KivStatus build(const std::int32_t* source, Kind kind, std::int32_t** table) {
    if (!source || !table) return kivStsNullPointer;
    Levels lv{source + 2, source[1], 0};
    if (lv.count < 1) return kivStsBadArgument;
    for (int k = 0; k < lv.count; ++k) {
        if (lv.width[k] < 1 || lv.width[k] > kMaxLevelWidth) return kivStsBadArgument;
        if (lv.total <= 32) lv.total += lv.width[k];
    }

    // Count the codes, then measure with the list of codes already seen: a
    // code opens a sub-table below level k when no earlier code continues
    // below level k with the same prefix.
    std::int64_t codes = 0;
    {
        SourceWalker w(source, kind);
        Code c;
        while (w.next(c)) ++codes;
    }
    std::uint32_t* seen = nullptr;  // (bits, length) pairs
    if (codes > 0) {
        if (codes * 8 > INT_MAX) return kivStsNoMemory;
        seen = reinterpret_cast<std::uint32_t*>(kivsMalloc_8u(static_cast<Kiv32s>(codes * 8)));
        if (!seen) return kivStsNoMemory;
    }
    std::int64_t words = (std::int64_t{1} << lv.width[0]) + 1;
    {
        SourceWalker w(source, kind);
        Code c;
        std::int64_t n_seen = 0;
        while (w.next(c)) {
            if (!placeable(c, lv)) continue;
            int consumed = 0;
            for (int k = 0; k + 1 < lv.count; ++k) {
                consumed += lv.width[k];
                if (consumed >= c.length) break;
                const std::uint32_t mine = prefix(c.bits, c.length, consumed);
                bool shared = false;
                for (std::int64_t j = 0; j < n_seen && !shared; ++j) {
                    const int len = static_cast<int>(seen[2 * j + 1]);
                    shared = len > consumed && prefix(seen[2 * j], len, consumed) == mine;
                }
                if (!shared) words += (std::int64_t{1} << lv.width[k + 1]) + 1;
            }
            seen[2 * n_seen] = c.bits;
            seen[2 * n_seen + 1] = static_cast<std::uint32_t>(c.length);
            ++n_seen;
        }
    }
    kivsFree(seen);
    if (words * 4 > INT_MAX) return kivStsNoMemory;
    auto* t = reinterpret_cast<std::int32_t*>(kivsMalloc_8u(static_cast<Kiv32s>(words * 4)));
    if (!t) return kivStsNoMemory;
    for (std::int64_t i = 0; i < words; ++i) t[i] = kEmptyEntry;
    t[0] = lv.width[0];
    std::int64_t next_free = (std::int64_t{1} << lv.width[0]) + 1;

    SourceWalker w(source, kind);
    Code c;
    while (w.next(c)) {
        if (!placeable(c, lv)) continue;
        std::int32_t* sub = t;  // width word of the current table
        int consumed = 0;
        for (int k = 0;; ++k) {
            const int width = lv.width[k];
            consumed += width;
            if (consumed >= c.length) {
                const int above = consumed - width;
                const int give_back = consumed - c.length;
                const std::uint32_t low = c.bits & ((1u << (c.length - above)) - 1);  // c.length - above <= 20
                const std::int32_t e = terminal_entry(c, kind, give_back);
                std::int32_t* first = sub + 1 + (low << give_back);
                for (std::int32_t i = 0; i < (std::int32_t{1} << give_back); ++i) first[i] = e;
                break;
            }
            const std::uint32_t index = (c.bits >> (c.length - consumed)) & ((1u << width) - 1);
            std::int32_t& entry = sub[1 + index];
            if (!(entry & kLinkFlag)) {
                // Empty, or (for overlapping codes) a shorter code's entry: a
                // new sub-table, provided the measured size holds it. Only
                // sets that are not prefix-free can run out of room.
                const std::int64_t size = (std::int64_t{1} << lv.width[k + 1]) + 1;
                if (next_free + size > words) break;
                entry = static_cast<std::int32_t>((next_free << 8) | kLinkFlag);
                t[next_free] = lv.width[k + 1];
                next_free += size;
            }
            sub = t + (entry >> 8);
        }
    }
    *table = t;
    return kivStsOk;
}

}  // namespace kivvc::vlc
