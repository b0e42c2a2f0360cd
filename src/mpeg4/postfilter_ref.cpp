// Scalar deblocking post-filter: one line routine serves both edge
// directions through its step across the edge.
#include <cstdlib>

#include "core/arith.h"
#include "mpeg4/postfilter_kernels.h"

namespace kivvc::postfilter {
namespace {

// x // 8 with halves away from zero.
inline int div8_away(int x) { return x >= 0 ? (x + 4) >> 3 : (x + 3) >> 3; }

// s[k] = p[(k - 5) * across], k = 0..9.
void filter_line(std::uint8_t* p, std::ptrdiff_t across, int qp, int thr1, int thr2) {
    int s[10];
    for (int k = 0; k < 10; ++k) s[k] = p[(k - 5) * across];
    int eq_cnt = 0;
    for (int i = 0; i < 9; ++i) eq_cnt += std::abs(s[i] - s[i + 1]) <= thr1;
    int out[10];
    for (int k = 0; k < 10; ++k) out[k] = s[k];
    if (eq_cnt >= thr2) {
        int mx = s[1], mn = s[1];
        for (int k = 2; k <= 8; ++k) {
            mx = s[k] > mx ? s[k] : mx;
            mn = s[k] < mn ? s[k] : mn;
        }
        if (mx - mn >= 2 * qp) return;
        const int p0 = std::abs(s[1] - s[0]) < qp ? s[0] : s[1];
        const int p9 = std::abs(s[8] - s[9]) < qp ? s[9] : s[8];
        auto q = [&](int k) { return k < 1 ? p0 : (k > 8 ? p9 : s[k]); };
        for (int n = 1; n <= 8; ++n)
            out[n] = (q(n - 4) + q(n - 3) + 2 * q(n - 2) + 2 * q(n - 1) + 4 * q(n) + 2 * q(n + 1) + 2 * q(n + 2) +
                      q(n + 3) + q(n + 4) + 8) >> 4;
    } else {
        const int a0 = div8_away(2 * s[3] - 5 * s[4] + 5 * s[5] - 2 * s[6]);
        const int a1 = div8_away(2 * s[1] - 5 * s[2] + 5 * s[3] - 2 * s[4]);
        const int a2 = div8_away(2 * s[5] - 5 * s[6] + 5 * s[7] - 2 * s[8]);
        int m = std::abs(a0);
        m = std::abs(a1) < m ? std::abs(a1) : m;
        m = std::abs(a2) < m ? std::abs(a2) : m;
        const int a0p = a0 >= 0 ? m : -m;
        if (a0p == a0 || std::abs(a0) >= qp) return;
        const int t = div8_away(5 * (a0p - a0));
        const int d = s[4] < s[5] ? clip3(-((s[5] - s[4]) >> 1), 0, t) : clip3(0, (s[4] - s[5]) >> 1, t);
        out[4] = s[4] - d;
        out[5] = s[5] + d;
    }
    for (int k = 1; k <= 8; ++k) p[(k - 5) * across] = static_cast<std::uint8_t>(out[k]);
}

template <bool Horizontal>
void edge(std::uint8_t* p, int step, int qp, int thr1, int thr2) {
    const std::ptrdiff_t across = Horizontal ? step : 1, along = Horizontal ? 1 : step;
    for (int line = 0; line < 8; ++line) filter_line(p + line * along, across, qp, thr1, thr2);
}

}  // namespace

void init_postfilter(Table& t, CpuFlags cpu) {
    t.horizontal_edge = &edge<true>;
    t.vertical_edge = &edge<false>;
#if KIVVC_X86
    if (!(cpu & kSse2)) return;
    init_postfilter_sse2(t);
#else
    (void)cpu;
#endif
}

const Table& table() { return process_table<Table, init_postfilter>(); }

}  // namespace kivvc::postfilter
