// Whole-macroblock reconstruction, in ns per macroblock, through the exported
// functions at the CPU level in use (compare a run under KIVVC_CPU_MAX=scalar
// with a plain one). Every iteration restores the coefficient buffer, which
// the call overwrites; that copy (under 1 KiB) is included in the time.
#include <benchmark/benchmark.h>

#include <cstring>
#include <functional>
#include <vector>

#include "kivvc.h"
#include "support/kernel_case.h"

namespace {

// A picture of 48x48 samples with the macroblock at (16, 16), coded blocks
// with about a third of their coefficients non-zero, every block coded.
template <class T, class C>
struct Scene {
    static constexpr int kWidth = 48, kStep = kWidth * int(sizeof(T));
    std::vector<T> luma = std::vector<T>(kWidth * kWidth), u = luma, v = luma;
    std::vector<C> coeffs = std::vector<C>(512), pristine;
    std::vector<Kiv16s> ls = std::vector<Kiv16s>(64);
    Kiv32u modes[16];
    C* cursor = nullptr;
    explicit Scene(int depth) {
        kivvc::test::Rng rng(7);
        for (auto* plane : {&luma, &u, &v})
            for (auto& s : *plane) s = T(rng.range(0, (1 << depth) - 1));
        for (auto& c : coeffs) c = C(rng.chance(3) ? rng.range(-40, 40) : 0);
        for (auto& l : ls) l = Kiv16s(rng.range(16, 40));
        for (auto& m : modes) m = Kiv32u(rng.range(0, 8));
        pristine = coeffs;
    }
    C** restart() {
        std::memcpy(coeffs.data(), pristine.data(), coeffs.size() * sizeof(C));
        cursor = coeffs.data();
        return &cursor;
    }
    T* mb(std::vector<T>& p) { return p.data() + 16 * kWidth + 16; }
};

using Scene8 = Scene<Kiv8u, Kiv16s>;
using Scene16 = Scene<Kiv16u, Kiv32s>;
constexpr Kiv32u kAll = 0x7FFFFFFu;

template <class S>
void run(benchmark::State& state, int depth, std::function<KivStatus(S&)> call) {
    S s(depth);
    for (auto _ : state) benchmark::DoNotOptimize(call(s));
    state.counters["ns/MB"] = benchmark::Counter(1, benchmark::Counter::kIsIterationInvariantRate |
                                                        benchmark::Counter::kInvert);
}

template <class S>
void add(const char* name, int depth, std::function<KivStatus(S&)> call) {
    benchmark::RegisterBenchmark(name, [depth, call](benchmark::State& st) { run<S>(st, depth, call); });
}

// The High record of a scene's plane.
KivReconstructHighParams_32s16u record(Scene16& s, std::vector<Kiv16u>& plane) {
    return {s.restart(), s.mb(plane), s.kStep, kAll, 30, s.ls.data(), 0, 10};
}

const bool registered = [] {
    add<Scene8>("mb/luma_intra4x4_flat", 8, [](Scene8& s) {
        return kiviReconstructLumaIntraMB_H264_16s8u_C1R(s.restart(), s.mb(s.luma), s.kStep, s.modes, kAll, 28, 0);
    });
    add<Scene8>("mb/luma_inter4x4_flat", 8, [](Scene8& s) {
        return kiviReconstructLumaInterMB_H264_16s8u_C1R(s.restart(), s.mb(s.luma), s.kStep, kAll, 28);
    });
    add<Scene8>("mb/luma_intra16x16_flat", 8, [](Scene8& s) {
        return kiviReconstructLumaIntra16x16MB_H264_16s8u_C1R(s.restart(), s.mb(s.luma), s.kStep, 3, kAll, 28, 0);
    });
    add<Scene8>("mb/luma_intra8x8_scaled", 8, [](Scene8& s) {
        return kiviReconstructLumaIntra8x8MB_H264_16s8u_C1R(s.restart(), s.mb(s.luma), s.kStep, s.modes, 15, 28, 0,
                                                            s.ls.data(), 0);
    });
    add<Scene8>("mb/luma_inter8x8_scaled", 8, [](Scene8& s) {
        return kiviReconstructLumaInter8x8MB_H264_16s8u_C1R(s.restart(), s.mb(s.luma), s.kStep, 15, 28, s.ls.data(),
                                                            0);
    });
    add<Scene8>("mb/chroma_intra420_flat", 8, [](Scene8& s) {
        return kiviReconstructChromaIntraMB_H264_16s8u_P2R(s.restart(), s.mb(s.u), s.mb(s.v), s.kStep, 3, kAll, 28, 0);
    });
    add<Scene16>("mb/luma_intra4x4_high10", 10, [](Scene16& s) {
        const auto r = record(s, s.luma);
        return kiviReconstructLumaIntra4x4_H264High_32s16u_IP1R(&r, s.modes, 0);
    });
    add<Scene16>("mb/luma_intra8x8_high10", 10, [](Scene16& s) {
        const auto r = record(s, s.luma);
        return kiviReconstructLumaIntra8x8_H264High_32s16u_IP1R(&r, s.modes, 0);
    });
    add<Scene16>("mb/chroma_inter422_high10", 10, [](Scene16& s) {
        KivReconstructHighParams_32s16u r[2] = {record(s, s.u), record(s, s.v)};
        Kiv32s* second = s.cursor + 200;  // V reads its own buffer half
        r[1].ppSrcDstCoeff = &second;
        return kiviReconstructChroma422Inter4x4_H264High_32s16u_IP2R(r, 40, 40);
    });
    return true;
}();

}  // namespace
