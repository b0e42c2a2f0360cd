// Kernel cases of the edge filters.
#include "h263/edge_kernels.h"
#include "support/kernel_case.h"

namespace kivvc::test {
namespace {

const h263::EdgeTable& at(CpuFlags f) { return table_for<h263::EdgeTable, h263::init_edge>(f); }

// The edge with its lines of context, filtered in place; `reach` lines on
// each side of the edge, `lines` along it.
struct EdgeExercise {
    bool horizontal;
    int lines, reach;
    bool deblock;
    template <class P>
    void operator()(const void* f, P& p) const {
        const auto area = horizontal ? p.template out_plane<std::uint8_t>(lines, 2 * reach, 0, 255)
                                     : p.template out_plane<std::uint8_t>(2 * reach, lines, 0, 255);
        std::uint8_t* edge = horizontal ? area.row(reach) : area.ptr + reach;
        const int step = area.step;
        if (deblock) {
            const int strength = lines == 8 ? p.rng.range(1, 12) : h263::kUnlimitedStrength;
            const auto fn = kernel_cast<h263::DeblockFn>(f);
            p.call([=] { fn(edge, step, strength); });
        } else {
            const auto fn = kernel_cast<h263::BoundaryFn>(f);
            p.call([=] { fn(edge, step); });
        }
    }
};

}  // namespace

KIVVC_CASES(register_h263_edge_cases) {
    add_case("h263", "deblock8/hor_edge", [](CpuFlags f) { return at(f).deblock8[0]; }, EdgeExercise{true, 8, 2, true});
    add_case("h263", "deblock8/ver_edge", [](CpuFlags f) { return at(f).deblock8[1]; }, EdgeExercise{false, 8, 2, true});
    add_case("h263", "deblock16/hor_edge", [](CpuFlags f) { return at(f).deblock16[0]; }, EdgeExercise{true, 16, 2, true});
    add_case("h263", "deblock16/ver_edge", [](CpuFlags f) { return at(f).deblock16[1]; }, EdgeExercise{false, 16, 2, true});
    add_case("h263", "boundary/hor_edge", [](CpuFlags f) { return at(f).boundary[0]; }, EdgeExercise{true, 16, 1, false});
    add_case("h263", "boundary/ver_edge", [](CpuFlags f) { return at(f).boundary[1]; }, EdgeExercise{false, 16, 1, false});
}

}  // namespace kivvc::test
