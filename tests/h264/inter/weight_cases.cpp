// Kernel cases of weighted prediction and plane expansion. Weights are drawn
// mostly from the range H.264 allows and now and then far outside it.
#include <algorithm>
#include <array>
#include <string>

#include "h264/inter/weight_kernels.h"
#include "support/kernel_case.h"

namespace kivvc::test {
namespace {

using weight::Table;
using weight::Weights;
const Table& at(CpuFlags f) { return table_for<Table, weight::init_weight>(f); }

template <class P>
Weights draw_weights(P& p, int maxv, bool bidirectional) {
    const bool wild = p.rng.chance(8);
    const auto weight = [&] { return wild ? p.value(-40000, 40000) : p.value(-128, 127); };
    Weights k{};
    k.w1 = weight();
    const int logWD = p.rng.range(0, wild ? 31 : 7);
    // Encoders mostly pick weights summing to about 2^(logWD + 1).
    const bool typical = !wild && p.rng.chance(2);
    k.w2 = !bidirectional ? 0 : typical ? std::clamp((2 << logWD) - k.w1 + p.rng.range(-8, 8), -128, 127) : weight();
    k.shift = bidirectional ? (logWD + 1) & 31 : logWD;
    k.round = bidirectional ? std::int32_t(1u << logWD) : (logWD ? 1 << (logWD - 1) : 0);
    k.offset = wild ? p.value(-100000, 100000) : p.value(-128, 127) * ((maxv + 1) / 256);
    k.maxValue = maxv;
    return k;
}

template <class T>
struct UniExercise {
    int w, h;
    template <class P>
    void operator()(const void* f, P& p) const {
        const int maxv = sizeof(T) == 1 ? 255 : (1 << p.rng.range(9, 14)) - 1;
        const Weights k = draw_weights(p, maxv, false);
        const auto d = p.template out_plane<T>(w, h, 0, maxv);
        const int ds = d.step / int(sizeof(T)), w_ = w, h_ = h;
        using Fn = std::conditional_t<sizeof(T) == 1, weight::UniFn, weight::Uni16Fn>;
        const auto fn = kernel_cast<Fn>(f);
        p.call([=] { fn(d.ptr, ds, d.ptr, ds, w_, h_, k); });
    }
};

template <class T>
struct BiExercise {
    int w, h;
    bool average;  // the plain 16-bit average
    template <class P>
    void operator()(const void* f, P& p) const {
        const int maxv = sizeof(T) == 1 ? 255 : (1 << p.rng.range(9, 14)) - 1;
        const Weights k = draw_weights(p, maxv, true);
        const auto a = p.template in_plane<T>(w, h, 0, maxv);
        const auto b = p.template in_plane<T>(w, h, 0, maxv);
        const auto d = p.template out_plane<T>(w, h);
        const int as = a.step / int(sizeof(T)), bs = b.step / int(sizeof(T)), ds = d.step / int(sizeof(T));
        const int w_ = w, h_ = h;
        if constexpr (sizeof(T) == 1) {
            const auto fn = kernel_cast<weight::BiFn>(f);
            p.call([=] { fn(a.ptr, as, b.ptr, bs, d.ptr, ds, w_, h_, k); });
        } else if (average) {
            const auto fn = kernel_cast<weight::Average16Fn>(f);
            p.call([=] { fn(a.ptr, as, b.ptr, bs, d.ptr, ds, w_, h_); });
        } else {
            const auto fn = kernel_cast<weight::Bi16Fn>(f);
            p.call([=] { fn(a.ptr, as, b.ptr, bs, d.ptr, ds, w_, h_, k); });
        }
    }
};

struct ExpandExercise {
    int w, h, e, mode;
    template <class P>
    void operator()(const void* f, P& p) const {
        const auto plane = p.template out_plane<std::uint8_t>(w + 2 * e, h + 2 * e);
        std::uint8_t* origin = plane.ptr + std::ptrdiff_t(e) * plane.step + e;
        const int step = plane.step, w_ = w, h_ = h, e_ = e, mode_ = mode;
        const auto fn = kernel_cast<weight::ExpandFn>(f);
        p.call([=] { fn(origin, w_, h_, step, e_, mode_); });
    }
};

std::string size_name(int w, int h) { return std::to_string(w) + "x" + std::to_string(h); }

}  // namespace

KIVVC_CASES(register_weight_cases) {
    for (const auto& s : {std::array<int, 2>{16, 16}, {8, 8}, {4, 4}, {2, 2}, {21, 3}}) {
        const std::string n = size_name(s[0], s[1]);
        add_case("h264/inter", "uni8/" + n, [](CpuFlags f) { return at(f).uni_8u; }, UniExercise<std::uint8_t>{s[0], s[1]});
        add_case("h264/inter", "bi8/" + n, [](CpuFlags f) { return at(f).bi_8u; }, BiExercise<std::uint8_t>{s[0], s[1], false});
        add_case("h264/inter", "uni16/" + n, [](CpuFlags f) { return at(f).uni_16u; }, UniExercise<std::uint16_t>{s[0], s[1]});
        add_case("h264/inter", "bi16/" + n, [](CpuFlags f) { return at(f).bi_16u; }, BiExercise<std::uint16_t>{s[0], s[1], false});
        add_case("h264/inter", "avg16/" + n, [](CpuFlags f) { return at(f).average_16u; }, BiExercise<std::uint16_t>{s[0], s[1], true});
    }
    for (int mode = 0; mode < 3; ++mode)
        add_case("h264/inter", "expand/mode" + std::to_string(mode), [](CpuFlags f) { return at(f).expand_8u; },
                 ExpandExercise{64, 32, mode == 0 ? 32 : 17, mode});
}

}  // namespace kivvc::test
