// Kernel cases of the block metrics family.
#include <limits>
#include <string>

#include "common/metrics_kernels.h"
#include "support/kernel_case.h"

namespace kivvc::test {
namespace {

namespace m = metrics;
using m::Table;
using std::int16_t;
using std::int32_t;
using std::uint16_t;
using std::uint32_t;
using std::uint8_t;

const Table& at(CpuFlags f) { return table_for<Table, m::init_metrics>(f); }

const char* const kPos[m::kPositions] = {"FF", "FH", "HF", "HH"};

template <class T>
constexpr int max_of() {
    return std::numeric_limits<T>::max();
}

// Guarded slots for returned values. The generator cannot pre-fill over the
// whole 32-bit range, and any pre-fill serves.
template <class P>
int32_t* results(P& p, std::size_t n) {
    return p.template out_array<int32_t>(n, -65536, 65535);
}

// The current block and one or two (bidirectional) reference blocks, each
// with the extra column and row a half-sample position reads: a kernel that
// returns a sum.
template <class T>
struct SadExercise {
    int w, h;
    bool bidir = false;
    template <class P>
    void operator()(const void* f, P& p) const {
        const auto cur = p.template in_plane<T>(w, h, 0, max_of<T>());
        const auto ref = p.template in_plane<T>(w, h, 0, max_of<T>(), 0, 0, 1, 1);
        auto* out = results(p, 1);
        if (bidir) {
            const auto bwd = p.template in_plane<T>(w, h, 0, max_of<T>(), 0, 0, 1, 1);
            const auto fn = kernel_cast<int32_t (*)(const T*, int, const T*, int, const T*, int)>(f);
            p.call([=] { out[0] = fn(cur.ptr, cur.step, ref.ptr, ref.step, bwd.ptr, bwd.step); });
        } else {
            const auto fn = kernel_cast<int32_t (*)(const T*, int, const T*, int)>(f);
            p.call([=] { out[0] = fn(cur.ptr, cur.step, ref.ptr, ref.step); });
        }
    }
};

// The residual against one reference (with or without the prediction) or
// two (bidirectional), at either rounding control.
struct GetDiffExercise {
    int w, h;
    bool with_pred, bidir = false;
    template <class P>
    void operator()(const void* f, P& p) const {
        const auto cur = p.template in_plane<uint8_t>(w, h, 0, 255);
        const auto ref = p.template in_plane<uint8_t>(w, h, 0, 255, 0, 0, 1, 1);
        const auto bwd = bidir ? p.template in_plane<uint8_t>(w, h, 0, 255, 0, 0, 1, 1) : ref;
        const auto diff = p.template out_plane<int16_t>(w, h);
        const auto pred = with_pred ? p.template out_plane<int16_t>(w, h) : Plane<int16_t>{nullptr, 0};
        const int rc = p.rng.range(0, 1);
        if (bidir) {
            const auto fn = kernel_cast<m::GetDiffBFn>(f);
            p.call([=] { fn(cur.ptr, cur.step, ref.ptr, ref.step, bwd.ptr, bwd.step, diff.ptr, diff.step, rc); });
        } else {
            const auto fn = kernel_cast<m::GetDiffFn>(f);
            p.call([=] { fn(cur.ptr, cur.step, ref.ptr, ref.step, diff.ptr, diff.step, pred.ptr, pred.step, rc); });
        }
    }
};

template <class T, bool Sad = false>
struct SubExercise {
    int n;
    template <class P>
    void operator()(const void* f, P& p) const {
        const auto a = p.template in_plane<T>(n, n, 0, max_of<T>());
        const auto b = p.template in_plane<T>(n, n, 0, max_of<T>());
        const auto dst = p.template out_plane<int16_t>(n, n);
        if constexpr (Sad) {
            auto* out = results(p, 1);
            const auto fn = kernel_cast<m::SubSadFn>(f);
            p.call([=] { out[0] = fn(a.ptr, a.step, b.ptr, b.step, dst.ptr, dst.step); });
        } else {
            const auto fn = kernel_cast<void (*)(const T*, int, const T*, int, int16_t*, int)>(f);
            p.call([=] { fn(a.ptr, a.step, b.ptr, b.step, dst.ptr, dst.step); });
        }
    }
};

template <class T>
struct MomentsExercise {
    int n;
    template <class P>
    void operator()(const void* f, P& p) const {
        const auto src = p.template in_plane<T>(n, n, std::numeric_limits<T>::min(), max_of<T>());
        auto* out = results(p, 2);
        const auto fn = kernel_cast<m::Moments (*)(const T*, int)>(f);
        p.call([=] {
            const m::Moments r = fn(src.ptr, src.step);
            out[0] = r.sum;
            out[1] = static_cast<int32_t>(r.squares);
        });
    }
};

struct VarMeanDiffExercise {
    int h;
    template <class P>
    void operator()(const void* f, P& p) const {
        const auto cur = p.template in_plane<uint8_t>(16, h, 0, 255);
        const auto ref = p.template in_plane<uint8_t>(16, h, 0, 255, 0, 0, 1, 1);
        auto* squares = results(p, std::size_t(h / 4));
        auto* sums = results(p, std::size_t(h / 4));
        const auto fn = kernel_cast<m::VarMeanDiffFn>(f);
        p.call([=] { fn(cur.ptr, cur.step, ref.ptr, ref.step, squares, sums); });
    }
};

struct MeanAbsDevExercise {
    int n;
    template <class P>
    void operator()(const void* f, P& p) const {
        const auto src = p.template in_plane<uint8_t>(n, n, 0, 255);
        auto* out = results(p, 1);
        const auto fn = kernel_cast<m::MeanAbsDevFn>(f);
        p.call([=] { out[0] = fn(src.ptr, src.step); });
    }
};

template <class T>
struct FrameFieldExercise {
    template <class P>
    void operator()(const void* f, P& p) const {
        const auto src = p.template in_plane<T>(16, 16, std::numeric_limits<T>::min(), max_of<T>());
        auto* out = results(p, 2);
        const auto fn = kernel_cast<void (*)(const T*, int, int32_t*, int32_t*)>(f);
        p.call([=] { fn(src.ptr, src.step, out, out + 1); });
    }
};

template <class T, class R>
struct BlocksExercise {
    int b;
    template <class P>
    void operator()(const void* f, P& p) const {
        const auto cur = p.template in_plane<T>(16, 16, 0, max_of<T>());
        const auto ref = p.template in_plane<T>(16, 16, 0, max_of<T>());
        auto* out = p.template out_array<R>(std::size_t(256 / (b * b)), 0, 65535);
        const auto fn = kernel_cast<void (*)(const T*, int, const T*, int, R*)>(f);
        p.call([=] { fn(cur.ptr, cur.step, ref.ptr, ref.step, out); });
    }
};

struct EdgesExercise {
    template <class P>
    void operator()(const void* f, P& p) const {
        const auto src = p.template in_plane<uint8_t>(16, 16, 0, 255);
        const int td = p.rng.range(0, 140);
        const int tc = p.rng.chance(4) ? p.rng.range(0, 255) : p.rng.range(0, 40);
        auto* out = p.template out_array<uint8_t>(1);
        const auto fn = kernel_cast<m::EdgesFn>(f);
        p.call([=] { out[0] = fn(src.ptr, src.step, td, tc); });
    }
};

struct CountZerosExercise {
    template <class P>
    void operator()(const void* f, P& p) const {
        const bool sparse = p.rng.chance(2);
        const auto* coefs = p.template array<int16_t>(64, sparse ? -2 : -32768, sparse ? 2 : 32767);
        auto* out = p.template out_array<uint32_t>(1, 0, 65535);
        const auto fn = kernel_cast<m::CountZerosFn>(f);
        p.call([=] { out[0] = fn(coefs); });
    }
};

template <auto Member, class Exercise>
void add_positions(const std::string& name, Exercise e) {
    for (int i = 0; i < m::kPositions; ++i)
        add_case(
            "common", name + "/" + kPos[i], [i](CpuFlags f) { return (at(f).*Member)[i]; }, e);
}

template <auto Member>
void add_get_diff(const std::string& name, int w, int h) {
    for (int i = 0; i < m::kPositions; ++i)
        for (int pred = 0; pred < 2; ++pred)
            add_case(
                "common", name + "/" + kPos[i] + (pred ? "/pred" : ""),
                [i, pred](CpuFlags f) { return (at(f).*Member)[4 * i + pred]; }, GetDiffExercise{w, h, pred != 0});
}

template <auto Member, class Exercise>
void add_bidir(const std::string& name, Exercise e) {
    for (int i = 0; i < m::kGetDiffEntries; ++i)
        add_case(
            "common", name + "/" + kPos[i % 4] + "-" + kPos[i / 4], [i](CpuFlags f) { return (at(f).*Member)[i]; }, e);
}

template <auto Member, class Exercise>
void add_one(const std::string& name, Exercise e) {
    add_case(
        "common", name, [](CpuFlags f) { return at(f).*Member; }, e);
}

}  // namespace

KIVVC_CASES(register_metrics_cases) {
    add_positions<&Table::ownvc_SAD16x16HP_8u32s_C1R>("sad16x16", SadExercise<uint8_t>{16, 16});
    add_positions<&Table::ownvc_SAD16x8HP_8u32s_C1R>("sad16x8", SadExercise<uint8_t>{16, 8});
    add_positions<&Table::ownvc_SAD8x8HP_8u32s_C1R>("sad8x8", SadExercise<uint8_t>{8, 8});
    add_positions<&Table::ownvc_SAD4x4HP_16u32s_C1R>("sad4x4_16u", SadExercise<uint16_t>{4, 4});
    add_positions<&Table::ownvc_SAD8x8HP_16u32s_C1R>("sad8x8_16u", SadExercise<uint16_t>{8, 8});
    add_positions<&Table::ownvc_SAD16x16HP_16u32s_C1R>("sad16x16_16u", SadExercise<uint16_t>{16, 16});
    add_positions<&Table::ownvc_SSD8x8HP_8u32s_C1R>("ssd8x8", SadExercise<uint8_t>{8, 8});
    add_positions<&Table::ownvc_SSD4x4HP_8u32s_C1R>("ssd4x4", SadExercise<uint8_t>{4, 4});
    add_one<&Table::sad4x4>("sad4x4", SadExercise<uint8_t>{4, 4});
    add_positions<&Table::sqr_diff16x16>("sqrdiff16x16", SadExercise<uint8_t>{16, 16});
    add_bidir<&Table::sqr_diff16x16_bidir>("sqrdiff16x16b", SadExercise<uint8_t>{16, 16, true});

    add_get_diff<&Table::GetDiff16x16FnTbl>("getdiff16x16", 16, 16);
    add_get_diff<&Table::GetDiff16x8FnTbl>("getdiff16x8", 16, 8);
    add_get_diff<&Table::GetDiff8x16FnTbl>("getdiff8x16", 8, 16);
    add_get_diff<&Table::GetDiff8x8FnTbl>("getdiff8x8", 8, 8);
    add_get_diff<&Table::GetDiff8x4FnTbl>("getdiff8x4", 8, 4);
    add_bidir<&Table::GetDiff16x16BFnTbl>("getdiff16x16b", GetDiffExercise{16, 16, false, true});
    add_bidir<&Table::GetDiff16x8BFnTbl>("getdiff16x8b", GetDiffExercise{16, 8, false, true});
    add_bidir<&Table::GetDiff8x16BFnTbl>("getdiff8x16b", GetDiffExercise{8, 16, false, true});
    add_bidir<&Table::GetDiff8x8BFnTbl>("getdiff8x8b", GetDiffExercise{8, 8, false, true});
    add_bidir<&Table::GetDiff8x4BFnTbl>("getdiff8x4b", GetDiffExercise{8, 4, false, true});

    add_one<&Table::sub4x4>("sub4x4", SubExercise<uint8_t>{4});
    add_one<&Table::sub8x8>("sub8x8", SubExercise<uint8_t>{8});
    add_one<&Table::sub16x16>("sub16x16", SubExercise<uint8_t>{16});
    add_one<&Table::sub4x4_16u>("sub4x4_16u", SubExercise<uint16_t>{4});
    add_one<&Table::sub8x8_16u>("sub8x8_16u", SubExercise<uint16_t>{8});
    add_one<&Table::sub_sad8x8>("subsad8x8", SubExercise<uint8_t, true>{8});

    add_one<&Table::moments16x16>("variance16x16", MomentsExercise<uint8_t>{16});
    add_one<&Table::moments8x8>("varmean8x8", MomentsExercise<uint8_t>{8});
    add_one<&Table::moments8x8_16s>("varmean8x8_16s", MomentsExercise<int16_t>{8});
    add_positions<&Table::var_mean_diff16x16>("varmeandiff16x16", VarMeanDiffExercise{16});
    add_positions<&Table::var_mean_diff16x8>("varmeandiff16x8", VarMeanDiffExercise{8});
    add_one<&Table::mean_abs_dev8x8>("meanabsdev8x8", MeanAbsDevExercise{8});
    add_one<&Table::mean_abs_dev16x16>("meanabsdev16x16", MeanAbsDevExercise{16});
    add_one<&Table::frame_field_sad>("framefieldsad", FrameFieldExercise<uint8_t>{});
    add_one<&Table::frame_field_sad_16s>("framefieldsad_16s", FrameFieldExercise<int16_t>{});
    add_one<&Table::sad_blocks8x8>("sadblocks8x8", BlocksExercise<uint8_t, uint16_t>{8});
    add_one<&Table::sad_blocks4x4>("sadblocks4x4", BlocksExercise<uint8_t, uint16_t>{4});
    add_one<&Table::sad_blocks8x8_16u>("sadblocks8x8_16u", BlocksExercise<uint16_t, uint32_t>{8});
    add_one<&Table::sad_blocks4x4_16u>("sadblocks4x4_16u", BlocksExercise<uint16_t, uint32_t>{4});
    add_one<&Table::edges_detect>("edgesdetect", EdgesExercise{});
    add_one<&Table::count_zeros>("countzeros", CountZerosExercise{});
}

}  // namespace kivvc::test
