// MPEG-4 quantisation: the prepared records, the kernel signatures and the
// family table.
#pragma once
#include <cstddef>
#include <cstdint>

#include "core/cpu.h"
#include "mpeg4/quant_shared.h"

namespace kivvc::mpeg4 {

using s16 = std::int16_t;
using u16 = std::uint16_t;
using u32 = std::uint32_t;

// Identifier words: the bytes "TAMC", "UAMC", "RAMC", "SAMC" in memory order.
inline constexpr u32 kIdQuantIntra = 0x434D4154u;
inline constexpr u32 kIdQuantInter = 0x434D4155u;
inline constexpr u32 kIdQuantInvIntra = 0x434D4152u;
inline constexpr u32 kIdQuantInvInter = 0x434D4153u;

// Forward record. For bits <= 8 `weights` holds W >> 1 and `reciprocals`
// 65536 / W + 1; for bits >= 9 `weights` holds W and `reciprocals` is unused.
struct QuantRecord {
    u16 weights[64];
    u32 reciprocals[64];
    std::int32_t bits;
    std::int32_t matrix;  // 1: weighting matrix (MPEG method), 0: H.263 method
    u32 id;
};

// Inverse record: the weights as given.
struct QuantInvRecord {
    u16 weights[64];
    std::int32_t bits;
    std::int32_t matrix;
    u32 id;
};

// Caller memory for a record: the record sits at the first 16-byte boundary.
inline constexpr int kQuantRecordBytes = 412;
inline constexpr int kQuantInvRecordBytes = 156;
static_assert(sizeof(QuantRecord) + 15 <= kQuantRecordBytes);
static_assert(sizeof(QuantInvRecord) + 15 <= kQuantInvRecordBytes);

namespace {
template <class Record>
Record* aligned_record(void* memory) {
    const auto a = (reinterpret_cast<std::uintptr_t>(memory) + 15) & ~std::uintptr_t{15};
    return reinterpret_cast<Record*>(a);
}
}  // namespace

// Forward kernels quantise in place and return the number of nonzero levels.
// Intra kernels work on elements 1..63 (the DC is the caller's), inter kernels
// on 0..63. Precondition: 1 <= qp <= the largest QP of rec.bits.
using QuantFn = int (*)(s16* coefs, const QuantRecord& rec, int qp);

// Inverse kernels turn the levels of elements 0..last (last <= 63, elements
// above it zero) into reconstructed values limited to the record's range.
// The MPEG-method kernels apply mismatch control to element 63; the intra one
// reconstructs elements 1..last only and counts `dc` (the reconstructed DC,
// stored by the caller) in the parity. Precondition as above; last >= 0 for
// the H.263 and intra kernels.
using QuantInvFn = void (*)(s16* coefs, int last, const QuantInvRecord& rec, int qp, int dc);

// Every entry is indexed by the bit-depth regime: 0 for bits <= 8 (8-bit
// reciprocal arithmetic, QP <= 31), 1 for bits >= 9.
namespace {
constexpr int regime(int bits) { return bits > 8 ? 1 : 0; }
}  // namespace

struct Table {
    QuantFn ownpmp4_QuantIntra0_16s_I[2];  // H.263 method
    QuantFn ownpmp4_QuantInter0_16s_I[2];
    QuantFn ownpmp4_QuantIntra1_16s_I[2];  // MPEG method
    QuantFn ownpmp4_QuantInter1_16s_I[2];
    QuantInvFn ownpmp4_QuantInv_16s_I[2];  // H.263 method, intra and inter
    QuantInvFn ownpmp4_QuantInvIntra_16s_I[2];
    QuantInvFn ownpmp4_QuantInvInter_16s_I[2];
};

void init_quant(Table& t, CpuFlags cpu);
void init_quant_sse2(Table& t);
void init_quant_avx2(Table& t);

const Table& table();

}  // namespace kivvc::mpeg4
