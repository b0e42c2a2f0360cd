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

struct PredExercise {
    int n, h;  // block width and height; 4x4 and 8x8 luma blocks also get n samples above-right
    template <class P>
    void operator()(const void* f, P& p) const {
        const int above = 1 + n + (n == h && n < 16 ? n : 0);
        const auto* top = p.template array<std::uint8_t>(above, 0, 255) + 1;
        const auto* left = p.template array<std::uint8_t>(h, 0, 255);
        const auto dst = p.template out_plane<std::uint8_t>(n, h);
        const auto fn = reinterpret_cast<in::PredFn>(f);
        p.call([=] { fn(top, left, dst.ptr, dst.step); });
    }
};

template <std::size_t K>
void add_all(const std::string& name, in::PredFn (in::Table::*member)[K], int n, std::size_t count, int h = 0) {
    for (std::size_t i = 0; i < count; ++i)
        add_case(kFamily, name + "_" + std::to_string(i), [member, i](CpuFlags f) { return (at(f).*member)[i]; },
                 PredExercise{n, h ? h : n});
}

}  // namespace

KIVVC_CASES(register_h264_intra_cases) {
    add_all("intra4x4", &in::Table::pred4x4, 4, 9);
    add_all("intra4x4_dc", &in::Table::dc4x4, 4, 4);
    add_all("intra16x16", &in::Table::pred16x16, 16, 4);
    add_all("intra16x16_dc", &in::Table::dc16x16, 16, 4);
    add_all("intra_chroma8x8", &in::Table::pred_chroma8x8, 8, 4);
    add_all("intra_chroma8x8_dc", &in::Table::dc_chroma8x8, 8, 4);
    add_all("intra_chroma8x16", &in::Table::pred_chroma8x16, 8, 4, 16);
    add_all("intra_chroma8x16_dc", &in::Table::dc_chroma8x16, 8, 4, 16);
    add_all("intra8x8", &in::Table::pred8x8, 8, 9);
    add_all("intra8x8_dc", &in::Table::dc8x8, 8, 4);
}

}  // namespace kivvc::test
