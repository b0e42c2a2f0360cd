// CPU feature levels and the process-wide cap.
#pragma once
#include <cstdint>

namespace kivvc {

// Levels form a ladder: each implies the ones below it. Kernel tables are
// filled with the scalar references, then overridden level by level.
using CpuFlags = std::uint32_t;
inline constexpr CpuFlags kSse2 = 1u << 0;
inline constexpr CpuFlags kSsse3 = 1u << 1;
inline constexpr CpuFlags kSse41 = 1u << 2;
inline constexpr CpuFlags kAvx2 = 1u << 3;

enum class CpuLevel : int { Scalar = 0, Sse2 = 1, Ssse3 = 2, Sse41 = 3, Avx2 = 4 };
inline constexpr int kCpuLevelCount = 5;

// Flags of every level up to and including `level`.
CpuFlags flags_for_level(CpuLevel level);
const char* level_name(CpuLevel level);
// Parses "scalar", "sse2", "ssse3", "sse41" (or "sse4.1"), "avx2"; false if unknown.
bool parse_level(const char* text, CpuLevel* level);

// Highest level this processor (and operating system) supports; Scalar on a
// portable build.
CpuLevel detected_level();
// detected_level() capped by the KIVVC_CPU_MAX environment variable, read once.
CpuLevel active_level();
// Flags used to fill the process-wide kernel tables.
CpuFlags active_flags();

// A family's process-wide kernel table: filled once (thread-safely) by its
// init function from the active CPU flags.
template <class Table, void (*Init)(Table&, CpuFlags)>
const Table& process_table() {
    static const Table t = [] {
        Table x{};
        Init(x, active_flags());
        return x;
    }();
    return t;
}

}  // namespace kivvc
