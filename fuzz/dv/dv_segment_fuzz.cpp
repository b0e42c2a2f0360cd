// Random 400-byte segments through both segment decoders of both forms, in
// an allocation that ends exactly at the segment, with the table built from
// the complete code or (to reach the no-entry paths) filled from the input.
#include <cstdlib>
#include <vector>

#include "dv/dv_vlc_source.h"
#include "fuzz_input.h"
#include "kivvc.h"

namespace {

const Kiv32u* shipped_table() {
    static Kiv32u* table = [] {
        Kiv32u* t = nullptr;
        if (kiviInitAllocHuffmanTable_DV_32u(kivDvCodeFirstLevel, kivDvCodeSecondLevel, &t) != kivStsOk) std::abort();
        return t;
    }();
    return table;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kivvc::fuzz::Input in(data, size);
    const int mode = in.range(0, 3);
    const int limit = in.range(-2, 70);
    const bool random_table = in.byte() % 8 == 0;
    std::vector<Kiv32u> own_table;
    if (random_table) {
        own_table.resize(1024);
        for (auto& e : own_table) e = Kiv32u{in.byte()} * 0x01010101u ^ Kiv32u{in.byte()} << 8;
    }
    Kiv32u zigzag[128];
    for (int i = 0; i < 128; ++i) zigzag[i] = Kiv32u(in.byte()) * 0x01000001u;  // high bits set on purpose
    auto bytes = in.rest_bytes();
    bytes.resize(400, 0);
    std::vector<Kiv8u> segment(bytes.begin(), bytes.end());  // exactly 400 bytes
    std::vector<Kiv16s> blocks(64 * 40);
    std::vector<Kiv32u> params(40);
    const Kiv32u* table = random_table ? own_table.data() : shipped_table();
    KivStatus s;
    switch (mode) {
        case 0: s = kiviHuffmanDecodeSegment_DV_8u16s(segment.data(), zigzag, table, blocks.data(), params.data()); break;
        case 1: s = kiviHuffmanDecodeSegment_DV100_8u16s(segment.data(), zigzag, table, blocks.data(), params.data()); break;
        case 2:
            s = kiviHuffmanDecodeSegmentOnePass_DV_8u16s(segment.data(), zigzag, table, blocks.data(), params.data(), limit);
            break;
        default:
            s = kiviHuffmanDecodeSegmentOnePass_DV100_8u16s(segment.data(), zigzag, table, blocks.data(), params.data(),
                                                            limit);
            break;
    }
    if (s != kivStsOk && s != kivStsBadBitstreamCode) std::abort();
    if (mode >= 2 && s != kivStsOk) std::abort();
    return 0;
}
