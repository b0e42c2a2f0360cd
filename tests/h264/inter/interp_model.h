// The H.264 sample interpolation written out per sample from its defining
// equations, on a picture read at clamped coordinates: what every
// interpolation path is compared with.
#pragma once
#include <algorithm>
#include <vector>

#include "support/kernel_case.h"

namespace kivvc::test {

template <class T>
struct Picture {
    std::vector<T> samples;
    int width = 0, height = 0;

    Picture(int w, int h, Rng& rng, int maxv) : samples(std::size_t(w) * h), width(w), height(h) {
        for (auto& s : samples) s = static_cast<T>(rng.range(0, maxv));
    }
    int at(int x, int y) const {
        return samples[std::size_t(std::clamp(y, 0, height - 1)) * width + std::clamp(x, 0, width - 1)];
    }
    const T* data() const { return samples.data(); }
};

// Luma at quarter position (dx, dy) right and below the integer sample (x, y).
template <class Pic>
int luma_model(const Pic& pic, int x, int y, int dx, int dy, int maxv) {
    const auto clip = [maxv](int v) { return std::clamp(v, 0, maxv); };
    const auto tap = [](int e, int f, int g, int h, int i, int j) { return e - 5 * f + 20 * g + 20 * h - 5 * i + j; };
    const auto b1 = [&](int u, int v) {
        return tap(pic.at(u - 2, v), pic.at(u - 1, v), pic.at(u, v), pic.at(u + 1, v), pic.at(u + 2, v),
                   pic.at(u + 3, v));
    };
    const auto h1 = [&](int u, int v) {
        return tap(pic.at(u, v - 2), pic.at(u, v - 1), pic.at(u, v), pic.at(u, v + 1), pic.at(u, v + 2),
                   pic.at(u, v + 3));
    };
    // The centre from the horizontal intermediates, filtered down.
    const auto j = [&] {
        const int j1 = tap(b1(x, y - 2), b1(x, y - 1), b1(x, y), b1(x, y + 1), b1(x, y + 2), b1(x, y + 3));
        return clip((j1 + 512) >> 10);
    };
    const auto b = [&] { return clip((b1(x, y) + 16) >> 5); };
    const auto h = [&] { return clip((h1(x, y) + 16) >> 5); };
    const auto m = [&] { return clip((h1(x + 1, y) + 16) >> 5); };
    const auto s = [&] { return clip((b1(x, y + 1) + 16) >> 5); };
    const int G = pic.at(x, y), H = pic.at(x + 1, y), M = pic.at(x, y + 1);
    const auto avg = [](int p, int q) { return (p + q + 1) >> 1; };
    switch (dy * 4 + dx) {
        case 0: return G;
        case 1: return avg(G, b());
        case 2: return b();
        case 3: return avg(H, b());
        case 4: return avg(G, h());
        case 5: return avg(b(), h());
        case 6: return avg(b(), j());
        case 7: return avg(b(), m());
        case 8: return h();
        case 9: return avg(h(), j());
        case 10: return j();
        case 11: return avg(j(), m());
        case 12: return avg(M, h());
        case 13: return avg(h(), s());
        case 14: return avg(j(), s());
        default: return avg(m(), s());
    }
}

template <class Pic>
int chroma_model(const Pic& pic, int x, int y, int dx, int dy) {
    return ((8 - dx) * (8 - dy) * pic.at(x, y) + dx * (8 - dy) * pic.at(x + 1, y) + (8 - dx) * dy * pic.at(x, y + 1) +
            dx * dy * pic.at(x + 1, y + 1) + 32) >> 6;
}

}  // namespace kivvc::test
