// Helpers for fuzz targets: take parameters from the front of the input,
// and give the bitstream part its own allocation whose end is exact (plus the
// look-ahead the reader documents), so that any read past it is caught.
#pragma once
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace kivvc::fuzz {

class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}
    // A parameter byte (0 when the input is exhausted).
    std::uint8_t byte() { return pos_ < size_ ? data_[pos_++] : 0; }
    int range(int lo, int hi) { return lo + byte() % (hi - lo + 1); }
    // The rest of the input as bytes.
    std::vector<std::uint8_t> rest_bytes(std::size_t padding = 0) {
        std::vector<std::uint8_t> v(data_ + pos_, data_ + size_);
        v.resize(v.size() + padding, 0);
        pos_ = size_;
        return v;
    }
    // The rest as 32-bit words (first byte in bits 31..24), plus `padding`
    // words, at least one word in all.
    std::vector<std::uint32_t> rest_words(std::size_t padding = 1) {
        std::vector<std::uint32_t> w((size_ - pos_ + 3) / 4 + padding, 0);
        for (std::size_t i = 0; pos_ < size_; ++i, ++pos_)
            w[i / 4] |= std::uint32_t{data_[pos_]} << (24 - 8 * (i % 4));
        return w;
    }

private:
    const std::uint8_t* data_;
    std::size_t size_;
    std::size_t pos_ = 0;
};

}  // namespace kivvc::fuzz
