// Fuzzes the Exp-Golomb reader: at most 63 bits per code, and no read beyond
// the word after the one holding the last bit consumed.
#include "cavlc_fuzz.h"

using namespace kivvc::fuzz::cavlc;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kivvc::fuzz::Input in(data, size);
    const Kiv8u is_signed = in.byte() & 1;
    return check<Kiv16s>(in, 1, [&](Kiv32u** w, Kiv32s* o, Kiv16s* n, Kiv16s** p) {
        *n = 0;
        return kiviDecodeExpGolombOne_H264_1u16s(w, o, *p, is_signed);
    });
}
