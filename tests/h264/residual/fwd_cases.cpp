// Kernel cases of the H.264 forward transforms, quantisers and sums of
// differences. Inputs cover the full 16-bit range and every factor, shift
// and rounding term a quantiser accepts.
#include "h264/residual/fwd_kernels.h"
#include "support/kernel_case.h"

namespace kivvc::test {
namespace {

namespace fw = h264::fwd;
const fw::Table& at(CpuFlags f) { return table_for<fw::Table, fw::init_fwd>(f); }

struct TransformExercise {
    int n;  // 16 or 64 values
    template <class P>
    void operator()(const void* f, P& p) const {
        const auto* src = p.template array<std::int16_t>(std::size_t(n), -32768, 32767);
        auto* dst = p.template out_array<std::int16_t>(std::size_t(n));
        const auto fn = kernel_cast<fw::Transform4x4Fn>(f);
        p.call([=] { fn(src, dst); });
    }
};

struct QuantExercise {
    int n;
    template <class P>
    void operator()(const void* f, P& p) const {
        const auto* src = p.template array<std::int16_t>(std::size_t(n), -32768, 32767);
        const auto* m = p.template array<std::int16_t>(std::size_t(n), -32768, 32767);
        const auto* scan = p.template array<std::int16_t>(std::size_t(n), -32768, 32767);
        auto* dst = p.template out_array<std::int16_t>(std::size_t(n));
        auto* last = p.template out_array<std::int32_t>(1);
        auto* count = p.template out_array<std::int32_t>(1);  // the returned count, compared as an output
        const int shift = p.rng.range(11, 27);
        const auto round = std::uint32_t(p.rng.range(0, (1 << shift) - 1));
        const auto fn = kernel_cast<fw::QuantFn>(f);
        p.call([=] { *count = fn(src, dst, m, shift, round, scan, last); });
    }
};

struct SumsDiffExercise {
    int size;  // 16 or 8
    template <class P>
    void operator()(const void* f, P& p) const {
        const auto src = p.template in_plane<std::uint8_t>(size, size, 0, 255);
        const auto pred = p.template in_plane<std::uint8_t>(size, size, 0, 255);
        auto* sums = p.template out_array<std::int16_t>(std::size_t(size * size / 16));
        std::int16_t* diff = p.rng.chance(4) ? nullptr : p.template out_array<std::int16_t>(std::size_t(size * size));
        const auto fn = kernel_cast<fw::SumsDiffFn>(f);
        p.call([=] { fn(src.ptr, src.step, pred.ptr, pred.step, sums, diff); });
    }
};

template <class Exercise, class Pick>
void add(const char* name, Pick pick, Exercise e) {
    add_case("h264/residual", name, [pick](CpuFlags f) { return pick(at(f)); }, e);
}

}  // namespace

KIVVC_CASES(register_h264_fwd_cases) {
    add("fwd_transform4x4", [](const fw::Table& t) { return t.transform4x4; }, TransformExercise{16});
    add("fwd_transform8x8", [](const fw::Table& t) { return t.transform8x8; }, TransformExercise{64});
    add("fwd_quant4x4", [](const fw::Table& t) { return t.quant[2]; }, QuantExercise{16});
    add("fwd_quant8x8", [](const fw::Table& t) { return t.quant[3]; }, QuantExercise{64});
    add("sums_diff16x16", [](const fw::Table& t) { return t.sums_diff[0]; }, SumsDiffExercise{16});
    add("sums_diff8x8", [](const fw::Table& t) { return t.sums_diff[1]; }, SumsDiffExercise{8});
}

}  // namespace kivvc::test
