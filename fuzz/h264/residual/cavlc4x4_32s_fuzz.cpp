// Fuzzes the 4x4 32-bit CAVLC decoder over every nC class and both block sizes.
#include "cavlc_fuzz.h"

using namespace kivvc::fuzz::cavlc;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kivvc::fuzz::Input in(data, size);
    const Kiv32s nC = in.range(0, 9);
    const Kiv16s max = in.byte() & 1 ? 16 : 15;
    const auto& t = tables();
    return check<Kiv32s>(in, 16, [&](Kiv32u** w, Kiv32s* o, Kiv16s* n, Kiv32s** p) {
        return kiviDecodeCAVLCCoeffs_H264_1u32s(w, o, n, p, nC, max, arr(t.token4x4), arr(t.zeros4x4), arr(t.runs), kZigzag);
    });
}
