// Kernel cases of the DV inverse quantisers.
#include "dv/dv_kernels.h"
#include "support/kernel_case.h"

namespace kivvc::test {
namespace {

using dv::Table;
const Table& at(CpuFlags f) { return table_for<Table, dv::init_dv>(f); }

// Full 16-bit ranges: the wraps of the products must match too. The block
// is scaled by one table (quant_inv), two (quant_weight) or a table and a
// step (quant_weight_dv100).
enum class Form { Table, TwoTables, TableAndStep };

struct QuantInvExercise {
    Form form;
    template <class P>
    void operator()(const void* f, P& p) const {
        const auto* a = p.template array<std::int16_t>(64, -32768, 32767);
        const auto* b = form == Form::TwoTables ? p.template array<std::int16_t>(64, -32768, 32767) : a;
        const auto step = static_cast<std::int16_t>(form == Form::TableAndStep ? p.value(-32768, 32767) : 0);
        auto* block = p.template out_array<std::int16_t>(64);
        if (form == Form::Table) {
            const auto fn = kernel_cast<dv::QuantInvFn>(f);
            p.call([=] { fn(block, a); });
        } else if (form == Form::TwoTables) {
            const auto fn = kernel_cast<dv::QuantWeightFn>(f);
            p.call([=] { fn(block, a, b); });
        } else {
            const auto fn = kernel_cast<dv::QuantWeightStepFn>(f);
            p.call([=] { fn(block, a, step); });
        }
    }
};

}  // namespace

KIVVC_CASES(register_dv_cases) {
    add_case("dv", "quant_inv", [](CpuFlags f) { return at(f).quant_inv; }, QuantInvExercise{Form::Table});
    add_case("dv", "quant_weight", [](CpuFlags f) { return at(f).quant_weight; }, QuantInvExercise{Form::TwoTables});
    add_case("dv", "quant_weight_dv100", [](CpuFlags f) { return at(f).quant_weight_dv100; },
             QuantInvExercise{Form::TableAndStep});
}

}  // namespace kivvc::test
