// Shared pieces of the H.261 and H.263 decoder fuzz targets: a stream buffer
// whose allocation ends at the readers' look-ahead, and the invariants every
// decoder keeps.
#pragma once
#include <cstdlib>
#include <cstring>
#include <memory>

#include "fuzz_input.h"
#include "kivvc.h"

namespace kivvc::fuzz {

// The rest of the input followed by zero bytes, in an allocation of exactly
// that size. A decoder may consume codes whose trailing zeros reach up to
// two bytes into the zeros; it then stops at the first all-zero pattern (no
// code) after loading the four bytes from its start: eight bytes cover both.
struct ZeroPaddedStream {
    static constexpr std::size_t kPadding = 8;
    std::unique_ptr<Kiv8u[]> mem;
    std::size_t size;
    explicit ZeroPaddedStream(Input& in) {
        const auto bytes = in.rest_bytes();
        size = bytes.size();
        mem.reset(new Kiv8u[size + kPadding]());
        if (size) std::memcpy(mem.get(), bytes.data(), size);
    }
};

// After a decoder: Ok or BadBitstreamCode, the last position within
// [lowest, 63], the offset valid, and the cursor unchanged on failure unless
// the decoder documents `failed_at` as where it stops (null: unchanged).
inline void check_decode(KivStatus s, int last, int lowest, const Kiv8u* p0, int o0, const Kiv8u* p, int o,
                         const Kiv8u* failed_at = nullptr) {
    if (s != kivStsOk && s != kivStsBadBitstreamCode) std::abort();
    if (last < lowest || last > 63) std::abort();
    if (o < 0 || o > 7) std::abort();
    if (s != kivStsOk && !failed_at && (p != p0 || o != o0)) std::abort();
    if (s != kivStsOk && failed_at && (p != p0 || o != o0) && (p != failed_at || o != o0)) std::abort();
}

}  // namespace kivvc::fuzz
