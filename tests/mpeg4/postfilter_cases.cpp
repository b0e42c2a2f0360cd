// Kernel cases of the deblocking post-filter.
#include "mpeg4/postfilter_kernels.h"
#include "support/kernel_case.h"

namespace kivvc::test {
namespace {

const postfilter::Table& at(CpuFlags f) { return table_for<postfilter::Table, postfilter::init_postfilter>(f); }

struct EdgeExercise {
    bool horizontal;
    template <class P>
    void operator()(const void* f, P& p) const {
        // The segment with its five lines of context on each side, filtered in place.
        const auto area = horizontal ? p.template out_plane<std::uint8_t>(8, 10) : p.template out_plane<std::uint8_t>(10, 8);
        std::uint8_t* edge = horizontal ? area.row(5) : area.ptr + 5;
        const int qp = p.rng.range(1, 31), thr1 = p.rng.range(-1, 12), thr2 = p.rng.range(0, 11);
        const auto fn = kernel_cast<postfilter::EdgeFn>(f);
        const int step = area.step;
        p.call([=] { fn(edge, step, qp, thr1, thr2); });
    }
};

}  // namespace

KIVVC_CASES(register_postfilter_cases) {
    add_case("mpeg4", "postfilter/horizontal_edge", [](CpuFlags f) { return at(f).horizontal_edge; }, EdgeExercise{true});
    add_case("mpeg4", "postfilter/vertical_edge", [](CpuFlags f) { return at(f).vertical_edge; }, EdgeExercise{false});
}

}  // namespace kivvc::test
