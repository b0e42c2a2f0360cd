// Kernel cases: one description per kernel table entry, shared by the
// differential tester, the benchmarks and the speed tool.
//
// A family describes each entry with
//   - pick(flags): the entry of a table built for those CPU flags, and
//   - an exercise: a functor with `template <class P> void operator()(const
//     void* fn, P& probe) const` that draws its inputs from the probe, calls
//     fn once inside probe.call([=] { ... }) and declares its outputs. The
//     lambda must capture by value: the benchmark keeps it after the
//     exercise has returned.
// The tester runs the exercise with the reference and with each SIMD level on
// the same seed and compares every output byte (guards included); the
// benchmark runs the call in a loop.
#pragma once
#include <chrono>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "core/cpu.h"

namespace kivvc::test {

// Small, fast, seedable generator (xorshift64*).
class Rng {
public:
    explicit Rng(std::uint64_t seed) : s_(seed ? seed : 0x9E3779B97F4A7C15ull) {}
    std::uint64_t next() {
        s_ ^= s_ >> 12;
        s_ ^= s_ << 25;
        s_ ^= s_ >> 27;
        return s_ * 0x2545F4914F6CDD1Dull;
    }
    // Uniform in lo..hi inclusive.
    int range(int lo, int hi) {
        const std::uint64_t span = static_cast<std::uint64_t>(static_cast<std::int64_t>(hi) - lo) + 1;
        return static_cast<int>(static_cast<std::int64_t>(lo) + static_cast<std::int64_t>(next() % span));
    }
    bool chance(int one_in) { return range(0, one_in - 1) == 0; }

private:
    std::uint64_t s_;
};

// How sample values are drawn within [lo, hi].
enum class Pattern {
    Uniform,     // any value
    Extremes,    // lo or hi only
    NearEdges,   // within a few of lo or hi
    Flat,        // one value (random) with sparse outliers
    Count
};
const char* pattern_name(Pattern p);

// A rectangle inside probe-owned memory: rows at ptr + y * step (bytes).
template <class T>
struct Plane {
    T* ptr;
    int step;  // bytes
    T* row(int y) const { return reinterpret_cast<T*>(reinterpret_cast<std::uint8_t*>(ptr) + std::ptrdiff_t(y) * step); }
};

// Memory and values for one exercise run. Buffers live as long as the probe.
class ProbeBase {
public:
    ProbeBase(std::uint64_t seed, Pattern pattern) : rng(seed), pattern(pattern) {}
    virtual ~ProbeBase() = default;

    Rng rng;
    Pattern pattern;

    // A value within lo..hi drawn by the probe's pattern.
    int value(int lo, int hi);
    // n elements drawn by value(lo, hi); the end of the buffer is tight (an
    // over-read past n elements leaves the allocation), its start misaligned
    // by a random number of elements.
    template <class T>
    T* array(std::size_t n, int lo, int hi) {
        T* p = reinterpret_cast<T*>(allocate(n * sizeof(T), sizeof(T), false, 0, 0, 0));
        for (std::size_t i = 0; i < n; ++i) p[i] = static_cast<T>(value(lo, hi));
        snapshot_input();
        return p;
    }
    // An input rectangle of w x h elements (after `extra_*` extra readable
    // columns and rows on each side: left/top before the returned pointer,
    // right/bottom after the block). Step chosen at random (occasionally
    // negative or just the width). Values drawn by value(lo, hi).
    template <class T>
    Plane<T> in_plane(int w, int h, int lo, int hi, int left = 0, int top = 0, int right = 0, int bottom = 0) {
        return plane<T>(w, h, lo, hi, left, top, right, bottom, false);
    }
    // An output rectangle of w x h elements, pre-filled with values in lo..hi
    // (by default random bits of any element type). Every byte outside the
    // block is a guard: it must stay as it was.
    template <class T>
    Plane<T> out_plane(int w, int h, int lo = 0, int hi = -1) {
        return plane<T>(w, h, lo, hi, 0, 0, 0, 0, true);
    }
    // An output array of n elements with guards on both sides, pre-filled as
    // out_plane.
    template <class T>
    T* out_array(std::size_t n, int lo = 0, int hi = -1) {
        T* p = reinterpret_cast<T*>(allocate(n * sizeof(T), sizeof(T), true, int(n * sizeof(T)), 1, int(n * sizeof(T))));
        for (std::size_t i = 0; i < n; ++i) p[i] = fill_value<T>(lo, hi);
        snapshot_output();
        return p;
    }
    // A row step in bytes for a block `w` elements wide of element size `size`.
    int pick_step(int w, int size);

protected:
    struct Buffer {
        std::vector<std::uint8_t> mem;
        std::size_t start = 0;     // offset of the returned pointer
        bool output = false;
        int step = 0, row_bytes = 0, rows = 0;  // block geometry (outputs)
        std::vector<std::uint8_t> initial;      // contents after filling
    };
    std::uint8_t* allocate(std::size_t bytes, std::size_t align, bool output, int step, int rows, int row_bytes);
    template <class T>
    Plane<T> plane(int w, int h, int lo, int hi, int left, int top, int right, int bottom, bool output);
    // value(lo, hi), or random bits of T when hi < lo.
    template <class T>
    T fill_value(int lo, int hi) {
        if (hi >= lo) return static_cast<T>(value(lo, hi));
        const std::uint64_t bits = rng.next();
        T v;
        std::memcpy(&v, &bits, sizeof(T));
        return v;
    }
    void snapshot_input() { buffers_.back()->initial = buffers_.back()->mem; }
    void snapshot_output() { buffers_.back()->initial = buffers_.back()->mem; }

    std::vector<std::unique_ptr<Buffer>> buffers_;
    bool bench_layout_ = false;  // aligned pitches, no misalignment, positive steps
};

// Probe for the differential tester: call() runs once.
class TestProbe : public ProbeBase {
public:
    using ProbeBase::ProbeBase;
    template <class F>
    void call(F&& f) {
        f();
        called_ = true;
    }
    // Declares a value (a returned sum, a status) as part of the output.
    void result(std::int64_t v) { results_.push_back(v); }

    // After the run: all output bytes and results, and any fault seen.
    std::vector<std::uint8_t> outputs() const;
    // Empty when inputs are unchanged and no byte outside an output block was
    // written; else a description.
    std::string check_integrity() const;
    bool called() const { return called_; }
    // Describes byte i of outputs() (buffer, row, column).
    std::string locate(std::size_t i) const;

private:
    std::vector<std::int64_t> results_;
    bool called_ = false;
};

// Probe for timing: call() keeps the call, run_batch() repeats it.
class BenchProbe : public ProbeBase {
public:
    static constexpr int kBatch = 16;
    BenchProbe(std::uint64_t seed, Pattern pattern) : ProbeBase(seed, pattern) { bench_layout_ = true; }
    template <class F>
    void call(F&& f) {
        body_ = [f]() mutable {
            for (int i = 0; i < kBatch; ++i) {
                f();
                asm volatile("" ::: "memory");
            }
        };
    }
    void result(std::int64_t) {}
    void run_batch() { body_(); }

private:
    std::function<void()> body_;
};

struct KernelCase {
    std::string family;  // "common", "h264/residual", ...
    std::string name;    // unique within the family
    std::function<const void*(CpuFlags)> pick;
    std::function<void(const void*, TestProbe&)> test;
    std::function<void(const void*, BenchProbe&)> bench;
};

std::vector<KernelCase>& registry();

// The kernel behind a case's function pointer (cases hold them as const
// void*; a plain reinterpret_cast would cast the const away, which not every
// compiler accepts).
template <class Fn>
Fn kernel_cast(const void* f) {
    return reinterpret_cast<Fn>(const_cast<void*>(f));
}

// Registers one case; `exercise` is a functor with the templated operator().
template <class Exercise, class Pick>
void add_case(std::string family, std::string name, Pick pick, Exercise exercise) {
    registry().push_back(KernelCase{
        std::move(family), std::move(name), [pick](CpuFlags f) { return reinterpret_cast<const void*>(pick(f)); },
        [exercise](const void* fn, TestProbe& p) { exercise(fn, p); },
        [exercise](const void* fn, BenchProbe& p) { exercise(fn, p); }});
}

// A family's table built for given flags, cached per flag set.
template <class Table, void (*Init)(Table&, CpuFlags)>
const Table& table_for(CpuFlags flags) {
    static std::map<CpuFlags, std::unique_ptr<Table>> cache;
    auto& slot = cache[flags];
    if (!slot) {
        slot = std::make_unique<Table>();
        Init(*slot, flags);
    }
    return *slot;
}

// Levels to test: every level up to the detected one, capped by KIVVC_CPU_MAX.
std::vector<CpuLevel> levels_to_test();

// Runs a registered function once at static-initialisation time.
#define KIVVC_CASES(fn)                                      \
    static void fn();                                        \
    [[maybe_unused]] static const bool fn##_registered = (fn(), true); \
    static void fn()

// --- template definitions -------------------------------------------------

template <class T>
Plane<T> ProbeBase::plane(int w, int h, int lo, int hi, int left, int top, int right, int bottom, bool output) {
    const int cols = left + w + right;
    const int rows = top + h + bottom;
    int step = pick_step(cols, sizeof(T));
    const bool negative = !output && !bench_layout_ && rng.chance(8);
    const int abs_step = step;
    // Bytes: full rows except the last, which ends right after its last column.
    const std::size_t bytes = std::size_t(rows - 1) * abs_step + std::size_t(cols) * sizeof(T);
    std::uint8_t* base = allocate(bytes, sizeof(T), output, abs_step, output ? h : 0, w * int(sizeof(T)));
    for (std::size_t i = 0; i + sizeof(T) <= bytes; i += sizeof(T)) {
        T v = fill_value<T>(lo, hi);
        std::memcpy(base + i, &v, sizeof(T));
    }
    buffers_.back()->initial = buffers_.back()->mem;
    std::uint8_t* origin;
    if (negative) {
        step = -abs_step;
        origin = base + std::size_t(rows - 1) * abs_step;  // first row is the last in memory
        origin += std::ptrdiff_t(top) * step + std::ptrdiff_t(left) * sizeof(T);
    } else {
        origin = base + std::size_t(top) * abs_step + std::size_t(left) * sizeof(T);
    }
    return Plane<T>{reinterpret_cast<T*>(origin), step};
}

}  // namespace kivvc::test
