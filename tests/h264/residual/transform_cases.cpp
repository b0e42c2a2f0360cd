// Kernel cases of the H.264 dequantisation and inverse transforms. Inputs
// cover the full 16-bit (or wide 32-bit) range: the kernels have one defined
// result for every input, so the SIMD paths must match there too.
#include <type_traits>
#include <utility>

#include "h264/residual/transform_kernels.h"
#include "support/kernel_case.h"

namespace kivvc::test {
namespace {

namespace tr = h264::transform;
const tr::Table& at(CpuFlags f) { return table_for<tr::Table, tr::init_transform>(f); }

// Prediction and destination blocks of n x n samples: 8-bit, or for 16-bit
// samples of a depth 9..14 drawn first. Returns the depth.
template <class Sample, class P>
int sample_blocks(P& p, int n, Plane<Sample>& pred, Plane<Sample>& dst) {
    const int depth = sizeof(Sample) == 2 ? p.rng.range(9, 14) : 8;
    pred = p.template in_plane<Sample>(n, n, 0, (1 << depth) - 1);
    dst = p.template out_plane<Sample>(n, n);
    return depth;
}

// The 4x4 dequantise, transform and add members: 8-bit (QP 0..51), flat or
// with a scaling list, or 9..14-bit with 32-bit coefficients (QP 0..87).
template <class Sample, class Coeff, bool WithList>
struct Add4x4Exercise {
    bool ac;  // with AC coefficients, or DC only
    template <class Fn, class P>
    void operator()(Fn fn, P& p) const {
        constexpr bool hbd = sizeof(Sample) == 2;
        Plane<Sample> pred{}, dst{};
        const int depth = sample_blocks(p, 4, pred, dst);
        auto* coeffs = p.template out_array<Coeff>(16, hbd ? -(1 << 20) : -32768, hbd ? 1 << 20 : 32767);
        const std::int16_t* ls = WithList ? p.template array<std::int16_t>(16, 0, 32767) : nullptr;
        const Coeff* dc = p.rng.chance(3) ? p.template array<Coeff>(1, hbd ? -(1 << 24) : -32768, hbd ? 1 << 24 : 32767)
                                          : nullptr;
        const int qp = p.rng.range(0, hbd ? 87 : 51);
        const bool with_ac = ac;
        if constexpr (hbd) p.call([=] { fn(pred.ptr, pred.step, coeffs, dc, dst.ptr, dst.step, qp, with_ac, depth, ls); });
        else if constexpr (WithList) p.call([=] { fn(pred.ptr, pred.step, coeffs, dc, dst.ptr, dst.step, qp, with_ac, ls); });
        else p.call([=] { fn(pred.ptr, pred.step, coeffs, dc, dst.ptr, dst.step, qp, with_ac); });
    }
};

// Scaling of n values of 16 or 32 bits by q and the first value of a scaling
// list (DC blocks) or a whole list (8x8 blocks).
template <class Coeff, bool WithList>
struct ScaleExercise {
    int n, max_q;
    template <class Fn, class P>
    void operator()(Fn fn, P& p) const {
        const int range = sizeof(Coeff) == 2 ? 32767 : (1 << 24);
        auto* block = p.template out_array<Coeff>(std::size_t(n), -range, range);
        const auto* ls = WithList ? p.template array<std::int16_t>(std::size_t(n), 0, 32767) : nullptr;
        const int q = p.rng.range(0, max_q);
        const int ls0 = WithList ? 0 : p.value(0, 32767);
        if constexpr (WithList) p.call([=] { fn(block, q, ls); });
        else p.call([=] { fn(block, q, ls0); });
    }
};

struct FlatDcExercise {
    int n;
    template <class Fn, class P>
    void operator()(Fn fn, P& p) const {
        auto* block = p.template out_array<std::int16_t>(std::size_t(n), -32768, 32767);
        const int qp = p.rng.range(0, 51);
        const int arg = n == 16 ? qp : h264::InvQuantTable[qp][0];
        p.call([=] { fn(block, arg); });
    }
};

template <class Sample, class Coeff>
struct Transform8x8Exercise {
    template <class Fn, class P>
    void operator()(Fn fn, P& p) const {
        constexpr bool hbd = sizeof(Sample) == 2;
        Plane<Sample> pred{}, dst{};
        const int depth = sample_blocks(p, 8, pred, dst);
        const int range = hbd ? (1 << 22) : 32767;
        auto* coeffs = p.template out_array<Coeff>(64, -range, range);
        if constexpr (hbd) p.call([=] { fn(pred.ptr, pred.step, coeffs, dst.ptr, dst.step, depth); });
        else p.call([=] { fn(pred.ptr, pred.step, coeffs, dst.ptr, dst.step); });
    }
};

template <auto Member, class Exercise>
void add(const char* name, Exercise e) {
    using Fn = std::remove_cvref_t<decltype(std::declval<const tr::Table&>().*Member)>;
    add_case("h264/residual", name, [](CpuFlags f) { return at(f).*Member; },
             [e](const void* f, auto& p) { e(kernel_cast<Fn>(f), p); });
}

using u8 = std::uint8_t;
using u16 = std::uint16_t;
using s16 = std::int16_t;
using s32 = std::int32_t;

}  // namespace

KIVVC_CASES(register_h264_transform_cases) {
    using T = tr::Table;
    add<&T::dequant_residual_add>("dequant_add4x4", Add4x4Exercise<u8, s16, false>{true});
    add<&T::dequant_residual_add>("dequant_add4x4_dc", Add4x4Exercise<u8, s16, false>{false});
    add<&T::add_pred4x4>("add_pred4x4", Add4x4Exercise<u8, s16, true>{true});
    add<&T::add_pred4x4>("add_pred4x4_dc", Add4x4Exercise<u8, s16, true>{false});
    add<&T::add_pred4x4_hbd>("add_pred4x4_hbd", Add4x4Exercise<u16, s32, true>{true});
    add<&T::add_pred4x4_hbd>("add_pred4x4_hbd_dc", Add4x4Exercise<u16, s32, true>{false});
    add<&T::luma_dc_flat>("luma_dc_flat", FlatDcExercise{16});
    add<&T::chroma_dc_flat>("chroma_dc_flat", FlatDcExercise{4});
    add<&T::luma_dc>("luma_dc", ScaleExercise<s16, false>{16, 8});
    add<&T::luma_dc_hbd>("luma_dc_hbd", ScaleExercise<s32, false>{16, 14});
    add<&T::chroma_dc2x2>("chroma_dc2x2", ScaleExercise<s16, false>{4, 6});
    add<&T::chroma_dc2x2_hbd>("chroma_dc2x2_hbd", ScaleExercise<s32, false>{4, 13});
    add<&T::chroma_dc2x4>("chroma_dc2x4", ScaleExercise<s16, false>{8, 7});
    add<&T::chroma_dc2x4_hbd>("chroma_dc2x4_hbd", ScaleExercise<s32, false>{8, 13});
    add<&T::quant8x8>("quant8x8", ScaleExercise<s16, true>{64, 8});
    add<&T::quant8x8_hbd>("quant8x8_hbd", ScaleExercise<s32, true>{64, 14});
    add<&T::transform8x8_add>("transform8x8_add", Transform8x8Exercise<u8, s16>{});
    add<&T::transform8x8_add_hbd>("transform8x8_add_hbd", Transform8x8Exercise<u16, s32>{});
}

}  // namespace kivvc::test
