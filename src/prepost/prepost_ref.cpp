// Scalar references of the deinterlacing line filters and the inverse 2-4-8
// DCT.
#include <cstdlib>

#include "core/arith.h"
#include "prepost/prepost_kernels.h"

namespace kivvc::prepost {
namespace {

// The median of three, chosen as the filter defines it: a when it lies
// between the other two, else c when b does not lie between a and c, else b.
inline int median3(int a, int c, int b) {
    if ((a < c) != (a < b)) return a;
    if ((a < b) == (c < b)) return c;
    return b;
}

void median_line(const u8* above, const u8* line, const u8* below, u8* dst, int width, int threshold) {
    median_columns(above, line, below, dst, 0, width, threshold);
}

void edge_line(const u8* upper, const u8* lower, const u8* on, u8* dst, int width) {
    edge_columns(upper, lower, dst, 1, width - 1);
    dst[0] = on[0];
    dst[width - 1] = on[width - 1];
}

// Basis values scaled by 2^20: kCos8[x][h] = C(h)/2 * cos(pi*h*(2x+1)/16),
// kCos4[z][v] = C(v)/2 * cos(pi*v*(2z+1)/8), C(0) = 1/sqrt(2), else 1.
constexpr int kBasisBits = 20;
constexpr std::int32_t kCos8[8][8] = {
    {370728, 514214, 484379, 435930, 370728, 291279, 200636, 102284},
    {370728, 435930, 200636, -102284, -370728, -514214, -484379, -291279},
    {370728, 291279, -200636, -514214, -370728, 102284, 484379, 435930},
    {370728, 102284, -484379, -291279, 370728, 435930, -200636, -514214},
    {370728, -102284, -484379, 291279, 370728, -435930, -200636, 514214},
    {370728, -291279, -200636, 514214, -370728, -102284, 484379, -435930},
    {370728, -435930, 200636, 102284, -370728, 514214, -484379, 291279},
    {370728, -514214, 484379, -435930, 370728, -291279, 200636, -102284},
};
constexpr std::int32_t kCos4[4][4] = {
    {370728, 484379, 370728, 200636},
    {370728, 200636, -370728, -484379},
    {370728, -200636, -370728, 484379},
    {370728, -484379, 370728, -200636},
};

// Rows 0..3 of the block hold the 4x8 transform of the line-pair sums, rows
// 4..7 that of the differences. Each row is first taken back along the line
// (8 points), then the sum and difference fields are recombined and taken
// back down the 4 line pairs. 64-bit accumulators: |row| < 2^38, |sum| < 2^60, so the
// shifted result fits an int before saturation.
void dct2x4x8_inv(s16* block) {
    std::int64_t rows[8][8];
    for (int v = 0; v < 8; ++v)
        for (int x = 0; x < 8; ++x) {
            std::int64_t acc = 0;
            for (int h = 0; h < 8; ++h) acc += std::int64_t{kCos8[x][h]} * block[v * 8 + h];
            rows[v][x] = acc;
        }
    constexpr std::int64_t kHalf = std::int64_t{1} << (2 * kBasisBits - 1);
    for (int z = 0; z < 4; ++z)
        for (int x = 0; x < 8; ++x) {
            std::int64_t even = kHalf, odd = kHalf;
            for (int v = 0; v < 4; ++v) {
                even += kCos4[z][v] * (rows[v][x] + rows[v + 4][x]);
                odd += kCos4[z][v] * (rows[v][x] - rows[v + 4][x]);
            }
            block[(2 * z) * 8 + x] = sat_s16(static_cast<int>(even >> (2 * kBasisBits)));
            block[(2 * z + 1) * 8 + x] = sat_s16(static_cast<int>(odd >> (2 * kBasisBits)));
        }
}

}  // namespace

void median_columns(const u8* above, const u8* line, const u8* below, u8* dst, int from, int to, int threshold) {
    for (int x = from; x < to; ++x) {
        const int c = line[x];
        const int m = median3(above[x], c, below[x]);
        dst[x] = static_cast<u8>(std::abs(m - c) < threshold ? c : m);
    }
}

// A diagonal wins only when strictly below the vertical difference; between
// equal diagonals the one through U(x + 1) and L(x - 1) is taken.
void edge_columns(const u8* u, const u8* l, u8* dst, int from, int to) {
    for (int x = from; x < to; ++x) {
        const int d1 = std::abs(u[x - 1] - l[x + 1]);
        const int d2 = std::abs(u[x + 1] - l[x - 1]);
        const int dv = std::abs(u[x] - l[x]);
        int v;
        if (d1 >= d2)
            v = d2 < dv ? avg_round_up(l[x - 1], u[x + 1]) : avg_round_up(u[x], l[x]);
        else
            v = d1 < dv ? avg_round_up(u[x - 1], l[x + 1]) : avg_round_up(u[x], l[x]);
        dst[x] = static_cast<u8>(v);
    }
}

void init_prepost(Table& t, CpuFlags cpu) {
    t.median_line = &median_line;
    t.edge_line = &edge_line;
    t.dct2x4x8_inv = &dct2x4x8_inv;
#if KIVVC_X86
    if (!(cpu & kSse2)) return;
    init_prepost_sse2(t);
    if (!(cpu & kAvx2)) return;
    init_prepost_avx2(t);
#else
    (void)cpu;
#endif
}

const Table& table() { return process_table<Table, init_prepost>(); }

}  // namespace kivvc::prepost
