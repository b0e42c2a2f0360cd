#include "support/timing.h"

#include <algorithm>
#include <chrono>

namespace kivvc::test {

double time_case(const KernelCase& c, const void* fn, int budget_us, int repeats) {
    using clock = std::chrono::steady_clock;
    BenchProbe probe(12345, Pattern::Uniform);
    c.bench(fn, probe);
    // Calibrate the number of batches for one stretch.
    long batches = 1;
    for (;;) {
        const auto t0 = clock::now();
        for (long i = 0; i < batches; ++i) probe.run_batch();
        const auto us = std::chrono::duration<double, std::micro>(clock::now() - t0).count();
        if (us > budget_us / 4 || batches > (1l << 24)) {
            batches = std::max(1l, static_cast<long>(batches * (budget_us / std::max(us, 1.0))));
            break;
        }
        batches *= 4;
    }
    double best = 1e30;
    for (int r = 0; r < repeats; ++r) {
        const auto t0 = clock::now();
        for (long i = 0; i < batches; ++i) probe.run_batch();
        const double ns = std::chrono::duration<double, std::nano>(clock::now() - t0).count();
        best = std::min(best, ns / (double(batches) * BenchProbe::kBatch));
    }
    return best;
}

}  // namespace kivvc::test
