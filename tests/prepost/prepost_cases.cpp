// Kernel cases of the deinterlacing line filters.
#include "prepost/prepost_kernels.h"
#include "support/kernel_case.h"

namespace kivvc::test {
namespace {

using prepost::Table;
const Table& at(CpuFlags f) { return table_for<Table, prepost::init_prepost>(f); }

// Widths that exercise the vector body, the tail and both together (0: any).
int line_width(ProbeBase& p, int fixed) {
    static constexpr int kWidths[] = {1, 2, 3, 15, 16, 17, 31, 33, 64, 70, 720};
    return fixed ? fixed : kWidths[p.rng.range(0, int(std::size(kWidths)) - 1)];
}

struct MedianExercise {
    int fixed_width;
    template <class P>
    void operator()(const void* f, P& p) const {
        const int w = line_width(p, fixed_width);
        // Thresholds across the whole range, including the never and always ends.
        static constexpr int kThresholds[] = {-5, 0, 1, 2, 10, 40, 128, 254, 255, 256, 1000};
        const int threshold = kThresholds[p.rng.range(0, int(std::size(kThresholds)) - 1)];
        const auto* above = p.template array<std::uint8_t>(std::size_t(w), 0, 255);
        const auto* line = p.template array<std::uint8_t>(std::size_t(w), 0, 255);
        const auto* below = p.template array<std::uint8_t>(std::size_t(w), 0, 255);
        auto* dst = p.template out_array<std::uint8_t>(std::size_t(w));
        const auto fn = reinterpret_cast<prepost::MedianLineFn>(f);
        p.call([=] { fn(above, line, below, dst, w, threshold); });
    }
};

struct EdgeExercise {
    int fixed_width;
    template <class P>
    void operator()(const void* f, P& p) const {
        const int w = line_width(p, fixed_width);
        const auto* upper = p.template array<std::uint8_t>(std::size_t(w), 0, 255);
        const auto* lower = p.template array<std::uint8_t>(std::size_t(w), 0, 255);
        auto* dst = p.template out_array<std::uint8_t>(std::size_t(w));
        const bool on_upper = p.rng.chance(2);
        const auto fn = reinterpret_cast<prepost::EdgeLineFn>(f);
        p.call([=] { fn(upper, lower, on_upper ? upper : lower, dst, w); });
    }
};

}  // namespace

KIVVC_CASES(register_prepost_cases) {
    // Every width for the tester; one 720-sample line for the speed table.
    for (int w : {0, 720}) {
        const std::string suffix = w ? "/720" : "/any";
        add_case("prepost", "median_line" + suffix, [](CpuFlags f) { return at(f).median_line; }, MedianExercise{w});
        add_case("prepost", "edge_line" + suffix, [](CpuFlags f) { return at(f).edge_line; }, EdgeExercise{w});
    }
}

}  // namespace kivvc::test
