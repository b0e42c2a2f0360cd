// Kernel cases of the MPEG-4 quantisers (the 8-bit regime, where the SIMD
// kernels are). Each call first copies the input levels into the guarded
// working block, so that repeated benchmark calls see the same data.
#include <algorithm>
#include <array>
#include <cstring>
#include <string>

#include "mpeg4/quant_kernels.h"
#include "support/kernel_case.h"

namespace kivvc::test {
namespace {

using mpeg4::QuantInvRecord;
using mpeg4::QuantRecord;
using mpeg4::Table;

const Table& at(CpuFlags f) { return table_for<Table, mpeg4::init_quant>(f); }

// Bits 4..8, QP within their range, random weights.
template <class P>
int draw_bits_and_qp(P& p, int* qp) {
    const int bits = p.rng.range(4, 8);
    *qp = p.rng.range(1, mpeg4::_p_QuantMax[bits - 4]);
    return bits;
}

// Magnitudes: full range (saturation) or small (the common case).
template <class P>
int draw_span(P& p) {
    return p.rng.chance(2) ? 32767 : p.rng.range(1, 2 * 1024);
}

struct ForwardExercise {
    bool matrix;
    template <class P>
    void operator()(const void* f, P& p) const {
        int qp;
        QuantRecord rec{};
        rec.bits = draw_bits_and_qp(p, &qp);
        rec.matrix = matrix;
        for (int i = 0; i < 64; ++i) {
            const int w = p.rng.range(1, 255);
            rec.weights[i] = static_cast<mpeg4::u16>(w >> 1);
            rec.reciprocals[i] = static_cast<mpeg4::u32>(65536 / w + 1);
        }
        const int span = draw_span(p);
        const auto* in = p.template array<std::int16_t>(64, -span - 1, span);
        auto* block = p.template out_array<std::int16_t>(64);
        auto* count = p.template out_array<std::int32_t>(1);
        const auto fn = kernel_cast<mpeg4::QuantFn>(f);
        p.call([=] {
            std::memcpy(block, in, 128);
            count[0] = fn(block, rec, qp);
        });
    }
};

struct InverseExercise {
    int first_last;  // smallest last index the kernel accepts
    template <class P>
    void operator()(const void* f, P& p) const {
        int qp;
        QuantInvRecord rec{};
        rec.bits = draw_bits_and_qp(p, &qp);
        rec.matrix = 1;
        for (auto& w : rec.weights) w = static_cast<mpeg4::u16>(p.rng.range(1, 255));
        const int last = p.rng.chance(3) ? 63 : p.rng.range(first_last, 63);
        const int dc = p.rng.range(-2048, 2047);
        const int span = draw_span(p);
        const auto* in = p.template array<std::int16_t>(64, -span - 1, span);
        std::array<std::int16_t, 64> levels{};  // zero above the last index
        std::copy(in, in + last + 1, levels.begin());
        auto* block = p.template out_array<std::int16_t>(64);
        const auto fn = kernel_cast<mpeg4::QuantInvFn>(f);
        p.call([=] {
            std::memcpy(block, levels.data(), 128);
            fn(block, last, rec, qp, dc);
        });
    }
};

template <auto Member>
void add(const std::string& name, auto exercise) {
    add_case("mpeg4", name, [](CpuFlags f) { return (at(f).*Member)[0]; }, exercise);
}

}  // namespace

KIVVC_CASES(register_mpeg4_quant_cases) {
    add<&Table::ownpmp4_QuantIntra0_16s_I>("quant_intra_h263", ForwardExercise{false});
    add<&Table::ownpmp4_QuantInter0_16s_I>("quant_inter_h263", ForwardExercise{false});
    add<&Table::ownpmp4_QuantIntra1_16s_I>("quant_intra_mpeg", ForwardExercise{true});
    add<&Table::ownpmp4_QuantInter1_16s_I>("quant_inter_mpeg", ForwardExercise{true});
    add<&Table::ownpmp4_QuantInv_16s_I>("quantinv_h263", InverseExercise{0});
    add<&Table::ownpmp4_QuantInvIntra_16s_I>("quantinv_intra_mpeg", InverseExercise{1});
    add<&Table::ownpmp4_QuantInvInter_16s_I>("quantinv_inter_mpeg", InverseExercise{-1});
}

}  // namespace kivvc::test
