// Kernel cases of the deblocking family: one per SIMD-covered table entry,
// plus whole macroblocks (every vertical edge, then every horizontal one) for
// the speed table.
#include "h264/inter/deblock_kernels.h"
#include <algorithm>
#include <string>

#include "support/kernel_case.h"

namespace kivvc::test {
namespace {

using deblock::Edges8Fn;
using deblock::Table;
const Table& at(CpuFlags f) { return table_for<Table, deblock::init_deblock>(f); }

// Blocky samples: a level per 4x4 tile around a base drawn by the probe's
// pattern, small noise, clamped; most edges then pass the line decision.
template <class T>
void fill_blocky(Plane<T> pl, int w, int h, ProbeBase& p, int maxv) {
    const int scale = (maxv + 1) / 256;
    const int spread = (p.rng.chance(3) ? 40 : p.rng.chance(2) ? 10 : 3) * scale;
    const int noise = p.rng.range(0, 3) * scale;
    const int base = p.value(0, maxv);
    int tile[8][8];
    for (auto& row : tile)
        for (int& t : row) t = p.rng.range(-spread, spread);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const int v = base + tile[y / 4][x / 4] + p.rng.range(-noise, noise);
            pl.row(y)[x] = static_cast<T>(v < 0 ? 0 : v > maxv ? maxv : v);
        }
}

// bS of one macroblock, per edge: all zero, all 4, mixed 0..4, 3 or 4, and
// rarely any byte (bS above 4 must act as the normal filter everywhere).
// Held in an output-typed buffer so it can be shaped; no kernel writes it.
std::uint8_t* draw_bs(ProbeBase& p) {
    std::uint8_t* bs = p.out_array<std::uint8_t>(16);
    for (int e = 0; e < 4; ++e) {
        const int kind = p.rng.range(0, 9);
        for (int j = 0; j < 4; ++j) {
            int v = kind == 0 ? 0 : kind == 1 ? 4 : kind == 2 ? p.rng.range(3, 4) : p.rng.range(0, 4);
            if (kind == 3 && p.rng.chance(4)) v = p.rng.range(0, 255);
            bs[4 * e + j] = static_cast<std::uint8_t>(v);
        }
    }
    return bs;
}

// Thresholds: realistic ranges (scaled to the depth) mostly; with `top`
// above 1, anything up to it.
template <class T>
struct Thresholds {
    const T *alpha, *beta, *tc0;
    Thresholds(ProbeBase& p, int top, int scale) {
        alpha = p.array<T>(2, 0, std::max(top, 255 * scale));
        beta = p.array<T>(2, 0, std::max(top, 18 * scale));
        tc0 = p.array<T>(16, 0, std::max(top, 25 * scale));
    }
};

// One direction of one plane: a w x h block with `margin` samples before it
// across the edges (left for vertical edges, above for horizontal ones).
// 16-bit samples have a depth of 8..14 bits, or now and then lie over the
// whole 16-bit range with any thresholds and depth, which the kernels must
// treat exactly as the reference does.
template <class T>
struct EdgesExercise {
    int w, h, margin;
    bool vertical;
    template <class P>
    void operator()(const void* f, P& p) const {
        constexpr bool k8 = sizeof(T) == 1;
        const bool wild = p.rng.chance(k8 ? 4 : 5);
        const int bits = k8 ? 8 : wild ? p.rng.range(1, 16) : p.rng.range(8, 14);
        const int maxv = (1 << bits) - 1, scale = 1 << (bits > 8 ? bits - 8 : 0);
        const int cols = w + (vertical ? margin : 0), rows = h + (vertical ? 0 : margin);
        const auto pl = p.template out_plane<T>(cols, rows);
        fill_blocky(pl, cols, rows, p, wild && !k8 ? 65535 : maxv);
        const Thresholds<T> th(p, wild ? (k8 ? 255 : 65535) : 1, scale);
        const std::uint8_t* bs = draw_bs(p);
        T* q0 = vertical ? pl.ptr + margin : pl.row(margin);
        const int step = pl.step / int(sizeof(T));
        if constexpr (k8) {
            const auto fn = kernel_cast<deblock::Edges8Fn>(const_cast<void*>(f));
            p.call([=] { fn(q0, step, th.alpha, th.beta, th.tc0, bs); });
        } else {
            const auto fn = kernel_cast<deblock::Edges16Fn>(const_cast<void*>(f));
            p.call([=] { fn(q0, step, th.alpha, th.beta, th.tc0, bs, maxv); });
        }
    }
};

// A whole macroblock plane: all vertical edges, then all horizontal ones,
// through the table the case picks (the kernel pointer is the table).
struct Macroblock8Exercise {
    Edges8Fn Table::*ver;
    Edges8Fn Table::*hor;
    int w, h, margin;
    template <class P>
    void operator()(const void* f, P& p) const {
        const auto pl = p.template out_plane<std::uint8_t>(w + margin, h + margin);
        fill_blocky(pl, w + margin, h + margin, p, 255);
        const Thresholds<std::uint8_t> tv(p, p.rng.chance(4) ? 255 : 1, 1), th(p, p.rng.chance(4) ? 255 : 1, 1);
        const std::uint8_t* bsv = draw_bs(p);
        const std::uint8_t* bsh = draw_bs(p);
        std::uint8_t* mb = pl.row(margin) + margin;
        const int step = pl.step;
        const auto fv = static_cast<const Table*>(f)->*ver;
        const auto fh = static_cast<const Table*>(f)->*hor;
        p.call([=] {
            fv(mb, step, tv.alpha, tv.beta, tv.tc0, bsv);
            fh(mb, step, th.alpha, th.beta, th.tc0, bsh);
        });
    }
};

}  // namespace

KIVVC_CASES(register_deblock_cases) {
    const char* fam = "h264/inter";
    const struct {
        const char* name;
        Edges8Fn Table::*e8;
        deblock::Edges16Fn Table::*e16;
        int w, h, margin;
        bool vertical;
    } entries[] = {
        {"luma_ver", &Table::luma_ver, &Table::luma_ver16, 16, 16, 4, true},
        {"luma_hor", &Table::luma_hor, &Table::luma_hor16, 16, 16, 4, false},
        {"chroma_ver", &Table::chroma_ver, &Table::chroma_ver16, 8, 8, 2, true},
        {"chroma_hor", &Table::chroma_hor, &Table::chroma_hor16, 8, 8, 2, false},
        {"chroma422_ver", &Table::chroma422_ver, &Table::chroma422_ver16, 8, 16, 2, true},
        {"chroma422_hor", &Table::chroma422_hor, &Table::chroma422_hor16, 8, 16, 2, false},
    };
    for (const auto& e : entries) {
        const std::string name = std::string("deblock/") + e.name;
        add_case(fam, name, [m = e.e8](CpuFlags f) { return at(f).*m; },
                 EdgesExercise<std::uint8_t>{e.w, e.h, e.margin, e.vertical});
        add_case(fam, name + "16", [m = e.e16](CpuFlags f) { return at(f).*m; },
                 EdgesExercise<std::uint16_t>{e.w, e.h, e.margin, e.vertical});
    }
    add_case(fam, "deblock/mb_luma", [](CpuFlags f) { return &at(f); },
             Macroblock8Exercise{&Table::luma_ver, &Table::luma_hor, 16, 16, 4});
    add_case(fam, "deblock/mb_chroma420", [](CpuFlags f) { return &at(f); },
             Macroblock8Exercise{&Table::chroma_ver, &Table::chroma_hor, 8, 8, 2});
}

}  // namespace kivvc::test
