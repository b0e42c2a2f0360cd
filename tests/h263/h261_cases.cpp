// Kernel cases of the H.261 loop filter.
#include "h263/h261_kernels.h"
#include "support/kernel_case.h"

namespace kivvc::test {
namespace {

const h263::H261Table& at(CpuFlags f) { return table_for<h263::H261Table, h263::init_h261>(f); }

struct LoopFilterExercise {
    template <class P>
    void operator()(const void* f, P& p) const {
        const auto src = p.template in_plane<std::uint8_t>(8, 8, 0, 255);
        const auto dst = p.template out_plane<std::uint8_t>(8, 8);
        const auto fn = kernel_cast<h263::LoopFilterFn>(f);
        p.call([=] { fn(src.ptr, src.step, dst.ptr, dst.step); });
    }
};

}  // namespace

KIVVC_CASES(register_h261_cases) {
    add_case("h263", "h261/filter8x8", [](CpuFlags f) { return at(f).filter8x8; }, LoopFilterExercise{});
}

}  // namespace kivvc::test
