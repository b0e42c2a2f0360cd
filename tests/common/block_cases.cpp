// Kernel cases of the block copy, average and add family.
#include "common/block_kernels.h"
#include "support/kernel_case.h"

namespace kivvc::test {
namespace {

using block::Table;
const Table& at(CpuFlags f) { return table_for<Table, block::init_block>(f); }

const char* const kHpNames[block::kHpEntries] = {"full0", "full1", "HF0", "HF1", "FH0", "FH1", "HH0", "HH1"};

struct CopyExercise {
    int w, h;  // the destination is pre-filled, so interpolate-average reads it too
    template <class P>
    void operator()(const void* f, P& p) const {
        const auto src = p.template in_plane<std::uint8_t>(w, h, 0, 255, 0, 0, 1, 1);
        const auto dst = p.template out_plane<std::uint8_t>(w, h);
        const auto fn = kernel_cast<block::CopyFn>(f);
        p.call([=] { fn(src.ptr, src.step, dst.ptr, dst.step); });
    }
};

struct AddHpExercise {
    template <class P>
    void operator()(const void* f, P& p) const {
        const auto res = p.template in_plane<std::int16_t>(8, 8, -2048, 2047);
        const auto ref = p.template in_plane<std::uint8_t>(8, 8, 0, 255, 0, 0, 1, 1);
        const auto dst = p.template out_plane<std::uint8_t>(8, 8);
        const auto fn = kernel_cast<block::AddHpFn>(f);
        p.call([=] { fn(res.ptr, res.step, ref.ptr, ref.step, dst.ptr, dst.step); });
    }
};

struct AverageExercise {
    int n;
    template <class P>
    void operator()(const void* f, P& p) const {
        const auto a = p.template in_plane<std::uint8_t>(n, n, 0, 255);
        const auto b = p.template in_plane<std::uint8_t>(n, n, 0, 255);
        const auto dst = p.template out_plane<std::uint8_t>(n, n);
        const auto fn = kernel_cast<block::AverageFn>(f);
        p.call([=] { fn(a.ptr, a.step, b.ptr, b.step, dst.ptr, dst.step); });
    }
};

struct AddExercise {
    template <class P>
    void operator()(const void* f, P& p) const {
        // Full 16-bit range: the wrap must match too.
        const auto res = p.template in_plane<std::int16_t>(8, 8, -32768, 32767);
        const auto dst = p.template out_plane<std::uint8_t>(8, 8);
        const auto fn = kernel_cast<block::AddFn>(f);
        p.call([=] { fn(res.ptr, res.step, dst.ptr, dst.step); });
    }
};

struct AddConstExercise {
    template <class P>
    void operator()(const void* f, P& p) const {
        const auto value = static_cast<std::int16_t>(p.value(-32768, 32767));
        const auto dst = p.template out_plane<std::uint8_t>(8, 8);
        const auto fn = kernel_cast<block::AddConstFn>(f);
        p.call([=] { fn(value, dst.ptr, dst.step); });
    }
};

template <auto Member>
void add_hp_table(const std::string& name, int w, int h) {
    for (int i = 0; i < block::kHpEntries; ++i)
        add_case("common", name + "/" + kHpNames[i], [i](CpuFlags f) { return (at(f).*Member)[i]; },
                 CopyExercise{w, h});
}

}  // namespace

KIVVC_CASES(register_block_cases) {
    add_hp_table<&Table::ownvc_Copy8x4HP_8u_C1R>("copy8x4hp", 8, 4);
    add_hp_table<&Table::ownvc_Copy8x8HP_8u_C1R>("copy8x8hp", 8, 8);
    add_hp_table<&Table::ownvc_Copy16x8HP_8u_C1R>("copy16x8hp", 16, 8);
    add_hp_table<&Table::ownvc_Copy16x16HP_8u_C1R>("copy16x16hp", 16, 16);
    add_hp_table<&Table::ownvc_Copy4x8HP_8u_C1R>("copy4x8hp", 4, 8);
    add_hp_table<&Table::copy4x4_hp>("copy4x4hp", 4, 4);
    add_hp_table<&Table::ownvc_InterpolateAverage8x4HP_8u_C1IR>("interpavg8x4hp", 8, 4);
    add_hp_table<&Table::ownvc_InterpolateAverage8x8HP_8u_C1IR>("interpavg8x8hp", 8, 8);
    add_hp_table<&Table::ownvc_InterpolateAverage16x8HP_8u_C1IR>("interpavg16x8hp", 16, 8);
    add_hp_table<&Table::ownvc_InterpolateAverage16x16HP_8u_C1IR>("interpavg16x16hp", 16, 16);
    for (int i = 0; i < block::kHpEntries; ++i)
        add_case("common", std::string("add8x8hp/") + kHpNames[i],
                 [i](CpuFlags f) { return at(f).ownvc_Add8x8HP_16s8u_C1RS[i]; }, AddHpExercise{});
    add_case("common", "average8x8", [](CpuFlags f) { return at(f).average8x8; }, AverageExercise{8});
    add_case("common", "average16x16", [](CpuFlags f) { return at(f).average16x16; }, AverageExercise{16});
    add_case("common", "add8x8", [](CpuFlags f) { return at(f).add8x8; }, AddExercise{});
    add_case("common", "addc8x8", [](CpuFlags f) { return at(f).add_const8x8; }, AddConstExercise{});
}

}  // namespace kivvc::test
