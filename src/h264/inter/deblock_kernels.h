// H.264 deblocking: kernel signatures and the family table.
//
// A kernel filters every edge of one direction of one macroblock plane, edge
// by edge from the left (or top) boundary, each edge along its length; later
// edges see the samples earlier ones changed. Edge e lies 4e samples from the
// boundary. Per-edge thresholds: alpha[0]/beta[0] for edge 0, alpha[1]/beta[1]
// for the others. bS and tC0 hold four entries per edge; which entry a line
// uses depends on the plane kind (see Layout in deblock_ref.cpp).
#pragma once
#include <cstdint>

#include "core/cpu.h"

namespace kivvc::deblock {

using u8 = std::uint8_t;
using u16 = std::uint16_t;

// p: q0 of edge 0 (the macroblock's first sample); step in samples, any sign.
// Reads up to 4 luma (2 chroma) samples before the boundary, only when edge 0
// has a non-zero bS entry.
using Edges8Fn = void (*)(u8* p, int step, const u8* alpha, const u8* beta, const u8* tc0, const u8* bs);
// As Edges8Fn, samples clamped to 0..max_value (at most 65535).
using Edges16Fn = void (*)(u16* p, int step, const u16* alpha, const u16* beta, const u16* tc0, const u8* bs,
                           int max_value);
// The left edge only, one threshold pair; luma: 8 lines, line i uses bs[i >> 1],
// tc0[i >> 1]; chroma: 4 lines, line i uses bs[i], tc0[i]. alpha at most 1024
// and beta at most 256 (larger values act the same on 8-bit samples).
using Mbaff8Fn = void (*)(u8* p, int step, int alpha, int beta, const u8* tc0, const u8* bs);
using Mbaff16Fn = void (*)(u16* p, int step, int alpha, int beta, const u16* tc0, const u8* bs, int max_value);

struct Table {
    Edges8Fn luma_ver, luma_hor;
    Edges8Fn chroma_ver, chroma_hor;        // 4:2:0: two 8-sample edges
    Edges8Fn chroma422_ver, chroma422_hor;  // 4:2:2: two 16-sample / four 8-sample edges
    Mbaff8Fn luma_ver_mbaff, chroma_ver_mbaff;
    Edges16Fn luma_ver16, luma_hor16;
    Edges16Fn chroma_ver16, chroma_hor16;
    Edges16Fn chroma422_ver16, chroma422_hor16;
    Mbaff16Fn luma_ver_mbaff16, chroma_ver_mbaff16;
};

void init_deblock(Table& t, CpuFlags cpu);
void init_deblock_sse2(Table& t);
void init_deblock_avx2(Table& t);

// The process-wide table, built once from the active CPU flags.
const Table& table();

}  // namespace kivvc::deblock
