// Kernel cases of the MPEG-1/2 family: inverse DCT paths, interleaving
// stores, in-place dequantisers and every motion-compensation table entry.
#include <string>

#include "mpeg2/mpeg2_kernels.h"
#include "support/kernel_case.h"

namespace kivvc::test {
namespace {

using mpeg2::Table;
const Table& at(CpuFlags f) { return table_for<Table, mpeg2::init_mpeg2>(f); }

const char* const kPaths[mpeg2::kIdctPaths] = {"zero", "dc", "reduced", "full"};
const char* const kPositions[4] = {"FF", "FH", "HF", "HH"};

// Coefficients: usually decoder-sized, sometimes the whole 16-bit range (the
// 32-bit sums then wrap, identically on every path).
template <class P>
const std::int16_t* coefficients(P& p) {
    return p.rng.chance(3) ? p.template array<std::int16_t>(64, -32768, 32767)
                           : p.template array<std::int16_t>(64, -2048, 2047);
}

template <class Out, class Fn>
struct IdctExercise {
    template <class P>
    void operator()(const void* f, P& p) const {
        const std::int16_t* src = coefficients(p);
        const auto dst = p.template out_plane<Out>(8, 8);
        const auto fn = kernel_cast<Fn>(f);
        p.call([=] { fn(src, dst.ptr, dst.step); });
    }
};

template <class Out, class Fn>
struct InterleaveExercise {
    template <class P>
    void operator()(const void* f, P& p) const {
        const std::int16_t* a = p.template array<std::int16_t>(64, -256, 255);
        const std::int16_t* b = p.template array<std::int16_t>(64, -256, 255);
        const auto dst = p.template out_plane<Out>(16, 8);
        const auto fn = kernel_cast<Fn>(f);
        p.call([=] { fn(a, b, dst.ptr, dst.step); });
    }
};

struct QuantInvExercise {
    template <class P>
    void operator()(const void* f, P& p) const {
        const bool wide = p.rng.chance(3);
        std::int16_t* block =
            wide ? p.template out_array<std::int16_t>(64) : p.template out_array<std::int16_t>(64, -300, 300);
        const std::int16_t* matrix =
            wide ? p.template array<std::int16_t>(64, -32768, 32767) : p.template array<std::int16_t>(64, 1, 255);
        const std::int32_t q = wide ? static_cast<std::int32_t>(p.rng.next()) : p.value(1, 112);
        const auto fn = kernel_cast<mpeg2::QuantInvFn>(f);
        p.call([=] {
            // In place: each run starts from the same block.
            fn(block, q, matrix);
        });
    }
};

// Motion compensation from one or two references, plus a residual usually
// small, sometimes anywhere in 16 bits. The last argument is the height
// (macroblock-wide kernels) or the rounding control (small blocks).
struct McExercise {
    int w, h, right;
    bool two, small;
    template <class P>
    void operator()(const void* f, P& p) const {
        const auto a = p.template in_plane<std::uint8_t>(w, h, 0, 255, 0, 0, right, 1);
        const auto b = two ? p.template in_plane<std::uint8_t>(w, h, 0, 255, 0, 0, right, 1) : a;
        const auto res = p.rng.chance(4) ? p.template in_plane<std::int16_t>(w, h, -32768, 32767)
                                         : p.template in_plane<std::int16_t>(w, h, -300, 300);
        const auto dst = p.template out_plane<std::uint8_t>(w, h);
        const int last = small ? p.value(0, 3) : h;
        if (two) {
            const auto fn = kernel_cast<mpeg2::McBFn>(f);
            p.call([=] { fn(a.ptr, a.step, b.ptr, b.step, res.ptr, res.step, dst.ptr, dst.step, last); });
        } else {
            const auto fn = kernel_cast<mpeg2::McFn>(f);
            p.call([=] { fn(a.ptr, a.step, res.ptr, res.step, dst.ptr, dst.step, last); });
        }
    }
};

template <auto Single, auto Double>
void add_mc_tables(const std::string& name, int w, int h, int right) {
    for (int i = 0; i < 8; ++i)
        add_case("mpeg2", name + "/" + kPositions[i / 2] + std::to_string(i % 2),
                 [i](CpuFlags f) { return (at(f).*Single)[i]; }, McExercise{w, h, right, false, false});
    for (int i = 0; i < 32; ++i)
        add_case("mpeg2", name + "B/" + kPositions[(i / 2) % 4] + kPositions[i / 8] + std::to_string(i % 2),
                 [i](CpuFlags f) { return (at(f).*Double)[i]; }, McExercise{w, h, right, true, false});
}

template <auto Single, auto Double>
void add_mc_small_tables(const std::string& name, int w, int h) {
    for (int i = 0; i < 16; i += 4)
        add_case("mpeg2", name + "/" + kPositions[i / 4], [i](CpuFlags f) { return (at(f).*Single)[i]; },
                 McExercise{w, h, 1, false, true});
    for (int i = 0; i < 16; ++i)
        add_case("mpeg2", name + "B/" + kPositions[i % 4] + kPositions[i / 4],
                 [i](CpuFlags f) { return (at(f).*Double)[i]; }, McExercise{w, h, 1, true, true});
}

}  // namespace

KIVVC_CASES(register_mpeg2_cases) {
    for (int i = 0; i < mpeg2::kIdctPaths; ++i) {
        add_case("mpeg2", std::string("idct16s/") + kPaths[i], [i](CpuFlags f) { return at(f).idct16s[i]; },
                 IdctExercise<std::int16_t, mpeg2::Idct16Fn>{});
        if (i > 0)
            add_case("mpeg2", std::string("idct8u/") + kPaths[i], [i](CpuFlags f) { return at(f).idct8u[i]; },
                     IdctExercise<std::uint8_t, mpeg2::Idct8Fn>{});
    }
    add_case("mpeg2", "interleave16s", [](CpuFlags f) { return at(f).interleave16s; },
             InterleaveExercise<std::int16_t, mpeg2::Interleave16Fn>{});
    add_case("mpeg2", "interleave8u", [](CpuFlags f) { return at(f).interleave8u; },
             InterleaveExercise<std::uint8_t, mpeg2::Interleave8Fn>{});
    add_case("mpeg2", "quantinv_intra", [](CpuFlags f) { return at(f).quant_inv_intra; }, QuantInvExercise{});
    add_case("mpeg2", "quantinv", [](CpuFlags f) { return at(f).quant_inv; }, QuantInvExercise{});
    add_mc_tables<&Table::MC16xHFunctionTable_mmp, &Table::MC16xHBFunctionTable_mmp>("mc16x16", 16, 16, 1);
    add_mc_tables<&Table::MC16xHUVFunctionTable_mmp, &Table::MC16xHUVBFunctionTable_mmp>("mc16x8uv", 16, 8, 2);
    add_mc_tables<&Table::MC8xHFunctionTable_mmp, &Table::MC8xHBFunctionTable_mmp>("mc8x8", 8, 8, 1);
    add_mc_small_tables<&Table::MC4x8FnTbl, &Table::MC4x8BFnTbl>("mc4x8", 4, 8);
    add_mc_small_tables<&Table::MC4x4FnTbl, &Table::MC4x4BFnTbl>("mc4x4", 4, 4);
    add_mc_small_tables<&Table::MC4x2FnTbl, &Table::MC4x2BFnTbl>("mc4x2", 4, 2);
    add_mc_small_tables<&Table::MC2x4FnTbl, &Table::MC2x4BFnTbl>("mc2x4", 2, 4);
    add_mc_small_tables<&Table::MC2x2FnTbl, &Table::MC2x2BFnTbl>("mc2x2", 2, 2);
}

}  // namespace kivvc::test
