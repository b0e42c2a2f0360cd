// Intra DC decoding over arbitrary bits, luminance and chrominance.
#include "mpeg4_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kivvc::fuzz::Input in(data, size);
    const int type = in.range(0, 1);
    int offset = in.range(0, 7);
    kivvc::fuzz::ForwardStream s(in);
    Kiv8u* p = s.mem.get();
    Kiv16s dc = 0;
    const KivStatus st = kiviDecodeDCIntra_MPEG4_1u16s(&p, &offset, &dc, type);
    if (st != kivStsOk && st != kivStsBadBitstreamCode) std::abort();
    if (dc < -4095 || dc > 4095) std::abort();
    return 0;
}
