#include "core/cpu.h"

#include <cstdlib>
#include <cstring>

#if KIVVC_X86
#include <cpuid.h>
#endif

namespace kivvc {

namespace {

constexpr const char* kLevelNames[kCpuLevelCount] = {"scalar", "sse2", "ssse3", "sse41", "avx2"};

#if KIVVC_X86
CpuLevel probe() {
    unsigned a = 0, b = 0, c = 0, d = 0;
    if (!__get_cpuid(1, &a, &b, &c, &d)) return CpuLevel::Scalar;
    const bool sse2 = d & bit_SSE2;
    const bool ssse3 = c & bit_SSSE3;
    const bool sse41 = c & bit_SSE4_1;
    const bool osxsave = c & bit_OSXSAVE;
    const bool avx = c & bit_AVX;
    bool avx2 = false;
    if (osxsave && avx) {
        unsigned xcr0_lo = 0, xcr0_hi = 0;
        __asm__ volatile("xgetbv" : "=a"(xcr0_lo), "=d"(xcr0_hi) : "c"(0));
        const bool ymm_state = (xcr0_lo & 6u) == 6u;  // XMM and YMM saved by the OS
        unsigned a7 = 0, b7 = 0, c7 = 0, d7 = 0;
        if (ymm_state && __get_cpuid_count(7, 0, &a7, &b7, &c7, &d7)) avx2 = b7 & bit_AVX2;
    }
    if (!sse2) return CpuLevel::Scalar;
    if (!ssse3) return CpuLevel::Sse2;
    if (!sse41) return CpuLevel::Ssse3;
    if (!avx2) return CpuLevel::Sse41;
    return CpuLevel::Avx2;
}
#else
CpuLevel probe() { return CpuLevel::Scalar; }
#endif

}  // namespace

CpuFlags flags_for_level(CpuLevel level) {
    static constexpr CpuFlags kLadder[kCpuLevelCount] = {
        0, kSse2, kSse2 | kSsse3, kSse2 | kSsse3 | kSse41, kSse2 | kSsse3 | kSse41 | kAvx2};
    return kLadder[static_cast<int>(level)];
}

const char* level_name(CpuLevel level) { return kLevelNames[static_cast<int>(level)]; }

bool parse_level(const char* text, CpuLevel* level) {
    if (!text) return false;
    for (int i = 0; i < kCpuLevelCount; ++i) {
        if (std::strcmp(text, kLevelNames[i]) == 0) {
            *level = static_cast<CpuLevel>(i);
            return true;
        }
    }
    if (std::strcmp(text, "sse4.1") == 0) {
        *level = CpuLevel::Sse41;
        return true;
    }
    return false;
}

CpuLevel detected_level() {
    static const CpuLevel level = probe();
    return level;
}

CpuLevel active_level() {
    static const CpuLevel level = [] {
        CpuLevel l = detected_level();
        CpuLevel cap;
        if (parse_level(std::getenv("KIVVC_CPU_MAX"), &cap) && cap < l) l = cap;
        return l;
    }();
    return level;
}

CpuFlags active_flags() { return flags_for_level(active_level()); }

}  // namespace kivvc
