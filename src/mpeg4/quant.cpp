// Exported MPEG-4 quantisation functions: record sizes and Init, argument
// checks, then one kernel call.
#include <algorithm>
#include <cstdlib>

#include "core/arith.h"
#include "kivvc.h"
#include "mpeg4/quant_kernels.h"

using namespace kivvc;
using namespace kivvc::mpeg4;

namespace {

KivStatus size_of(int* size, int bytes) {
    if (!size) return kivStsNullPointer;
    *size = bytes;
    return kivStsOk;
}

// Stores the header fields first, then the weights one by one; a zero weight
// stops with the identifier already valid and the matrix flag still 0.
template <class Record, class Store>
KivStatus init_record(const Kiv8u* matrix, void* memory, int bits, u32 id, Store store) {
    if (!memory) return kivStsNullPointer;
    if (!valid_bits(bits)) return kivStsOutOfRange;
    Record* rec = aligned_record<Record>(memory);
    rec->id = id;
    rec->bits = bits;
    rec->matrix = 0;
    if (!matrix) return kivStsOk;
    for (int i = 0; i < 64; ++i) {
        if (matrix[i] == 0) return kivStsBadQp;
        store(*rec, i, matrix[i]);
    }
    rec->matrix = 1;
    return kivStsOk;
}

KivStatus init_forward(const Kiv8u* matrix, void* memory, int bits, u32 id) {
    return init_record<QuantRecord>(matrix, memory, bits, id, [bits](QuantRecord& r, int i, int w) {
        if (bits <= 8) {
            r.weights[i] = static_cast<u16>(w >> 1);
            r.reciprocals[i] = static_cast<u32>(65536 / w + 1);
        } else {
            r.weights[i] = static_cast<u16>(w);
        }
    });
}

KivStatus init_inverse(const Kiv8u* matrix, void* memory, int bits, u32 id) {
    return init_record<QuantInvRecord>(matrix, memory, bits, id,
                                       [](QuantInvRecord& r, int i, int w) { r.weights[i] = static_cast<u16>(w); });
}

// Identifier, then bits (a record Init could not have produced), then QP.
template <class Record>
KivStatus check_record(const Record* rec, u32 id, int qp) {
    if (rec->id != id || !valid_bits(rec->bits)) return kivStsContextMismatch;
    if (qp < 1 || qp > _p_QuantMax[rec->bits - kMinBits]) return kivStsBadQp;
    return kivStsOk;
}

int sign_times(int negative, int magnitude) { return negative ? -magnitude : magnitude; }

// Reconstructed intra DC, limited to the record's range.
int reconstruct_dc(int level, const QuantInvRecord& rec, int qp, int block_type) {
    const int v = _p_QuantInvClip[rec.bits - kMinBits];
    return clip3(-v, v - 1, dc_scaler(qp, block_type) * level);
}

}  // namespace

namespace kivvc::mpeg4 {

// Used by the combined decoder as well.
KivStatus check_inverse_inter(const void* spec, int qp) {
    return check_record(aligned_record<const QuantInvRecord>(const_cast<void*>(spec)), kIdQuantInvInter, qp);
}

}  // namespace kivvc::mpeg4

extern "C" {

KIV_API KivStatus kiviQuantIntraGetSize_MPEG4(int* pSpecSize) { return size_of(pSpecSize, kQuantRecordBytes); }
KIV_API KivStatus kiviQuantInterGetSize_MPEG4(int* pSpecSize) { return size_of(pSpecSize, kQuantRecordBytes); }
KIV_API KivStatus kiviQuantInvIntraGetSize_MPEG4(int* pSpecSize) { return size_of(pSpecSize, kQuantInvRecordBytes); }
KIV_API KivStatus kiviQuantInvInterGetSize_MPEG4(int* pSpecSize) { return size_of(pSpecSize, kQuantInvRecordBytes); }

KIV_API KivStatus kiviQuantIntraInit_MPEG4(const Kiv8u* pQuantMatrix, KiviQuantIntraSpec_MPEG4* pSpec, int bitsPerPixel) {
    return init_forward(pQuantMatrix, pSpec, bitsPerPixel, kIdQuantIntra);
}
KIV_API KivStatus kiviQuantInterInit_MPEG4(const Kiv8u* pQuantMatrix, KiviQuantInterSpec_MPEG4* pSpec, int bitsPerPixel) {
    return init_forward(pQuantMatrix, pSpec, bitsPerPixel, kIdQuantInter);
}
KIV_API KivStatus kiviQuantInvIntraInit_MPEG4(const Kiv8u* pQuantMatrix, KiviQuantInvIntraSpec_MPEG4* pSpec,
                                              int bitsPerPixel) {
    return init_inverse(pQuantMatrix, pSpec, bitsPerPixel, kIdQuantInvIntra);
}
KIV_API KivStatus kiviQuantInvInterInit_MPEG4(const Kiv8u* pQuantMatrix, KiviQuantInvInterSpec_MPEG4* pSpec,
                                              int bitsPerPixel) {
    return init_inverse(pQuantMatrix, pSpec, bitsPerPixel, kIdQuantInvInter);
}

KIV_API KivStatus kiviQuantIntra_MPEG4_16s_C1I(Kiv16s* pCoeffs, const KiviQuantIntraSpec_MPEG4* pSpec, int QP,
                                               int* pCount, int blockType) {
    if (!pCoeffs || !pSpec || !pCount) return kivStsNullPointer;
    const auto* rec = aligned_record<const QuantRecord>(const_cast<KiviQuantIntraSpec_MPEG4*>(pSpec));
    if (const KivStatus s = check_record(rec, kIdQuantIntra, QP)) return s;
    const int dc = pCoeffs[0];
    const auto& t = table();
    const int r = regime(rec->bits);
    int count = (rec->matrix ? t.ownpmp4_QuantIntra1_16s_I[r] : t.ownpmp4_QuantIntra0_16s_I[r])(pCoeffs, *rec, QP);
    const int s = dc_scaler(QP, blockType);
    const int level = std::min((std::abs(dc) + (s >> 1)) / s, 2047);
    pCoeffs[0] = static_cast<Kiv16s>(sign_times(dc < 0, level));
    *pCount = count + (level != 0);
    return kivStsOk;
}

KIV_API KivStatus kiviQuantInter_MPEG4_16s_C1I(Kiv16s* pCoeffs, const KiviQuantInterSpec_MPEG4* pSpec, int QP,
                                               int* pCount) {
    if (!pCoeffs || !pSpec || !pCount) return kivStsNullPointer;
    const auto* rec = aligned_record<const QuantRecord>(const_cast<KiviQuantInterSpec_MPEG4*>(pSpec));
    if (const KivStatus s = check_record(rec, kIdQuantInter, QP)) return s;
    const auto& t = table();
    const int r = regime(rec->bits);
    *pCount = (rec->matrix ? t.ownpmp4_QuantInter1_16s_I[r] : t.ownpmp4_QuantInter0_16s_I[r])(pCoeffs, *rec, QP);
    return kivStsOk;
}

KIV_API KivStatus kiviQuantInvIntra_MPEG4_16s_C1I(Kiv16s* pCoeffs, int indxLastNonZero,
                                                  const KiviQuantInvIntraSpec_MPEG4* pSpec, int QP, int blockType) {
    if (!pCoeffs || !pSpec) return kivStsNullPointer;
    const auto* rec = aligned_record<const QuantInvRecord>(const_cast<KiviQuantInvIntraSpec_MPEG4*>(pSpec));
    if (const KivStatus s = check_record(rec, kIdQuantInvIntra, QP)) return s;
    const int dc = reconstruct_dc(pCoeffs[0], *rec, QP, blockType);
    const int last = std::min(indxLastNonZero, 63);
    if (last < 1) {
        if (rec->matrix && (dc & 1) == 0) pCoeffs[63] = 1;
    } else {
        const auto& t = table();
        const int r = regime(rec->bits);
        (rec->matrix ? t.ownpmp4_QuantInvIntra_16s_I[r] : t.ownpmp4_QuantInv_16s_I[r])(pCoeffs, last, *rec, QP, dc);
    }
    pCoeffs[0] = static_cast<Kiv16s>(dc);
    return kivStsOk;
}

KIV_API KivStatus kiviQuantInvInter_MPEG4_16s_C1I(Kiv16s* pCoeffs, int indxLastNonZero,
                                                  const KiviQuantInvInterSpec_MPEG4* pSpec, int QP) {
    if (!pCoeffs || !pSpec) return kivStsNullPointer;
    const auto* rec = aligned_record<const QuantInvRecord>(const_cast<KiviQuantInvInterSpec_MPEG4*>(pSpec));
    if (const KivStatus s = check_record(rec, kIdQuantInvInter, QP)) return s;
    const int last = std::min(indxLastNonZero, 63);
    const auto& t = table();
    const int r = regime(rec->bits);
    if (rec->matrix)
        t.ownpmp4_QuantInvInter_16s_I[r](pCoeffs, last, *rec, QP, 0);
    else if (last >= 0)
        t.ownpmp4_QuantInv_16s_I[r](pCoeffs, last, *rec, QP, 0);
    return kivStsOk;
}

}  // extern "C"
