// Kernel cases of the H.263 quantisers.
#include "h263/quant_kernels.h"
#include "support/kernel_case.h"

namespace kivvc::test {
namespace {

const h263::QuantTable& at(CpuFlags f) { return table_for<h263::QuantTable, h263::init_quant>(f); }

struct QuantExercise {
    template <class P>
    void operator()(const void* f, P& p) const {
        std::int16_t* block = p.template out_array<std::int16_t>(64, -32768, 32767);
        const int qp = p.rng.range(1, 31);
        std::int32_t* count = p.template out_array<std::int32_t>(1);
        const auto fn = kernel_cast<h263::QuantFn>(f);
        p.call([=] { *count = fn(block, qp); });
    }
};

struct QuantInvExercise {
    int range;
    template <class P>
    void operator()(const void* f, P& p) const {
        std::int16_t* block = p.template out_array<std::int16_t>(64, -range, range);
        const int qp = p.rng.range(1, 31);
        const int last = p.rng.chance(4) ? 63 : p.rng.range(0, 63);
        const auto fn = kernel_cast<h263::QuantInvFn>(f);
        p.call([=] { fn(block, last, qp); });
    }
};

}  // namespace

KIVVC_CASES(register_h263_quant_cases) {
    add_case("h263", "quant/intra", [](CpuFlags f) { return at(f).ownph263_QuantIntra_16s_I; }, QuantExercise{});
    add_case("h263", "quant/intra_noclip", [](CpuFlags f) { return at(f).ownph263_QuantIntraNoClip_16s_I; }, QuantExercise{});
    add_case("h263", "quant/inter", [](CpuFlags f) { return at(f).ownph263_QuantInter_16s_I; }, QuantExercise{});
    add_case("h263", "quant/inter_noclip", [](CpuFlags f) { return at(f).ownph263_QuantInterNoClip_16s_I; }, QuantExercise{});
    add_case("h263", "quant/adv_intra", [](CpuFlags f) { return at(f).ownph263_QuantAdvIntra_16s_I; }, QuantExercise{});
    add_case("h263", "quant/adv_intra_noclip", [](CpuFlags f) { return at(f).ownph263_QuantAdvIntraNoClip_16s_I; }, QuantExercise{});
    add_case("h263", "quant_inv/ordinary", [](CpuFlags f) { return at(f).ownph263_QuantInv_16s_I; }, QuantInvExercise{32768});
    add_case("h263", "quant_inv/modq", [](CpuFlags f) { return at(f).ownph263_QuantInv_ModQ_16s_I; }, QuantInvExercise{32768});
    add_case("h263", "quant_inv/adv_intra", [](CpuFlags f) { return at(f).ownph263_QuantInv_AdvIntra_16s_I; }, QuantInvExercise{2048});
}

}  // namespace kivvc::test
