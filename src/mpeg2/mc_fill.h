// Fills the motion-compensation kernel tables from a kernel family. Internal
// linkage, so each file (whatever its target flags) keeps its own copy.
#pragma once
#include <utility>

#include "mpeg2/mpeg2_kernels.h"

namespace kivvc::mpeg2 {
namespace {

// Single reference: entry i is position i / 2 with rounding i % 2; both FF
// entries are the rounding-0 kernel. Two references: rounding fastest, then
// the forward position, then the backward one; FF/FF always rounding 0.
// K provides K::fn<Pos, Rc> and K::fn_b<PosF, PosB, Rc>.
template <class K, std::size_t... I, std::size_t... J>
void fill_mc_tables(McFn (&single)[8], McBFn (&two)[32], std::index_sequence<I...>, std::index_sequence<J...>) {
    ((single[I] = K::template fn<int(I / 2), (I / 2 == 0 ? 0 : int(I % 2))>), ...);
    ((two[J] = K::template fn_b<int((J / 2) % 4), int(J / 8), (J / 2 == 0 ? 0 : int(J % 2))>), ...);
}
template <class K>
void fill_mc_tables(McFn (&single)[8], McBFn (&two)[32]) {
    fill_mc_tables<K>(single, two, std::make_index_sequence<8>{}, std::make_index_sequence<32>{});
}

// Small blocks: entry i of the single table is position i / 4; entry i of
// the two-reference table has forward position i % 4, backward i / 4.
// K provides K::fn<Pos> and K::fn_b<PosF, PosB>.
template <class K, std::size_t... I>
void fill_mc_small_tables(McSmallFn (&single)[16], McSmallBFn (&two)[16], std::index_sequence<I...>) {
    ((single[I] = K::template fn<int(I / 4)>), ...);
    ((two[I] = K::template fn_b<int(I % 4), int(I / 4)>), ...);
}
template <class K>
void fill_mc_small_tables(McSmallFn (&single)[16], McSmallBFn (&two)[16]) {
    fill_mc_small_tables<K>(single, two, std::make_index_sequence<16>{});
}

}  // namespace
}  // namespace kivvc::mpeg2
