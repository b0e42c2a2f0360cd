// Quantiser constants shared by the MPEG-4 and H.263 families. Everything
// here is constant data or has internal linkage, so SIMD-flagged files may
// include it.
#pragma once
#include <array>
#include <cstdint>

namespace kivvc::mpeg4 {
namespace {

// Bits per sample accepted by the quantisation records.
constexpr int kMinBits = 4;
constexpr int kMaxBits = 12;

// Largest QP for bits 4..12 (index bits - 4): 2^(bits-3) - 1.
constexpr int _p_QuantMax[9] = {1, 3, 7, 15, 31, 63, 127, 255, 511};

// Reconstructed coefficients of bits 4..12 lie in [-v, v - 1], v = 2^(bits+3).
constexpr int _p_QuantInvClip[9] = {128, 256, 512, 1024, 2048, 4096, 8192, 16384, 32768};

// R(QP) = 65536 / (2 QP) + 1 for QP 1..31 (entry 0 unused): the reciprocal
// through which the 8-bit quantisers divide by the double step.
constexpr std::array<std::uint16_t, 32> make_quant_inv() {
    std::array<std::uint16_t, 32> r{};
    for (int qp = 1; qp < 32; ++qp) r[qp] = static_cast<std::uint16_t>(65536 / (2 * qp) + 1);
    return r;
}
constexpr std::array<std::uint16_t, 32> _p_QuantInv = make_quant_inv();

constexpr bool valid_bits(int bits) { return bits >= kMinBits && bits <= kMaxBits; }

// Intra DC scaler for QP >= 1; block type 0 is luminance, anything else
// chrominance.
constexpr int dc_scaler(int qp, int block_type) {
    if (qp <= 4) return 8;
    if (block_type == 0) return qp <= 8 ? 2 * qp : (qp <= 24 ? qp + 8 : 2 * qp - 16);
    return qp <= 24 ? (qp + 13) >> 1 : qp - 6;
}

// The odd offset of the H.263 inverse quantiser: QP for odd QP, QP - 1 for even.
constexpr int h263_offset(int qp) { return (qp & 1) ? qp : qp - 1; }

// Reconstructed values before the range limit. H.263 method:
// sign(L) (2 QP |L| + q), at most 2 * 511 * 32768 + 511.
constexpr int inverse_h263(int level, int qp) {
    if (level == 0) return 0;
    const int m = 2 * qp * (level < 0 ? -level : level) + h263_offset(qp);
    return level < 0 ? -m : m;
}
// MPEG method: intra (L W QP) / 8, inter ((2L + sign(L)) W QP) / 16, both
// truncating toward zero; products reach 65537 * 255 * 511, hence 64 bits.
constexpr std::int64_t inverse_mpeg_intra(int level, int weight, int qp) {
    return std::int64_t{level} * weight * qp / 8;
}
constexpr std::int64_t inverse_mpeg_inter(int level, int weight, int qp) {
    const std::int64_t m = 2 * std::int64_t{level} + (level > 0) - (level < 0);
    return m * weight * qp / 16;
}
// Limits a reconstructed value to [-v, v - 1], v from _p_QuantInvClip.
constexpr int limit_reconstructed(std::int64_t value, int v) {
    return static_cast<int>(value < -v ? -v : (value > v - 1 ? v - 1 : value));
}

}  // namespace
}  // namespace kivvc::mpeg4
