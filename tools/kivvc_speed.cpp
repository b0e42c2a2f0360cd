// kivvc-speed: the speed table of the library's kernels on built-in data.
// For each kernel: ns per call of the scalar reference and of every SIMD
// level this processor has (capped by KIVVC_CPU_MAX), and the speed-up of the
// best level over the reference, all measured in this one run.
//
//   kivvc-speed [FILTER]   only kernels whose family/name contains FILTER
//   kivvc-speed --list     names only
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "kivvc.h"
#include "support/timing.h"

using namespace kivvc;
using namespace kivvc::test;

int main(int argc, char** argv) {
    const char* filter = nullptr;
    bool list = false;
    for (int i = 1; i < argc; ++i) {
        if (!std::strcmp(argv[i], "--list")) list = true;
        else if (!std::strcmp(argv[i], "--help") || !std::strcmp(argv[i], "-h")) {
            std::printf("usage: %s [--list] [FILTER]\n", argv[0]);
            return 0;
        } else filter = argv[i];
    }
    const std::vector<CpuLevel> levels = levels_to_test();
    const KivVersion* v = kivvcGetLibVersion();
    std::printf("%s %s, CPU level %s (detected %s)\n\n", v->libraryName, v->versionText,
                level_name(active_level()), level_name(detected_level()));
    if (!list) {
        std::printf("%-44s", "kernel (ns per call)");
        for (CpuLevel l : levels) std::printf("%10s", level_name(l));
        std::printf("%10s\n", "speed-up");
    }
    int shown = 0;
    for (const KernelCase& c : registry()) {
        const std::string name = c.family + "/" + c.name;
        if (filter && name.find(filter) == std::string::npos) continue;
        ++shown;
        if (list) {
            std::printf("%s\n", name.c_str());
            continue;
        }
        std::printf("%-44s", name.c_str());
        const void* ref = c.pick(0);
        const double ref_ns = time_case(c, ref);
        double best = ref_ns;
        for (CpuLevel l : levels) {
            const void* fn = c.pick(flags_for_level(l));
            if (l == CpuLevel::Scalar) {
                std::printf("%10.1f", ref_ns);
            } else if (fn == ref) {
                std::printf("%10s", "-");
            } else {
                const double ns = time_case(c, fn);
                if (ns < best) best = ns;
                std::printf("%10.1f", ns);
            }
        }
        std::printf("%9.1fx\n", ref_ns / best);
        std::fflush(stdout);
    }
    if (!shown) std::printf("no kernel matches\n");
    return 0;
}
