// Scalar edge filters: one line routine per filter serves both directions
// through its step across the edge.
#include <cstddef>

#include "core/arith.h"
#include "h263/edge_kernels.h"

namespace kivvc::h263 {

const std::int32_t h263_Deblock_QPStrength[32] = {0, 1, 1, 2, 2, 3, 3, 4, 4, 4, 5, 5, 6, 6, 7, 7,
                                                  7, 8, 8, 8, 9, 9, 9, 10, 10, 10, 11, 11, 11, 12, 12, 12};

namespace {

inline int abs_int(int v) { return v < 0 ? -v : v; }
inline int max_int(int a, int b) { return a > b ? a : b; }

// The correction d with its strength ramp: d while |d| <= s, falling to 0 at 2s.
inline int up_down_ramp(int d, int s) {
    const int m = max_int(0, abs_int(d) - max_int(0, 2 * (abs_int(d) - s)));
    return d < 0 ? -m : m;
}

// Samples A, B, C, D at -2, -1, 0, +1 steps of `across` from p. Divisions
// truncate toward zero as C++ "/" does.
void deblock_line(std::uint8_t* p, std::ptrdiff_t across, int strength) {
    const int a = p[-2 * across], b = p[-across], c = p[0], d = p[across];
    const int d1 = up_down_ramp((a - 4 * b + 4 * c - d) / 8, strength);
    const int lim = abs_int(d1) >> 1;
    const int d2 = clip3(-lim, lim, (a - d) / 4);
    p[-2 * across] = static_cast<std::uint8_t>(a - d2);
    p[-across] = clip_u8(b + d1);
    p[0] = clip_u8(c - d1);
    p[across] = static_cast<std::uint8_t>(d + d2);
}

void boundary_line(std::uint8_t* p, std::ptrdiff_t across) {
    const int a = p[-across], b = p[0];
    p[-across] = static_cast<std::uint8_t>((3 * a + b + 2) >> 2);
    p[0] = static_cast<std::uint8_t>((a + 3 * b + 2) >> 2);
}

template <int Lines, bool Horizontal>
void deblock(std::uint8_t* p, int step, int strength) {
    const std::ptrdiff_t across = Horizontal ? step : 1, along = Horizontal ? 1 : step;
    for (int i = 0; i < Lines; ++i) deblock_line(p + i * along, across, strength);
}

template <bool Horizontal>
void boundary(std::uint8_t* p, int step) {
    const std::ptrdiff_t across = Horizontal ? step : 1, along = Horizontal ? 1 : step;
    for (int i = 0; i < 16; ++i) boundary_line(p + i * along, across);
}

}  // namespace

void init_edge(EdgeTable& t, CpuFlags cpu) {
    t.deblock8[0] = &deblock<8, true>;
    t.deblock8[1] = &deblock<8, false>;
    t.deblock16[0] = &deblock<16, true>;
    t.deblock16[1] = &deblock<16, false>;
    t.boundary[0] = &boundary<true>;
    t.boundary[1] = &boundary<false>;
#if KIVVC_X86
    if (!(cpu & kSse2)) return;
    init_edge_sse2(t);
#else
    (void)cpu;
#endif
}

const EdgeTable& edge_table() {
    static const EdgeTable t = [] {
        EdgeTable x{};
        init_edge(x, active_flags());
        return x;
    }();
    return t;
}

}  // namespace kivvc::h263
