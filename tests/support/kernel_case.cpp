#include "support/kernel_case.h"

#include <cstdlib>
#include <sstream>

namespace kivvc::test {

const char* pattern_name(Pattern p) {
    static const char* const kNames[] = {"uniform", "extremes", "near-edges", "flat"};
    return kNames[static_cast<int>(p)];
}

std::vector<KernelCase>& registry() {
    static std::vector<KernelCase> cases;
    return cases;
}

int ProbeBase::value(int lo, int hi) {
    switch (pattern) {
        case Pattern::Extremes:
            return rng.chance(2) ? lo : hi;
        case Pattern::NearEdges: {
            const int d = rng.range(0, 3);
            return rng.chance(2) ? (lo + d <= hi ? lo + d : hi) : (hi - d >= lo ? hi - d : lo);
        }
        case Pattern::Flat:
            if (!rng.chance(16)) {
                // A per-probe constant: derived from lo/hi so it is stable.
                return lo + static_cast<int>((static_cast<std::int64_t>(hi) - lo) / 3);
            }
            return rng.range(lo, hi);
        default:
            return rng.range(lo, hi);
    }
}

int ProbeBase::pick_step(int w, int size) {
    const int bytes = w * size;
    if (bench_layout_) return ((bytes + 31) / 32) * 32 + 32;
    switch (rng.range(0, 3)) {
        case 0: return bytes;                                   // tight
        case 1: return bytes + size * rng.range(1, 7);          // odd-ish extra
        case 2: return ((bytes + 31) / 32) * 32 + 32;           // aligned pitch
        default: return bytes + size * rng.range(8, 40);
    }
}

std::uint8_t* ProbeBase::allocate(std::size_t bytes, std::size_t align, bool output, int step, int rows,
                                  int row_bytes) {
    auto b = std::make_unique<Buffer>();
    const std::size_t misalign = bench_layout_ ? 0 : align * static_cast<std::size_t>(rng.range(0, 15));
    const std::size_t guard = output ? 64 : 0;
    b->start = misalign + guard;
    b->mem.resize(b->start + bytes + guard);
    for (auto& byte : b->mem) byte = static_cast<std::uint8_t>(rng.next());
    b->output = output;
    b->step = step;
    b->rows = rows;
    b->row_bytes = row_bytes;
    std::uint8_t* p = b->mem.data() + b->start;
    buffers_.push_back(std::move(b));
    return p;
}

std::vector<std::uint8_t> TestProbe::outputs() const {
    std::vector<std::uint8_t> out;
    for (const auto& b : buffers_)
        if (b->output) out.insert(out.end(), b->mem.begin(), b->mem.end());
    for (std::int64_t r : results_)
        for (int i = 0; i < 8; ++i) out.push_back(static_cast<std::uint8_t>(r >> (8 * i)));
    return out;
}

std::string TestProbe::check_integrity() const {
    int index = 0;
    for (const auto& b : buffers_) {
        ++index;
        if (!b->output) {
            if (b->mem != b->initial) return "input buffer " + std::to_string(index) + " was modified";
            continue;
        }
        // Every byte outside the block rows must be as filled.
        const std::size_t n = b->mem.size();
        for (std::size_t i = 0; i < n; ++i) {
            bool inside = false;
            if (i >= b->start && b->rows > 0) {
                const std::size_t rel = i - b->start;
                const std::size_t row = rel / std::size_t(b->step);
                const std::size_t col = rel % std::size_t(b->step);
                inside = row < std::size_t(b->rows) && col < std::size_t(b->row_bytes);
            }
            if (!inside && b->mem[i] != b->initial[i]) {
                std::ostringstream os;
                os << "output buffer " << index << " written outside its block at byte "
                   << (std::ptrdiff_t(i) - std::ptrdiff_t(b->start));
                return os.str();
            }
        }
    }
    return {};
}

std::string TestProbe::locate(std::size_t i) const {
    int index = 0;
    for (const auto& b : buffers_) {
        ++index;
        if (!b->output) continue;
        if (i < b->mem.size()) {
            std::ostringstream os;
            const std::ptrdiff_t rel = std::ptrdiff_t(i) - std::ptrdiff_t(b->start);
            os << "output buffer " << index;
            if (rel >= 0 && b->step > 0) os << " row " << rel / b->step << " byte " << rel % b->step;
            else os << " byte " << rel;
            return os.str();
        }
        i -= b->mem.size();
    }
    return "result value " + std::to_string(i / 8);
}

std::vector<CpuLevel> levels_to_test() {
    std::vector<CpuLevel> levels;
    for (int l = 0; l <= static_cast<int>(active_level()); ++l) levels.push_back(static_cast<CpuLevel>(l));
    return levels;
}

}  // namespace kivvc::test
