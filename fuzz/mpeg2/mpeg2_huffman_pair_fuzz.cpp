// Run/level decoding with a table built from the input, over the rest of
// the input.
#include "mpeg2_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kivvc::fuzz::Input in(data, size);
    int total = 0;
    const auto src = kivvc::fuzz::random_source(in, total);
    const int offset = in.range(0, 31);
    kivvc::fuzz::Built t;
    if (kiviHuffmanRunLevelTableInitAlloc_32s(src.data(), &t.table) != kivStsOk) return 0;
    auto words = kivvc::fuzz::padded_stream(in, std::size_t(total));
    const std::size_t data_words = words.size() - (std::size_t(total) + 31) / 32 - 1;
    kivvc::fuzz::run_calls(words, data_words, offset, [&](Kiv32u** p, Kiv32s* o) {
        Kiv32u* before = *p;
        const Kiv32s off_before = *o;
        Kiv8u run;
        Kiv16s level;
        const KivStatus st = kiviDecodeHuffmanPair_1u16s(p, o, t.table, &run, &level);
        if (st == kivStsBadVlcCode && (*p != before || *o != off_before)) std::abort();  // cursor restored
        return st;
    });
    return 0;
}
