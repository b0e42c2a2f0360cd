// Kernel cases of the H.264 forward transforms, quantisers and sums of
// differences. Inputs cover the full 16-bit range and every factor, shift
// and rounding term a quantiser accepts.
#include "h264/residual/fwd_kernels.h"
#include "support/kernel_case.h"

namespace kivvc::test {
namespace {

namespace fw = h264::fwd;
const fw::Table& at(CpuFlags f) { return table_for<fw::Table, fw::init_fwd>(f); }

constexpr const char* kFamily = "h264/residual";

struct TransformExercise {
    int n;  // 16 or 64 values
    template <class P>
    void operator()(const void* f, P& p) const {
        const auto* src = p.template array<std::int16_t>(std::size_t(n), -32768, 32767);
        auto* dst = p.template out_array<std::int16_t>(std::size_t(n));
        const auto fn = reinterpret_cast<fw::Transform4x4Fn>(f);
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
        const auto fn = reinterpret_cast<fw::QuantFn>(f);
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
        const auto fn = reinterpret_cast<fw::SumsDiffFn>(f);
        p.call([=] { fn(src.ptr, src.step, pred.ptr, pred.step, sums, diff); });
    }
};

template <auto Member, class Exercise>
void add(const char* name, Exercise e) {
    add_case(kFamily, name, [](CpuFlags f) { return at(f).*Member; }, e);
}

template <int Index, class Exercise>
void add_quant(const char* name, Exercise e) {
    add_case(kFamily, name, [](CpuFlags f) { return at(f).quant[Index]; }, e);
}

template <int Index, class Exercise>
void add_sums(const char* name, Exercise e) {
    add_case(kFamily, name, [](CpuFlags f) { return at(f).sums_diff[Index]; }, e);
}

}  // namespace

KIVVC_CASES(register_h264_fwd_cases) {
    add<&fw::Table::transform4x4>("fwd_transform4x4", TransformExercise{16});
    add<&fw::Table::transform8x8>("fwd_transform8x8", TransformExercise{64});
    add_quant<2>("fwd_quant4x4", QuantExercise{16});
    add_quant<3>("fwd_quant8x8", QuantExercise{64});
    add_sums<0>("sums_diff16x16", SumsDiffExercise{16});
    add_sums<1>("sums_diff8x8", SumsDiffExercise{8});
}

}  // namespace kivvc::test
