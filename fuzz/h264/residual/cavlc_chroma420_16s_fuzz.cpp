// Fuzzes the 4:2:0 chroma DC 16-bit CAVLC decoder (with its table-free paths).
#include "cavlc_fuzz.h"

using namespace kivvc::fuzz::cavlc;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kivvc::fuzz::Input in(data, size);

    const auto& t = tables();
    return check<Kiv16s>(in, 4, [&](Kiv32u** w, Kiv32s* o, Kiv16s* n, Kiv16s** p) {
        return kiviDecodeCAVLCChromaDcCoeffs_H264_1u16s(w, o, n, p, t.token420, arr(t.zeros420), arr(t.runs));
    });
}
