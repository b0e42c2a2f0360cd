// Scalar references of the H.264 dequantisation and inverse transforms.
//
// Every intermediate is formed exactly (64 bits) and then wrapped to the
// width the kernel works in (16 or 32 bits); the flat add kernel saturates
// instead, as its 16-bit-lane form does.
#include <cstdlib>

#include "core/arith.h"
#include "h264/residual/rows.h"
#include "h264/residual/transform_kernels.h"

namespace kivvc::h264::transform {
namespace {

using s64 = std::int64_t;

template <int Bits>
constexpr s32 wrap(s64 v) {
    if constexpr (Bits == 16) return static_cast<s16>(static_cast<u16>(v));
    else return static_cast<s32>(static_cast<std::uint32_t>(v));
}

// Element k of a block whose rows are `step` bytes apart.
template <class T>
T& at(T* block, int step, int k) {
    return reinterpret_cast<T*>(reinterpret_cast<u8*>(block) + (k >> 2) * step)[k & 3];
}

// The 4-point inverse core transform of e[0], e[s], e[2s], e[3s], in place.
template <int Bits, class Op>
void inverse4(s32* e, int s, Op op) {
    const s64 e0 = e[0], e1 = e[s], e2 = e[2 * s], e3 = e[3 * s];
    const s64 a = op(e0, e2), b = op(e0, -e2);
    const s64 c = op(e1 >> 1, -e3), d = op(e1, e3 >> 1);
    e[0] = wrap<Bits>(op(a, d));
    e[s] = wrap<Bits>(op(b, c));
    e[2 * s] = wrap<Bits>(op(b, -c));
    e[3 * s] = wrap<Bits>(op(a, -d));
}

struct PlainAdd {
    s64 operator()(s64 a, s64 b) const { return a + b; }
};
// Signed 16-bit saturating addition of two 16-bit values.
struct SaturatingAdd {
    s64 operator()(s64 a, s64 b) const { return sat_s16(int(a + b)); }
};

// Rows, then columns; the rows' results are stored at the working width.
template <int Bits, class Op = PlainAdd>
void inverse4x4(s32 (&x)[16], Op op = {}) {
    for (int i = 0; i < 4; ++i) inverse4<Bits>(x + 4 * i, 1, op);
    for (int j = 0; j < 4; ++j) inverse4<Bits>(x + j, 4, op);
}

// (x + 32) >> 6 at 32 bits (16-bit inputs cannot overflow it).
constexpr s32 round6(s32 x) { return wrap<32>(s64(x) + 32) >> 6; }

// Scaling-list scaling of one coefficient with rounding threshold `t`:
// q < t: (c * ls + 2^(t - 1 - q)) >> (t - q); else (c * ls) << (q - t).
template <int Bits>
s32 scale(s32 c, int ls, int q, int t) {
    const s64 p = wrap<32>(s64(c) * ls);
    if (q < t) return wrap<Bits>(wrap<32>(p + (s64{1} << (t - 1 - q))) >> (t - q));
    return wrap<Bits>(shift_left(s32(p), q - t));
}

// ---- flat scaling ---------------------------------------------------------

void dequant_residual(s16* block, int step, const s16* dc, bool ac, int qp) {
    const s32 d = dc ? *dc : wrap<16>(s32{block[0]} * InvQuantTable[qp][0]);
    block[0] = s16(d);
    if (!ac) {
        for (int k = 0; k < 16; ++k) at(block, step, k) = s16(round6(d));
        return;
    }
    s32 x[16];
    x[0] = d;
    for (int k = 1; k < 16; ++k) x[k] = wrap<16>(s32{at(block, step, k)} * InvQuantTable[qp][QuantIndex[k]]);
    inverse4x4<16>(x);
    for (int k = 0; k < 16; ++k) at(block, step, k) = s16(round6(x[k]));
}

void dequant_residual_add(const u8* pred, int predStep, s16* coeffs, const s16* dc, u8* dst, int dstStep, int qp,
                          bool ac) {
    const s16* iq = inv_quant_table[qp].data();
    const s32 d = dc ? *dc : wrap<16>(s32{coeffs[0]} * iq[0]);
    s32 r[16];
    if (ac) {
        r[0] = d;
        for (int k = 1; k < 16; ++k) r[k] = wrap<16>(s32{coeffs[k]} * iq[k]);
        inverse4x4<16>(r, SaturatingAdd{});
        for (int k = 0; k < 16; ++k) coeffs[k] = s16(r[k] = sat_s16(r[k] + 32) >> 6);
    } else {
        for (s32& v : r) v = sat_s16(d + 32) >> 6;
    }
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x) row(dst, dstStep, y)[x] = clip_u8(sat_s16(row(pred, predStep, y)[x] + r[4 * y + x]));
}

// H x c x H for the 4x4 Hadamard matrix, at 32 bits.
template <class T>
void hadamard4x4(const T* c, s32 (&f)[16]) {
    for (int k = 0; k < 16; ++k) f[k] = c[k];
    const auto pass = [&f](int s, int t) {
        for (int i = 0; i < 4; ++i) {
            s32* e = f + i * t;
            const s64 a = s64(e[0]) + e[s], b = s64(e[0]) - e[s];
            const s64 c2 = s64(e[2 * s]) + e[3 * s], d = s64(e[2 * s]) - e[3 * s];
            e[0] = wrap<32>(a + c2);
            e[s] = wrap<32>(a - c2);
            e[2 * s] = wrap<32>(b - d);
            e[3 * s] = wrap<32>(b + d);
        }
    };
    pass(1, 4);
    pass(4, 1);
}

// The 2x2 Hadamard: f0 = c0 + c1 + c2 + c3, f1 = c0 - c1 + c2 - c3,
// f2 = c0 + c1 - c2 - c3, f3 = c0 - c1 - c2 + c3.
template <class T>
void hadamard2x2(const T* c, s32 (&f)[4]) {
    const s64 a = s64(c[0]) + c[1], b = s64(c[0]) - c[1], e = s64(c[2]) + c[3], g = s64(c[2]) - c[3];
    f[0] = wrap<32>(a + e);
    f[1] = wrap<32>(b + g);
    f[2] = wrap<32>(a - e);
    f[3] = wrap<32>(b - g);
}

void luma_dc_flat(s16* block, int qp) {
    s32 f[16];
    hadamard4x4(block, f);
    const s32 s = InvQuantLuma16x16DCTable[qp];
    for (int k = 0; k < 16; ++k) {
        const s32 v = wrap<16>(f[k]) * s;  // |v| <= 32768 * 896
        block[k] = s16(wrap<16>(qp < 6 ? (v + 2) >> 2 : qp < 12 ? (v + 1) >> 1 : v));
    }
}

void chroma_dc_flat(s16* block, int scale) {
    s32 f[4];
    hadamard2x2(block, f);
    for (int k = 0; k < 4; ++k) block[k] = s16(wrap<16>((wrap<16>(f[k]) * scale) >> 1));
}

void transform_prediction(const u8* pred, int step, s16* out) {
    s32 x[16];
    for (int k = 0; k < 16; ++k) x[k] = row(pred, step, k >> 2)[k & 3];
    const auto pass = [&x](int s, int t) {
        for (int i = 0; i < 4; ++i) {
            s32* e = x + i * t;
            const s32 a = e[0] + e[3 * s], b = e[s] + e[2 * s], c = e[s] - e[2 * s], d = e[0] - e[3 * s];
            e[0] = a + b;
            e[s] = c + 2 * d;
            e[2 * s] = a - b;
            e[3 * s] = d - 2 * c;
        }
    };
    pass(1, 4);
    pass(4, 1);
    for (int k = 0; k < 16; ++k) out[k] = s16(x[k]);  // |x| <= 36 * 255
}

// Requantisation of the SP/SI reconstruction: +-((|cs| * f + 2^(s-1)) >> s) * scale.
s32 requantise(s64 cs, int f, int s, int scale) {
    const s64 level = ((cs < 0 ? -cs : cs) * f + (s64{1} << (s - 1))) >> s;
    return wrap<32>((cs < 0 ? -level : level) * scale);
}

void sisp(s16* coeffs, const s16* pred, const s16* dc, bool ac, int qp, int qs, bool switching) {
    const int r = switching ? qs : qp;
    const int m = qs % 6, s = 15 + qs / 6;
    s32 d[16];
    for (int k = 0; k < 16; ++k) {
        if (k == 0 && dc) {
            d[0] = *dc;
            continue;
        }
        s64 cs = pred[k];
        if (k == 0 || ac) cs += (s64(coeffs[k]) * InvQuantTable[r][QuantIndex[k]] * MATR[k]) >> 6;
        d[k] = wrap<16>(requantise(cs, QuantCoef[m][k], s, InvQuantTable[qs][QuantIndex[k]]));
    }
    inverse4x4<16>(d);
    for (int k = 0; k < 16; ++k) coeffs[k] = s16(clip_u8(round6(d[k])));
}

void sisp_chroma_dc(s16* coeffs, const s16* predDc, int qp, int qs, bool switching) {
    const int r = switching ? qs : qp;
    s32 p[4], d[4], f[4];
    hadamard2x2(predDc, p);
    for (int i = 0; i < 4; ++i) {
        const s64 cs = ((s64(coeffs[i]) * InvQuantTable[r][0] * 16) >> 5) + p[i];
        d[i] = requantise(cs, QuantCoef[qs % 6][0], 16 + qs / 6, InvQuantTable[qs][0]);
    }
    hadamard2x2(d, f);
    for (int i = 0; i < 4; ++i) coeffs[i] = s16(wrap<16>(f[i] >> 1));
}

// ---- scaling lists --------------------------------------------------------

// Scaling-list 4x4 with add, at 16 bits (8-bit samples) or 32 bits.
template <int Bits, class Sample, class Coeff>
void add_pred4x4_any(const Sample* pred, int predStep, Coeff* coeffs, const Coeff* dc, Sample* dst, int dstStep,
                     int qp, bool ac, int bitDepth, const s16* ls) {
    const int q = h264_qp6[qp];
    s32 r[16];
    if (ac) {
        for (int k = 0; k < 16; ++k) r[k] = (k == 0 && dc) ? s32(*dc) : scale<Bits>(coeffs[k], ls[k], q, 4);
        inverse4x4<Bits>(r);
        for (int k = 0; k < 16; ++k) coeffs[k] = Coeff(r[k] = round6(r[k]));
    } else {
        const s32 d = dc ? s32(*dc) : scale<Bits>(coeffs[0], ls[0], q, 4);
        for (s32& v : r) v = round6(d);
    }
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x) {
            Sample& out = row(dst, dstStep, y)[x];
            out = Sample(clip_pixel(wrap<32>(s64(row(pred, predStep, y)[x]) + r[4 * y + x]), bitDepth));
        }
}

void add_pred4x4(const u8* pred, int predStep, s16* coeffs, const s16* dc, u8* dst, int dstStep, int qp, bool ac,
                 const s16* ls) {
    add_pred4x4_any<16>(pred, predStep, coeffs, dc, dst, dstStep, qp, ac, 8, ls);
}

void add_pred4x4_hbd(const u16* pred, int predStep, s32* coeffs, const s32* dc, u16* dst, int dstStep, int qp,
                     bool ac, int bitDepth, const s16* ls) {
    add_pred4x4_any<32>(pred, predStep, coeffs, dc, dst, dstStep, qp, ac, bitDepth, ls);
}

// DC blocks: q < t: (f * ls0 + round) >> (t - q) with round = 2^(t-1-q)
// when `Rounded`, else 0; q >= t: (f * ls0) << (q - t).
template <int Bits, int T, bool Rounded, class Coeff>
s32 scale_dc(s32 f, int q, int ls0) {
    const s64 p = wrap<32>(s64(f) * ls0);
    if (q >= T) return wrap<Bits>(shift_left(s32(p), q - T));
    const s64 round = Rounded ? s64{1} << (T - 1 - q) : 0;
    return wrap<Bits>(wrap<32>(p + round) >> (T - q));
}

template <int Bits, class Coeff>
void luma_dc(Coeff* block, int q, int ls0) {
    s32 f[16];
    hadamard4x4(block, f);
    for (int k = 0; k < 16; ++k) block[k] = Coeff(scale_dc<Bits, 6, true, Coeff>(f[k], q, ls0));
}

template <int Bits, class Coeff>
void chroma_dc2x2(Coeff* block, int q, int ls0) {
    s32 f[4];
    hadamard2x2(block, f);
    for (int k = 0; k < 4; ++k) block[k] = Coeff(scale_dc<Bits, 5, false, Coeff>(f[k], q, ls0));
}

// f = A4 x c x A2, c being 4 rows of 2.
template <int Bits, class Coeff>
void chroma_dc2x4(Coeff* block, int q, int ls0) {
    s32 f[8];
    for (int i = 0; i < 4; ++i) {
        f[2 * i] = wrap<32>(s64(block[2 * i]) + block[2 * i + 1]);
        f[2 * i + 1] = wrap<32>(s64(block[2 * i]) - block[2 * i + 1]);
    }
    for (int j = 0; j < 2; ++j) {
        s32* e = f + j;
        const s64 a = s64(e[0]) + e[2], b = s64(e[0]) - e[2], c = s64(e[4]) + e[6], d = s64(e[4]) - e[6];
        e[0] = wrap<32>(a + c);
        e[2] = wrap<32>(a - c);
        e[4] = wrap<32>(b - d);
        e[6] = wrap<32>(b + d);
    }
    for (int k = 0; k < 8; ++k) block[k] = Coeff(scale_dc<Bits, 6, true, Coeff>(f[k], q, ls0));
}

template <int Bits, class Coeff>
void quant8x8(Coeff* coeffs, int q, const s16* ls) {
    for (int k = 0; k < 64; ++k) coeffs[k] = Coeff(scale<Bits>(coeffs[k], ls[k], q, 6));
}

// The 8-point inverse transform of e[0], e[s], ..., e[7s] in place; every
// intermediate is held at the working width, as 16-bit lanes would hold it.
template <int Bits>
void inverse8(s32* e, int s) {
    const auto w = [](s64 v) { return s64(wrap<Bits>(v)); };
    const s64 d0 = e[0], d1 = e[s], d2 = e[2 * s], d3 = e[3 * s];
    const s64 d4 = e[4 * s], d5 = e[5 * s], d6 = e[6 * s], d7 = e[7 * s];
    const s64 a0 = w(d0 + d4), a4 = w(d0 - d4), a2 = w((d2 >> 1) - d6), a6 = w(d2 + (d6 >> 1));
    const s64 b0 = w(a0 + a6), b2 = w(a4 + a2), b4 = w(a4 - a2), b6 = w(a0 - a6);
    const s64 a1 = w(-d3 + d5 - d7 - (d7 >> 1));
    const s64 a3 = w(d1 + d7 - d3 - (d3 >> 1));
    const s64 a5 = w(-d1 + d7 + d5 + (d5 >> 1));
    const s64 a7 = w(d3 + d5 + d1 + (d1 >> 1));
    const s64 b1 = w(a1 + (a7 >> 2)), b7 = w(a7 - (a1 >> 2));
    const s64 b3 = w(a3 + (a5 >> 2)), b5 = w((a3 >> 2) - a5);
    e[0] = wrap<Bits>(b0 + b7);
    e[s] = wrap<Bits>(b2 + b5);
    e[2 * s] = wrap<Bits>(b4 + b3);
    e[3 * s] = wrap<Bits>(b6 + b1);
    e[4 * s] = wrap<Bits>(b6 - b1);
    e[5 * s] = wrap<Bits>(b4 - b3);
    e[6 * s] = wrap<Bits>(b2 - b5);
    e[7 * s] = wrap<Bits>(b0 - b7);
}

template <int Bits, class Sample, class Coeff>
void transform8x8_add_any(const Sample* pred, int predStep, Coeff* coeffs, Sample* dst, int dstStep, int bitDepth) {
    s32 x[64];
    for (int k = 0; k < 64; ++k) x[k] = coeffs[k];
    for (int i = 0; i < 8; ++i) inverse8<Bits>(x + 8 * i, 1);
    for (int j = 0; j < 8; ++j) inverse8<Bits>(x + j, 8);
    for (int y = 0; y < 8; ++y)
        for (int c = 0; c < 8; ++c) {
            const s32 r = x[8 * y + c];
            coeffs[8 * y + c] = Coeff(r);
            const s32 v = wrap<32>(s64(r) + 64 * s64(row(pred, predStep, y)[c]) + 32) >> 6;
            row(dst, dstStep, y)[c] = Sample(clip_pixel(v, bitDepth));
        }
}

void transform8x8_add(const u8* pred, int predStep, s16* coeffs, u8* dst, int dstStep) {
    transform8x8_add_any<16>(pred, predStep, coeffs, dst, dstStep, 8);
}

void transform8x8_add_hbd(const u16* pred, int predStep, s32* coeffs, u16* dst, int dstStep, int bitDepth) {
    transform8x8_add_any<32>(pred, predStep, coeffs, dst, dstStep, bitDepth);
}

}  // namespace

void init_transform(Table& t, CpuFlags cpu) {
    t.dequant_residual = &dequant_residual;
    t.dequant_residual_add = &dequant_residual_add;
    t.luma_dc_flat = &luma_dc_flat;
    t.chroma_dc_flat = &chroma_dc_flat;
    t.transform_prediction = &transform_prediction;
    t.sisp = &sisp;
    t.sisp_chroma_dc = &sisp_chroma_dc;
    t.add_pred4x4 = &add_pred4x4;
    t.add_pred4x4_hbd = &add_pred4x4_hbd;
    t.luma_dc = &luma_dc<16, s16>;
    t.luma_dc_hbd = &luma_dc<32, s32>;
    t.chroma_dc2x2 = &chroma_dc2x2<16, s16>;
    t.chroma_dc2x2_hbd = &chroma_dc2x2<32, s32>;
    t.chroma_dc2x4 = &chroma_dc2x4<16, s16>;
    t.chroma_dc2x4_hbd = &chroma_dc2x4<32, s32>;
    t.quant8x8 = &quant8x8<16, s16>;
    t.quant8x8_hbd = &quant8x8<32, s32>;
    t.transform8x8_add = &transform8x8_add;
    t.transform8x8_add_hbd = &transform8x8_add_hbd;

#if KIVVC_X86
    if (!(cpu & kSse2)) return;
    init_transform_sse2(t);
#else
    (void)cpu;
#endif
}

const Table& table() { return process_table<Table, init_transform>(); }

}  // namespace kivvc::h264::transform
