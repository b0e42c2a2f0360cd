// Helpers shared by the metrics kernel files; internal linkage, so a
// SIMD-flagged file keeps its own copy.
#pragma once
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "common/metrics_kernels.h"

namespace kivvc::metrics {
namespace {

// Row y of a plane whose step is in bytes, for any sample type.
template <class T>
inline T* row(T* p, int step, int y) {
    using Byte = std::conditional_t<std::is_const_v<T>, const std::uint8_t, std::uint8_t>;
    return reinterpret_cast<T*>(reinterpret_cast<Byte*>(p) + std::ptrdiff_t(y) * step);
}

// t[i] = make(std::integral_constant<int, i>) for every entry.
template <class Fn, std::size_t N, class Make, std::size_t... I>
void fill_each(Fn (&t)[N], Make make, std::index_sequence<I...>) {
    ((t[I] = make(std::integral_constant<int, int(I)>{})), ...);
}
template <class Fn, std::size_t N, class Make>
void fill(Fn (&t)[N], Make make) {
    fill_each(t, make, std::make_index_sequence<N>{});
}

// Fills the ten GetDiff tables from a file's kernels K::at<W, H, Pos> and
// K::bidir<W, H, PosF, PosB>; the four entries of a position share one kernel.
template <class K>
void fill_get_diff(Table& t) {
    fill(t.GetDiff16x16FnTbl, [](auto i) { return K::template at<16, 16, i.value / 4>; });
    fill(t.GetDiff16x8FnTbl, [](auto i) { return K::template at<16, 8, i.value / 4>; });
    fill(t.GetDiff8x16FnTbl, [](auto i) { return K::template at<8, 16, i.value / 4>; });
    fill(t.GetDiff8x8FnTbl, [](auto i) { return K::template at<8, 8, i.value / 4>; });
    fill(t.GetDiff8x4FnTbl, [](auto i) { return K::template at<8, 4, i.value / 4>; });
    fill(t.GetDiff16x16BFnTbl, [](auto i) { return K::template bidir<16, 16, i.value % 4, i.value / 4>; });
    fill(t.GetDiff16x8BFnTbl, [](auto i) { return K::template bidir<16, 8, i.value % 4, i.value / 4>; });
    fill(t.GetDiff8x16BFnTbl, [](auto i) { return K::template bidir<8, 16, i.value % 4, i.value / 4>; });
    fill(t.GetDiff8x8BFnTbl, [](auto i) { return K::template bidir<8, 8, i.value % 4, i.value / 4>; });
    fill(t.GetDiff8x4BFnTbl, [](auto i) { return K::template bidir<8, 4, i.value % 4, i.value / 4>; });
}

// Calls body(Rc) with the rounding control (0 or 1) as a compile-time constant.
template <class Body>
inline void with_rounding(int rc, Body body) {
    if (rc)
        body(std::integral_constant<int, 1>{});
    else
        body(std::integral_constant<int, 0>{});
}
// Calls body(Rc, StorePred), both as compile-time constants.
template <class Body>
inline void with_rounding_and_pred(int rc, bool store_pred, Body body) {
    with_rounding(rc, [&](auto r) {
        if (store_pred)
            body(r, std::true_type{});
        else
            body(r, std::false_type{});
    });
}

}  // namespace
}  // namespace kivvc::metrics
