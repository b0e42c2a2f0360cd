// Google Benchmark over every registered kernel case: the scalar reference
// and each SIMD level whose table entry differs. Names are
// family/kernel/level; the "ns/call" counter is the time of one call.
#include <benchmark/benchmark.h>

#include "support/kernel_case.h"

namespace {

using namespace kivvc;
using namespace kivvc::test;

void run(benchmark::State& state, const KernelCase* c, const void* fn) {
    BenchProbe probe(12345, Pattern::Uniform);
    c->bench(fn, probe);
    for (auto _ : state) probe.run_batch();
    state.counters["ns/call"] =
        benchmark::Counter(double(BenchProbe::kBatch), benchmark::Counter::kIsIterationInvariantRate |
                                                           benchmark::Counter::kInvert);
}

}  // namespace

int main(int argc, char** argv) {
    for (const KernelCase& c : registry()) {
        const void* ref = c.pick(0);
        for (CpuLevel level : levels_to_test()) {
            const void* fn = c.pick(flags_for_level(level));
            if (level != CpuLevel::Scalar && fn == ref) continue;
            const std::string name = c.family + "/" + c.name + "/" + level_name(level);
            benchmark::RegisterBenchmark(name.c_str(), run, &c, fn);
        }
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
