// SSE4.1 16-bit interpolation kernels: luma and chroma in strips of four
// (and two) columns in 32-bit lanes.
#include <utility>

#include "h264/inter/interp_simd16.h"

namespace kivvc::interp {

void init_interp_sse41(Table& t) { fill16<Wide4>(t, std::make_integer_sequence<int, kLumaKernels>{}); }

}  // namespace kivvc::interp
