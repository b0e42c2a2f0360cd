// Kernel cases of the H.264 intra predictors: every entry with an SIMD
// variant, neighbours drawn over the whole 8-bit range (extremes included,
// which is where the plane prediction's clamp and 16-bit lanes are tested).
#include <string>

#include "h264/residual/intra_kernels.h"
#include "support/kernel_case.h"

namespace kivvc::test {
namespace {

namespace in = h264::intra;
const in::Table& at(CpuFlags f) { return table_for<in::Table, in::init_intra>(f); }

constexpr const char* kFamily = "h264/residual";

// A block's gathered neighbours drawn over the whole sample range (extremes
// included, which is where the plane prediction's clamp and lanes are
// tested); 9..14-bit kernels get a random depth. 4x4 and 8x8 luma blocks
// also get n samples above-right.
template <class T>
struct PredExercise {
    int n, h;
    template <class P>
    void operator()(const void* f, P& p) const {
        const int depth = sizeof(T) == 1 ? 8 : p.rng.range(9, 14), hi = (1 << depth) - 1;
        const int above = 1 + n + (n == h && n < 16 ? n : 0);
        const auto* top = p.template array<T>(above, 0, hi) + 1;
        const auto* left = p.template array<T>(h, 0, hi);
        const auto dst = p.template out_plane<T>(n, h);
        if constexpr (sizeof(T) == 1) {
            const auto fn = kernel_cast<in::PredFn>(const_cast<void*>(f));
            p.call([=] { fn(top, left, dst.ptr, dst.step); });
        } else {
            const auto fn = kernel_cast<in::PredHbdFn>(const_cast<void*>(f));
            p.call([=] { fn(top, left, dst.ptr, dst.step, depth); });
        }
    }
};

template <class T, class Fn, std::size_t K>
void add_all(const std::string& name, Fn (in::Table::*member)[K], int n, std::size_t count, int h = 0) {
    for (std::size_t i = 0; i < count; ++i)
        add_case(kFamily, name + "_" + std::to_string(i), [member, i](CpuFlags f) { return (at(f).*member)[i]; },
                 PredExercise<T>{n, h ? h : n});
}

}  // namespace

KIVVC_CASES(register_h264_intra_cases) {
    using u8 = std::uint8_t;
    using u16 = std::uint16_t;
    add_all<u8>("intra4x4", &in::Table::pred4x4, 4, 9);
    add_all<u8>("intra4x4_dc", &in::Table::dc4x4, 4, 4);
    add_all<u8>("intra8x8", &in::Table::pred8x8, 8, 9);
    add_all<u8>("intra8x8_dc", &in::Table::dc8x8, 8, 4);
    add_all<u8>("intra16x16", &in::Table::pred16x16, 16, 4);
    add_all<u8>("intra16x16_dc", &in::Table::dc16x16, 16, 4);
    add_all<u8>("intra_chroma8x8", &in::Table::pred_chroma8x8, 8, 4);
    add_all<u8>("intra_chroma8x8_dc", &in::Table::dc_chroma8x8, 8, 4);
    add_all<u8>("intra_chroma8x16", &in::Table::pred_chroma8x16, 8, 4, 16);
    add_all<u8>("intra_chroma8x16_dc", &in::Table::dc_chroma8x16, 8, 4, 16);
    add_all<u16>("intra4x4_hbd", &in::Table::pred4x4_hbd, 4, 9);
    add_all<u16>("intra4x4_hbd_dc", &in::Table::dc4x4_hbd, 4, 4);
    add_all<u16>("intra8x8_hbd", &in::Table::pred8x8_hbd, 8, 3);
    add_all<u16>("intra8x8_hbd_dc", &in::Table::dc8x8_hbd, 8, 4);
    add_all<u16>("intra16x16_hbd", &in::Table::pred16x16_hbd, 16, 4);
    add_all<u16>("intra16x16_hbd_dc", &in::Table::dc16x16_hbd, 16, 4);
    add_all<u16>("intra_chroma8x8_hbd", &in::Table::pred_chroma8x8_hbd, 8, 4);
    add_all<u16>("intra_chroma8x8_hbd_dc", &in::Table::dc_chroma8x8_hbd, 8, 4);
    add_all<u16>("intra_chroma8x16_hbd", &in::Table::pred_chroma8x16_hbd, 8, 4, 16);
    add_all<u16>("intra_chroma8x16_hbd_dc", &in::Table::dc_chroma8x16_hbd, 8, 4, 16);
}

}  // namespace kivvc::test
