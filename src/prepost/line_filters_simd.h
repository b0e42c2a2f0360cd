// Bodies of the vector deinterlacing line filters, written once over a
// vector-operations struct V (bytes, V::kLanes per register) that each SIMD
// file supplies. Internal linkage only: every SIMD file compiles its own copy
// with its own target flags.
//
// The median of three is max(min(a, b), min(max(a, b), c)); absolute
// differences come from two saturating subtractions; averages round up.
#pragma once
#include "core/arith.h"
#include "prepost/prepost_kernels.h"

namespace kivvc::prepost {
namespace {

template <class V>
typename V::Reg abs_diff(typename V::Reg a, typename V::Reg b) {
    return V::bit_or(V::subs_u8(a, b), V::subs_u8(b, a));
}
template <class V>
typename V::Reg select(typename V::Reg mask, typename V::Reg yes, typename V::Reg no) {
    return V::bit_or(V::bit_and(mask, yes), V::and_not(mask, no));
}
// All ones where a <= b (unsigned bytes).
template <class V>
typename V::Reg less_equal(typename V::Reg a, typename V::Reg b) {
    return V::equal_u8(V::subs_u8(a, b), V::splat_u8(0));
}

template <class V>
void median_line_simd(const u8* above, const u8* line, const u8* below, u8* dst, int width, int threshold) {
    // |m - c| < t  <=>  |m - c| <= t - 1; t <= 0 keeps nothing, t >= 256 everything.
    const int t = clip3(0, 256, threshold);
    const auto limit = V::splat_u8(t == 0 ? 0 : t - 1);
    const auto enabled = V::splat_u8(t == 0 ? 0 : 255);
    int x = 0;
    for (; x + V::kLanes <= width; x += V::kLanes) {
        const auto a = V::load(above + x), c = V::load(line + x), b = V::load(below + x);
        const auto m = V::max_u8(V::min_u8(a, b), V::min_u8(V::max_u8(a, b), c));
        const auto keep = V::bit_and(less_equal<V>(abs_diff<V>(m, c), limit), enabled);
        V::store(dst + x, select<V>(keep, c, m));
    }
    median_columns(above, line, below, dst, x, width, threshold);
}

template <class V>
void edge_line_simd(const u8* u, const u8* l, const u8* on, u8* dst, int width) {
    int x = 1;
    for (; x + V::kLanes + 1 <= width; x += V::kLanes) {
        const auto ul = V::load(u + x - 1), uc = V::load(u + x), ur = V::load(u + x + 1);
        const auto ll = V::load(l + x - 1), lc = V::load(l + x), lr = V::load(l + x + 1);
        const auto d1 = abs_diff<V>(ul, lr), d2 = abs_diff<V>(ur, ll), dv = abs_diff<V>(uc, lc);
        const auto vertical = V::avg_u8(uc, lc);
        const auto rising = select<V>(less_equal<V>(dv, d2), vertical, V::avg_u8(ll, ur));
        const auto falling = select<V>(less_equal<V>(dv, d1), vertical, V::avg_u8(ul, lr));
        V::store(dst + x, select<V>(less_equal<V>(d2, d1), rising, falling));
    }
    edge_columns(u, l, dst, x, width - 1);
    dst[0] = on[0];
    dst[width - 1] = on[width - 1];
}

}  // namespace
}  // namespace kivvc::prepost
