// H.263 INTRADC decoding over arbitrary bits.
#include "h263_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kivvc::fuzz::Input in(data, size);
    int offset = in.range(0, 7);
    kivvc::fuzz::ZeroPaddedStream s(in);
    Kiv8u* p = s.mem.get();
    Kiv16s dc = 0;
    const KivStatus st = kiviDecodeDCIntra_H263_1u16s(&p, &offset, &dc);
    if (st != kivStsOk && st != kivStsBadBitstreamCode) std::abort();
    if (st == kivStsOk && (dc < 1 || dc > 254 || p != s.mem.get() + 1)) std::abort();
    return 0;
}
