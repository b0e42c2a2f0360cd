// Shared pieces of the MPEG-4 decoder fuzz targets: stream buffers whose
// allocation ends (or starts) exactly at the documented look-ahead, and the
// invariants every decoder keeps.
#pragma once
#include <cstdlib>
#include <cstring>
#include <memory>

#include "fuzz_input.h"
#include "kivvc.h"

namespace kivvc::fuzz {

// The rest of the input followed by the four bytes forward readers may look
// at, in an allocation of exactly that size. Zero look-ahead bytes hold no
// code, so decoding always stops inside it.
struct ForwardStream {
    std::unique_ptr<Kiv8u[]> mem;
    std::size_t size;  // data bytes
    explicit ForwardStream(Input& in) {
        const auto bytes = in.rest_bytes();
        size = bytes.size();
        mem.reset(new Kiv8u[size + 4]());
        if (size) std::memcpy(mem.get(), bytes.data(), size);
    }
};

// Four zero bytes, then the rest of the input, the allocation starting at the
// zeros: a backward reader stops on them within the two bytes it may look
// before a code (no code has four leading zeros).
struct BackwardStream {
    std::unique_ptr<Kiv8u[]> mem;
    std::size_t size;
    explicit BackwardStream(Input& in) {
        const auto bytes = in.rest_bytes();
        size = bytes.size();
        mem.reset(new Kiv8u[size + 4]());
        if (size) std::memcpy(mem.get() + 4, bytes.data(), size);
    }
    Kiv8u* data() { return mem.get() + 4; }
};

// After a coefficient decoder: the status is Ok or BadBitstreamCode, the
// last position in range, and a failed call left the cursor alone.
inline void check_decode(KivStatus s, int last, int first_last, const Kiv8u* p0, int o0, const Kiv8u* p, int o) {
    if (s != kivStsOk && s != kivStsBadBitstreamCode) std::abort();
    if (last < first_last || last > 63) std::abort();
    if (s != kivStsOk && (p != p0 || o != o0)) std::abort();
    if (o < 0 || o > 7) std::abort();
}

// A backward decode from a sign bit in the last input byte; `decode(pp,
// offset, block, last)` is the decoder. On an error the last position is the
// fill position reached (-64..63).
template <class Decode>
void run_backward(Input& in, int first_last, Decode decode) {
    int offset = in.range(0, 7);
    BackwardStream s(in);
    if (s.size == 0) return;
    Kiv8u* const p0 = s.data() + s.size - 1;
    Kiv8u* p = p0;
    Kiv16s block[64];
    int last = 0;
    const int o0 = offset;
    const KivStatus st = decode(&p, &offset, block, &last);
    if (st == kivStsOk) check_decode(st, last, first_last, p0, o0, p, offset);
    else if (st != kivStsBadBitstreamCode || p != p0 || offset != o0 || last < -64 || last > 63) std::abort();
}

}  // namespace kivvc::fuzz
