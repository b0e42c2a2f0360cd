// Kernel cases of the VC-1 family.
#include <string>

#include "support/kernel_case.h"
#include "vc1/vc1_kernels.h"

namespace kivvc::test {
namespace {

using vc1::Table;
const Table& at(CpuFlags f) { return table_for<Table, vc1::init_vc1>(f); }

template <class Fn>
Fn kernel(const void* f) {
    return kernel_cast<Fn>(const_cast<void*>(f));
}

struct TransformExercise {
    int w, h;
    bool in_place;
    template <class P>
    void operator()(const void* f, P& p) const {
        // The whole 16-bit range: row results wrap the same way on every path.
        const auto fn = kernel<vc1::TransformFn>(f);
        const auto dst = p.template out_plane<std::int16_t>(w, h, -32768, 32767);
        if (in_place) {
            p.call([=] { fn(dst.ptr, dst.step, dst.ptr, dst.step); });
        } else {
            const auto src = p.template in_plane<std::int16_t>(w, h, -32768, 32767);
            p.call([=] { fn(src.ptr, src.step, dst.ptr, dst.step); });
        }
    }
};

struct SmoothVerExercise {
    template <class P>
    void operator()(const void* f, P& p) const {
        const auto fn = kernel<vc1::SmoothVerFn>(f);
        const auto left = p.template out_plane<std::int16_t>(2, 8, -32768, 32767);
        const auto right = p.template out_plane<std::int16_t>(2, 8, -32768, 32767);
        const auto dst = p.template out_plane<std::uint8_t>(4, 8);
        p.call([=] { fn(left.ptr, left.step, right.ptr, right.step, dst.ptr + 2, dst.step); });
    }
};

struct SmoothHorExercise {
    template <class P>
    void operator()(const void* f, P& p) const {
        const auto fn = kernel<vc1::SmoothHorFn>(f);
        const auto upper = p.template in_plane<std::int16_t>(8, 2, -32768, 32767);
        const auto lower = p.template in_plane<std::int16_t>(8, 2, -32768, 32767);
        const auto dst = p.template out_plane<std::uint8_t>(8, 4);
        p.call([=] { fn(upper.ptr, upper.step, lower.ptr, lower.step, dst.row(2), dst.step); });
    }
};

struct InterpExercise {
    int w, h;
    int left, top, right, bottom;  // columns and rows read around the block
    template <class P>
    void operator()(const void* f, P& p) const {
        const auto fn = kernel<vc1::InterpFn>(f);
        const auto src = p.template in_plane<std::uint8_t>(w, h, 0, 255, left, top, right, bottom);
        const auto dst = p.template out_plane<std::uint8_t>(w, h);
        const int rc = p.rng.range(0, 1);
        p.call([=] { fn(src.ptr, src.step, dst.ptr, dst.step, rc); });
    }
};

struct DeblockExercise {
    int lines;
    bool vertical;
    bool all_filtered = false;  // clean steps, every segment enabled
    template <class P>
    void operator()(const void* f, P& p) const {
        const auto fn = kernel<vc1::DeblockFn>(f);
        const int w = vertical ? 8 : lines, h = vertical ? lines : 8;
        const auto plane = p.template out_plane<std::uint8_t>(w, h);
        // Two levels a small step apart with a little noise, so that the
        // tests pass often enough for the filter to act.
        for (int line = 0; line < lines; ++line) {
            const int a = p.value(0, 255);
            const int b = all_filtered ? (a < 128 ? a + p.rng.range(8, 30) : a - p.rng.range(8, 30))
                                       : a + p.rng.range(-20, 20);
            const int noise = all_filtered ? 0 : p.rng.range(0, 4);
            for (int k = 0; k < 8; ++k) {
                int v = (k < 4 ? a : b) + p.rng.range(-noise, noise);
                v = v < 0 ? 0 : v > 255 ? 255 : v;
                (vertical ? plane.row(line)[k] : plane.row(k)[line]) = static_cast<std::uint8_t>(v);
            }
        }
        const int pquant = all_filtered ? 31 : p.rng.chance(16) ? p.rng.range(-3, 0) : p.rng.range(1, 40);
        const int flags = all_filtered || p.rng.chance(2) ? 0 : p.rng.range(0, 15);
        std::uint8_t* edge = vertical ? plane.ptr + 4 : plane.row(4);
        p.call([=] { fn(edge, plane.step, pquant, flags); });
    }
};

struct RangeMapExercise {
    int w, h;  // w 0: a random width
    template <class P>
    void operator()(const void* f, P& p) const {
        const auto fn = kernel<vc1::RangeMapFn>(f);
        const int width = w ? w : p.rng.range(1, 70);
        const auto src = p.template in_plane<std::uint8_t>(width, h, 0, 255);
        const auto dst = p.template out_plane<std::uint8_t>(width, h);
        const int r = p.rng.range(0, 7);
        const int height = h;
        p.call([=] { fn(src.ptr, src.step, dst.ptr, dst.step, width, height, r); });
    }
};

template <std::size_t N>
void add_transforms(const char* name, vc1::TransformFn const (Table::*member)[N], int w, int h,
                    const char* const (&forms)[N]) {
    for (std::size_t i = 0; i < N; ++i)
        for (bool in_place : {false, true})
            add_case("vc1", std::string(name) + "/" + forms[i] + (in_place ? "_inplace" : ""),
                     [member, i](CpuFlags f) { return (at(f).*member)[i]; }, TransformExercise{w, h, in_place});
}

std::string position_name(int i) { return "dx" + std::to_string(i >> 2) + "dy" + std::to_string(i & 3); }

}  // namespace

KIVVC_CASES(register_vc1_cases) {
    const char* const forms4[4] = {"dc", "2x2", "4x4", "full"};
    const char* const forms3[3] = {"dc", "2x2", "full"};
    const char* const forms2[2] = {"dc", "full"};
    add_transforms("transform8x8", &Table::transform8x8, 8, 8, forms4);
    add_transforms("transform4x4", &Table::transform4x4, 4, 4, forms3);
    add_transforms("transform8x4", &Table::transform8x4, 8, 4, forms2);
    add_transforms("transform4x8", &Table::transform4x8, 4, 8, forms2);

    const char* const roundings[3] = {"alternate", "even", "odd"};
    for (int i = 0; i < 3; ++i)
        add_case("vc1", std::string("smooth_ver/") + roundings[i], [i](CpuFlags f) { return at(f).smooth_ver[i]; },
                 SmoothVerExercise{});
    add_case("vc1", "smooth_hor", [](CpuFlags f) { return at(f).smooth_hor; }, SmoothHorExercise{});

    const int bilinear_sizes[4][2] = {{4, 4}, {8, 4}, {8, 8}, {16, 16}};
    for (int s = 0; s < 4; ++s)
        for (int i = 0; i < 16; ++i) {
            if (!(((i >> 2) | i) & 1)) continue;
            const int w = bilinear_sizes[s][0], h = bilinear_sizes[s][1];
            add_case("vc1", "bilinear" + std::to_string(w) + "x" + std::to_string(h) + "/" + position_name(i),
                     [s, i](CpuFlags f) { return at(f).bilinear[s][i]; }, InterpExercise{w, h, 0, 0, (i >> 2) ? 1 : 0, (i & 3) ? 1 : 0});
        }
    const int bicubic_sizes[3][2] = {{8, 8}, {16, 8}, {16, 16}};
    for (int s = 0; s < 3; ++s)
        for (int i = 1; i < 16; ++i) {
            const int w = bicubic_sizes[s][0], h = bicubic_sizes[s][1];
            add_case("vc1", "bicubic" + std::to_string(w) + "x" + std::to_string(h) + "/" + position_name(i),
                     [s, i](CpuFlags f) { return at(f).bicubic[s][i]; }, InterpExercise{w, h, (i >> 2) ? 1 : 0, (i & 3) ? 1 : 0, (i >> 2) ? 2 : 0, (i & 3) ? 2 : 0});
        }

    add_case("vc1", "deblock_luma_hor", [](CpuFlags f) { return at(f).deblock_luma_hor; }, DeblockExercise{16, false});
    add_case("vc1", "deblock_luma_ver", [](CpuFlags f) { return at(f).deblock_luma_ver; }, DeblockExercise{16, true});
    add_case("vc1", "deblock_luma_hor/all_filtered", [](CpuFlags f) { return at(f).deblock_luma_hor; },
             DeblockExercise{16, false, true});
    add_case("vc1", "deblock_luma_ver/all_filtered", [](CpuFlags f) { return at(f).deblock_luma_ver; },
             DeblockExercise{16, true, true});
    add_case("vc1", "deblock_chroma_hor", [](CpuFlags f) { return at(f).deblock_chroma_hor; },
             DeblockExercise{8, false});
    add_case("vc1", "deblock_chroma_ver", [](CpuFlags f) { return at(f).deblock_chroma_ver; },
             DeblockExercise{8, true});

    add_case("vc1", "range_map/64x16", [](CpuFlags f) { return at(f).range_map; }, RangeMapExercise{64, 16});
    add_case("vc1", "range_map/any_width", [](CpuFlags f) { return at(f).range_map; }, RangeMapExercise{0, 3});
}

}  // namespace kivvc::test
