// SSE2 interpolation kernels: all sixteen 8-bit luma positions in strips of
// eight and four columns, the 8-bit chroma kernels in strips of eight, four
// and two, and the bi-prediction average.
#include <emmintrin.h>

#include <cstring>
#include <utility>

#include "h264/inter/interp_simd.h"

namespace kivvc::interp {
namespace {

// Widths are sums of 8 and 4 (16 = 8 + 8).
template <int Type>
void luma_kernel(const u8* src, int srcStep, u8* dst, int dstStep, int width, int height) {
    int x = 0;
    for (; x + 8 <= width; x += 8) strip<Sse8, Type>(Sse8{}, src + x, srcStep, dst + x, dstStep, height);
    if (x + 4 <= width) strip<Sse4, Type>(Sse4{}, src + x, srcStep, dst + x, dstStep, height);
}

// Chroma: ((8 - f) P + f Q + 4) >> 3 in one direction; both directions as
// ((8 - dy) H(y) + dy H(y + 1) + 32) >> 6 with H(y) = (8 - dx) A + dx B
// (at most 2040, the sum at most 16352: 16-bit lanes suffice).
template <class V, int Type>
void chroma_strip(const u8* src, ptrdiff_t ss, u8* dst, ptrdiff_t ds, int dx, int dy, int height) {
    if constexpr (Type == 0) {
        for (int y = 0; y < height; ++y, src += ss, dst += ds) V::store(dst, V::bytes(src));
    } else if constexpr (Type == 1) {
        const __m128i w0 = _mm_set1_epi16(short(8 - dx)), w1 = _mm_set1_epi16(short(dx)), r = _mm_set1_epi16(4);
        for (int y = 0; y < height; ++y, src += ss, dst += ds) {
            const __m128i v = _mm_add_epi16(_mm_mullo_epi16(V::widen(src), w0), _mm_mullo_epi16(V::widen(src + 1), w1));
            V::store(dst, V::narrow(_mm_srli_epi16(_mm_add_epi16(v, r), 3)));
        }
    } else if constexpr (Type == 2) {
        const __m128i w0 = _mm_set1_epi16(short(8 - dy)), w1 = _mm_set1_epi16(short(dy)), r = _mm_set1_epi16(4);
        __m128i cur = V::widen(src);
        for (int y = 0; y < height; ++y, src += ss, dst += ds) {
            const __m128i next = V::widen(src + ss);
            const __m128i v = _mm_add_epi16(_mm_mullo_epi16(cur, w0), _mm_mullo_epi16(next, w1));
            V::store(dst, V::narrow(_mm_srli_epi16(_mm_add_epi16(v, r), 3)));
            cur = next;
        }
    } else {
        const __m128i a = _mm_set1_epi16(short(8 - dx)), b = _mm_set1_epi16(short(dx));
        const __m128i c = _mm_set1_epi16(short(8 - dy)), d = _mm_set1_epi16(short(dy)), r = _mm_set1_epi16(32);
        const auto row = [&](const u8* p) {
            return _mm_add_epi16(_mm_mullo_epi16(V::widen(p), a), _mm_mullo_epi16(V::widen(p + 1), b));
        };
        __m128i cur = row(src);
        for (int y = 0; y < height; ++y, src += ss, dst += ds) {
            const __m128i next = row(src + ss);
            const __m128i v = _mm_add_epi16(_mm_mullo_epi16(cur, c), _mm_mullo_epi16(next, d));
            V::store(dst, V::narrow(_mm_srli_epi16(_mm_add_epi16(v, r), 6)));
            cur = next;
        }
    }
}

template <int Type>
void chroma_kernel(const u8* src, int srcStep, u8* dst, int dstStep, int dx, int dy, int width, int height) {
    int x = 0;
    for (; x + 8 <= width; x += 8) chroma_strip<Sse8, Type>(src + x, srcStep, dst + x, dstStep, dx, dy, height);
    if (x + 4 <= width) {
        chroma_strip<Sse4, Type>(src + x, srcStep, dst + x, dstStep, dx, dy, height);
        x += 4;
    }
    if (x + 2 <= width) chroma_strip<Sse2w, Type>(src + x, srcStep, dst + x, dstStep, dx, dy, height);
}

using Sse16 = Bytes<128, 16>;

template <class V>
void average_strip(const u8* a, ptrdiff_t as, const u8* b, ptrdiff_t bs, u8* dst, ptrdiff_t ds, int height) {
    for (int y = 0; y < height; ++y, a += as, b += bs, dst += ds) V::store(dst, _mm_avg_epu8(V::bytes(a), V::bytes(b)));
}

// Any width: strips of sixteen, eight, four and two columns, then one.
void average(const u8* a, int aStep, const u8* b, int bStep, u8* dst, int dstStep, int width, int height) {
    int x = 0;
    for (; x + 16 <= width; x += 16) average_strip<Sse16>(a + x, aStep, b + x, bStep, dst + x, dstStep, height);
    if (x + 8 <= width) {
        average_strip<Sse8>(a + x, aStep, b + x, bStep, dst + x, dstStep, height);
        x += 8;
    }
    if (x + 4 <= width) {
        average_strip<Sse4>(a + x, aStep, b + x, bStep, dst + x, dstStep, height);
        x += 4;
    }
    if (x + 2 <= width) {
        average_strip<Sse2w>(a + x, aStep, b + x, bStep, dst + x, dstStep, height);
        x += 2;
    }
    if (x < width)
        for (int y = 0; y < height; ++y)
            dst[std::ptrdiff_t(y) * dstStep + x] =
                static_cast<u8>((a[std::ptrdiff_t(y) * aStep + x] + b[std::ptrdiff_t(y) * bStep + x] + 1) >> 1);
}

template <int... I>
void fill_luma(Table& t, std::integer_sequence<int, I...>) {
    ((t.luma_8u[I] = &luma_kernel<I>), ...);
}

}  // namespace

void init_interp_sse2(Table& t) {
    fill_luma(t, std::make_integer_sequence<int, kLumaKernels>{});
    t.chroma_8u[0] = &chroma_kernel<0>;
    t.chroma_8u[1] = &chroma_kernel<1>;
    t.chroma_8u[2] = &chroma_kernel<2>;
    t.chroma_8u[3] = &chroma_kernel<3>;
    t.average_8u = &average;
}

}  // namespace kivvc::interp
