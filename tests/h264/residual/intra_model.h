// H.264 intra prediction written sample by sample from the equations of the
// standard, for the prediction and macroblock-reconstruction tests. Nothing
// here shares code with the library.
#pragma once
#include <algorithm>
#include <functional>

namespace kivvc::test::intra_model {

using Neighbour = std::function<int(int, int)>;  // p(x, y) for x == -1 or y == -1

inline int f2(int a, int b) { return (a + b + 1) >> 1; }
inline int f3(int a, int b, int c) { return (a + 2 * b + c + 2) >> 2; }
inline int clip(int v, int bitDepth) { return std::clamp(v, 0, (1 << bitDepth) - 1); }

// 4x4 (n = 4) and 8x8 (n = 8) luma modes; for 8x8, p gives the filtered
// neighbours.
inline int expect_nxn(int n, int mode, const Neighbour& p, bool top, bool left, int x, int y, int bitDepth) {
    switch (mode) {
    case 0: return p(x, -1);
    case 1: return p(-1, y);
    case 2: {
        int st = 0, sl = 0;
        for (int i = 0; i < n; ++i) st += p(i, -1), sl += p(-1, i);
        const int s = n == 4 ? 2 : 3;
        if (top && left) return (st + sl + n) >> (s + 1);
        if (top) return (st + n / 2) >> s;
        if (left) return (sl + n / 2) >> s;
        return 1 << (bitDepth - 1);
    }
    case 3:
        if (x == n - 1 && y == n - 1) return (p(2 * n - 2, -1) + 3 * p(2 * n - 1, -1) + 2) >> 2;
        return f3(p(x + y, -1), p(x + y + 1, -1), p(x + y + 2, -1));
    case 4:
        if (x > y) return f3(p(x - y - 2, -1), p(x - y - 1, -1), p(x - y, -1));
        if (x < y) return f3(p(-1, y - x - 2), p(-1, y - x - 1), p(-1, y - x));
        return f3(p(0, -1), p(-1, -1), p(-1, 0));
    case 5: {
        const int z = 2 * x - y;
        if (z >= 0 && !(z & 1)) return f2(p(x - (y >> 1) - 1, -1), p(x - (y >> 1), -1));
        if (z >= 0) return f3(p(x - (y >> 1) - 2, -1), p(x - (y >> 1) - 1, -1), p(x - (y >> 1), -1));
        if (z == -1) return f3(p(-1, 0), p(-1, -1), p(0, -1));
        return f3(p(-1, y - 2 * x - 1), p(-1, y - 2 * x - 2), p(-1, y - 2 * x - 3));
    }
    case 6: {
        const int z = 2 * y - x;
        if (z >= 0 && !(z & 1)) return f2(p(-1, y - (x >> 1) - 1), p(-1, y - (x >> 1)));
        if (z >= 0) return f3(p(-1, y - (x >> 1) - 2), p(-1, y - (x >> 1) - 1), p(-1, y - (x >> 1)));
        if (z == -1) return f3(p(-1, 0), p(-1, -1), p(0, -1));
        return f3(p(x - 2 * y - 1, -1), p(x - 2 * y - 2, -1), p(x - 2 * y - 3, -1));
    }
    case 7:
        if (!(y & 1)) return f2(p(x + (y >> 1), -1), p(x + (y >> 1) + 1, -1));
        return f3(p(x + (y >> 1), -1), p(x + (y >> 1) + 1, -1), p(x + (y >> 1) + 2, -1));
    default: {
        const int z = x + 2 * y, last = 2 * n - 3;
        if (z > last) return p(-1, n - 1);
        if (z == last) return (p(-1, n - 2) + 3 * p(-1, n - 1) + 2) >> 2;
        if (!(z & 1)) return f2(p(-1, y + (x >> 1)), p(-1, y + (x >> 1) + 1));
        return f3(p(-1, y + (x >> 1)), p(-1, y + (x >> 1) + 1), p(-1, y + (x >> 1) + 2));
    }
    }
}

// The neighbours an n x n luma prediction sees under an availability mask (1
// top, 2 left, 32 above-left, 64 above-right): missing groups are the mid
// value, missing above-right samples repeat the last one above.
inline Neighbour substituted(const Neighbour& raw, int n, unsigned mask, int bitDepth) {
    const int mid = 1 << (bitDepth - 1);
    return [raw, n, mask, mid](int x, int y) {
        if (x == -1 && y == -1) return (mask & 32) ? raw(-1, -1) : mid;
        if (x == -1) return (mask & 2) ? raw(-1, y) : mid;
        if (x < n) return (mask & 1) ? raw(x, -1) : mid;
        if (mask & 64) return raw(x, -1);
        return (mask & 1) ? raw(n - 1, -1) : mid;
    };
}

// Reference-sample filtering of an 8x8 block's neighbours (s: substituted).
inline Neighbour filtered8x8(const Neighbour& s, unsigned mask, int bitDepth) {
    const bool top = mask & 1, left = mask & 2, al = mask & 32;
    const int mid = 1 << (bitDepth - 1);
    return [=](int x, int y) {
        if (x == -1 && y == -1) {
            if (!al) return mid;
            if (top && left) return f3(s(0, -1), s(-1, -1), s(-1, 0));
            if (top) return (3 * s(-1, -1) + s(0, -1) + 2) >> 2;
            if (left) return (3 * s(-1, -1) + s(-1, 0) + 2) >> 2;
            return s(-1, -1);
        }
        if (y == -1) {
            if (!top) return mid;
            if (x == 0) return al ? f3(s(-1, -1), s(0, -1), s(1, -1)) : (3 * s(0, -1) + s(1, -1) + 2) >> 2;
            if (x == 15) return (s(14, -1) + 3 * s(15, -1) + 2) >> 2;
            return f3(s(x - 1, -1), s(x, -1), s(x + 1, -1));
        }
        if (!left) return mid;
        if (y == 0) return al ? f3(s(-1, -1), s(-1, 0), s(-1, 1)) : (3 * s(-1, 0) + s(-1, 1) + 2) >> 2;
        if (y == 7) return (s(-1, 6) + 3 * s(-1, 7) + 2) >> 2;
        return f3(s(-1, y - 1), s(-1, y), s(-1, y + 1));
    };
}

// Whole-block modes in 16x16 numbering (0 vertical, 1 horizontal, 2 DC, 3
// plane) of a w x h block: 16x16 luma, or 8x8 / 8x16 chroma (DC per 4x4 block).
inline int expect_block(int lumaMode, int w, int h, const Neighbour& p, bool top, bool left, int x, int y,
                        int bitDepth) {
    switch (lumaMode) {
    case 0: return p(x, -1);
    case 1: return p(-1, y);
    case 2: {
        const int n = w == 16 ? 16 : 4, xo = w == 16 ? 0 : x & ~3, yo = w == 16 ? 0 : y & ~3;
        const int s = n == 16 ? 4 : 2;
        int st = 0, sl = 0;
        for (int i = 0; i < n; ++i) st += p(xo + i, -1), sl += p(-1, yo + i);
        const bool both = w == 16 || (xo == 0) == (yo == 0);
        if (top && left && both) return (st + sl + n) >> (s + 1);
        if (top && left) return xo ? (st + n / 2) >> s : (sl + n / 2) >> s;
        if (top) return (st + n / 2) >> s;
        if (left) return (sl + n / 2) >> s;
        return 1 << (bitDepth - 1);
    }
    default: {
        const auto gradient = [](int n, int g) { return n == 16 ? (5 * g + 32) >> 6 : (17 * g + 16) >> 5; };
        int H = 0, V = 0;
        for (int k = 0; k < w / 2; ++k) H += (k + 1) * (p(w / 2 + k, -1) - p(w / 2 - 2 - k, -1));
        for (int k = 0; k < h / 2; ++k) V += (k + 1) * (p(-1, h / 2 + k) - p(-1, h / 2 - 2 - k));
        const int a = 16 * (p(-1, h - 1) + p(w - 1, -1));
        const int b = gradient(w, H), c = gradient(h, V);
        return clip((a + b * (x - (w / 2 - 1)) + c * (y - (h / 2 - 1)) + 16) >> 5, bitDepth);
    }
    }
}

constexpr int kChromaToLuma[4] = {2, 1, 0, 3};

}  // namespace kivvc::test::intra_model
