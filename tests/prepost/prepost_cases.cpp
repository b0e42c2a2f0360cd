// Kernel cases of the deinterlacing line filters.
#include "prepost/prepost_kernels.h"
#include "support/kernel_case.h"

namespace kivvc::test {
namespace {

using prepost::Table;
const Table& at(CpuFlags f) { return table_for<Table, prepost::init_prepost>(f); }

// One line of either filter from two or three source lines, at a fixed width
// or (0) at one of the widths that exercise the vector body, the tail and
// both together.
struct LineExercise {
    bool median;
    int fixed_width;
    template <class P>
    void operator()(const void* f, P& p) const {
        static constexpr int kWidths[] = {1, 2, 3, 15, 16, 17, 31, 33, 64, 70, 720};
        // Thresholds across the whole range, including the never and always ends.
        static constexpr int kThresholds[] = {-5, 0, 1, 2, 10, 40, 128, 254, 255, 256, 1000};
        const int w = fixed_width ? fixed_width : kWidths[p.rng.range(0, int(std::size(kWidths)) - 1)];
        const auto* a = p.template array<std::uint8_t>(std::size_t(w), 0, 255);
        const auto* b = p.template array<std::uint8_t>(std::size_t(w), 0, 255);
        const auto* c = median ? p.template array<std::uint8_t>(std::size_t(w), 0, 255) : p.rng.chance(2) ? a : b;
        auto* dst = p.template out_array<std::uint8_t>(std::size_t(w));
        if (median) {
            const int threshold = kThresholds[p.rng.range(0, int(std::size(kThresholds)) - 1)];
            const auto fn = kernel_cast<prepost::MedianLineFn>(f);
            p.call([=] { fn(a, b, c, dst, w, threshold); });
        } else {
            const auto fn = kernel_cast<prepost::EdgeLineFn>(f);
            p.call([=] { fn(a, b, c, dst, w); });
        }
    }
};

}  // namespace

KIVVC_CASES(register_prepost_cases) {
    // Every width for the tester; one 720-sample line for the speed table.
    for (int w : {0, 720}) {
        const std::string suffix = w ? "/720" : "/any";
        add_case("prepost", "median_line" + suffix, [](CpuFlags f) { return at(f).median_line; }, LineExercise{true, w});
        add_case("prepost", "edge_line" + suffix, [](CpuFlags f) { return at(f).edge_line; }, LineExercise{false, w});
    }
}

}  // namespace kivvc::test
