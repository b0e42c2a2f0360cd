// Shared driver of the CAVLC fuzz targets. Each input is decoded twice:
// first over the data followed by zero words covering the most a block may
// consume (1000 bits) plus the look-ahead word, to check that bound; then,
// when the block decoded, over an allocation that ends exactly one word
// after the word holding the last bit consumed (the documented look-ahead),
// which must give the same result. Every buffer is its own allocation, so
// ASan reports any read or write beyond it.
#pragma once
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "../../../tests/h264/residual/cavlc_code_tables.h"
#include "fuzz_input.h"
#include "kivvc.h"

namespace kivvc::fuzz::cavlc {

inline constexpr std::size_t kMaxBlockBits = 1000;

inline const test::cavlc_codes::BuiltTables& tables() {
    static const test::cavlc_codes::BuiltTables t;
    return t;
}

template <class T>
std::unique_ptr<T[]> copy_of(const T* src, std::size_t n, std::size_t total) {
    std::unique_ptr<T[]> p(new T[total]());
    if (n) std::memcpy(p.get(), src, n * sizeof(T));
    return p;
}

struct Result {
    KivStatus status;
    std::size_t consumed;  // bits from the buffer start to the cursor
    Kiv16s count;
    std::ptrdiff_t advanced;
    std::vector<long> coeffs;
};

// decode(Kiv32u** word, Kiv32s* offset, Kiv16s* count, Coeff** out) -> KivStatus.
template <class Coeff, class Decode>
Result run_once(const Kiv32u* words, std::size_t n, std::size_t total, int offset, int block, Decode decode) {
    auto buffer = copy_of(words, n, total);
    std::unique_ptr<Coeff[]> out(new Coeff[std::size_t(block)]());
    Kiv32u* word = buffer.get();
    Kiv32s off = offset;
    Kiv16s count = -1;
    Coeff* p = out.get();
    Result r;
    r.status = decode(&word, &off, &count, &p);
    r.consumed = std::size_t(word - buffer.get()) * 32 + std::size_t(31 - off);
    r.count = count;
    r.advanced = p - out.get();
    for (int i = 0; i < block; ++i) r.coeffs.push_back(long(out[std::size_t(i)]));
    return r;
}

template <class Coeff, class Decode>
int check(Input& in, int block, Decode decode) {
    const int offset = in.range(0, 31);
    const auto data = in.rest_words(0);
    const std::size_t start = std::size_t(31 - offset);
    const std::size_t ample = data.size() + kMaxBlockBits / 32 + 2;
    const Result a = run_once<Coeff>(data.data(), data.size(), ample, offset, block, decode);
    if (a.consumed < start || a.consumed - start > kMaxBlockBits) std::abort();
    if (a.status != kivStsOk) return 0;
    if (a.advanced != 0 && a.advanced != block) std::abort();
    if (a.consumed == start) std::abort();  // every block takes at least one bit
    const std::size_t words = (a.consumed - 1) / 32 + 2;
    const Result b = run_once<Coeff>(data.data(), std::min(words, data.size()), words, offset, block, decode);
    if (b.status != a.status || b.consumed != a.consumed || b.count != a.count || b.coeffs != a.coeffs) std::abort();
    return 0;
}

inline const Kiv32s** arr(const Kiv32s* const* p) { return const_cast<const Kiv32s**>(p); }

// Raster index of each scan position: the frame zig-zag.
inline constexpr Kiv32s kZigzag[16] = {0, 1, 4, 8, 5, 2, 3, 6, 9, 12, 13, 10, 7, 11, 14, 15};

}  // namespace kivvc::fuzz::cavlc
