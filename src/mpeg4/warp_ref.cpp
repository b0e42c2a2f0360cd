// Scalar sprite-warping kernels, one per number of warping points.
#include <cmath>
#include <cstdint>

#include "kivvc.h"
#include "mpeg4/warp_kernels.h"

namespace kivvc::warp {
namespace {

using i64 = std::int64_t;

// The two columns and two rows around an integer position, with the border
// repeated: outside (or on the last line) both taps take the edge.
inline void taps(int i, int size, int* a, int* b) {
    if (i < 0) {
        *a = *b = 0;
    } else if (i >= size - 1) {
        *a = *b = size - 1;
    } else {
        *a = i;
        *b = i + 1;
    }
}

struct Quad {
    int p00, p01, p10, p11;
};

inline Quad fetch(const Reference& r, int ix, int iy) {
    int xa, xb, ya, yb;
    taps(ix, r.width, &xa, &xb);
    taps(iy, r.height, &ya, &yb);
    const std::uint8_t* top = r.ptr + std::ptrdiff_t(ya) * r.step;
    const std::uint8_t* bottom = r.ptr + std::ptrdiff_t(yb) * r.step;
    return {top[xa], top[xb], bottom[xa], bottom[xb]};
}

// Bilinear sample at (X, Y) in 1/16 units.
inline std::uint8_t bilinear(const Reference& r, int X, int Y, int t) {
    const Quad q = fetch(r, X >> 4, Y >> 4);
    const int fx = X & 15, fy = Y & 15;
    const int p = 16 * q.p00 + fx * (q.p01 - q.p00);
    const int s = 16 * q.p10 + fx * (q.p11 - q.p10);
    return static_cast<std::uint8_t>((16 * p + t + fy * (s - p)) >> 8);
}

inline bool inside(const Reference& r, int px, int py, int w, int h, int spare) {
    return px >= 0 && py >= 0 && px + w + spare <= r.width && py + h + spare <= r.height;
}

template <class Position>
void sample_block(const WarpSpec& s, const Reference& ref, const Target& dst, Position position) {
    for (int row = 0; row < dst.height; ++row) {
        std::uint8_t* out = dst.ptr + std::ptrdiff_t(row) * dst.step;
        for (int col = 0; col < dst.width; ++col) {
            int X, Y;
            position(dst.x + col, dst.y + row, &X, &Y);
            out[col] = bilinear(ref, X, Y, s.t);
        }
    }
}

// No points: a copy from the sprite, clamped at its border.
void warp0(const WarpSpec& s, const Reference& ref, const Target& dst, bool chroma) {
    const int px = dst.x - (chroma ? s.chroma_x : s.sprite_x);
    const int py = dst.y - (chroma ? s.chroma_y : s.sprite_y);
    const std::uint8_t* src = ref.ptr + std::ptrdiff_t(py) * ref.step + px;
    if (inside(ref, px, py, dst.width, dst.height, 0)) {
        if (dst.width == 16 && dst.height == 16) kiviCopy16x16_8u_C1R(src, ref.step, dst.ptr, dst.step);
        else kiviCopy_8u_C1R(src, ref.step, dst.ptr, dst.step, KiviSize{dst.width, dst.height});
        return;
    }
    for (int row = 0; row < dst.height; ++row)
        for (int col = 0; col < dst.width; ++col)
            dst.ptr[std::ptrdiff_t(row) * dst.step + col] = fetch(ref, px + col, py + row).p00;
}

// One point: a translation. Luma positions are whole or half samples; chroma
// positions may fall anywhere on the 1/s grid.
void warp1(const WarpSpec& s, const Reference& ref, const Target& dst, bool chroma) {
    int px, py, fx, fy;
    if (chroma) {
        px = dst.x - s.chroma_x + (s.chroma_dx >> 4) - s.x0 / 2;
        py = dst.y - s.chroma_y + (s.chroma_dy >> 4) - s.y0 / 2;
        fx = s.chroma_dx & 15;
        fy = s.chroma_dy & 15;
    } else {
        px = dst.x - s.x0 - s.sprite_x + (s.i0 >> 4);
        py = dst.y - s.y0 - s.sprite_y + (s.j0 >> 4);
        fx = s.i0 & 15;
        fy = s.j0 & 15;
    }
    const int n = chroma ? 8 : 16;
    const bool half_grid = (fx == 0 || fx == 8) && (fy == 0 || fy == 8);
    if (half_grid && dst.width == n && dst.height == n && inside(ref, px, py, n, n, 1)) {
        const std::uint8_t* src = ref.ptr + std::ptrdiff_t(py) * ref.step + px;
        const int acc = (fy >> 2) + (fx >> 3);
        if (chroma) kiviCopy8x8HP_8u_C1R(src, ref.step, dst.ptr, dst.step, acc, s.rounding);
        else kiviCopy16x16HP_8u_C1R(src, ref.step, dst.ptr, dst.step, acc, s.rounding);
        return;
    }
    if (chroma) {
        sample_block(s, ref, dst, [&](int x, int y, int* X, int* Y) {
            *X = ((x - dst.x + px) << 4) + fx;
            *Y = ((y - dst.y + py) << 4) + fy;
        });
        return;
    }
    // Luma: half-sample averages with the border repeated.
    const int r = s.rounding;
    for (int row = 0; row < dst.height; ++row) {
        std::uint8_t* out = dst.ptr + std::ptrdiff_t(row) * dst.step;
        for (int col = 0; col < dst.width; ++col) {
            const Quad q = fetch(ref, px + col, py + row);
            int v;
            if (fx && fy) v = (q.p00 + q.p01 + q.p10 + q.p11 + 2 - r) >> 2;
            else if (fx) v = (q.p00 + q.p01 + 1 - r) >> 1;
            else if (fy) v = (q.p00 + q.p10 + 1 - r) >> 1;
            else v = q.p00;
            out[col] = static_cast<std::uint8_t>(v);
        }
    }
}

inline int clear_low_bits(i64 v, int acc) { return static_cast<int>(v & ~((i64{1} << (3 - acc)) - 1)); }

// Two and three points: affine positions from the prepared coefficients.
void warp_affine(const WarpSpec& s, const Reference& ref, const Target& dst, bool chroma) {
    const int sigma = s.sigma;
    if (!chroma) {
        const i64 bx = i64(s.i0 - 16 * s.sprite_x) * (i64{1} << sigma) + s.affine_round;
        const i64 by = i64(s.j0 - 16 * s.sprite_y) * (i64{1} << sigma) + s.affine_round;
        sample_block(s, ref, dst, [&](int x, int y, int* X, int* Y) {
            const i64 di = x - s.x0, dj = y - s.y0;
            *X = clear_low_bits((bx + s.P * di + s.Q * dj) >> sigma, s.accuracy);
            *Y = clear_low_bits((by + s.U * di + s.V * dj) >> sigma, s.accuracy);
        });
        return;
    }
    const i64 bx = 2 * i64(s.two_sigma) * (s.i0 - 8) - i64(16 * s.chroma_x) * (i64{1} << (sigma + 2)) +
                   4 * i64(s.affine_round);
    const i64 by = 2 * i64(s.two_sigma) * (s.j0 - 8) - i64(16 * s.chroma_y) * (i64{1} << (sigma + 2)) +
                   4 * i64(s.affine_round);
    sample_block(s, ref, dst, [&](int x, int y, int* X, int* Y) {
        const i64 u = 4 * i64(x) - 2 * s.x0 + 1, w = 4 * i64(y) - 2 * s.y0 + 1;
        *X = clear_low_bits((s.P * u + s.Q * w + bx) >> (sigma + 2), s.accuracy);
        *Y = clear_low_bits((s.U * u + s.V * w + by) >> (sigma + 2), s.accuracy);
    });
}

// Nearest integer, halves away from zero. Non-finite or huge quotients (a
// degenerate perspective) are held to +-2^26, which samples the border.
inline int nearest(double numerator, double denominator) {
    const double q = numerator * (1.0 / denominator);
    constexpr double kLimit = double(1 << 26);
    if (!(q > -kLimit)) return q != q ? 0 : -(1 << 26);
    if (!(q < kLimit)) return 1 << 26;
    return static_cast<int>(q + (q >= 0 ? 0.5000000001 : -0.5000000001));
}

// Four points: perspective positions in double precision.
void warp_perspective(const WarpSpec& s, const Reference& ref, const Target& dst, bool chroma) {
    const int up = 3 - s.accuracy;
    if (!chroma) {
        sample_block(s, ref, dst, [&](int x, int y, int* X, int* Y) {
            const double di = x - s.x0, dj = y - s.y0;
            const double den = s.g * di + s.h * dj + s.k;
            *X = nearest(s.a * di + s.b * dj + s.c, den) * (1 << up) - 16 * s.sprite_x;
            *Y = nearest(s.d * di + s.e * dj + s.f, den) * (1 << up) - 16 * s.sprite_y;
        });
        return;
    }
    const double s2 = double(1 << (s.accuracy + 1));
    sample_block(s, ref, dst, [&](int x, int y, int* X, int* Y) {
        const double u = 4.0 * x - 2.0 * s.x0 + 1, w = 4.0 * y - 2.0 * s.y0 + 1;
        const double den = 4 * s.g * u + 4 * s.h * w + 8 * s.k;
        const double shift = (s.g * u + s.h * w + 2 * s.k) * s2;
        *X = nearest(2 * s.a * u + 2 * s.b * w + 4 * s.c - shift, den) * (1 << up) - 16 * s.chroma_x;
        *Y = nearest(2 * s.d * u + 2 * s.e * w + 4 * s.f - shift, den) * (1 << up) - 16 * s.chroma_y;
    });
}

}  // namespace

void init_warp(Table& t, CpuFlags) {
    t.warp[0] = &warp0;
    t.warp[1] = &warp1;
    t.warp[2] = &warp_affine;
    t.warp[3] = &warp_affine;
    t.warp[4] = &warp_perspective;
}

const Table& table() { return process_table<Table, init_warp>(); }

}  // namespace kivvc::warp
