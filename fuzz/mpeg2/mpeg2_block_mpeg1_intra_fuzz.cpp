// Block decoding (mpeg1_intra) over arbitrary bits, with tables of the standard
// codes and parameters from the input.
#include "mpeg2_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kivvc::fuzz::fuzz_blocks(data, size,
                             [](Kiv32u** p, Kiv32s* o, kivvc::fuzz::BlockParams& b, Kiv16s* block, Kiv32s* n) {
                                 return kiviReconstructDCTBlockIntra_MPEG1_32s(p, o, b.dc, b.ac, b.scan, b.q, b.matrix,
                                                                               &b.predictor, block, n);
                             });
    return 0;
}
