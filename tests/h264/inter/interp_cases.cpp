// Kernel cases of the interpolation family: every luma position and chroma
// kernel at the block sizes a decoder uses most, both depths, the average.
#include <string>

#include "h264/inter/interp_kernels.h"
#include "support/kernel_case.h"

namespace kivvc::test {
namespace {

using interp::Table;
const Table& at(CpuFlags f) { return table_for<Table, interp::init_interp>(f); }

const char* const kPositions[interp::kLumaKernels] = {"G", "a", "b", "c", "d", "e", "f", "g",
                                                      "h", "i", "j", "k", "n", "p", "q", "r"};
const char* const kChromaKinds[interp::kChromaKernels] = {"copy", "hor", "ver", "both"};

template <class T>
struct LumaExercise {
    int type, w, h;
    template <class P>
    void operator()(const void* f, P& p) const {
        const int depth = sizeof(T) == 1 ? 8 : p.rng.range(9, 14);
        const int maxv = (1 << depth) - 1;
        const bool fx = (type & 3) != 0, fy = (type >> 2) != 0;
        const auto src = p.template in_plane<T>(w, h, 0, maxv, fx ? 2 : 0, fy ? 2 : 0, fx ? 3 : 0, fy ? 3 : 0);
        const auto dst = p.template out_plane<T>(w, h);
        const int ss = src.step / int(sizeof(T)), ds = dst.step / int(sizeof(T));
        const int w_ = w, h_ = h;
        if constexpr (sizeof(T) == 1) {
            const auto fn = kernel_cast<interp::LumaFn>(f);
            p.call([=] { fn(src.ptr, ss, dst.ptr, ds, w_, h_); });
        } else {
            const auto fn = kernel_cast<interp::Luma16Fn>(f);
            p.call([=] { fn(src.ptr, ss, dst.ptr, ds, w_, h_, maxv); });
        }
    }
};

template <class T>
struct ChromaExercise {
    int type, w, h;
    template <class P>
    void operator()(const void* f, P& p) const {
        const int maxv = sizeof(T) == 1 ? 255 : (1 << p.rng.range(9, 14)) - 1;
        const int dx = (type & 1) ? p.rng.range(1, 7) : 0, dy = (type & 2) ? p.rng.range(1, 7) : 0;
        const auto src = p.template in_plane<T>(w, h, 0, maxv, 0, 0, dx ? 1 : 0, dy ? 1 : 0);
        const auto dst = p.template out_plane<T>(w, h);
        const int ss = src.step / int(sizeof(T)), ds = dst.step / int(sizeof(T));
        const int w_ = w, h_ = h;
        using Fn = std::conditional_t<sizeof(T) == 1, interp::ChromaFn, interp::Chroma16Fn>;
        const auto fn = kernel_cast<Fn>(f);
        p.call([=] { fn(src.ptr, ss, dst.ptr, ds, dx, dy, w_, h_); });
    }
};

struct AverageExercise {
    int w, h;
    template <class P>
    void operator()(const void* f, P& p) const {
        const auto a = p.template in_plane<std::uint8_t>(w, h, 0, 255);
        const auto b = p.template in_plane<std::uint8_t>(w, h, 0, 255);
        const auto dst = p.template out_plane<std::uint8_t>(w, h);
        const auto fn = kernel_cast<interp::AverageFn>(f);
        const int w_ = w, h_ = h;
        p.call([=] { fn(a.ptr, a.step, b.ptr, b.step, dst.ptr, dst.step, w_, h_); });
    }
};

std::string size_name(int w, int h) { return std::to_string(w) + "x" + std::to_string(h); }

}  // namespace

KIVVC_CASES(register_interp_cases) {
    const int luma_sizes[][2] = {{16, 16}, {8, 8}, {4, 4}, {28, 4}, {12, 8}};
    for (int type = 0; type < interp::kLumaKernels; ++type)
        for (const auto& s : luma_sizes) {
            const std::string suffix = std::string(kPositions[type]) + "/" + size_name(s[0], s[1]);
            add_case("h264/inter", "luma8/" + suffix, [type](CpuFlags f) { return at(f).luma_8u[type]; },
                     LumaExercise<std::uint8_t>{type, s[0], s[1]});
            if (s[0] <= 16)
                add_case("h264/inter", "luma16/" + suffix, [type](CpuFlags f) { return at(f).luma_16u[type]; },
                         LumaExercise<std::uint16_t>{type, s[0], s[1]});
        }
    const int chroma_sizes[][2] = {{8, 16}, {4, 16}, {2, 16}, {8, 8}, {4, 4}, {2, 2}, {14, 6}};
    for (int type = 0; type < interp::kChromaKernels; ++type)
        for (const auto& s : chroma_sizes) {
            const std::string suffix = std::string(kChromaKinds[type]) + "/" + size_name(s[0], s[1]);
            add_case("h264/inter", "chroma8/" + suffix, [type](CpuFlags f) { return at(f).chroma_8u[type]; },
                     ChromaExercise<std::uint8_t>{type, s[0], s[1]});
            add_case("h264/inter", "chroma16/" + suffix, [type](CpuFlags f) { return at(f).chroma_16u[type]; },
                     ChromaExercise<std::uint16_t>{type, s[0], s[1]});
        }
    for (const auto& s : {std::array<int, 2>{16, 16}, {8, 8}, {4, 4}, {2, 2}, {5, 3}, {15, 16}})
        add_case("h264/inter", "average8/" + size_name(s[0], s[1]), [](CpuFlags f) { return at(f).average_8u; },
                 AverageExercise{s[0], s[1]});
}

}  // namespace kivvc::test
