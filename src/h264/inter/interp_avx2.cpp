// AVX2 interpolation kernels: the 8-bit luma positions in strips of sixteen
// columns (narrower remainders in 128-bit registers), and the 16-bit luma and
// chroma kernels in 32-bit lanes, exact for every 16-bit sample value.
#include <immintrin.h>

#include <utility>

#include "h264/inter/interp_simd.h"
#include "h264/inter/interp_simd16.h"

namespace kivvc::interp {
namespace {

using Avx16 = Bytes<256, 16>;
using Wide8 = Wide<256, 8>;

// The vertical pass of a four-column strip runs in eight-column chunks.
template <>
struct ChunkOf<Wide4> {
    using type = Wide8;
};

template <int Type>
void luma8(const u8* src, int srcStep, u8* dst, int dstStep, int width, int height) {
    int x = 0;
    for (; x + 16 <= width; x += 16) strip<Avx16, Type>(Avx16{}, src + x, srcStep, dst + x, dstStep, height);
    if (x + 8 <= width) {
        strip<Sse8, Type>(Sse8{}, src + x, srcStep, dst + x, dstStep, height);
        x += 8;
    }
    if (x + 4 <= width) strip<Sse4, Type>(Sse4{}, src + x, srcStep, dst + x, dstStep, height);
}

template <int... I>
void fill(Table& t, std::integer_sequence<int, I...>) {
    ((t.luma_8u[I] = &luma8<I>), ...);
}

}  // namespace

void init_interp_avx2(Table& t) {
    fill(t, std::make_integer_sequence<int, kLumaKernels>{});
    fill16<Wide8>(t, std::make_integer_sequence<int, kLumaKernels>{});
}

}  // namespace kivvc::interp
