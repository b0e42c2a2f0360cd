// Kernel cases of the H.264 dequantisation and inverse transforms. Inputs
// cover the full 16-bit (or wide 32-bit) range: the kernels have one defined
// result for every input, so the SIMD paths must match there too.
#include "h264/residual/transform_kernels.h"
#include "support/kernel_case.h"

namespace kivvc::test {
namespace {

namespace tr = h264::transform;
const tr::Table& at(CpuFlags f) { return table_for<tr::Table, tr::init_transform>(f); }

constexpr const char* kFamily = "h264/residual";

struct DequantAddExercise {
    bool ac;  // with AC coefficients, or DC only
    template <class P>
    void operator()(const void* f, P& p) const {
        const auto pred = p.template in_plane<std::uint8_t>(4, 4, 0, 255);
        const auto dst = p.template out_plane<std::uint8_t>(4, 4);
        auto* coeffs = p.template out_array<std::int16_t>(16, -32768, 32767);
        const std::int16_t* dc = p.rng.chance(3) ? p.template array<std::int16_t>(1, -32768, 32767) : nullptr;
        const int qp = p.rng.range(0, 51);
        const auto fn = reinterpret_cast<tr::DequantResidualAddFn>(f);
        const bool with_ac = ac;
        p.call([=] { fn(pred.ptr, pred.step, coeffs, dc, dst.ptr, dst.step, qp, with_ac); });
    }
};

struct AddPred4x4Exercise {
    bool ac;  // with AC coefficients, or DC only
    template <class P>
    void operator()(const void* f, P& p) const {
        const auto pred = p.template in_plane<std::uint8_t>(4, 4, 0, 255);
        const auto dst = p.template out_plane<std::uint8_t>(4, 4);
        auto* coeffs = p.template out_array<std::int16_t>(16, -32768, 32767);
        const auto* ls = p.template array<std::int16_t>(16, 0, 32767);
        const std::int16_t* dc = p.rng.chance(3) ? p.template array<std::int16_t>(1, -32768, 32767) : nullptr;
        const int qp = p.rng.range(0, 51);
        const auto fn = reinterpret_cast<tr::AddPred4x4Fn>(f);
        const bool with_ac = ac;
        p.call([=] { fn(pred.ptr, pred.step, coeffs, dc, dst.ptr, dst.step, qp, with_ac, ls); });
    }
};

struct AddPred4x4HbdExercise {
    bool ac;  // with AC coefficients, or DC only
    template <class P>
    void operator()(const void* f, P& p) const {
        const int depth = p.rng.range(9, 14);
        const auto pred = p.template in_plane<std::uint16_t>(4, 4, 0, (1 << depth) - 1);
        const auto dst = p.template out_plane<std::uint16_t>(4, 4);
        auto* coeffs = p.template out_array<std::int32_t>(16, -(1 << 20), 1 << 20);
        const auto* ls = p.template array<std::int16_t>(16, 0, 32767);
        const std::int32_t* dc = p.rng.chance(3) ? p.template array<std::int32_t>(1, -(1 << 24), 1 << 24) : nullptr;
        const int qp = p.rng.range(0, 87);
        const auto fn = reinterpret_cast<tr::AddPred4x4HbdFn>(f);
        const bool with_ac = ac;
        p.call([=] { fn(pred.ptr, pred.step, coeffs, dc, dst.ptr, dst.step, qp, with_ac, depth, ls); });
    }
};

template <class Coeff>
struct DcExercise {
    int n, max_q;
    template <class P>
    void operator()(const void* f, P& p) const {
        const int range = sizeof(Coeff) == 2 ? 32767 : (1 << 24);
        auto* block = p.template out_array<Coeff>(n, -range, range);
        const int q = p.rng.range(0, max_q);
        const int ls0 = p.value(0, 32767);
        using Fn = void (*)(Coeff*, int, int);
        const auto fn = reinterpret_cast<Fn>(f);
        p.call([=] { fn(block, q, ls0); });
    }
};

struct FlatDcExercise {
    int n;
    template <class P>
    void operator()(const void* f, P& p) const {
        auto* block = p.template out_array<std::int16_t>(n, -32768, 32767);
        const int qp = p.rng.range(0, 51);
        const int arg = n == 16 ? qp : h264::InvQuantTable[qp][0];
        const auto fn = reinterpret_cast<tr::LumaDcFlatFn>(f);
        p.call([=] { fn(block, arg); });
    }
};

template <class Sample, class Coeff>
struct Transform8x8Exercise {
    template <class P>
    void operator()(const void* f, P& p) const {
        const bool hbd = sizeof(Sample) == 2;
        const int depth = hbd ? p.rng.range(9, 14) : 8;
        const auto pred = p.template in_plane<Sample>(8, 8, 0, (1 << depth) - 1);
        const auto dst = p.template out_plane<Sample>(8, 8);
        const int range = hbd ? (1 << 22) : 32767;
        auto* coeffs = p.template out_array<Coeff>(64, -range, range);
        if constexpr (sizeof(Sample) == 2) {
            const auto fn = reinterpret_cast<tr::Transform8x8AddHbdFn>(f);
            p.call([=] { fn(pred.ptr, pred.step, coeffs, dst.ptr, dst.step, depth); });
        } else {
            const auto fn = reinterpret_cast<tr::Transform8x8AddFn>(f);
            p.call([=] { fn(pred.ptr, pred.step, coeffs, dst.ptr, dst.step); });
        }
    }
};

template <class Coeff>
struct Quant8x8Exercise {
    int max_q;
    template <class P>
    void operator()(const void* f, P& p) const {
        const int range = sizeof(Coeff) == 2 ? 32767 : (1 << 24);
        auto* coeffs = p.template out_array<Coeff>(64, -range, range);
        const auto* ls = p.template array<std::int16_t>(64, 0, 32767);
        const int q = p.rng.range(0, max_q);
        using Fn = void (*)(Coeff*, int, const std::int16_t*);
        const auto fn = reinterpret_cast<Fn>(f);
        p.call([=] { fn(coeffs, q, ls); });
    }
};

template <auto Member, class Exercise>
void add(const char* name, Exercise e) {
    add_case(kFamily, name, [](CpuFlags f) { return at(f).*Member; }, e);
}

}  // namespace

KIVVC_CASES(register_h264_transform_cases) {
    add<&tr::Table::dequant_residual_add>("dequant_add4x4", DequantAddExercise{true});
    add<&tr::Table::dequant_residual_add>("dequant_add4x4_dc", DequantAddExercise{false});
    add<&tr::Table::add_pred4x4>("add_pred4x4", AddPred4x4Exercise{true});
    add<&tr::Table::add_pred4x4>("add_pred4x4_dc", AddPred4x4Exercise{false});
    add<&tr::Table::add_pred4x4_hbd>("add_pred4x4_hbd", AddPred4x4HbdExercise{true});
    add<&tr::Table::add_pred4x4_hbd>("add_pred4x4_hbd_dc", AddPred4x4HbdExercise{false});
    add<&tr::Table::luma_dc_flat>("luma_dc_flat", FlatDcExercise{16});
    add<&tr::Table::chroma_dc_flat>("chroma_dc_flat", FlatDcExercise{4});
    add<&tr::Table::luma_dc>("luma_dc", DcExercise<std::int16_t>{16, 8});
    add<&tr::Table::luma_dc_hbd>("luma_dc_hbd", DcExercise<std::int32_t>{16, 14});
    add<&tr::Table::chroma_dc2x2>("chroma_dc2x2", DcExercise<std::int16_t>{4, 6});
    add<&tr::Table::chroma_dc2x2_hbd>("chroma_dc2x2_hbd", DcExercise<std::int32_t>{4, 13});
    add<&tr::Table::chroma_dc2x4>("chroma_dc2x4", DcExercise<std::int16_t>{8, 7});
    add<&tr::Table::chroma_dc2x4_hbd>("chroma_dc2x4_hbd", DcExercise<std::int32_t>{8, 13});
    add<&tr::Table::quant8x8>("quant8x8", Quant8x8Exercise<std::int16_t>{8});
    add<&tr::Table::quant8x8_hbd>("quant8x8_hbd", Quant8x8Exercise<std::int32_t>{14});
    add<&tr::Table::transform8x8_add>("transform8x8_add", Transform8x8Exercise<std::uint8_t, std::int16_t>{});
    add<&tr::Table::transform8x8_add_hbd>("transform8x8_add_hbd", Transform8x8Exercise<std::uint16_t, std::int32_t>{});
}

}  // namespace kivvc::test
