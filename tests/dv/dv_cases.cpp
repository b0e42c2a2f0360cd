// Kernel cases of the DV inverse quantisers.
#include "dv/dv_kernels.h"
#include "support/kernel_case.h"

namespace kivvc::test {
namespace {

using dv::Table;
const Table& at(CpuFlags f) { return table_for<Table, dv::init_dv>(f); }

// Full 16-bit ranges: the wraps of the products must match too.
struct QuantInvExercise {
    template <class P>
    void operator()(const void* f, P& p) const {
        const auto* table = p.template array<std::int16_t>(64, -32768, 32767);
        auto* block = p.template out_array<std::int16_t>(64);
        const auto fn = reinterpret_cast<dv::QuantInvFn>(f);
        p.call([=] { fn(block, table); });
    }
};

struct QuantWeightExercise {
    template <class P>
    void operator()(const void* f, P& p) const {
        const auto* a = p.template array<std::int16_t>(64, -32768, 32767);
        const auto* b = p.template array<std::int16_t>(64, -32768, 32767);
        auto* block = p.template out_array<std::int16_t>(64);
        const auto fn = reinterpret_cast<dv::QuantWeightFn>(f);
        p.call([=] { fn(block, a, b); });
    }
};

struct QuantWeightStepExercise {
    template <class P>
    void operator()(const void* f, P& p) const {
        const auto* w = p.template array<std::int16_t>(64, -32768, 32767);
        const auto step = static_cast<std::int16_t>(p.value(-32768, 32767));
        auto* block = p.template out_array<std::int16_t>(64);
        const auto fn = reinterpret_cast<dv::QuantWeightStepFn>(f);
        p.call([=] { fn(block, w, step); });
    }
};

}  // namespace

KIVVC_CASES(register_dv_cases) {
    add_case("dv", "quant_inv", [](CpuFlags f) { return at(f).quant_inv; }, QuantInvExercise{});
    add_case("dv", "quant_weight", [](CpuFlags f) { return at(f).quant_weight; }, QuantWeightExercise{});
    add_case("dv", "quant_weight_dv100", [](CpuFlags f) { return at(f).quant_weight_dv100; },
             QuantWeightStepExercise{});
}

}  // namespace kivvc::test
