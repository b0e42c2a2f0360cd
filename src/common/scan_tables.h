// The shared 8x8 scans: entry n is the raster position of the n-th
// coefficient in scan order.
#pragma once
#include <cstdint>

namespace kivvc {
// Zigzag scan (MPEG-2 alternate_scan 0, H.263, H.261, MPEG-4).
extern const std::int32_t ownvc_Zigzag[64];
// Alternate scan of MPEG-2 (alternate_scan 1), alternate-vertical of MPEG-4.
extern const std::int32_t ownvc_AltScanV[64];
// Alternate-horizontal scan of MPEG-4.
extern const std::int32_t ownvc_AltScanH[64];
// The scan for a selector: 1 alternate vertical, 2 alternate horizontal,
// anything else zigzag.
const std::int32_t* scan_for(int selector);
}  // namespace kivvc
