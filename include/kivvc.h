/*
 * kivvc: video-coding primitives behind a flat C interface.
 *
 * One header for the whole library, valid C99 and C++. Sections follow the
 * families of the library: frame, block copy, block metrics, MPEG-1/2,
 * H.264 residual, H.264 inter, MPEG-4, H.263/H.261, VC-1, DV and
 * pre/post-processing.
 *
 * Conventions that hold for every function below unless its comment says
 * otherwise:
 *  - The result is a KivStatus: 0 success, negative error, positive warning.
 *  - Checks run before any memory is touched: required pointers in parameter
 *    order (then pointers held inside pointer arguments), then the function's
 *    own checks in the order its comment lists. When a check fails nothing is
 *    written.
 *  - Row steps are signed byte counts, also for 16-bit data (the 16-bit H.264
 *    inter-prediction, weighting and deblocking functions count samples).
 *    Fixed-size block functions check pointers only and trust their steps.
 *  - This is a 64-bit build: record fields that hold pointers are native
 *    pointers.
 */
#ifndef KIVVC_H
#define KIVVC_H

#include <stddef.h>
#include <stdint.h>

#if defined(_WIN32)
#define KIV_API
#elif defined(__GNUC__)
#define KIV_API __attribute__((visibility("default")))
#else
#define KIV_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ======================================================================== */
/* Frame: types, statuses, memory, version                                  */
/* ======================================================================== */

typedef uint8_t  Kiv8u;
typedef int8_t   Kiv8s;
typedef uint16_t Kiv16u;
typedef int16_t  Kiv16s;
typedef uint32_t Kiv32u;
typedef int32_t  Kiv32s;

typedef struct { Kiv32s width, height; } KiviSize;
typedef struct { Kiv32s x, y; } KiviPoint;
typedef struct { Kiv32s x, y, width, height; } KiviRect;

typedef Kiv32s KivStatus;
enum {
    kivStsOk                   = 0,
    kivStsWarnPartial          = 35,   /* odd width/height: largest even rectangle done */
    kivStsWarnNeighbourMissing = 11,   /* an unavailable intra neighbour was replaced by 128 */
    kivStsNotImplemented       = -2,
    kivStsBadArgument          = -5,
    kivStsBadSize              = -6,
    kivStsNullPointer          = -8,
    kivStsNoMemory             = -9,
    kivStsDivByZero            = -10,
    kivStsOutOfRange           = -11,
    kivStsLevelOutOfRange      = -13,
    kivStsBadStep              = -14,
    kivStsContextMismatch      = -17,
    kivStsBadResizeMode        = -22,
    kivStsBadResizeFactor      = -23,
    kivStsBadVlcCode           = -74,
    kivStsBadIntraPredMode     = -117,
    kivStsBadBitstreamCode     = -191,
    kivStsBadQp                = -192,
    kivStsBadBitOffset         = -193
};

/* The constant version record. */
typedef struct {
    Kiv32s majorVersion;      /* 5 */
    Kiv32s minorVersion;      /* 2 */
    Kiv32s majorBuild;        /* 108 */
    Kiv32s buildNumber;       /* 366 */
    char targetCpu[4];        /* "a6", zero-padded */
    const char *libraryName;  /* "libkivvca6.so.5.2" */
    const char *versionText;  /* "5.2" */
    const char *buildDate;    /* "Jul 11 2007" */
} KivVersion;

/* Allocator hooks. They start as the C library's malloc, calloc, realloc and
 * free. A client may replace them before its first allocation; the library
 * calls i_malloc in every kivsMalloc_8u/kivsMalloc_8s and i_free in every
 * kivsFree without testing them for null, so a replacement must always be
 * callable. i_calloc and i_realloc are published for clients and are never
 * called by the library. */
extern KIV_API void *(*i_malloc)(size_t size);
extern KIV_API void *(*i_calloc)(size_t count, size_t size);
extern KIV_API void *(*i_realloc)(void *block, size_t size);
extern KIV_API void (*i_free)(void *block);
/* Published for clients and companion libraries (1 and 0); never read or
 * written by this library. */
extern KIV_API Kiv32s i_version;
extern KIV_API Kiv32s i_min_version;

/* A block of `length` bytes aligned to 32 bytes, allocated through i_malloc,
 * or null when length < 1 (the hook is not called) or the hook returns null.
 * The pointer-sized slot just below the block holds the address i_malloc
 * returned; the size computation cannot overflow for any Kiv32s length.
 * Release it with kivsFree or kiviFree only. */
KIV_API Kiv8u *kivsMalloc_8u(Kiv32s length);
/* As kivsMalloc_8u, typed Kiv8s. */
KIV_API Kiv8s *kivsMalloc_8s(Kiv32s length);
/* Releases a block from kivsMalloc_8u/kivsMalloc_8s through i_free; null does
 * nothing. */
KIV_API void kivsFree(void *block);
/* Same as kivsFree, and forwards to the exported kivsFree so that a client
 * interposing kivsFree sees these releases too. */
KIV_API void kiviFree(void *block);

/* Copies `length` bytes from src to dst (no overlap). Statuses: NullPointer
 * (src, dst), BadSize (length < 1). */
KIV_API KivStatus kivsCopy_8u(const Kiv8u *src, Kiv8u *dst, Kiv32s length);
/* Copies `length` 16-bit elements. Statuses as kivsCopy_8u. */
KIV_API KivStatus kivsCopy_16s(const Kiv16s *src, Kiv16s *dst, Kiv32s length);
/* Stores zero into `length` 16-bit elements. Statuses: NullPointer (dst),
 * BadSize (length < 1). */
KIV_API KivStatus kivsZero_16s(Kiv16s *dst, Kiv32s length);
/* Copies a width x height rectangle of bytes row by row (as one run when both
 * steps equal the width). Statuses: NullPointer (src, dst), BadSize (width or
 * height < 1). Steps are not validated. */
KIV_API KivStatus kiviCopy_8u_C1R(const Kiv8u *src, Kiv32s srcStep, Kiv8u *dst,
                                  Kiv32s dstStep, KiviSize roiSize);
/* The constant version record; the same address on every call. */
KIV_API const KivVersion *kivvcGetLibVersion(void);

/* Bitstream cursors. Word cursor: (Kiv32u **ppBitStream, Kiv32s *pOffset),
 * words in host order, first stream bit = bit 31 of the first word. A reader's
 * offset is the index (31..0) of the next unread bit; a writer's offset is the
 * number of free bits of the current word (32..1). Word-cursor readers load
 * the word after the current one, so the buffer must be readable one 32-bit
 * word beyond the last code; apart from kiviDecodeExpGolombOne_H264_1u16s they
 * do not validate the offset and use only its low five bits. Word-cursor
 * writers OR into the current word: the words from the cursor on must be zero.
 * Byte cursor: (Kiv8u **ppBitStream, int *pBitOffset), the offset counting the
 * bits of the current byte already consumed or written (0..7); readers may load
 * up to four bytes past the byte holding the last bit consumed. */

/* ======================================================================== */
/* Block copy, average and add (8-bit samples)                              */
/* ======================================================================== */
/* Half-sample position `acc`: bit 0 horizontal half, bit 1 vertical half
 * (higher bits ignored). `rounding`: bit 0 only; 0 rounds half-sample averages
 * up, 1 rounds them down. Half-sample kernels read one column more (HF, HH)
 * and one row more (FH, HH) than the block. The only status is NullPointer. */

/* Copies an 8x8 block. */
KIV_API KivStatus kiviCopy8x8_8u_C1R(const Kiv8u *pSrc, Kiv32s srcStep, Kiv8u *pDst, Kiv32s dstStep);
/* Copies a 16x16 block. */
KIV_API KivStatus kiviCopy16x16_8u_C1R(const Kiv8u *pSrc, Kiv32s srcStep, Kiv8u *pDst, Kiv32s dstStep);
/* Half-sample prediction of an 8-wide, 4-high block at position acc. */
KIV_API KivStatus kiviCopy8x4HP_8u_C1R(const Kiv8u *pSrc, Kiv32s srcStep, Kiv8u *pDst, Kiv32s dstStep, Kiv32s acc, Kiv32s rounding);
/* Half-sample prediction of an 8x8 block. */
KIV_API KivStatus kiviCopy8x8HP_8u_C1R(const Kiv8u *pSrc, Kiv32s srcStep, Kiv8u *pDst, Kiv32s dstStep, Kiv32s acc, Kiv32s rounding);
/* Half-sample prediction of a 16-wide, 8-high block. */
KIV_API KivStatus kiviCopy16x8HP_8u_C1R(const Kiv8u *pSrc, Kiv32s srcStep, Kiv8u *pDst, Kiv32s dstStep, Kiv32s acc, Kiv32s rounding);
/* Half-sample prediction of a 16x16 block. */
KIV_API KivStatus kiviCopy16x16HP_8u_C1R(const Kiv8u *pSrc, Kiv32s srcStep, Kiv8u *pDst, Kiv32s dstStep, Kiv32s acc, Kiv32s rounding);
/* pSrcDst = (pSrcDst + pSrc + 1) >> 1 over 8x8. Pointers tested: pSrcDst, then pSrc. */
KIV_API KivStatus kiviAverage8x8_8u_C1IR(const Kiv8u *pSrc, Kiv32s srcStep, Kiv8u *pSrcDst, Kiv32s srcDstStep);
/* As kiviAverage8x8_8u_C1IR over 16x16. */
KIV_API KivStatus kiviAverage16x16_8u_C1IR(const Kiv8u *pSrc, Kiv32s srcStep, Kiv8u *pSrcDst, Kiv32s srcDstStep);
/* pDst = (pSrc1 + pSrc2 + 1) >> 1 over 8x8. */
KIV_API KivStatus kiviAverage8x8_8u_C1R(const Kiv8u *pSrc1, Kiv32s src1Step, const Kiv8u *pSrc2, Kiv32s src2Step, Kiv8u *pDst, Kiv32s dstStep);
/* As kiviAverage8x8_8u_C1R over 16x16. */
KIV_API KivStatus kiviAverage16x16_8u_C1R(const Kiv8u *pSrc1, Kiv32s src1Step, const Kiv8u *pSrc2, Kiv32s src2Step, Kiv8u *pDst, Kiv32s dstStep);
/* pSrcDst = (pSrcDst + p + 1) >> 1, p the half-sample prediction from pSrc
 * at (acc, rounding); the final average always rounds up. 8 wide, 4 high. */
KIV_API KivStatus kiviInterpolateAverage8x4_8u_C1IR(const Kiv8u *pSrc, Kiv32s srcStep, Kiv8u *pSrcDst, Kiv32s srcDstStep, Kiv32s acc, Kiv32s rounding);
/* As kiviInterpolateAverage8x4_8u_C1IR, 8x8. */
KIV_API KivStatus kiviInterpolateAverage8x8_8u_C1IR(const Kiv8u *pSrc, Kiv32s srcStep, Kiv8u *pSrcDst, Kiv32s srcDstStep, Kiv32s acc, Kiv32s rounding);
/* As kiviInterpolateAverage8x4_8u_C1IR, 16 wide, 8 high. */
KIV_API KivStatus kiviInterpolateAverage16x8_8u_C1IR(const Kiv8u *pSrc, Kiv32s srcStep, Kiv8u *pSrcDst, Kiv32s srcDstStep, Kiv32s acc, Kiv32s rounding);
/* As kiviInterpolateAverage8x4_8u_C1IR, 16x16. */
KIV_API KivStatus kiviInterpolateAverage16x16_8u_C1IR(const Kiv8u *pSrc, Kiv32s srcStep, Kiv8u *pSrcDst, Kiv32s srcDstStep, Kiv32s acc, Kiv32s rounding);
/* pSrcDst = sat(pSrcDst + residual) over 8x8, the sum formed in 16 bits and
 * saturated to 0..255. residualStep is in bytes. Residuals are expected in
 * -2048..2047; outside that the 16-bit sum wraps (we keep the wrap, so that
 * scalar and SIMD paths agree for any input). */
KIV_API KivStatus kiviAdd8x8_16s8u_C1IRS(const Kiv16s *pResidual, Kiv32s residualStep, Kiv8u *pSrcDst, Kiv32s srcDstStep);
/* pDst = sat(p + residual), p the half-sample prediction from pRef at (acc,
 * rounding), 8x8; the 16-bit sum wraps as in kiviAdd8x8_16s8u_C1IRS. */
KIV_API KivStatus kiviAdd8x8HP_16s8u_C1RS(const Kiv16s *pResidual, Kiv32s residualStep, const Kiv8u *pRef, Kiv32s refStep, Kiv8u *pDst, Kiv32s dstStep, Kiv32s acc, Kiv32s rounding);
/* pSrcDst = sat(pSrcDst + value) over 8x8 (16-bit sum, wraps as above). */
KIV_API KivStatus kiviAddC8x8_16s8u_C1IR(Kiv16s value, Kiv8u *pSrcDst, Kiv32s srcDstStep);

/* ---- section: block metrics ---- */
/* ======================================================================== */
/* Block metrics: SAD, SSD, residuals, variances, edges, scans              */
/* ======================================================================== */
/* Half-sample position `mcType`: bit 3 horizontal half, bit 2 vertical half;
 * every other bit is ignored (values outside 0, 4, 8, 12 act as their bits 2
 * and 3). FF reads the block; HF one column more, FH one row more, HH both.
 * The metrics round half-sample predictions up: (a + b + 1) >> 1 and
 * (a + b + c + d + 2) >> 2. Steps are in bytes, also for 16-bit samples.
 * Unless a comment says otherwise the only status is kivStsNullPointer, tested
 * on every pointer argument in parameter order; nothing is read past the
 * block (and its half-sample column and row). */

/* *pResult = sum of abs(cur - pred) over 16x16, pred the reference at mcType. */
KIV_API KivStatus kiviSAD16x16_8u32s(const Kiv8u *pSrc, Kiv32s srcStep, const Kiv8u *pRef, Kiv32s refStep, Kiv32s *pResult, Kiv32s mcType);
/* As kiviSAD16x16_8u32s over 16 wide, 8 high. */
KIV_API KivStatus kiviSAD16x8_8u32s_C1R(const Kiv8u *pSrc, Kiv32s srcStep, const Kiv8u *pRef, Kiv32s refStep, Kiv32s *pResult, Kiv32s mcType);
/* As kiviSAD16x16_8u32s over 8x8. */
KIV_API KivStatus kiviSAD8x8_8u32s_C1R(const Kiv8u *pSrc, Kiv32s srcStep, const Kiv8u *pRef, Kiv32s refStep, Kiv32s *pResult, Kiv32s mcType);
/* As kiviSAD16x16_8u32s with 16-bit samples (full 0..65535 range), 4x4. */
KIV_API KivStatus kiviSAD4x4_16u32s_C1R(const Kiv16u *pSrc, Kiv32s srcStep, const Kiv16u *pRef, Kiv32s refStep, Kiv32s *pResult, Kiv32s mcType);
/* As kiviSAD4x4_16u32s_C1R over 8x8. */
KIV_API KivStatus kiviSAD8x8_16u32s_C1R(const Kiv16u *pSrc, Kiv32s srcStep, const Kiv16u *pRef, Kiv32s refStep, Kiv32s *pResult, Kiv32s mcType);
/* As kiviSAD4x4_16u32s_C1R over 16x16. */
KIV_API KivStatus kiviSAD16x16_16u32s_C1R(const Kiv16u *pSrc, Kiv32s srcStep, const Kiv16u *pRef, Kiv32s refStep, Kiv32s *pResult, Kiv32s mcType);
/* *pResult = sum of (cur - pred)^2 over 8x8, pred the reference at mcType. */
KIV_API KivStatus kiviSSD8x8_8u32s_C1R(const Kiv8u *pSrc, Kiv32s srcStep, const Kiv8u *pRef, Kiv32s refStep, Kiv32s *pResult, Kiv32s mcType);
/* As kiviSSD8x8_8u32s_C1R over 4x4. */
KIV_API KivStatus kiviSSD4x4_8u32s_C1R(const Kiv8u *pSrc, Kiv32s srcStep, const Kiv8u *pRef, Kiv32s refStep, Kiv32s *pResult, Kiv32s mcType);
/* *pResult = sum of abs(cur - ref) over 4x4 (full position). */
KIV_API KivStatus kiviSAD4x4_8u32s(const Kiv8u *pSrc, Kiv32s srcStep, const Kiv8u *pRef, Kiv32s refStep, Kiv32s *pResult);
/* *pResult = sum of (cur - pred)^2 over 16x16. mcType must be exactly 0, 4, 8
 * or 12; any other value returns kivStsOk and leaves *pResult unwritten. */
KIV_API KivStatus kiviSqrDiff16x16_8u32s(const Kiv8u *pSrc, Kiv32s srcStep, const Kiv8u *pRef, Kiv32s refStep, Kiv32s mcType, Kiv32s *pResult);
/* *pResult = sum of (cur - b)^2 over 16x16, b = (predF + predB + 1) >> 1, each
 * prediction from its reference at its own mcType. Pointers tested: pSrc,
 * pRefF, pRefB, pResult. */
KIV_API KivStatus kiviSqrDiff16x16B_8u32s(const Kiv8u *pSrc, Kiv32s srcStep, const Kiv8u *pRefF, Kiv32s refFStep, Kiv32s mcTypeF, const Kiv8u *pRefB, Kiv32s refBStep, Kiv32s mcTypeB, Kiv32s *pResult);

/* Residuals. pDst = cur - pred as Kiv16s; pPred (may be null) receives pred.
 * The prediction uses `roundControl` (bit 0 only; 0 rounds up, 1 down):
 * (a + b + 1 - rc) >> 1 and (a + b + c + d + 2 - rc) >> 2. Pointers tested:
 * pSrc, pRef, pDst. 16x16. */
KIV_API KivStatus kiviGetDiff16x16_8u16s_C1(const Kiv8u *pSrc, Kiv32s srcStep, const Kiv8u *pRef, Kiv32s refStep, Kiv16s *pDst, Kiv32s dstStep, Kiv16s *pPred, Kiv32s predStep, Kiv32s mcType, Kiv32s roundControl);
/* As kiviGetDiff16x16_8u16s_C1, 16 wide, 8 high. */
KIV_API KivStatus kiviGetDiff16x8_8u16s_C1(const Kiv8u *pSrc, Kiv32s srcStep, const Kiv8u *pRef, Kiv32s refStep, Kiv16s *pDst, Kiv32s dstStep, Kiv16s *pPred, Kiv32s predStep, Kiv32s mcType, Kiv32s roundControl);
/* As kiviGetDiff16x16_8u16s_C1, 8 wide, 16 high. */
KIV_API KivStatus kiviGetDiff8x16_8u16s_C1(const Kiv8u *pSrc, Kiv32s srcStep, const Kiv8u *pRef, Kiv32s refStep, Kiv16s *pDst, Kiv32s dstStep, Kiv16s *pPred, Kiv32s predStep, Kiv32s mcType, Kiv32s roundControl);
/* As kiviGetDiff16x16_8u16s_C1, 8x8. */
KIV_API KivStatus kiviGetDiff8x8_8u16s_C1(const Kiv8u *pSrc, Kiv32s srcStep, const Kiv8u *pRef, Kiv32s refStep, Kiv16s *pDst, Kiv32s dstStep, Kiv16s *pPred, Kiv32s predStep, Kiv32s mcType, Kiv32s roundControl);
/* As kiviGetDiff16x16_8u16s_C1, 8 wide, 4 high. */
KIV_API KivStatus kiviGetDiff8x4_8u16s_C1(const Kiv8u *pSrc, Kiv32s srcStep, const Kiv8u *pRef, Kiv32s refStep, Kiv16s *pDst, Kiv32s dstStep, Kiv16s *pPred, Kiv32s predStep, Kiv32s mcType, Kiv32s roundControl);
/* Bidirectional residual: pDst = cur - ((predF + predB + 1) >> 1), each
 * prediction at its own mcType with roundControl as above. Pointers tested:
 * pSrc, pRefF, pRefB, pDst. 16x16. */
KIV_API KivStatus kiviGetDiff16x16B_8u16s_C1(const Kiv8u *pSrc, Kiv32s srcStep, const Kiv8u *pRefF, Kiv32s refFStep, Kiv32s mcTypeF, const Kiv8u *pRefB, Kiv32s refBStep, Kiv32s mcTypeB, Kiv16s *pDst, Kiv32s dstStep, Kiv32s roundControl);
/* As kiviGetDiff16x16B_8u16s_C1, 16 wide, 8 high. */
KIV_API KivStatus kiviGetDiff16x8B_8u16s_C1(const Kiv8u *pSrc, Kiv32s srcStep, const Kiv8u *pRefF, Kiv32s refFStep, Kiv32s mcTypeF, const Kiv8u *pRefB, Kiv32s refBStep, Kiv32s mcTypeB, Kiv16s *pDst, Kiv32s dstStep, Kiv32s roundControl);
/* As kiviGetDiff16x16B_8u16s_C1, 8 wide, 16 high. */
KIV_API KivStatus kiviGetDiff8x16B_8u16s_C1(const Kiv8u *pSrc, Kiv32s srcStep, const Kiv8u *pRefF, Kiv32s refFStep, Kiv32s mcTypeF, const Kiv8u *pRefB, Kiv32s refBStep, Kiv32s mcTypeB, Kiv16s *pDst, Kiv32s dstStep, Kiv32s roundControl);
/* As kiviGetDiff16x16B_8u16s_C1, 8x8. */
KIV_API KivStatus kiviGetDiff8x8B_8u16s_C1(const Kiv8u *pSrc, Kiv32s srcStep, const Kiv8u *pRefF, Kiv32s refFStep, Kiv32s mcTypeF, const Kiv8u *pRefB, Kiv32s refBStep, Kiv32s mcTypeB, Kiv16s *pDst, Kiv32s dstStep, Kiv32s roundControl);
/* As kiviGetDiff16x16B_8u16s_C1, 8 wide, 4 high. */
KIV_API KivStatus kiviGetDiff8x4B_8u16s_C1(const Kiv8u *pSrc, Kiv32s srcStep, const Kiv8u *pRefF, Kiv32s refFStep, Kiv32s mcTypeF, const Kiv8u *pRefB, Kiv32s refBStep, Kiv32s mcTypeB, Kiv16s *pDst, Kiv32s dstStep, Kiv32s roundControl);
/* pDst = cur - ref over 4x4 (full position). */
KIV_API KivStatus kiviGetDiff4x4_8u16s_C1(const Kiv8u *pSrc, Kiv32s srcStep, const Kiv8u *pRef, Kiv32s refStep, Kiv16s *pDst, Kiv32s dstStep);
/* pDst = pSrc1 - pSrc2 over 4x4. */
KIV_API KivStatus kiviSub4x4_8u16s_C1R(const Kiv8u *pSrc1, Kiv32s src1Step, const Kiv8u *pSrc2, Kiv32s src2Step, Kiv16s *pDst, Kiv32s dstStep);
/* As kiviSub4x4_8u16s_C1R over 8x8. */
KIV_API KivStatus kiviSub8x8_8u16s_C1R(const Kiv8u *pSrc1, Kiv32s src1Step, const Kiv8u *pSrc2, Kiv32s src2Step, Kiv16s *pDst, Kiv32s dstStep);
/* As kiviSub4x4_8u16s_C1R over 16x16. */
KIV_API KivStatus kiviSub16x16_8u16s_C1R(const Kiv8u *pSrc1, Kiv32s src1Step, const Kiv8u *pSrc2, Kiv32s src2Step, Kiv16s *pDst, Kiv32s dstStep);
/* pDst = pSrc1 - pSrc2 over 4x4 of 16-bit samples. Differences beyond the
 * Kiv16s range (samples of more than 15 bits) wrap modulo 2^16. */
KIV_API KivStatus kiviSub4x4_16u16s_C1R(const Kiv16u *pSrc1, Kiv32s src1Step, const Kiv16u *pSrc2, Kiv32s src2Step, Kiv16s *pDst, Kiv32s dstStep);
/* As kiviSub4x4_16u16s_C1R over 8x8. */
KIV_API KivStatus kiviSub8x8_16u16s_C1R(const Kiv16u *pSrc1, Kiv32s src1Step, const Kiv16u *pSrc2, Kiv32s src2Step, Kiv16s *pDst, Kiv32s dstStep);
/* pDst = pSrc1 - pSrc2 and *pSAD = sum of abs(pSrc1 - pSrc2) over 8x8.
 * Pointers tested: pSrc1, pSrc2, pDst, pSAD. */
KIV_API KivStatus kiviSubSAD8x8_8u16s_C1R(const Kiv8u *pSrc1, Kiv32s src1Step, const Kiv8u *pSrc2, Kiv32s src2Step, Kiv16s *pDst, Kiv32s dstStep, Kiv32s *pSAD);

/* Activity. *pVar = q - floor(s*s / 256), s and q the sum and the sum of
 * squares of the 16x16 block (s*s is formed in 64 bits). */
KIV_API KivStatus kiviVariance16x16_8u32s(const Kiv8u *pSrc, Kiv32s srcStep, Kiv32s *pVar);
/* 8x8 variance and sum: s and q summed in 32 bits, both rounded to single
 * precision, *pVar = trunc(q / 64 - (s / 64)^2) (exact for these ranges, so
 * for 8-bit samples *pVar = (64q - s*s) >> 12); *pMean receives s itself. */
KIV_API KivStatus kiviVarMean8x8_8u32s_C1R(const Kiv8u *pSrc, Kiv32s srcStep, Kiv32s *pVar, Kiv32s *pMean);
/* The same as kiviVarMean8x8_8u32s_C1R. */
KIV_API KivStatus kiviVarSum8x8_8u32s_C1R(const Kiv8u *pSrc, Kiv32s srcStep, Kiv32s *pVar, Kiv32s *pSum);
/* As kiviVarMean8x8_8u32s_C1R with Kiv16s samples. q is kept as a signed
 * 32-bit value, wrapping modulo 2^32; it differs from the true sum of squares
 * only beyond 2^31 - 1 (samples of magnitude above 5792 or so). */
KIV_API KivStatus kiviVarMean8x8_16s32s_C1R(const Kiv16s *pSrc, Kiv32s srcStep, Kiv32s *pVar, Kiv32s *pMean);
/* The same as kiviVarMean8x8_16s32s_C1R. */
KIV_API KivStatus kiviVarSum8x8_16s32s_C1R(const Kiv16s *pSrc, Kiv32s srcStep, Kiv32s *pVar, Kiv32s *pSum);
/* Residual variance and mean of each 8x8 block of 16x16 (blocks in raster
 * order), d = cur - pred at mcType (rounding up): mean[i] = (pSrcSum[i] -
 * sum of pred) / 8 and var[i] = (sum of d^2 - mean^2) / 64 when that is
 * positive, else 0 (divisions truncate toward zero). pSrcSum holds the
 * caller's sums of the current samples per block; the arithmetic is done in
 * 64 bits, so any sums give a defined result (truncated to 32 bits). */
KIV_API KivStatus kiviVarMeanDiff16x16_8u32s_C1R(const Kiv8u *pSrc, Kiv32s srcStep, const Kiv8u *pRef, Kiv32s refStep, const Kiv32s *pSrcSum, Kiv32s *pVar, Kiv32s *pMean, Kiv32s mcType);
/* As kiviVarMeanDiff16x16_8u32s_C1R over 16x8: two blocks side by side. */
KIV_API KivStatus kiviVarMeanDiff16x8_8u32s_C1R(const Kiv8u *pSrc, Kiv32s srcStep, const Kiv8u *pRef, Kiv32s refStep, const Kiv32s *pSrcSum, Kiv32s *pVar, Kiv32s *pMean, Kiv32s mcType);
/* *pResult = sum of abs(x - m) over 8x8, m = (sum + 32) >> 6. */
KIV_API KivStatus kiviMeanAbsDev8x8_8u32s_C1R(const Kiv8u *pSrc, Kiv32s srcStep, Kiv32s *pResult);
/* *pResult = sum of abs(x - m) over 16x16, m = (sum + 128) >> 8. */
KIV_API KivStatus kiviMeanAbsDev16x16_8u32s_C1R(const Kiv8u *pSrc, Kiv32s srcStep, Kiv32s *pResult);
/* Frame and field activity of a 16x16 block: *pFrame = sum of abs(p(x, y) -
 * p(x, y + 1)) over rows 0..6 and 8..14 (rows 7 and 8 are not paired), *pField
 * = sum of abs(p(x, y) - p(x, y + 2)) over rows 0..13. */
KIV_API KivStatus kiviFrameFieldSAD16x16_8u32s_C1R(const Kiv8u *pSrc, Kiv32s srcStep, Kiv32s *pFrame, Kiv32s *pField);
/* As kiviFrameFieldSAD16x16_8u32s_C1R with Kiv16s samples (exact differences). */
KIV_API KivStatus kiviFrameFieldSAD16x16_16s32s_C1R(const Kiv16s *pSrc, Kiv32s srcStep, Kiv32s *pFrame, Kiv32s *pField);
/* SAD of each 8x8 quarter of a 16x16 block (full position), in raster order. */
KIV_API KivStatus kiviSAD16x16Blocks8x8_8u16u(const Kiv8u *pSrc, Kiv32s srcStep, const Kiv8u *pRef, Kiv32s refStep, Kiv16u *pDstSAD);
/* SAD of each of the sixteen 4x4 blocks of a 16x16 block, in raster order. */
KIV_API KivStatus kiviSAD16x16Blocks4x4_8u16u(const Kiv8u *pSrc, Kiv32s srcStep, const Kiv8u *pRef, Kiv32s refStep, Kiv16u *pDstSAD);
/* As kiviSAD16x16Blocks8x8_8u16u with 16-bit samples and 32-bit results. */
KIV_API KivStatus kiviSAD16x16Blocks8x8_16u32u_C1R(const Kiv16u *pSrc, Kiv32s srcStep, const Kiv16u *pRef, Kiv32s refStep, Kiv32u *pDstSAD);
/* As kiviSAD16x16Blocks4x4_8u16u with 16-bit samples and 32-bit results. */
KIV_API KivStatus kiviSAD16x16Blocks4x4_16u32u_C1R(const Kiv16u *pSrc, Kiv32s srcStep, const Kiv16u *pRef, Kiv32s refStep, Kiv32u *pDstSAD);
/* Edge test over 16x16: a position (x, y), x and y in 0..14, counts when the
 * step to its right or lower neighbour, capped at 127, exceeds diffThreshold
 * read as a signed byte (so a threshold of 128 or more counts every
 * position; keep it below 127). After each row, a count above countThreshold
 * sets *pRes = 1 and ends the scan (later rows are not read); otherwise
 * *pRes = 0. Pointers tested: pSrc, pRes. */
KIV_API KivStatus kiviEdgesDetect16x16_8u_C1R(const Kiv8u *pSrc, Kiv32s srcStep, Kiv8u diffThreshold, Kiv8u countThreshold, Kiv8u *pRes);

/* Coefficients. *pCount = number of zeros among the 64 coefficients.
 * Pointers tested: pCount, pSrc. */
KIV_API KivStatus kiviCountZeros8x8_16s_C1(const Kiv16s *pSrc, Kiv32u *pCount);
/* Reorders a raster-order 8x8 block into scan order (scan 1 alternate
 * vertical, 2 alternate horizontal, any other zigzag). With countNonZero of
 * 20 or more every position is copied; below 20 the destination is zeroed
 * and only nonzero values are copied, up to and including the
 * countNonZero-th (any later nonzero values are dropped). Statuses:
 * kivStsNullPointer (pSrc, pDst), kivStsOutOfRange for countNonZero outside
 * 1..64. */
KIV_API KivStatus kiviScanFwd_16s_C1(const Kiv16s *pSrc, Kiv16s *pDst, Kiv32s countNonZero, Kiv32s scan);
/* Reorders scan-order coefficients 0..indxLastNonZero into a zeroed
 * raster-order 8x8 block (scan selector as kiviScanFwd_16s_C1). Statuses:
 * kivStsNullPointer (pSrc, pDst), kivStsOutOfRange for indxLastNonZero
 * outside 0..63. */
KIV_API KivStatus kiviScanInv_16s_C1(const Kiv16s *pSrc, Kiv16s *pDst, Kiv32s indxLastNonZero, Kiv32s scan);
/* ---- end section: block metrics ---- */

/* ---- section: mpeg2 ---- */
/* ======================================================================== */
/* MPEG-1 and MPEG-2: code tables, block decoding, inverse DCT, motion      */
/* compensation, quantisation and block writing                             */
/* ======================================================================== */

/* Code tables. A source table is an array of Kiv32s: [0] unused; [1] L, the
 * number of lookup levels; [2..L+1] the width in bits of each level (root
 * first); then for code lengths 1, 2, 3, ... in turn: a count followed by
 * that many (code, value) pairs (single-value tables) or (code, run, level)
 * triples (run/level tables), the code word in the low `length` bits; a
 * negative count ends the list. Codes must be prefix-free; values lie in
 * -8388608..8388607 and are never 0xF0F1, runs in 0..255, levels in 16 signed
 * bits; codes longer than the sum of the widths (or than 32 bits) are skipped.
 *
 * A built table is an array of Kiv32s that callers may read directly: word 0
 * is the root width w0, words 1..2^w0 the root entries, then each sub-table
 * in order of creation as its width followed by 2^w entries. An entry is a
 * link ((offset of the sub-table's width word << 8) | 0x80), a value
 * ((value << 8) | s), a run/level pair ((level << 16) | (run << 8) | s) or
 * empty (0x00F0F101), s being the bits the lookup took beyond the code. In
 * run/level tables the block decoders read run 254 as end of block and run
 * 255 as escape. */

/* Builds a single-value decoding table from pSrcTable into a new block
 * (kivsMalloc_8u) whose address is stored in *ppDstSpec; release it with
 * kiviHuffmanTableFree_32s. Statuses: NullPointer (pSrcTable, ppDstSpec);
 * BadArgument (our choice: L < 1 or a level width outside 1..20); NoMemory
 * when an allocation fails (the builder's temporary code list or the table),
 * with nothing left allocated and *ppDstSpec not written. Overlapping codes
 * are not detected: the later code takes the entries both occupy, and a code
 * that would need more sub-tables than measured is skipped. */
KIV_API KivStatus kiviHuffmanTableInitAlloc_32s(const Kiv32s *pSrcTable, Kiv32s **ppDstSpec);
/* As kiviHuffmanTableInitAlloc_32s for a source of (code, run, level)
 * triples. */
KIV_API KivStatus kiviHuffmanRunLevelTableInitAlloc_32s(const Kiv32s *pSrcTable, Kiv32s **ppDstSpec);
/* Releases a built table with kivsFree. Statuses: NullPointer. */
KIV_API KivStatus kiviHuffmanTableFree_32s(Kiv32s *pDecodeTable);
/* Decodes one code with a single-value table through the word cursor
 * (reading) and stores its value in *pDst. Statuses: NullPointer
 * (ppBitStream, pOffset, pDst, pDecodeTable, *ppBitStream); BadVlcCode for a
 * bit pattern that matches no code: *pDst receives 0xF0F1 (61681) and the
 * cursor is left after the bits of the table lookups (no give-back).
 * Look-ahead: one word past the last bit of the lookups. */
KIV_API KivStatus kiviDecodeHuffmanOne_1u32s(Kiv32u **ppBitStream, Kiv32s *pOffset, Kiv32s *pDst,
                                             const Kiv32s *pDecodeTable);
/* Decodes one run/level code into *pRun and *pLevel. Statuses: NullPointer
 * (ppBitStream, pOffset, pDecodeTable, pRun, pLevel, *ppBitStream);
 * BadVlcCode for an empty entry, with the cursor and the outputs untouched.
 * Look-ahead as kiviDecodeHuffmanOne_1u32s. */
KIV_API KivStatus kiviDecodeHuffmanPair_1u16s(Kiv32u **ppBitStream, Kiv32s *pOffset, const Kiv32s *pDecodeTable,
                                              Kiv8u *pRun, Kiv16s *pLevel);

/* Block decoders. Each reads all codes of one 8x8 block through the word
 * cursor (reading), zeroes the 64 coefficients of pDstBlock first, places the
 * coefficient of scan index i at array position pScanMatrix[i] (only its low
 * six bits are used; a decoder feeding the transposed inverse DCTs passes
 * transposed positions), inverse-quantises it with W = pQPMatrix[position]
 * and stores in *pDstSize the scan index of the last coefficient. Run 254 of
 * a coefficient table is end of block, run 255 escape (MPEG-1: 6-bit run,
 * then an 8-bit level, or 16 bits after 0x00/0x80; MPEG-2: 6-bit run and a
 * 12-bit two's-complement level). A first non-intra coefficient whose first
 * bit is 1 is run 0, level +1 ("10") or -1 ("11"); otherwise it is decoded
 * with pDCSizeTable (then the first-coefficient table), its scan index being
 * its run. Dequantisation, products wrapping in 32 bits, division truncating:
 * MPEG-1: (2 level + sign) W q / 16 (non-intra) or 2 level W q / 16 (intra
 * AC), an even result moved one step toward zero; MPEG-2: the same over 32
 * without that step; then saturation to -2048..2047. MPEG-2 decoders finish
 * with the mismatch control (an even sum of the 64 values toggles the lowest
 * bit of position 63). Intra DC: the size comes from the DC size table, the
 * differential from that many bits; MPEG-1 adds 8 times it to *pDCPred and
 * stores the sum as coefficient 0, MPEG-2 adds it and stores the sum shifted
 * left by shiftDCVal; the new predictor is that sum (16-bit wrap). A DC size
 * outside 0..31 from a caller's table counts as an invalid code (our choice).
 * BadVlcCode: invalid DC size code (cursor as kiviDecodeHuffmanOne_1u32s
 * leaves it), a first run beyond 63 or a scan index beyond 63 (an empty table
 * entry decodes as run 241 and ends there); the cursor is then left after the
 * failing code, the block keeps what was written, *pDCPred is already updated
 * and *pDstSize is not written. Look-ahead: one word past the last bit read.
 * Null tests, in order, as listed with each function. */

/* MPEG-1 non-intra block. NullPointer: ppBitStream, pOffset, pDCSizeTable
 * (first-coefficient table), pACTable, pDstBlock, pQPMatrix, *ppBitStream,
 * pDstSize, pScanMatrix. */
KIV_API KivStatus kiviReconstructDCTBlock_MPEG1_32s(Kiv32u **ppBitStream, Kiv32s *pOffset, const Kiv32s *pDCSizeTable,
                                                    const Kiv32s *pACTable, Kiv32s *pScanMatrix, Kiv32s QP,
                                                    Kiv16s *pQPMatrix, Kiv16s *pDstBlock, Kiv32s *pDstSize);
/* MPEG-1 intra block (*pDCPred in units of the reconstructed DC, eight times
 * the DC value). NullPointer: ppBitStream, pOffset, pDCSizeTable,
 * *ppBitStream, pACTable, pQPMatrix, pDCPred, pDstSize, pDstBlock,
 * pScanMatrix. */
KIV_API KivStatus kiviReconstructDCTBlockIntra_MPEG1_32s(Kiv32u **ppBitStream, Kiv32s *pOffset,
                                                         const Kiv32s *pDCSizeTable, const Kiv32s *pACTable,
                                                         Kiv32s *pScanMatrix, Kiv32s QP, Kiv16s *pQPMatrix,
                                                         Kiv16s *pDCPred, Kiv16s *pDstBlock, Kiv32s *pDstSize);
/* MPEG-2 non-intra block; pQPMatrix may be null (flat 16). A block whose
 * only coefficient is at scan index 0 reports size 1. NullPointer:
 * ppBitStream, pOffset, pDCSizeTable (first-coefficient table), pACTable,
 * pDstBlock, pDstSize, *ppBitStream, pScanMatrix. */
KIV_API KivStatus kiviReconstructDCTBlock_MPEG2_32s(Kiv32u **ppBitStream, Kiv32s *pOffset, const Kiv32s *pDCSizeTable,
                                                    const Kiv32s *pACTable, Kiv32s *pScanMatrix, Kiv32s QP,
                                                    Kiv16s *pQPMatrix, Kiv16s *pDstBlock, Kiv32s *pDstSize);
/* MPEG-2 intra block (*pDCPred holds the DC value; shiftDCVal 0..3, taken
 * modulo 32). NullPointer: ppBitStream, pOffset, pDCSizeTable, *ppBitStream,
 * pACTable, pQPMatrix, pDCPred, pDstSize, pDstBlock, pScanMatrix. */
KIV_API KivStatus kiviReconstructDCTBlockIntra_MPEG2_32s(Kiv32u **ppBitStream, Kiv32s *pOffset,
                                                         const Kiv32s *pDCSizeTable, const Kiv32s *pACTable,
                                                         Kiv32s *pScanMatrix, Kiv32s QP, Kiv16s *pQPMatrix,
                                                         Kiv16s *pDCPred, Kiv32s shiftDCVal, Kiv16s *pDstBlock,
                                                         Kiv32s *pDstSize);
/* In-place MPEG-2 intra dequantisation: every coefficient but the first
 * becomes 2 level W QP / 32 truncated, saturated to -2048..2047; then the
 * mismatch control over all 64. Products are exact (64 bits in the
 * reference; the vector paths clamp operands where the result saturates
 * anyway), so no QP or weight wraps. NullPointer: pSrcDst, pQPMatrix. */
KIV_API KivStatus kiviQuantInvIntra_MPEG2_16s_C1I(Kiv16s *pSrcDst, Kiv32s QP, Kiv16s *pQPMatrix);
/* In-place MPEG-2 non-intra dequantisation of all 64 coefficients:
 * (2 level + sign) W QP / 32, as above; pQPMatrix null means 16 everywhere.
 * NullPointer: pSrcDst. */
KIV_API KivStatus kiviQuantInv_MPEG2_16s_C1I(Kiv16s *pSrcDst, Kiv32s QP, Kiv16s *pQPMatrix);

/* Inverse DCTs. The source holds the coefficient matrix transposed (array
 * row k = horizontal frequency k). count selects the path: above 9 the full
 * transform (32-bit arithmetic, 16-bit rounding after the first pass, output
 * (sum + 163840) >> 18); 1..9 the same result reading only the top-left 4x4;
 * 0 DC only: every sample pSrc[0] / 8 truncated; below 0 zero for 16-bit
 * outputs and DC only for 8-bit ones. 16-bit outputs are limited to
 * -256..255, 8-bit ones to 0..255. Steps are in bytes. Statuses: NullPointer
 * (sources, destination), then BadStep (dstStep < 1). */
KIV_API KivStatus kiviDCT8x8Inv_AANTransposed_16s_C1R(const Kiv16s *pSrc, Kiv16s *pDst, Kiv32s dstStep, Kiv32s count);
/* As above into 8-bit samples. */
KIV_API KivStatus kiviDCT8x8Inv_AANTransposed_16s8u_C1R(const Kiv16s *pSrc, Kiv8u *pDst, Kiv32s dstStep,
                                                        Kiv32s count);
/* Two blocks into one destination of interleaved pairs: pSrcU's samples at
 * even positions, pSrcV's at odd positions of each row, each block with its
 * own count. */
KIV_API KivStatus kiviDCT8x8Inv_AANTransposed_16s_P2C2R(const Kiv16s *pSrcU, const Kiv16s *pSrcV, Kiv16s *pDstUV,
                                                        Kiv32s dstStep, Kiv32s countU, Kiv32s countV);
/* As kiviDCT8x8Inv_AANTransposed_16s_P2C2R into 8-bit samples. */
KIV_API KivStatus kiviDCT8x8Inv_AANTransposed_16s8u_P2C2R(const Kiv16s *pSrcU, const Kiv16s *pSrcV, Kiv8u *pDstUV,
                                                          Kiv32s dstStep, Kiv32s countU, Kiv32s countV);

/* Motion compensation: pDst = sat(p + residual), p the prediction from the
 * reference at mcType (bits 2 and 3 only: 0 full, 4 vertical half, 8
 * horizontal half, 12 both) with roundControl (bit 0 only: 0 rounds half-
 * sample averages up, 1 down); the residual sum saturates to 0..255 for any
 * residual value. Two-reference functions average the two predictions
 * rounding up: sat(((pF + pB + 1) >> 1) + residual). Half-sample positions
 * read one column more (HF, HH) and one row more (FH, HH) than the block; the
 * interleaved-chroma shapes (UV, 16x4) hold U,V pairs in each 16-byte row,
 * take the horizontal neighbour two bytes on and read two bytes more. Steps
 * are byte counts, not validated. Statuses: NullPointer (references in order,
 * residual, destination). There is no two-reference 8x16 shape: compose it
 * from two 8x8 calls. */
/* One-reference prediction plus residual of a 16x16 block. */
KIV_API KivStatus kiviMC16x16_8u_C1(const Kiv8u *pSrcRef, Kiv32s srcStep, const Kiv16s *pSrcYData, Kiv32s srcYDataStep, Kiv8u *pDst, Kiv32s dstStep, Kiv32s mcType, Kiv32s roundControl);
/* One-reference prediction plus residual of a 16x8 block. */
KIV_API KivStatus kiviMC16x8_8u_C1(const Kiv8u *pSrcRef, Kiv32s srcStep, const Kiv16s *pSrcYData, Kiv32s srcYDataStep, Kiv8u *pDst, Kiv32s dstStep, Kiv32s mcType, Kiv32s roundControl);
/* One-reference prediction plus residual of a 16x8 block of interleaved chroma (8 U,V pairs per row). */
KIV_API KivStatus kiviMC16x8UV_8u_C1(const Kiv8u *pSrcRef, Kiv32s srcStep, const Kiv16s *pSrcYData, Kiv32s srcYDataStep, Kiv8u *pDst, Kiv32s dstStep, Kiv32s mcType, Kiv32s roundControl);
/* One-reference prediction plus residual of a 16x4 block of interleaved chroma. */
KIV_API KivStatus kiviMC16x4_8u_C1(const Kiv8u *pSrcRef, Kiv32s srcStep, const Kiv16s *pSrcYData, Kiv32s srcYDataStep, Kiv8u *pDst, Kiv32s dstStep, Kiv32s mcType, Kiv32s roundControl);
/* One-reference prediction plus residual of a 8x16 block. */
KIV_API KivStatus kiviMC8x16_8u_C1(const Kiv8u *pSrcRef, Kiv32s srcStep, const Kiv16s *pSrcYData, Kiv32s srcYDataStep, Kiv8u *pDst, Kiv32s dstStep, Kiv32s mcType, Kiv32s roundControl);
/* One-reference prediction plus residual of a 8x8 block. */
KIV_API KivStatus kiviMC8x8_8u_C1(const Kiv8u *pSrcRef, Kiv32s srcStep, const Kiv16s *pSrcYData, Kiv32s srcYDataStep, Kiv8u *pDst, Kiv32s dstStep, Kiv32s mcType, Kiv32s roundControl);
/* One-reference prediction plus residual of a 8x4 block. */
KIV_API KivStatus kiviMC8x4_8u_C1(const Kiv8u *pSrcRef, Kiv32s srcStep, const Kiv16s *pSrcYData, Kiv32s srcYDataStep, Kiv8u *pDst, Kiv32s dstStep, Kiv32s mcType, Kiv32s roundControl);
/* One-reference prediction plus residual of a 4x8 block. */
KIV_API KivStatus kiviMC4x8_8u_C1(const Kiv8u *pSrcRef, Kiv32s srcStep, const Kiv16s *pSrcYData, Kiv32s srcYDataStep, Kiv8u *pDst, Kiv32s dstStep, Kiv32s mcType, Kiv32s roundControl);
/* One-reference prediction plus residual of a 4x4 block. */
KIV_API KivStatus kiviMC4x4_8u_C1(const Kiv8u *pSrcRef, Kiv32s srcStep, const Kiv16s *pSrcYData, Kiv32s srcYDataStep, Kiv8u *pDst, Kiv32s dstStep, Kiv32s mcType, Kiv32s roundControl);
/* One-reference prediction plus residual of a 4x2 block. */
KIV_API KivStatus kiviMC4x2_8u_C1(const Kiv8u *pSrcRef, Kiv32s srcStep, const Kiv16s *pSrcYData, Kiv32s srcYDataStep, Kiv8u *pDst, Kiv32s dstStep, Kiv32s mcType, Kiv32s roundControl);
/* One-reference prediction plus residual of a 2x4 block. */
KIV_API KivStatus kiviMC2x4_8u_C1(const Kiv8u *pSrcRef, Kiv32s srcStep, const Kiv16s *pSrcYData, Kiv32s srcYDataStep, Kiv8u *pDst, Kiv32s dstStep, Kiv32s mcType, Kiv32s roundControl);
/* One-reference prediction plus residual of a 2x2 block. */
KIV_API KivStatus kiviMC2x2_8u_C1(const Kiv8u *pSrcRef, Kiv32s srcStep, const Kiv16s *pSrcYData, Kiv32s srcYDataStep, Kiv8u *pDst, Kiv32s dstStep, Kiv32s mcType, Kiv32s roundControl);
/* Two-reference prediction plus residual of a 16x16 block. */
KIV_API KivStatus kiviMC16x16B_8u_C1(const Kiv8u *pSrcRefF, Kiv32s srcStepF, Kiv32s mcTypeF, const Kiv8u *pSrcRefB, Kiv32s srcStepB, Kiv32s mcTypeB, const Kiv16s *pSrcYData, Kiv32s srcYDataStep, Kiv8u *pDst, Kiv32s dstStep, Kiv32s roundControl);
/* Two-reference prediction plus residual of a 16x8 block. */
KIV_API KivStatus kiviMC16x8B_8u_C1(const Kiv8u *pSrcRefF, Kiv32s srcStepF, Kiv32s mcTypeF, const Kiv8u *pSrcRefB, Kiv32s srcStepB, Kiv32s mcTypeB, const Kiv16s *pSrcYData, Kiv32s srcYDataStep, Kiv8u *pDst, Kiv32s dstStep, Kiv32s roundControl);
/* Two-reference prediction plus residual of a 16x8 block of interleaved chroma (8 U,V pairs per row). */
KIV_API KivStatus kiviMC16x8BUV_8u_C1(const Kiv8u *pSrcRefF, Kiv32s srcStepF, Kiv32s mcTypeF, const Kiv8u *pSrcRefB, Kiv32s srcStepB, Kiv32s mcTypeB, const Kiv16s *pSrcYData, Kiv32s srcYDataStep, Kiv8u *pDst, Kiv32s dstStep, Kiv32s roundControl);
/* Two-reference prediction plus residual of a 16x4 block of interleaved chroma. */
KIV_API KivStatus kiviMC16x4B_8u_C1(const Kiv8u *pSrcRefF, Kiv32s srcStepF, Kiv32s mcTypeF, const Kiv8u *pSrcRefB, Kiv32s srcStepB, Kiv32s mcTypeB, const Kiv16s *pSrcYData, Kiv32s srcYDataStep, Kiv8u *pDst, Kiv32s dstStep, Kiv32s roundControl);
/* Two-reference prediction plus residual of a 8x8 block. */
KIV_API KivStatus kiviMC8x8B_8u_C1(const Kiv8u *pSrcRefF, Kiv32s srcStepF, Kiv32s mcTypeF, const Kiv8u *pSrcRefB, Kiv32s srcStepB, Kiv32s mcTypeB, const Kiv16s *pSrcYData, Kiv32s srcYDataStep, Kiv8u *pDst, Kiv32s dstStep, Kiv32s roundControl);
/* Two-reference prediction plus residual of a 8x4 block. */
KIV_API KivStatus kiviMC8x4B_8u_C1(const Kiv8u *pSrcRefF, Kiv32s srcStepF, Kiv32s mcTypeF, const Kiv8u *pSrcRefB, Kiv32s srcStepB, Kiv32s mcTypeB, const Kiv16s *pSrcYData, Kiv32s srcYDataStep, Kiv8u *pDst, Kiv32s dstStep, Kiv32s roundControl);
/* Two-reference prediction plus residual of a 4x8 block. */
KIV_API KivStatus kiviMC4x8B_8u_C1(const Kiv8u *pSrcRefF, Kiv32s srcStepF, Kiv32s mcTypeF, const Kiv8u *pSrcRefB, Kiv32s srcStepB, Kiv32s mcTypeB, const Kiv16s *pSrcYData, Kiv32s srcYDataStep, Kiv8u *pDst, Kiv32s dstStep, Kiv32s roundControl);
/* Two-reference prediction plus residual of a 4x4 block. */
KIV_API KivStatus kiviMC4x4B_8u_C1(const Kiv8u *pSrcRefF, Kiv32s srcStepF, Kiv32s mcTypeF, const Kiv8u *pSrcRefB, Kiv32s srcStepB, Kiv32s mcTypeB, const Kiv16s *pSrcYData, Kiv32s srcYDataStep, Kiv8u *pDst, Kiv32s dstStep, Kiv32s roundControl);
/* Two-reference prediction plus residual of a 4x2 block. */
KIV_API KivStatus kiviMC4x2B_8u_C1(const Kiv8u *pSrcRefF, Kiv32s srcStepF, Kiv32s mcTypeF, const Kiv8u *pSrcRefB, Kiv32s srcStepB, Kiv32s mcTypeB, const Kiv16s *pSrcYData, Kiv32s srcYDataStep, Kiv8u *pDst, Kiv32s dstStep, Kiv32s roundControl);
/* Two-reference prediction plus residual of a 2x4 block. */
KIV_API KivStatus kiviMC2x4B_8u_C1(const Kiv8u *pSrcRefF, Kiv32s srcStepF, Kiv32s mcTypeF, const Kiv8u *pSrcRefB, Kiv32s srcStepB, Kiv32s mcTypeB, const Kiv16s *pSrcYData, Kiv32s srcYDataStep, Kiv8u *pDst, Kiv32s dstStep, Kiv32s roundControl);
/* Two-reference prediction plus residual of a 2x2 block. */
KIV_API KivStatus kiviMC2x2B_8u_C1(const Kiv8u *pSrcRefF, Kiv32s srcStepF, Kiv32s mcTypeF, const Kiv8u *pSrcRefB, Kiv32s srcStepB, Kiv32s mcTypeB, const Kiv16s *pSrcYData, Kiv32s srcYDataStep, Kiv8u *pDst, Kiv32s dstStep, Kiv32s roundControl);

/* Forward intra quantisation in place, single precision throughout: r = 1 /
 * QP; every coefficient but the first becomes trunc((c * 16 * r) * M[i]),
 * each product rounded to single precision, limited to -2047..2047 (a NaN
 * product gives 0, our choice). pQPMatrix holds reciprocal weights 1/W in
 * raster order; null selects the default intra matrix. *pCount receives the
 * number of nonzero results (the first coefficient is neither changed nor
 * counted). Statuses: NullPointer (pSrcDst, pCount); DivByZero (QP = 0,
 * nothing written). */
KIV_API KivStatus kiviQuantIntra_MPEG2_16s_C1I(Kiv16s *pSrcDst, Kiv32s QP, const float *pQPMatrix, Kiv32s *pCount);
/* Forward non-intra quantisation of all 64 coefficients: as the intra one,
 * or trunc(c * r) when pQPMatrix is null (flat weights of 16); *pCount counts
 * every nonzero result. Statuses as kiviQuantIntra_MPEG2_16s_C1I. */
KIV_API KivStatus kiviQuant_MPEG2_16s_C1I(Kiv16s *pSrcDst, Kiv32s QP, const float *pQPMatrix, Kiv32s *pCount);
/* Builds a run/level encode table (kivsMalloc_8u; release with kivsFree)
 * from a source table of (code, run, level) triples in the decoding-table
 * format, run 255 marking the escape and run 254 the end-of-block code.
 * Layout: word 0 = (escape code << 4 | length) in bits 0..9, the same for end
 * of block in bits 10..19 (both masked to 10 bits), the largest run R in bits
 * 20..31; words 1..R+1 the byte offsets of each run's centre word; then per
 * run r the codes of levels -m..-1, the centre word holding m, the codes of
 * levels 1..m, each code stored as (code << 16) | length at centre + level.
 * The table has (source entries + 2R + 3) words, entries counting escape and
 * end of block (the sections leave the last two words zero). Runs must be
 * 0..253 and every level of a run must come with both signs, as in the
 * MPEG-2 tables; entries with other runs or level 0 are skipped, and a
 * centre word never claims more levels than its section holds. Statuses:
 * NullPointer (pSrcTable, ppDstSpec); NoMemory (nothing allocated,
 * *ppDstSpec not written). */
KIV_API KivStatus kiviCreateRLEncodeTable(const Kiv32s *pSrcTable, Kiv32s **ppDstSpec);
/* Writes an intra block through the word cursor (writing form; the words
 * from the cursor on must be zero): the DC differential pSrcBlock[0] -
 * *pDCPred (*pDCPred becomes pSrcBlock[0]) as the code of its size s from
 * pDCSizeTable ((code, length) word pairs indexed by size, an entry for every
 * size that occurs: 12 for differentials within 11 bits) followed by s bits
 * (d, or d + 2^s - 1 when negative); then (zero run, level) pairs along scan
 * indices 1.. until count nonzero coefficients are written: the code of
 * pACTable (a kiviCreateRLEncodeTable table) when the run is at most R and
 * the level within its run's range, else the escape 000001, 6-bit run,
 * 12-bit level; then the end-of-block code EOBCode of EOBLen bits. count must
 * equal the nonzero AC coefficients (the walk never leaves the block);
 * lengths outside 1..32 write nothing. Statuses: NullPointer (ppBitStream,
 * pOffset, pSrcBlock, *ppBitStream, pDCPred, pDCSizeTable, pACTable,
 * pScanMatrix). */
KIV_API KivStatus kiviPutIntraBlock(Kiv32u **ppBitStream, Kiv32s *pOffset, const Kiv16s *pSrcBlock, Kiv32s *pDCPred,
                                    const Kiv32s *pDCSizeTable, const Kiv32s *pACTable, const Kiv32s *pScanMatrix,
                                    Kiv32s EOBLen, Kiv32s EOBCode, Kiv32s count);
/* Writes a non-intra block: pSrcBlock[0] as "1s" when it is +1 or -1, else
 * (when nonzero) as the pair (0, value); then pairs along scan indices 1..
 * (a zero first coefficient starts the zero run at 1) until count nonzero
 * coefficients in all are written, then the end-of-block code. Other rules
 * as kiviPutIntraBlock. Statuses: NullPointer (ppBitStream, pOffset,
 * pSrcBlock, pACTable, pScanMatrix, *ppBitStream). */
KIV_API KivStatus kiviPutNonIntraBlock(Kiv32u **ppBitStream, Kiv32s *pOffset, const Kiv16s *pSrcBlock,
                                       const Kiv32s *pACTable, const Kiv32s *pScanMatrix, Kiv32s EOBLen,
                                       Kiv32s EOBCode, Kiv32s count);
/* ---- end section: mpeg2 ---- */

/* ---- section: h264 residual ---- */
/* ---- CAVLC coefficient decoding ----
 * Word cursor, reading (offset = index 31..0 of the next unread bit). Code
 * tables are built by kiviHuffmanTableInitAlloc_32s; every table value is
 * (value << 8) | bits to give back. coeff_token values are TrailingOnes +
 * (TotalCoeff << 8); total_zeros tables are indexed by TotalCoeff (entry 0
 * unused), run_before tables by zerosLeft (1..14; entries above 6 all point to
 * the zerosLeft > 6 table).
 *
 * Packed coefficients: a block with TotalCoeff > 0 zeroes the next N elements
 * of *ppPosCoefbuf (16 for 4x4, 4 for 4:2:0 chroma DC, 8 for 4:2:2 chroma
 * DC), stores its levels at their raster positions and advances the pointer
 * by N; a block with TotalCoeff = 0 writes only *pNumCoeff.
 *
 * Look-ahead: every decoder reads at most the 32-bit word after the one that
 * holds the last bit it consumed (the 4:2:0 16-bit decoder and the table
 * lookups may peek past a short code, but never further than that word).
 *
 * Corrupt streams (our bounds; each returns kivStsBadVlcCode): a coeff_token
 * value with TotalCoeff above the block's coefficient count, TrailingOnes
 * above 3 or above TotalCoeff; a level_prefix above 26 (26 is the longest
 * escape, with 23 suffix bits); total_zeros + TotalCoeff above the block's
 * coefficient count; run_before above zerosLeft, except in
 * kiviDecodeCAVLCCoeffs_H264_1u16s, which keeps zerosLeft unchanged then.
 * Positions therefore stay inside the block and the scan table, and one block
 * never consumes more than 1000 bits.
 *
 * Cursor after an error: kiviDecodeCAVLCCoeffs_H264_1u16s leaves it exactly
 * as at the call for every error. The other decoders restore it for an
 * invalid coeff_token (also one with an impossible value); for an invalid
 * total_zeros or run_before code they leave it after the bits of the lookups
 * (before the give-back); for a too-long level_prefix at the start of that
 * level_prefix; for total_zeros or run_before out of range after that code.
 * In every case *pNumCoeff may already be written and the block zeroed or
 * partly filled; the coefficient pointer is not advanced. A null table met
 * during decoding gives kivStsNullPointer with the cursor past the bits read
 * so far (the 16-bit 4x4 decoder: unchanged). Levels: escape levelCodes are
 * reduced to 16 bits before the level is formed, except in
 * kiviDecodeCAVLCCoeffs_H264_1u16s, which forms the level from the whole
 * levelCode and stores its low 16 bits; magnitudes are compared to the
 * suffixLength thresholds as their low 16 bits. */

/* Decodes one 4x4 block (maxCoeff 16, or 15 for Intra16x16 AC and chroma AC,
 * whose coefficients start at scan position 1) into 16-bit levels. nC selects
 * the coeff_token table: ppTblCoeffToken[0] for 0..1, [1] for 2..3, [2] for
 * 4..7; 8 and above read the 6-bit fixed-length code. pScanMatrix gives the
 * raster index of each of the 16 scan positions. Statuses: NullPointer
 * (ppBitStream, pOffset, ppPosCoefbuf, pNumCoeff, ppTblCoeffToken,
 * ppTblTotalZeros, ppTblRunBefore, pScanMatrix, *ppBitStream, *ppPosCoefbuf),
 * OutOfRange (maxCoeff not 16 or 15, then nC < 0), BadVlcCode. */
KIV_API KivStatus kiviDecodeCAVLCCoeffs_H264_1u16s(Kiv32u **ppBitStream, Kiv32s *pOffset, Kiv16s *pNumCoeff, Kiv16s **ppPosCoefbuf, Kiv32s nC, Kiv16s maxCoeff, const Kiv32s **ppTblCoeffToken, const Kiv32s **ppTblTotalZeros, const Kiv32s **ppTblRunBefore, const Kiv32s *pScanMatrix);
/* As kiviDecodeCAVLCCoeffs_H264_1u16s with 32-bit levels; the cursor after
 * errors as described above; a null table entry met while decoding gives
 * NullPointer. */
KIV_API KivStatus kiviDecodeCAVLCCoeffs_H264_1u32s(Kiv32u **ppBitStream, Kiv32s *pOffset, Kiv16s *pNumCoeff, Kiv32s **ppPosCoefbuf, Kiv32s nC, Kiv16s maxCoeff, const Kiv32s **ppTblCoeffToken, const Kiv32s **ppTblTotalZeros, const Kiv32s **ppTblRunBefore, const Kiv32s *pScanMatrix);
/* Decodes one 4:2:0 chroma DC block (2x2, raster = scan order). A leading 1
 * bit (TotalCoeff 1, TrailingOnes 1) and a leading 01 (TotalCoeff 0) are
 * decoded without the tables. Statuses: NullPointer (ppBitStream, pOffset,
 * pNumCoeff, *ppBitStream; then with a leading 1 ppPosCoefbuf and
 * *ppPosCoefbuf; with 01 nothing more; otherwise ppPosCoefbuf,
 * pTblCoeffToken, ppTblTotalZeros, ppTblRunBefore, *ppPosCoefbuf),
 * BadVlcCode. */
KIV_API KivStatus kiviDecodeCAVLCChromaDcCoeffs_H264_1u16s(Kiv32u **ppBitStream, Kiv32s *pOffset, Kiv16s *pNumCoeff, Kiv16s **ppPosCoefbuf, const Kiv32s *pTblCoeffToken, const Kiv32s **ppTblTotalZeros, const Kiv32s **ppTblRunBefore);
/* As kiviDecodeCAVLCChromaDcCoeffs_H264_1u16s with 32-bit levels and always
 * through the tables. Statuses: NullPointer (all seven pointers,
 * *ppPosCoefbuf, then *ppBitStream), BadVlcCode. */
KIV_API KivStatus kiviDecodeCAVLCChromaDcCoeffs_H264_1u32s(Kiv32u **ppBitStream, Kiv32s *pOffset, Kiv16s *pNumCoeff, Kiv32s **ppPosCoefbuf, const Kiv32s *pTblCoeffToken, const Kiv32s **ppTblTotalZeros, const Kiv32s **ppTblRunBefore);
/* Decodes one 4:2:2 chroma DC block (2 wide, 4 high); scan position k goes
 * to raster index {0, 2, 1, 4, 6, 3, 5, 7}[k]. Statuses: NullPointer (all
 * seven pointers, then *ppBitStream, *ppPosCoefbuf), BadVlcCode. */
KIV_API KivStatus kiviDecodeCAVLCChroma422DcCoeffs_H264_1u16s(Kiv32u **ppBitStream, Kiv32s *pOffset, Kiv16s *pNumCoeff, Kiv16s **ppPosCoefbuf, const Kiv32s *pTblCoeffToken, const Kiv32s **ppTblTotalZeros, const Kiv32s **ppTblRunBefore);
/* As kiviDecodeCAVLCChroma422DcCoeffs_H264_1u16s with 32-bit levels. */
KIV_API KivStatus kiviDecodeCAVLCChroma422DcCoeffs_H264_1u32s(Kiv32u **ppBitStream, Kiv32s *pOffset, Kiv16s *pNumCoeff, Kiv32s **ppPosCoefbuf, const Kiv32s *pTblCoeffToken, const Kiv32s **ppTblTotalZeros, const Kiv32s **ppTblRunBefore);
/* Decodes one Exp-Golomb code: ue(v) when isSigned is 0, else se(v)
 * (codeNum odd: (codeNum + 1) / 2, even: -codeNum / 2), stored as 16 bits.
 * Reads up to 63 bits (a 31-zero prefix) across up to three words, and no
 * word beyond the one holding its last bit plus one. Statuses: NullPointer
 * (ppBitStream, pOffset, pDst, *ppBitStream), BadArgument (*pOffset outside
 * 0..31), BadVlcCode (32 zero bits from the cursor: no code; nothing is
 * written and the cursor stays). */
KIV_API KivStatus kiviDecodeExpGolombOne_H264_1u16s(Kiv32u **ppBitStream, Kiv32s *pOffset, Kiv16s *pDst, Kiv8u isSigned);

/* ---- Dequantisation and inverse transforms ----
 * Blocks are raster order; steps are bytes. Position classes of a 4x4 block:
 * 0 where row and column are both even, 1 where both are odd, 2 otherwise.
 * Overflow: conforming streams never reach it; outside that range the 16-bit
 * members wrap every stored value to 16 bits (the flat add function saturates
 * its butterflies instead) and the 32-bit members wrap at 32 bits, so every
 * input has one defined result on every processor. */

/* Flat 4x4 dequantisation and inverse transform in place (8-bit pictures).
 * DC = *pDC when given, else c0 * InvQuant(QP, class 0) to 16 bits; with AC
 * set, every other coefficient is multiplied by InvQuant(QP, class) (to 16
 * bits), the inverse core transform runs with 16-bit passes and each value
 * becomes (x + 32) >> 6; without AC all 16 become (DC + 32) >> 6. step is the
 * byte distance between the block's rows. Statuses: NullPointer (pSrcDst),
 * OutOfRange (QP outside 0..51), BadStep (step < 8). */
KIV_API KivStatus kiviDequantTransformResidual_H264_16s_C1I(Kiv16s *pSrcDst, Kiv32s step, const Kiv16s *pDC, Kiv32u AC, Kiv32s QP);
/* As kiviDequantTransformResidual_H264_16s_C1I on 16 contiguous coefficients,
 * then pDst = clamp(pPred + residual) to 0..255. Products are the low 16 bits
 * of 16 x 16-bit multiplications, every butterfly addition and the rounding
 * term saturate to 16 bits. With AC set the residual is written back into
 * pSrcDst; without it pSrcDst is not written (and is not read when pDC is
 * given, so it may be null then) and every residual is (DC + 32) >> 6 with
 * the addition saturated. Statuses: NullPointer (pPred, pDst), OutOfRange (QP
 * outside 0..51), NullPointer (pSrcDst null while pDC is null or AC is set). */
KIV_API KivStatus kiviDequantTransformResidualAndAdd_H264_16s_C1I(const Kiv8u *pPred, Kiv16s *pSrcDst, const Kiv16s *pDC, Kiv8u *pDst, Kiv32s PredStep, Kiv32s DstStep, Kiv32s QP, Kiv32u AC);
/* Intra16x16 luma DC block (16 values): f = H x c x H (4x4 Hadamard), f to
 * 16 bits, times s = the flat luma DC scale of QP; the result is
 * (f*s + 2) >> 2 for QP < 6, (f*s + 1) >> 1 for QP 6..11, f*s from QP 12 on,
 * stored to 16 bits. Statuses: NullPointer, OutOfRange (QP outside 0..51). */
KIV_API KivStatus kiviTransformDequantLumaDC_H264_16s_C1I(Kiv16s *pSrcDst, Kiv32s QP);
/* 4:2:0 chroma DC (2x2): the 2x2 Hadamard, each value to 16 bits, times
 * InvQuant(QP, class 0), >> 1, stored to 16 bits. QP is the chroma QP.
 * Statuses: NullPointer, OutOfRange (QP outside 0..51). */
KIV_API KivStatus kiviTransformDequantChromaDC_H264_16s_C1I(Kiv16s *pSrcDst, Kiv32s QP);
/* The forward core transform (rows, then columns; no scaling) of a 4x4
 * prediction block into 16 raster-order values. Statuses: NullPointer (pSrc,
 * pDst), BadStep (step < 1). */
KIV_API KivStatus kiviTransformPrediction_H264_8u16s_C1(const Kiv8u *pSrc, Kiv32s step, Kiv16s *pDst);
/* SP/SI reconstruction of one 4x4 block: the levels in pSrcDst are
 * dequantised with QS when Switch is set (else QP), added to the transformed
 * prediction pPredictBlock in the transform domain, requantised and
 * dequantised with QS, inverse transformed (16-bit passes) and the samples,
 * (x + 32) >> 6 clamped to 0..255, replace the levels. pDC, when given, is
 * the block's final DC and is not requantised; without AC the AC positions
 * take the prediction alone. Statuses: NullPointer (pSrcDst, pPredictBlock).
 * QP and QS are not range-tested; they must lie in 0..51 (values outside are
 * taken as the nearest bound, so that no table is read outside). */
KIV_API KivStatus kiviDequantTransformResidual_SISP_H264_16s_C1I(Kiv16s *pSrcDst, const Kiv16s *pPredictBlock, const Kiv16s *pDC, Kiv32u AC, Kiv32u qp, Kiv32s qs, Kiv32u Switch);
/* SP/SI 4:2:0 chroma DC: the four DC levels in pSrcDst become the dequantised
 * DC values to pass as pDC to kiviDequantTransformResidual_SISP_H264_16s_C1I;
 * pDCPredict holds the DC values of the four transformed chroma prediction
 * blocks. Statuses: NullPointer (pSrcDst, pDCPredict). QP and QS as above. */
KIV_API KivStatus kiviTransformDequantChromaDC_SISP_H264_16s_C1I(Kiv16s *pSrcDst, const Kiv16s *pDCPredict, Kiv32s qp, Kiv32s qs, Kiv32u Switch);

/* Scaling-list members. A level-scale pointer holds the values for the
 * current QP % 6 (weight x normAdjust) in raster order; null selects the flat
 * default 16 x normAdjust4x4(QP % 6) where allowed. The _32s members serve
 * 9- to 14-bit pictures with QP raised by 6 x (bit depth - 8). */

/* Scaling-list 4x4 dequantisation, inverse transform and add, 8-bit samples.
 * With AC set: c = (c*ls + 2^(3-q)) >> (4-q) for QP < 24, (c*ls) << (q-4)
 * from QP 24 on (q = QP / 6, each to 16 bits), *pDC replacing c0 when given;
 * the 16-bit inverse transform and (x + 32) >> 6 give the residual, which is
 * written back into pSrcDst; pDst = clamp(pPred + residual) to 0..255.
 * Without AC the residual of all samples is (DC + 32) >> 6 and pSrcDst is not
 * written. Statuses: NullPointer (pPred, pDst, pSrcDst), OutOfRange (QP
 * outside 0..51). */
KIV_API KivStatus kiviTransformQuantInvAddPred4x4_H264_16s_C1IR(const Kiv8u *pPred, Kiv32s predStep, Kiv16s *pSrcDst, const Kiv16s *pDC, Kiv8u *pDst, Kiv32s dstStep, Kiv32s QP, Kiv32u AC, const Kiv16s *pScaleLevels);
/* As kiviTransformQuantInvAddPred4x4_H264_16s_C1IR with 32-bit coefficients
 * and arithmetic, samples clamped to 0..(1 << bitDepth) - 1. Statuses:
 * NullPointer (pPred, pSrcDst, pDst), OutOfRange (QP outside 0..87 or
 * bitDepth outside 9..14). */
KIV_API KivStatus kiviTransformQuantInvAddPred4x4_H264_32s_C1IR(const Kiv16u *pPred, Kiv32s predStep, Kiv32s *pSrcDst, const Kiv32s *pDC, Kiv16u *pDst, Kiv32s dstStep, Kiv32s QP, Kiv32u AC, Kiv32s bitDepth, const Kiv16s *pScaleLevels);
/* Scaling-list luma DC (16 values): f = H x c x H at 32 bits; QP < 36:
 * (f*ls0 + 2^(5-q)) >> (6-q), else (f*ls0) << (q-6); ls0 = pScaleLevels[0] or
 * the flat default. Statuses: NullPointer, OutOfRange (QP outside 0..51). */
KIV_API KivStatus kiviTransformQuantInvLumaDC4x4_H264_16s_C1I(Kiv16s *pSrcDst, Kiv32s QP, const Kiv16s *pScaleLevels);
/* As above with 32-bit values; QP 0..87. */
KIV_API KivStatus kiviTransformQuantInvLumaDC4x4_H264_32s_C1I(Kiv32s *pSrcDst, Kiv32s QP, const Kiv16s *pScaleLevels);
/* Scaling-list 4:2:0 chroma DC (4 values): the 2x2 Hadamard f, then
 * (f*ls0) >> (5-q) for q < 5, else (f*ls0) << (q-5). Statuses: NullPointer,
 * OutOfRange (QP outside 0..39). */
KIV_API KivStatus kiviTransformQuantInvChromaDC2x2_H264_16s_C1I(Kiv16s *pSrcDst, Kiv32s QP, const Kiv16s *pScaleLevels);
/* As above with 32-bit values; QP 0..75. */
KIV_API KivStatus kiviTransformQuantInvChromaDC2x2_H264_32s_C1I(Kiv32s *pSrcDst, Kiv32s QP, const Kiv16s *pScaleLevels);
/* Scaling-list 4:2:2 chroma DC (2 wide, 4 high, raster): f = A4 x c x A2;
 * with q' = (QP + 3) / 6 (and the default row of (QP + 3) % 6): q' >= 6:
 * (f*ls0) << (q'-6), else (f*ls0 + 2^(5-q')) >> (6-q'). Statuses: NullPointer,
 * OutOfRange (QP outside 0..39). */
KIV_API KivStatus kiviTransformQuantInvChromaDC2x4_H264_16s_C1I(Kiv16s *pSrcDst, Kiv32s QP, const Kiv16s *pScaleLevels);
/* As above with 32-bit values; QP 0..75. */
KIV_API KivStatus kiviTransformQuantInvChromaDC2x4_H264_32s_C1I(Kiv32s *pSrcDst, Kiv32s QP, const Kiv16s *pScaleLevels);
/* 8x8 scaling of all 64 coefficients with q = Qp6 = QP / 6: q < 6:
 * (c*ls + 2^(5-q)) >> (6-q), else (c*ls) << (q-6), each to 16 bits.
 * Statuses: NullPointer (pSrcDst, pScaleLevels), BadQp (Qp6 outside 0..8). */
KIV_API KivStatus kiviQuantLuma8x8Inv_H264_16s_C1I(Kiv16s *pSrcDst, Kiv32s Qp6, const Kiv16s *pScaleLevels);
/* As above at 32 bits; BadQp for Qp6 outside 0..14. */
KIV_API KivStatus kiviQuantInvLuma8x8_H264_32s_C1I(Kiv32s *pSrcDst, Kiv32s Qp6, const Kiv16s *pScaleLevels);
/* Inverse 8x8 transform (rows, then columns, every intermediate held in 16
 * bits) of scaled coefficients; pSrcDst receives the unrounded results r and
 * pDst = clamp((r + 64 * pPred + 32) >> 6) to 0..255. Statuses: NullPointer
 * (pPred, pSrcDst, pDst). */
KIV_API KivStatus kiviTransformLuma8x8InvAddPred_H264_16s8u_C1R(const Kiv8u *pPred, Kiv32s predStep, Kiv16s *pSrcDst, Kiv8u *pDst, Kiv32s dstStep);
/* As above at 32 bits, clamped to 0..(1 << bitDepth) - 1. Statuses:
 * NullPointer (pPred, pSrcDst, pDst). bitDepth is not range-tested; values
 * outside 1..16 are taken as the nearest of those. */
KIV_API KivStatus kiviTransformInvAddPredLuma8x8_H264_32s16u_C1R(const Kiv16u *pPred, Kiv32s predStep, Kiv32s *pSrcDst, Kiv16u *pDst, Kiv32s dstStep, Kiv32s bitDepth);
/* ---- end section: h264 residual ---- */

/* ---- section: h264 intra ---- */
/* ---- Intra prediction ----
 * The block at pSrcDst (its top-left sample) is predicted in place from its
 * neighbours in the same plane: the row above (p[x, -1]), the column to the
 * left (p[-1, y]), the sample above-left and, for 4x4, the four samples
 * above-right. availability tells which may be read: 1 row above, 2 left
 * column, 32 above-left, 64 above-right (4x4 only); other bits are ignored.
 * Only the neighbours whose bit is set are read (nothing outside the block
 * and those samples); the block is the only thing written. Steps in bytes. */

/* 4x4 luma prediction, modes 0 vertical, 1 horizontal, 2 DC, 3 diagonal
 * down-left, 4 diagonal down-right, 5 vertical-right, 6 horizontal-down,
 * 7 vertical-left, 8 horizontal-up. A missing group the mode uses is taken as
 * 128 throughout and the call returns kivStsWarnNeighbourMissing with the
 * block written; missing above-right samples repeat p[3, -1] without a
 * warning; DC averages what is there (128 with neither) and never warns.
 * Statuses: kivStsNullPointer, kivStsBadStep (step < 4), kivStsOutOfRange
 * (mode > 8), else kivStsOk or kivStsWarnNeighbourMissing. */
KIV_API KivStatus kiviPredictIntra_4x4_H264_8u_C1IR(Kiv8u* pSrcDst, Kiv32s srcDstStep, Kiv32u mode,
                                                    Kiv32u availability);

/* 16x16 luma prediction, modes 0 vertical (needs the row above), 1 horizontal
 * (left column), 2 DC (averages what is there, 128 with neither; never
 * fails), 3 plane (row above, left column and above-left). Statuses:
 * kivStsNullPointer, kivStsBadStep (step < 16), kivStsBadIntraPredMode (a
 * neighbour the mode needs is missing; block untouched), kivStsOutOfRange
 * (mode > 3), else kivStsOk. */
KIV_API KivStatus kiviPredictIntra_16x16_H264_8u_C1IR(Kiv8u* pSrcDst, Kiv32s srcDstStep, Kiv32u mode,
                                                      Kiv32u availability);

/* 8x8 chroma prediction of a 4:2:0 macroblock, modes 0 DC (per 4x4 quarter,
 * never fails), 1 horizontal (needs the left column), 2 vertical (row above),
 * 3 plane (row above, left column and above-left). Statuses: as the 16x16
 * function, with kivStsBadStep for step < 8. */
KIV_API KivStatus kiviPredictIntraChroma8x8_H264_8u_C1IR(Kiv8u* pSrcDst, Kiv32s srcDstStep, Kiv32u mode,
                                                         Kiv32u availability);

/* ---- Macroblock reconstruction (flat scaling, 8-bit samples) ----
 * ppSrcCoeff points to the caller's packed coefficient read pointer: each
 * block whose coded-block bit is set takes the next 16 coefficients (4 for a
 * chroma DC block) and the pointer is advanced past them once, at the end of
 * a successful call; blocks whose bit is clear consume nothing. Coefficient
 * blocks taken are overwritten. cbp bits: 0 luma DC (Intra16x16), 1..16 luma
 * 4x4 blocks in decoding order (the Half member: bits 0..7), 17/18 U/V DC,
 * 19..22 U AC, 23..26 V AC. edgeType: set bit = that neighbouring macroblock
 * is not available (1 left, 4 above, 16 above-left, 32 above-right). Intra
 * prediction is as the intra predictors above, block by block in decoding
 * order; residuals are added with clamping to 0..255 by the flat
 * dequantise-transform-add rule. Nothing is read outside the macroblock but
 * its intra neighbours (only those the edge mask allows). Our choices: the
 * row steps are taken as signed (Kiv32u values above 2^31 are negative steps);
 * QP arguments are signed. */

/* Intra 4x4 luma macroblock: 16 blocks, modes pMBIntraTypes[k] in decoding
 * order. Statuses: kivStsNullPointer (ppSrcCoeff, plane, *ppSrcCoeff,
 * pMBIntraTypes), kivStsOutOfRange (QP outside 0..51; a mode above 8 met
 * during the walk: earlier blocks stay done, the coefficient pointer is not
 * written back), else kivStsOk or kivStsWarnNeighbourMissing when any block
 * used the 128 substitute. */
KIV_API KivStatus kiviReconstructLumaIntraMB_H264_16s8u_C1R(Kiv16s** ppSrcCoeff, Kiv8u* pSrcDstYPlane,
                                                            Kiv32u srcDstYStep, const Kiv32u* pMBIntraTypes,
                                                            Kiv32u cbp4x4, Kiv32s QP, Kiv8u edgeType);
/* The upper half (blocks k = 0..7, cbp bits 0..7, 8 modes) of the walk above;
 * the caller positions the plane and passes that half's edge mask. */
KIV_API KivStatus kiviReconstructLumaIntraHalfMB_H264_16s8u_C1R(Kiv16s** ppSrcCoeff, Kiv8u* pSrcDstYPlane,
                                                                Kiv32u srcDstYStep, const Kiv32u* pMBIntraTypes,
                                                                Kiv32u cbp4x2, Kiv32s QP, Kiv8u edgeType);
/* Inter luma macroblock: the residual of the coded 4x4 blocks added to the
 * prediction already in the plane. Statuses: kivStsNullPointer (ppSrcCoeff,
 * plane, *ppSrcCoeff), kivStsOutOfRange (QP outside 0..51), kivStsOk. */
KIV_API KivStatus kiviReconstructLumaInterMB_H264_16s8u_C1R(Kiv16s** ppSrcCoeff, Kiv8u* pSrcDstYPlane,
                                                            Kiv32u srcDstYStep, Kiv32u cbp4x4, Kiv32s QP);
/* Intra 16x16 luma macroblock: 16x16 prediction (mode 0..3), the luma DC
 * block (bit 0), then every 4x4 block with its DC and, when coded, its AC.
 * Statuses: kivStsNullPointer (ppSrcCoeff, plane, *ppSrcCoeff),
 * kivStsOutOfRange (QP outside 0..51, mode outside 0..3),
 * kivStsBadIntraPredMode (a neighbour the mode needs is missing; nothing
 * written), kivStsOk. */
KIV_API KivStatus kiviReconstructLumaIntra16x16MB_H264_16s8u_C1R(Kiv16s** ppSrcCoeff, Kiv8u* pSrcDstYPlane,
                                                                 Kiv32u srcDstYStep, Kiv32s intraLumaMode,
                                                                 Kiv32u cbp4x4, Kiv32s QP, Kiv8u edgeType);
/* 4:2:0 chroma, both planes with one chroma QP (0..39): the two DC blocks
 * (bits 17, 18) are taken before any AC block. Statuses: kivStsNullPointer
 * (ppSrcCoeff, U, V, *ppSrcCoeff), kivStsOutOfRange (QP), kivStsOk. */
KIV_API KivStatus kiviReconstructChromaInterMB_H264_16s8u_P2R(Kiv16s** ppSrcCoeff, Kiv8u* pSrcDstUPlane,
                                                              Kiv8u* pSrcDstVPlane, Kiv32u srcDstUVStep,
                                                              Kiv32u cbp4x4, Kiv32s chromaQP);
/* As the inter member after predicting both planes with the chroma mode (DC
 * 0, horizontal 1, vertical 2, plane 3). Adds, before writing anything:
 * kivStsOutOfRange (mode outside 0..3), kivStsBadIntraPredMode (a needed
 * neighbour missing). */
KIV_API KivStatus kiviReconstructChromaIntraMB_H264_16s8u_P2R(Kiv16s** ppSrcCoeff, Kiv8u* pSrcDstUPlane,
                                                              Kiv8u* pSrcDstVPlane, Kiv32u srcDstUVStep,
                                                              Kiv32s intraChromaMode, Kiv32u cbp4x4,
                                                              Kiv32s chromaQP, Kiv8u edgeType);
/* DC prediction only (any other mode: kivStsBadIntraPredMode), the upper
 * 8x4 of each plane with edgeTypeTop and the lower with edgeTypeBottom, then
 * the chroma residual; chroma QP 0..51. The Halves name is the same
 * operation. */
KIV_API KivStatus kiviReconstructChromaIntraHalfsMB_H264_16s8u_P2R(Kiv16s** ppSrcCoeff, Kiv8u* pSrcDstUPlane,
                                                                   Kiv8u* pSrcDstVPlane, Kiv32u srcDstUVStep,
                                                                   Kiv32s intraChromaMode, Kiv32u cbp4x4,
                                                                   Kiv32s chromaQP, Kiv8u edgeTypeTop,
                                                                   Kiv8u edgeTypeBottom);
KIV_API KivStatus kiviReconstructChromaIntraHalvesMB_H264_16s8u_P2R(Kiv16s** ppSrcCoeff, Kiv8u* pSrcDstUPlane,
                                                                    Kiv8u* pSrcDstVPlane, Kiv32u srcDstUVStep,
                                                                    Kiv32s intraChromaMode, Kiv32u cbp4x4,
                                                                    Kiv32s chromaQP, Kiv8u edgeTypeTop,
                                                                    Kiv8u edgeTypeBottom);

/* ---- Macroblock reconstruction (scaling lists, 8-bit samples) ----
 * As the flat members, with scaling-list arithmetic: pQuantTable (per plane
 * for chroma) holds the 16 level-scale values for QP % 6 (the plane's QP for
 * chroma); the luma DC block takes the scaling-list luma DC rule with its
 * element 0, the chroma DC blocks ((f x ls0) << (QP / 6)) >> 5. bypassFlag
 * with QP 0 (per plane for chroma) adds the coefficients as they stand,
 * clamped; our choice for the DC blocks under bypass: they are left as they
 * are and element i becomes element 0 of block i. Statuses as the flat
 * members, kivStsNullPointer also for the level-scale pointers (the 4x4
 * member checks ppSrcDstCoeff, plane, pMBIntraTypes, *ppSrcDstCoeff,
 * pQuantTable in that order); chroma QPs 0..39. */
KIV_API KivStatus kiviReconstructLumaIntra4x4MB_H264_16s8u_C1R(Kiv16s** ppSrcDstCoeff, Kiv8u* pSrcDstYPlane,
                                                               Kiv32u srcDstYStep, const Kiv32u* pMBIntraTypes,
                                                               Kiv32u cbp4x4, Kiv32u QP, Kiv8u edgeType,
                                                               const Kiv16s* pQuantTable, Kiv8u bypassFlag);
KIV_API KivStatus kiviReconstructLumaIntraHalf4x4MB_H264_16s8u_C1R(Kiv16s** ppSrcDstCoeff, Kiv8u* pSrcDstYPlane,
                                                                   Kiv32u srcDstYStep, const Kiv32u* pMBIntraTypes,
                                                                   Kiv32u cbp4x2, Kiv32s QP, Kiv8u edgeType,
                                                                   const Kiv16s* pQuantTable, Kiv8u bypassFlag);
KIV_API KivStatus kiviReconstructLumaInter4x4MB_H264_16s8u_C1R(Kiv16s** ppSrcDstCoeff, Kiv8u* pSrcDstYPlane,
                                                               Kiv32u srcDstYStep, Kiv32u cbp4x4, Kiv32s QP,
                                                               const Kiv16s* pQuantTable, Kiv8u bypassFlag);
KIV_API KivStatus kiviReconstructLumaIntra_16x16MB_H264_16s8u_C1R(Kiv16s** ppSrcDstCoeff, Kiv8u* pSrcDstYPlane,
                                                                  Kiv32u srcDstYStep, Kiv32s intraLumaMode,
                                                                  Kiv32u cbp4x4, Kiv32s QP, Kiv8u edgeType,
                                                                  const Kiv16s* pQuantTable, Kiv8u bypassFlag);
KIV_API KivStatus kiviReconstructChromaInter4x4MB_H264_16s8u_P2R(Kiv16s** ppSrcDstCoeff, Kiv8u* pSrcDstUPlane,
                                                                 Kiv8u* pSrcDstVPlane, Kiv32u srcDstUVStep,
                                                                 Kiv32u cbp4x4, Kiv32s chromaQPU, Kiv32s chromaQPV,
                                                                 const Kiv16s* pQuantTableU,
                                                                 const Kiv16s* pQuantTableV, Kiv8u bypassFlag);
KIV_API KivStatus kiviReconstructChromaIntra4x4MB_H264_16s8u_P2R(Kiv16s** ppSrcDstCoeff, Kiv8u* pSrcDstUPlane,
                                                                 Kiv8u* pSrcDstVPlane, Kiv32u srcDstUVStep,
                                                                 Kiv32s intraChromaMode, Kiv32u cbp4x4,
                                                                 Kiv32s chromaQPU, Kiv32s chromaQPV, Kiv8u edgeType,
                                                                 const Kiv16s* pQuantTableU,
                                                                 const Kiv16s* pQuantTableV, Kiv8u bypassFlag);
KIV_API KivStatus kiviReconstructChromaIntraHalfs4x4MB_H264_16s8u_P2R(
    Kiv16s** ppSrcDstCoeff, Kiv8u* pSrcDstUPlane, Kiv8u* pSrcDstVPlane, Kiv32u srcDstUVStep, Kiv32s intraChromaMode,
    Kiv32u cbp4x4, Kiv32s chromaQPU, Kiv32s chromaQPV, Kiv8u edgeTypeTop, Kiv8u edgeTypeBottom,
    const Kiv16s* pQuantTableU, const Kiv16s* pQuantTableV, Kiv8u bypassFlag);
KIV_API KivStatus kiviReconstructChromaIntraHalves4x4MB_H264_16s8u_P2R(
    Kiv16s** ppSrcDstCoeff, Kiv8u* pSrcDstUPlane, Kiv8u* pSrcDstVPlane, Kiv32u srcDstUVStep, Kiv32s intraChromaMode,
    Kiv32u cbp4x4, Kiv32s chromaQPU, Kiv32s chromaQPV, Kiv8u edgeTypeTop, Kiv8u edgeTypeBottom,
    const Kiv16s* pQuantTableU, const Kiv16s* pQuantTableV, Kiv8u bypassFlag);

/* 8x8 luma members of the scaling-list generation: pQuantTable holds the 64
 * level-scale values for QP % 6; cbp bits 0..3 mark the four 8x8 blocks
 * (raster order of the quadrants; the Half member: bits 0..1, the upper two),
 * each taking 64 coefficients, scaled with q = QP / 6, transformed by the
 * 8x8 inverse transform and added with clamping (under bypass with QP 0 the
 * 64 coefficients are added as they stand). The intra members predict each
 * block in turn from its neighbours after H.264's reference-sample
 * filtering, modes pMBIntraTypes[b] numbered as the 4x4 modes. Our choice for
 * a mode that needs a missing neighbour: as in the 4x4 walk, the missing
 * samples are taken as 128, the block is predicted and reconstructed and the
 * call ends with kivStsWarnNeighbourMissing; the neighbours are filtered
 * first, each missing group staying at 128 (without the row above, the
 * samples above-right count as missing too); above-right samples that are
 * missing beside an available row above repeat its last sample before
 * filtering (no warning). Block availability
 * follows the edge mask as for 4x4 blocks: block 1's above-right samples lie
 * in the macroblock above-right (edge bit 32), block 2's in block 1, block 3
 * has none. Statuses and check order as the 4x4 members (the Intra8x8 member
 * takes QP as Kiv32u like the Intra4x4 one); a mode above 8 returns
 * kivStsOutOfRange part-way. */
KIV_API KivStatus kiviReconstructLumaIntra8x8MB_H264_16s8u_C1R(Kiv16s** ppSrcDstCoeff, Kiv8u* pSrcDstYPlane,
                                                               Kiv32u srcDstYStep, const Kiv32u* pMBIntraTypes,
                                                               Kiv32u cbp8x8, Kiv32u QP, Kiv8u edgeType,
                                                               const Kiv16s* pQuantTable, Kiv8u bypassFlag);
KIV_API KivStatus kiviReconstructLumaIntraHalf8x8MB_H264_16s8u_C1R(Kiv16s** ppSrcDstCoeff, Kiv8u* pSrcDstYPlane,
                                                                   Kiv32u srcDstYStep, const Kiv32u* pMBIntraTypes,
                                                                   Kiv32u cbp8x2, Kiv32s QP, Kiv8u edgeType,
                                                                   const Kiv16s* pQuantTable, Kiv8u bypassFlag);
KIV_API KivStatus kiviReconstructLumaInter8x8MB_H264_16s8u_C1R(Kiv16s** ppSrcDstCoeff, Kiv8u* pSrcDstYPlane,
                                                               Kiv32u srcDstYStep, Kiv32u cbp8x8, Kiv32s QP,
                                                               const Kiv16s* pQuantTable, Kiv8u bypassFlag);

/* ---- Macroblock reconstruction (High: parameter records) ----
 * One record per plane. ppSrcDstCoeff: the plane's coefficient read pointer
 * (advanced past what the call takes, as in the members above; each chroma
 * plane has its own); pSrcDstPlane: the macroblock's (or the plane's block's)
 * top-left sample; srcDstStep: row step in bytes (at least 1); cbp: the coded
 * blocks (luma as the members above; chroma: bit 0 the plane's DC block, bits
 * 1..4 (4:2:0) or 1..8 (4:2:2) its 4x4 AC blocks in raster order, two per
 * row); qp: QP + 6 x (bit depth - 8), 0..6 x bitDepth + 3 (chroma: the
 * plane's QPc on the same scale, 0..6 x bitDepth - 9, i.e. 0..39 at 8 bits
 * and 0..75 at 14); pQuantTable: the level scale for qp % 6 (16
 * values, 64 for the 8x8 members); bypassFlag: transform bypass when qp is 0;
 * bitDepth: 8..14 (our choice: 8 is accepted, for 8-bit content kept in
 * 16-bit planes; 16s8u records are always 8-bit and their bitDepth is not
 * read). Samples are clamped to 0..(1 << bitDepth) - 1 and missing intra
 * neighbours are taken as 1 << (bitDepth - 1). Nothing is read outside the
 * macroblock but the intra neighbours its edge mask allows (and, for the 8x8
 * and 4x4 luma blocks on the top edge, the samples above-right that the mask
 * allows); the records are only read. On a failed check nothing is written;
 * a 4x4/8x8 mode above 8 stops the walk with earlier blocks done and the
 * coefficient pointer not written back. */
typedef struct {
    Kiv32s** ppSrcDstCoeff;
    Kiv16u* pSrcDstPlane;
    Kiv32s srcDstStep;
    Kiv32u cbp;
    Kiv32s qp;
    const Kiv16s* pQuantTable;
    Kiv32u bypassFlag;
    Kiv32s bitDepth;
} KivReconstructHighParams_32s16u;

typedef struct {
    Kiv16s** ppSrcDstCoeff;
    Kiv8u* pSrcDstPlane;
    Kiv32s srcDstStep;
    Kiv32u cbp;
    Kiv32s qp;
    const Kiv16s* pQuantTable;
    Kiv32u bypassFlag;
    Kiv32s bitDepth;
} KivReconstructHighParams_16s8u;

/* Luma members at high bit depth, each as the 8-bit scaling-list member of
 * the same shape (Intra4x4, upper-half Intra4x4 with cbp bits 0..7, Intra8x8,
 * upper-half Intra8x8 with cbp bits 0..1, Intra_16x16, Inter4x4, Inter8x8).
 * Statuses in check order: kivStsNullPointer (pReconInfo, its
 * ppSrcDstCoeff, *ppSrcDstCoeff, pSrcDstPlane, pQuantTable, then
 * pMBIntraTypes), kivStsBadStep (srcDstStep < 1), kivStsOutOfRange (bitDepth
 * outside 8..14, qp outside 0..6 x bitDepth + 3), then as the 8-bit members:
 * kivStsOutOfRange or kivStsBadIntraPredMode for the 16x16 mode, a 4x4/8x8
 * mode above 8 part-way, kivStsWarnNeighbourMissing, kivStsOk. */
KIV_API KivStatus kiviReconstructLumaIntra4x4_H264High_32s16u_IP1R(const KivReconstructHighParams_32s16u* pReconInfo,
                                                                   const Kiv32u* pMBIntraTypes, Kiv8u edgeType);
KIV_API KivStatus kiviReconstructLumaIntraHalf4x4_H264High_32s16u_IP1R(
    const KivReconstructHighParams_32s16u* pReconInfo, const Kiv32u* pMBIntraTypes, Kiv8u edgeType);
KIV_API KivStatus kiviReconstructLumaIntra8x8_H264High_32s16u_IP1R(const KivReconstructHighParams_32s16u* pReconInfo,
                                                                   const Kiv32u* pMBIntraTypes, Kiv8u edgeType);
KIV_API KivStatus kiviReconstructLumaIntraHalf8x8_H264High_32s16u_IP1R(
    const KivReconstructHighParams_32s16u* pReconInfo, const Kiv32u* pMBIntraTypes, Kiv8u edgeType);
KIV_API KivStatus kiviReconstructLumaIntra16x16_H264High_32s16u_IP1R(
    const KivReconstructHighParams_32s16u* pReconInfo, Kiv32s intraLumaMode, Kiv8u edgeType);
KIV_API KivStatus kiviReconstructLumaInter4x4_H264High_32s16u_IP1R(const KivReconstructHighParams_32s16u* pReconInfo);
KIV_API KivStatus kiviReconstructLumaInter8x8_H264High_32s16u_IP1R(const KivReconstructHighParams_32s16u* pReconInfo);

/* Chroma members: pReconInfo points to two records, U then V. The intra
 * members predict both planes with the chroma mode (DC 0, horizontal 1,
 * vertical 2, plane 3) under the edge mask; the Half members take DC only
 * (any other mode: kivStsBadIntraPredMode) and predict the upper half of each
 * plane under edgeTypeTop and the lower half under edgeTypeBottom (4:2:0:
 * 8x4 halves; 4:2:2: 8x8 halves). Then each plane whose cbp has a bit among
 * its DC and AC bits takes, from its own buffer, its DC block (4 coefficients
 * for 4:2:0, scaled with the plane's level scale; 8 for 4:2:2, scaled with
 * QP + 3 and levelScaleDCU / levelScaleDCV) and its AC blocks; blocks without
 * AC still receive their DC. 4:2:2 planes are 8 wide and 16 high. Statuses in
 * check order: kivStsNullPointer (pReconInfo, then the pointer fields of U,
 * then of V), kivStsBadStep (either step < 1), kivStsOutOfRange (bitDepth,
 * qp; then a mode outside 0..3), kivStsBadIntraPredMode (a needed neighbour
 * missing; nothing written), kivStsOk. */
KIV_API KivStatus kiviReconstructChromaIntra4x4_H264High_32s16u_IP2R(
    const KivReconstructHighParams_32s16u* pReconInfo, Kiv32s intraChromaMode, Kiv8u edgeType);
KIV_API KivStatus kiviReconstructChromaInter4x4_H264High_32s16u_IP2R(
    const KivReconstructHighParams_32s16u* pReconInfo);
KIV_API KivStatus kiviReconstructChromaIntraHalf4x4_H264High_32s16u_IP2R(
    const KivReconstructHighParams_32s16u* pReconInfo, Kiv32s intraChromaMode, Kiv8u edgeTypeTop,
    Kiv8u edgeTypeBottom);
KIV_API KivStatus kiviReconstructChroma422Intra4x4_H264High_16s8u_IP2R(
    const KivReconstructHighParams_16s8u* pReconInfo, Kiv32s intraChromaMode, Kiv8u edgeType,
    Kiv32s levelScaleDCU, Kiv32s levelScaleDCV);
KIV_API KivStatus kiviReconstructChroma422Inter4x4_H264High_16s8u_IP2R(
    const KivReconstructHighParams_16s8u* pReconInfo, Kiv32s levelScaleDCU, Kiv32s levelScaleDCV);
KIV_API KivStatus kiviReconstructChroma422IntraHalf4x4_H264High_16s8u_IP2R(
    const KivReconstructHighParams_16s8u* pReconInfo, Kiv32s intraChromaMode, Kiv8u edgeTypeTop,
    Kiv8u edgeTypeBottom, Kiv32s levelScaleDCU, Kiv32s levelScaleDCV);
KIV_API KivStatus kiviReconstructChroma422Intra4x4_H264High_32s16u_IP2R(
    const KivReconstructHighParams_32s16u* pReconInfo, Kiv32s intraChromaMode, Kiv8u edgeType,
    Kiv32s levelScaleDCU, Kiv32s levelScaleDCV);
KIV_API KivStatus kiviReconstructChroma422Inter4x4_H264High_32s16u_IP2R(
    const KivReconstructHighParams_32s16u* pReconInfo, Kiv32s levelScaleDCU, Kiv32s levelScaleDCV);
KIV_API KivStatus kiviReconstructChroma422IntraHalf4x4_H264High_32s16u_IP2R(
    const KivReconstructHighParams_32s16u* pReconInfo, Kiv32s intraChromaMode, Kiv8u edgeTypeTop,
    Kiv8u edgeTypeBottom, Kiv32s levelScaleDCU, Kiv32s levelScaleDCV);
/* ---- end section: h264 intra ---- */

/* ---- section: h264 encoder ---- */
/* H.264 encoder side: forward transforms, quantisers, scaling-list
 * generators, CAVLC symbol analysis and sums of differences. None reads past
 * the blocks named in its comment (no look-ahead).
 *
 * Common rules of the quantisers: level = sign(t) x ((|t| x m + r) >> s),
 * sign(0) = +1, with the factor m read as an unsigned 16-bit value and the
 * product formed exactly; a level magnitude beyond the level type saturates
 * (to 32767 for 16-bit levels, 2^31 - 1 for 32-bit ones). The forward
 * transforms of the 16-bit members store each pass to 16 bits (wrapping;
 * residuals of 8-bit pictures never wrap). The count output is the number of
 * non-zero levels, negated when the block's DC (as each function says) is
 * non-zero; the last position is the largest scan-table entry (pScanMatrix[k]
 * = scan position of raster position k) among the non-zero levels, 0 when
 * there are none. */

/* Forward 4x4 core transform of the residual pSrc into pDst (16 values), then
 * quantisation in place with q = QP / 6: without pScaleLevels m =
 * FwdQuantTable_16s[QP % 6][k], s = q + 15; with it m = pScaleLevels[k], s =
 * q + 11; r = floor(2^s / 3) when intra is non-zero, floor(2^s / 6)
 * otherwise. *pNumLevels is negated when level 0 is non-zero. The 16s32s
 * member transforms at 32 bits and stores 32-bit levels. Statuses:
 * NullPointer (pSrc, pDst, pNumLevels, pScanMatrix, pLastCoeff), OutOfRange
 * (QP outside 0..51). */
KIV_API KivStatus kiviTransformQuantFwd4x4_H264_16s_C1(const Kiv16s *pSrc, Kiv16s *pDst, Kiv32s QP, Kiv32s *pNumLevels, Kiv32s intra, const Kiv16s *pScanMatrix, Kiv32s *pLastCoeff, const Kiv16s *pScaleLevels);
KIV_API KivStatus kiviTransformQuantFwd4x4_H264_16s32s_C1(const Kiv16s *pSrc, Kiv32s *pDst, Kiv32s QP, Kiv32s *pNumLevels, Kiv32s intra, const Kiv16s *pScanMatrix, Kiv32s *pLastCoeff, const Kiv16s *pScaleLevels);
/* Intra16x16 luma DC: when needTransform is non-zero pTBuf receives the 4x4
 * Hadamard of pDCBuf with every value halved (>> 1); otherwise pTBuf is the
 * caller's transformed block. pTBuf is quantised into pDCBuf with q = QP / 6:
 * without pScaleLevels m = FwdQuantTable_16s[QP % 6][0], s = q + 16, r =
 * floor(2^s / 3); with it m = pScaleLevels[0], s = q + 12, r = 682 << (q +
 * 1). *pNumLevels is negated when pTBuf[0] is non-zero. Statuses:
 * NullPointer (pDCBuf, pTBuf, pNumLevels, pScanMatrix, pLastCoeff),
 * OutOfRange (QP outside 0..51). */
KIV_API KivStatus kiviTransformQuantFwdLumaDC4x4_H264_16s_C1I(Kiv16s *pDCBuf, Kiv16s *pTBuf, Kiv32s QP, Kiv32s *pNumLevels, Kiv32u needTransform, const Kiv16s *pScanMatrix, Kiv32s *pLastCoeff, const Kiv16s *pScaleLevels);
KIV_API KivStatus kiviTransformQuantFwdLumaDC4x4_H264_32s_C1I(Kiv32s *pDCBuf, Kiv32s *pTBuf, Kiv32s QP, Kiv32s *pNumLevels, Kiv32u needTransform, const Kiv16s *pScanMatrix, Kiv32s *pLastCoeff, const Kiv16s *pScaleLevels);
/* 4:2:0 chroma DC (4 values): when needTransform is non-zero pTBuf receives
 * the 2x2 Hadamard of pDCBuf (no halving); pTBuf is quantised into pDCBuf
 * with q = QP / 6, m = FwdQuantTable_16s[QP % 6][0] and s = q + 16, or m =
 * pScaleLevels[0] and s = q + 12; r = floor(2^s / 3) (intra) or floor(2^s /
 * 6). *pNumLevels is negated when level 0 is non-zero. Statuses: NullPointer
 * (pDCBuf, pTBuf, pNumLevels), OutOfRange (QP outside 0..39). */
KIV_API KivStatus kiviTransformQuantFwdChromaDC2x2_H264_16s_C1I(Kiv16s *pDCBuf, Kiv16s *pTBuf, Kiv32s QP, Kiv32s *pNumLevels, Kiv32s intra, Kiv32u needTransform, const Kiv16s *pScaleLevels);
KIV_API KivStatus kiviTransformQuantFwdChromaDC2x2_H264_32s_C1I(Kiv32s *pDCBuf, Kiv32s *pTBuf, Kiv32s QP, Kiv32s *pNumLevels, Kiv32s intra, Kiv32u needTransform, const Kiv16s *pScaleLevels);
/* 4:2:2 chroma DC (8 values, 2 wide and 4 high): when needTransform is
 * non-zero pTBuf receives A4 x c x A2; q' = (QP + 3) / 6 and the default
 * factor is taken at (QP + 3) % 6; s = q' + 16 (q' + 12 with pScaleLevels);
 * r = 682 << (s - 11) (intra) or 342 << (s - 11). Count and statuses as the
 * 2x2 member. */
KIV_API KivStatus kiviTransformQuantFwdChromaDC2x4_H264_16s_C1I(Kiv16s *pDCBuf, Kiv16s *pTBuf, Kiv32s QP, Kiv32s *pNumLevels, Kiv32s intra, Kiv32u needTransform, const Kiv16s *pScaleLevels);
KIV_API KivStatus kiviTransformQuantFwdChromaDC2x4_H264_32s_C1I(Kiv32s *pDCBuf, Kiv32s *pTBuf, Kiv32s QP, Kiv32s *pNumLevels, Kiv32s intra, Kiv32u needTransform, const Kiv16s *pScaleLevels);
/* Quantises a transformed 8x8 block: level = sign(t) x ((|t| x
 * pScaleLevels[k] + ((intra ? 682 : 342) << (Qp6 + 1))) >> (Qp6 + 12)), all
 * 64 values (pSrc may equal pDst). *pNumLevels is negated when level 0 is
 * non-zero. Statuses: NullPointer (pSrc, pDst, pScanMatrix, pScaleLevels,
 * pNumLevels, pLastCoeff), BadQp (Qp6 above 8). */
KIV_API KivStatus kiviQuantLuma8x8_H264_16s_C1(const Kiv16s *pSrc, Kiv16s *pDst, Kiv32u Qp6, Kiv32s intra, const Kiv16s *pScanMatrix, const Kiv16s *pScaleLevels, Kiv32s *pNumLevels, Kiv32s *pLastCoeff);
KIV_API KivStatus kiviQuantLuma8x8_H264_32s_C1(const Kiv32s *pSrc, Kiv32s *pDst, Kiv32u Qp6, Kiv32s intra, const Kiv16s *pScanMatrix, const Kiv16s *pScaleLevels, Kiv32s *pNumLevels, Kiv32s *pLastCoeff);
/* The forward 8x8 transform (8-point butterfly with >> 1 and >> 2 terms on
 * every row, then every column; no rounding or scaling): in place, to a
 * separate 16-bit block (each pass stored to 16 bits) or to 32-bit values
 * (exact). Statuses: NullPointer. */
KIV_API KivStatus kiviTransformLuma8x8Fwd_H264_16s_C1I(Kiv16s *pSrcDst);
KIV_API KivStatus kiviTransformFwdLuma8x8_H264_16s_C1(const Kiv16s *pSrc, Kiv16s *pDst);
KIV_API KivStatus kiviTransformFwdLuma8x8_H264_16s32s_C1(const Kiv16s *pSrc, Kiv32s *pDst);
/* Level scales of one 4x4 scaling matrix (16 weights, raster order) for
 * qpRem = QP % 6: inverse[k] = InvQuantTable_def[qpRem][k] x w, forward[k] =
 * floor(FwdQuantTable_16s[qpRem][k] / w), found through the reciprocal dt[w].
 * A zero weight is refused with DivByZero before anything is written.
 * Statuses: NullPointer (pWeights, pInvLevelScale, pFwdLevelScale),
 * OutOfRange (qpRem outside 0..5), DivByZero. */
KIV_API KivStatus kiviGenScaleLevel4x4_H264_8u16s_C1(const Kiv8u *pWeights, Kiv16s *pInvLevelScale, Kiv16s *pFwdLevelScale, Kiv32s qpRem);
/* Level scales of one 8x8 scaling matrix (8 rows of 8 weights, weightStep
 * bytes apart): inverse[k] = InvLevelScale_8x8_default[qpRem][k] x w,
 * forward[k] = LevelScale_8x8_default[qpRem][k] / w (truncating). A zero
 * weight is refused with DivByZero before anything is written. Statuses:
 * NullPointer (pWeights, pInvLevelScale, pFwdLevelScale), BadQp (qpRem
 * outside 0..5), DivByZero. */
KIV_API KivStatus kiviGenScaleLevel8x8_H264_8u16s_D2(const Kiv8u *pWeights, Kiv32s weightStep, Kiv16s *pInvLevelScale, Kiv16s *pFwdLevelScale, Kiv32s qpRem);
/* CAVLC symbols of the levels pSrc (raster order) at scan positions AC ..
 * Count, pScanMatrix giving the raster index of each scan position (taken
 * modulo 16), walked from Count down to AC: TrailingOnes (at most 3), their
 * signs (bit set for -1, the first met in the highest used bit), TotalCoeff,
 * total_zeros (zeros below the highest-frequency level; all positions when
 * there is none), the other levels in reverse scan order (TotalCoeff -
 * TrailingOnes values) and the run before each level except the last met
 * (TotalCoeff - 1 values). Statuses: NullPointer (every pointer, in order),
 * OutOfRange (Count above 15 or AC above Count). */
KIV_API KivStatus kiviEncodeCoeffsCAVLC_H264_16s(const Kiv16s *pSrc, Kiv8u AC, const Kiv32s *pScanMatrix, Kiv8u Count, Kiv8u *pTrailingOnes, Kiv8u *pTrailingOneSigns, Kiv8u *pNumOutCoeffs, Kiv8u *pTotalZeros, Kiv16s *pLevels, Kiv8u *pRuns);
KIV_API KivStatus kiviEncodeCoeffsCAVLC_H264_32s(const Kiv32s *pSrc, Kiv8u AC, const Kiv32s *pScanMatrix, Kiv8u Count, Kiv8u *pTrailingOnes, Kiv8u *pTrailingOneSigns, Kiv8u *pNumOutCoeffs, Kiv8u *pTotalZeros, Kiv32s *pLevels, Kiv8u *pRuns);
/* The same symbols for a 4:2:0 chroma DC block (4 levels, walked 3 down to
 * 0) and a 4:2:2 one (8 levels, walked 7, 5, 3, 6, 4, 1, 2, 0). Statuses:
 * NullPointer (every pointer, in order). */
KIV_API KivStatus kiviEncodeChromaDcCoeffsCAVLC_H264_16s(const Kiv16s *pSrc, Kiv8u *pTrailingOnes, Kiv8u *pTrailingOneSigns, Kiv8u *pNumOutCoeffs, Kiv8u *pTotalZeros, Kiv16s *pLevels, Kiv8u *pRuns);
KIV_API KivStatus kiviEncodeCoeffsCAVLCChromaDC2x2_H264_32s(const Kiv32s *pSrc, Kiv8u *pTrailingOnes, Kiv8u *pTrailingOneSigns, Kiv8u *pNumOutCoeffs, Kiv8u *pTotalZeros, Kiv32s *pLevels, Kiv8u *pRuns);
KIV_API KivStatus kiviEncodeCoeffsCAVLCChromaDC2x4_H264_16s(const Kiv16s *pSrc, Kiv8u *pTrailingOnes, Kiv8u *pTrailingOneSigns, Kiv8u *pNumOutCoeffs, Kiv8u *pTotalZeros, Kiv16s *pLevels, Kiv8u *pRuns);
KIV_API KivStatus kiviEncodeCoeffsCAVLCChromaDC2x4_H264_32s(const Kiv32s *pSrc, Kiv8u *pTrailingOnes, Kiv8u *pTrailingOneSigns, Kiv8u *pNumOutCoeffs, Kiv8u *pTotalZeros, Kiv32s *pLevels, Kiv8u *pRuns);
/* Flat-scaling residual quantiser, in place: the forward core transform of
 * the 16 residuals, then quantisation with m = FwdQuantTable_16s[QP % 6][k],
 * s = QP / 6 + 15, r = floor(2^s / 3) (intra) or floor(2^s / 6). When a level
 * magnitude exceeds 2063 the call returns LevelOutOfRange: the levels of the
 * raster positions before the first such level are stored, the block keeps
 * the transformed values from there on, and the counts are not written.
 * Otherwise *pNumLevels gets the count as a signed byte (negated when level 0
 * is non-zero) and *pLastCoeff the last scan position, limited to 7 bits.
 * Statuses: NullPointer (pSrcDst, pNumLevels, pScanMatrix, pLastCoeff),
 * OutOfRange (QP outside 0..51), LevelOutOfRange. */
KIV_API KivStatus kiviTransformQuantResidual_H264_16s_C1I(Kiv16s *pSrcDst, Kiv32s QP, Kiv8s *pNumLevels, Kiv8u intra, const Kiv16s *pScanMatrix, Kiv8u *pLastCoeff);
/* Flat-scaling luma DC quantiser: the rule of
 * kiviTransformQuantFwdLumaDC4x4_H264_16s_C1I without a scale (always the
 * intra rounding floor(2^s / 3), s = QP / 6 + 16), with the level bound, the
 * signed-byte count (negated when pTBuf[0] is non-zero) and 7-bit last
 * position of kiviTransformQuantResidual_H264_16s_C1I. On LevelOutOfRange
 * pTBuf holds the transformed block, pDCBuf the levels before the first
 * offending raster position and its input values from there on. Statuses:
 * NullPointer (pDCBuf, pTBuf, pNumLevels, pScanMatrix, pLastCoeff),
 * OutOfRange (QP outside 0..51), LevelOutOfRange. */
KIV_API KivStatus kiviTransformQuantLumaDC_H264_16s_C1I(Kiv16s *pDCBuf, Kiv16s *pTBuf, Kiv32s QP, Kiv8s *pNumLevels, Kiv8u needTransform, const Kiv16s *pScanMatrix, Kiv8u *pLastCoeff);
/* Flat-scaling 4:2:0 chroma DC quantiser: the rule of
 * kiviTransformQuantFwdChromaDC2x2_H264_16s_C1I without a scale, with the
 * level bound 2063 (as the luma DC quantiser) and the count as a signed byte
 * (negated when level 0 is non-zero). Statuses: NullPointer (pDCBuf, pTBuf,
 * pNumLevels), OutOfRange (QP outside 0..39), LevelOutOfRange. */
KIV_API KivStatus kiviTransformQuantChromaDC_H264_16s_C1I(Kiv16s *pDCBuf, Kiv16s *pTBuf, Kiv32s QP, Kiv8s *pNumLevels, Kiv8u intra, Kiv8u needTransform);
/* Per 4x4 block of a 16x16 (16 blocks) or 8x8 (4 blocks) area, in raster
 * order of the blocks: the sum of pSrc - pPred over its 16 samples; pDiff,
 * when not null, receives the 16 differences of each block (raster order
 * inside the block), block after block. Steps are in bytes. The 16u32s
 * members store each difference to 16 bits (wrapping beyond 16-bit range).
 * Statuses: NullPointer (pSrc, pPred, pSums). */
KIV_API KivStatus kiviSumsDiff16x16Blocks4x4_8u16s_C1(const Kiv8u *pSrc, Kiv32s srcStep, const Kiv8u *pPred, Kiv32s predStep, Kiv16s *pSums, Kiv16s *pDiff);
KIV_API KivStatus kiviSumsDiff8x8Blocks4x4_8u16s_C1(const Kiv8u *pSrc, Kiv32s srcStep, const Kiv8u *pPred, Kiv32s predStep, Kiv16s *pSums, Kiv16s *pDiff);
KIV_API KivStatus kiviSumsDiff16x16Blocks4x4_16u32s_C1R(const Kiv16u *pSrc, Kiv32s srcStep, const Kiv16u *pPred, Kiv32s predStep, Kiv32s *pSums, Kiv16s *pDiff);
KIV_API KivStatus kiviSumsDiff8x8Blocks4x4_16u32s_C1R(const Kiv16u *pSrc, Kiv32s srcStep, const Kiv16u *pPred, Kiv32s predStep, Kiv32s *pSums, Kiv16s *pDiff);
/* ---- end section: h264 encoder ---- */

/* ---- section: h264 inter ---- */
/* ======================================================================== */
/* H.264 inter prediction: interpolation, boundary reading, weighting,      */
/* plane expansion                                                          */
/* ======================================================================== */
/* Luma positions (dx, dy) are quarter samples 0..3, chroma fractions eighth
 * samples 0..7. Luma results follow the 6-tap half-sample filter and the
 * quarter-sample averages of H.264 exactly; chroma results are
 * ((8-dx)(8-dy)A + dx(8-dy)B + (8-dx)dy C + dx dy D + 32) >> 6. Steps of the
 * 8-bit functions count bytes, steps of the 16-bit functions count samples.
 * Read-ahead of the plain functions: luma reads 2 columns left and 3 right of
 * the block when dx != 0, 2 rows above and 3 below when dy != 0; chroma reads
 * one column more when dx != 0 and one row more when dy != 0. Nothing else is
 * read. 16-bit results lie in 0..(1 << bitDepth) - 1; bit depths above 16
 * clamp to 65535, below 1 to 0. */

/* Caller record of the 8-bit Block functions. Chroma uses both planes, luma
 * the first only. Motion vectors are in quarter (luma) or eighth (chroma)
 * samples; the block position is in samples of the plane. */
typedef struct {
    const Kiv8u *pSrc1;     /* luma or Cb reference plane, top-left sample */
    const Kiv8u *pSrc2;     /* Cr reference plane (chroma only) */
    Kiv32s srcStep;
    Kiv8u *pDst1;           /* luma or Cb prediction */
    Kiv8u *pDst2;           /* Cr prediction (chroma only) */
    Kiv32s dstStep;
    KiviSize pictureSize;   /* reference plane size in samples */
    KiviSize blockSize;
    KiviPoint blockPos;
    KiviPoint mv;
} KivInterpolateBlock_8u;

/* The same with 16-bit planes (steps in samples) and the bit depth. */
typedef struct {
    const Kiv16u *pSrc1;
    const Kiv16u *pSrc2;
    Kiv32s srcStep;
    Kiv16u *pDst1;
    Kiv16u *pDst2;
    Kiv32s dstStep;
    KiviSize pictureSize;
    KiviSize blockSize;
    KiviPoint blockPos;
    KiviPoint mv;
    Kiv32s bitDepth;
} KivInterpolateBlock_16u;

/* Caller record of the plain and Top/Bottom 16-bit functions. */
typedef struct {
    const Kiv16u *pSrc;     /* integer sample at the block's top-left */
    Kiv32s srcStep;         /* samples */
    Kiv16u *pDst;
    Kiv32s dstStep;         /* samples */
    Kiv32s dx, dy;          /* 0..3 luma, 0..7 chroma */
    KiviSize roiSize;
    Kiv32s bitDepth;
} KivInterpolate_16u;

/* Working record of the boundary functions and readers (16-bit planes are
 * passed through the same void pointers; steps then count samples). */
typedef struct {
    const void *pSrc;       /* kernels: block's top-left sample; readers: plane's top-left */
    Kiv32s srcStep;
    void *pDst;             /* output block, or the readers' region buffer */
    Kiv32s dstStep;
    Kiv32s xFrac, yFrac;    /* chroma eighth-sample fractions */
    Kiv32s blockWidth, blockHeight;
    Kiv32s kernelType;      /* luma 4 * dy + dx; chroma 2 * (yFrac != 0) + (xFrac != 0) */
    Kiv32s regionX, regionY;            /* may be negative */
    Kiv32s regionWidth, regionHeight;
    Kiv32s pictureWidth, pictureHeight;
    const void *pSrc2;      /* chroma: Cr plane */
    void *pDst2;            /* chroma: Cr output */
    Kiv32s bitDepth;        /* 16-bit only */
} KivInterpolationParams;

/* 8-bit luma prediction at quarter position (dx, dy) of the block whose
 * integer top-left sample is src. Statuses: NullPointer (src, dst);
 * BadArgument (dx or dy outside 0..3); BadSize (roi height not a multiple of
 * 4, or roi width with a bit other than those of 4, 8, 16 set: widths 12, 20,
 * 24 and 28 are accepted and follow the same formulas; heights <= 0 write
 * nothing). Read-ahead as in the section comment. */
KIV_API KivStatus kiviInterpolateLuma_H264_8u_C1R(const Kiv8u *src, Kiv32s srcStep, Kiv8u *dst, Kiv32s dstStep, Kiv32s dx, Kiv32s dy, KiviSize roi);
/* 8-bit chroma prediction at eighth position (dx, dy). Statuses: NullPointer
 * (src, dst); BadArgument (dx or dy outside 0..7); BadSize (roi height odd,
 * or roi width with a bit other than those of 2, 4, 8: widths 6, 10, 12 and
 * 14 are accepted). */
KIV_API KivStatus kiviInterpolateChroma_H264_8u_C1R(const Kiv8u *src, Kiv32s srcStep, Kiv8u *dst, Kiv32s dstStep, Kiv32s dx, Kiv32s dy, KiviSize roi);
/* As kiviInterpolateLuma_H264_8u_C1R, with the rows above the picture's
 * first row replaced by it: outPixels block rows lie above the picture (the
 * first picture row is src + outPixels * srcStep; negative values mean the
 * block starts inside). Columns are not clamped. Statuses as the plain
 * function. Only the rows and columns the filter needs are read; the caller
 * guarantees the step covers them. */
KIV_API KivStatus kiviInterpolateLumaTop_H264_8u_C1R(const Kiv8u *src, Kiv32s srcStep, Kiv8u *dst, Kiv32s dstStep, Kiv32s dx, Kiv32s dy, Kiv32s outPixels, KiviSize roi);
/* As the Top function for the bottom edge: outPixels block rows lie below the
 * picture's last row, which is src + (height - 1 - outPixels) * srcStep. */
KIV_API KivStatus kiviInterpolateLumaBottom_H264_8u_C1R(const Kiv8u *src, Kiv32s srcStep, Kiv8u *dst, Kiv32s dstStep, Kiv32s dx, Kiv32s dy, Kiv32s outPixels, KiviSize roi);
/* Chroma twins of the Top and Bottom functions (chroma checks). */
KIV_API KivStatus kiviInterpolateChromaTop_H264_8u_C1R(const Kiv8u *src, Kiv32s srcStep, Kiv8u *dst, Kiv32s dstStep, Kiv32s dx, Kiv32s dy, Kiv32s outPixels, KiviSize roi);
KIV_API KivStatus kiviInterpolateChromaBottom_H264_8u_C1R(const Kiv8u *src, Kiv32s srcStep, Kiv8u *dst, Kiv32s dstStep, Kiv32s dx, Kiv32s dy, Kiv32s outPixels, KiviSize roi);
/* 16-bit luma prediction. Statuses: NullPointer (p, p->pSrc, p->pDst);
 * BadStep (srcStep below the width, or width above dstStep); BadArgument (dx,
 * then dy, outside 0..3); BadSize (height, then width, not 4, 8 or 16; then
 * 4x16 and 16x4). */
KIV_API KivStatus kiviInterpolateLuma_H264_16u_C1R(const KivInterpolate_16u *p);
/* 16-bit chroma prediction. Statuses: NullPointer (p, p->pSrc, p->pDst);
 * BadStep (srcStep or dstStep below 8); BadArgument (dx, then dy, outside
 * 0..7); BadSize (height, then width, not 2, 4, 8 or 16). */
KIV_API KivStatus kiviInterpolateChroma_H264_16u_C1R(const KivInterpolate_16u *p);
/* 16-bit Top and Bottom functions: the checks of the matching plain function,
 * then the edge-row replacement of the 8-bit Top and Bottom functions. Only
 * the samples the filter uses are read (chroma: the chroma region). */
KIV_API KivStatus kiviInterpolateLumaTop_H264_16u_C1R(const KivInterpolate_16u *p, Kiv32s outPixels);
KIV_API KivStatus kiviInterpolateLumaBottom_H264_16u_C1R(const KivInterpolate_16u *p, Kiv32s outPixels);
KIV_API KivStatus kiviInterpolateChromaTop_H264_16u_C1R(const KivInterpolate_16u *p, Kiv32s outPixels);
KIV_API KivStatus kiviInterpolateChromaBottom_H264_16u_C1R(const KivInterpolate_16u *p, Kiv32s outPixels);
/* Luma prediction of a block from a whole reference plane with the motion
 * vector of the record; samples outside the plane are those of the nearest
 * edge (coordinates clamped). A zero vector copies the block from the block
 * position without any edge test. Statuses: NullPointer (p, pSrc1, pDst1);
 * BadSize (height not a multiple of 4, or width with a bit other than those
 * of 4, 8, 16). Reads only inside the plane, except for the zero vector.
 * Our choices: blocks larger than 16x16 are predicted in 16x16 tiles (same
 * result); with a non-zero vector whose region leaves a picture smaller than
 * 1x1, nothing is written. */
KIV_API KivStatus kiviInterpolateLumaBlock_H264_8u_P1R(const KivInterpolateBlock_8u *p);
KIV_API KivStatus kiviInterpolateLumaBlock_H264_16u_P1R(const KivInterpolateBlock_16u *p);
/* Chroma prediction of both planes (Cb into pDst1, Cr into pDst2) as the
 * luma Block function. Statuses: NullPointer (p, pSrc1, pSrc2, pDst1,
 * pDst2); BadSize (height odd, or width with a bit other than those of 2, 4,
 * 8). */
KIV_API KivStatus kiviInterpolateChromaBlock_H264_8u_P2R(const KivInterpolateBlock_8u *p);
KIV_API KivStatus kiviInterpolateChromaBlock_H264_16u_P2R(const KivInterpolateBlock_16u *p);
/* The edge path of the Block functions: reads the reference region of w
 * (regionX, regionY, pictureWidth, pictureHeight; pSrc is the plane's
 * top-left) with edge replication into a stack buffer and runs the kernel of
 * kernelType (luma) or of xFrac, yFrac (chroma) into pDst (and, chroma, from
 * pSrc2 into pDst2). The region's size is derived from the block size and
 * the fractions. Our choice: boundaryCase is not needed and not read, the
 * crossed edges are derived from the geometry (tile by tile for blocks above
 * 16x16), so a wrong case cannot make the function read outside the plane.
 * A picture smaller than 1x1 writes nothing. No checks; returns Ok (also for
 * a null record, which is ignored). The record is left unchanged. */
KIV_API KivStatus kiviInterpolateBoundaryLumaBlock_H264_8u(Kiv32u boundaryCase, KivInterpolationParams *w);
KIV_API KivStatus kiviInterpolateBoundaryChromaBlock_H264_8u(Kiv32u boundaryCase, KivInterpolationParams *w);
KIV_API KivStatus kiviInterpolateBoundaryLumaBlock_H264_16u(Kiv32u boundaryCase, KivInterpolationParams *w);
KIV_API KivStatus kiviInterpolateBoundaryChromaBlock_H264_16u(Kiv32u boundaryCase, KivInterpolationParams *w);
/* Reads the region (regionX, regionY, regionWidth x regionHeight) of the
 * plane at pSrc (pictureWidth x pictureHeight) into pDst as if every sample
 * were read at clamped coordinates. boundaryCase (bit 0 left, 1 right, 2 top,
 * 3 bottom; higher bits ignored) must name the edges the region crosses:
 * edges not named are not clamped. Case 0 reads nothing. No checks; returns
 * Ok (a null record is ignored). */
KIV_API KivStatus kiviReadDataBlockThroughBoundary_8u(Kiv32u boundaryCase, KivInterpolationParams *w);
KIV_API KivStatus kiviReadDataBlockThroughBoundary_16u(Kiv32u boundaryCase, KivInterpolationParams *w);
/* dst = (src1 + src2 + 1) >> 1 over width x height, one step for all three
 * blocks. Statuses: NullPointer (src1, src2, dst); BadSize (width or height
 * outside 2..16, odd sizes included). */
KIV_API KivStatus kiviInterpolateBlock_H264_8u_P2P1R(const Kiv8u *src1, const Kiv8u *src2, Kiv8u *dst, Kiv32u width, Kiv32u height, Kiv32s step);
/* As the P2P1R function with a step per block. */
KIV_API KivStatus kiviInterpolateBlock_H264_8u_P3P1R(const Kiv8u *src1, const Kiv8u *src2, Kiv8u *dst, Kiv32u width, Kiv32u height, Kiv32s src1Step, Kiv32s src2Step, Kiv32s dstStep);

/* Weighted prediction. Products and sums are those of signed 32-bit
 * arithmetic (they wrap only far outside the weights H.264 allows); shift
 * counts are taken modulo 32. 8-bit results clamp to 0..255 (by comparison,
 * so any value clamps the same way), 16-bit results to 0..(1 << bitDepth) - 1. Offsets are added unscaled. The size check
 * (BadSize) fails when height, then width, is not 2, 4, 8 or 16. */

/* Record of the 16-bit bidirectional functions (steps in samples). */
typedef struct {
    const Kiv16u *pSrc1;
    Kiv32s src1Step;
    const Kiv16u *pSrc2;
    Kiv32s src2Step;
    Kiv16u *pDst;
    Kiv32s dstStep;
    Kiv32s width, height;
    Kiv32s bitDepth;
} KivBidir_16u;

/* In place: d = clamp(((s * weight + 2^(logWD - 1)) >> logWD) + offset), or
 * clamp(s * weight + offset) when logWD is 0. Statuses: NullPointer
 * (pSrcDst); BadStep (step below the width); BadSize. */
KIV_API KivStatus kiviUniDirWeightBlock_H264_8u_C1R(Kiv8u *pSrcDst, Kiv32s step, Kiv32u logWD, Kiv32s weight, Kiv32s offset, KiviSize roi);
/* The same function. */
KIV_API KivStatus kiviUniDirWeightBlock_H264_8u_C1IR(Kiv8u *pSrcDst, Kiv32s step, Kiv32u logWD, Kiv32s weight, Kiv32s offset, KiviSize roi);
/* 16-bit unidirectional weighting (step in samples); statuses as 8-bit. */
KIV_API KivStatus kiviUnidirWeight_H264_16u_IP2P1R(Kiv16u *pSrcDst, Kiv32s step, Kiv32u logWD, Kiv32s weight, Kiv32s offset, KiviSize roi, Kiv32s bitDepth);
/* d = clamp(((s1 * w1 + s2 * w2 + 2^logWD) >> (logWD + 1)) + ((o1 + o2 + 1) >> 1)).
 * Statuses: NullPointer (src1, src2, dst); BadStep (srcStep or dstStep below
 * the width); BadSize. */
KIV_API KivStatus kiviBiDirWeightBlock_H264_8u_P2P1R(const Kiv8u *pSrc1, const Kiv8u *pSrc2, Kiv8u *pDst, Kiv32s srcStep, Kiv32s dstStep, Kiv32s logWD, Kiv32s weight1, Kiv32s offset1, Kiv32s weight2, Kiv32s offset2, Kiv32s width, Kiv32s height);
/* As P2P1R with a step per block; BadStep checks src1Step, src2Step,
 * dstStep. */
KIV_API KivStatus kiviBiDirWeightBlock_H264_8u_P3P1R(const Kiv8u *pSrc1, const Kiv8u *pSrc2, Kiv8u *pDst, Kiv32s src1Step, Kiv32s src2Step, Kiv32s dstStep, Kiv32s logWD, Kiv32s weight1, Kiv32s offset1, Kiv32s weight2, Kiv32s offset2, Kiv32s width, Kiv32s height);
/* d = clamp((s1 * w1 + s2 * w2 + 32) >> 6). Statuses: NullPointer; BadStep
 * (srcStep or dstStep below the width); BadSize. */
KIV_API KivStatus kiviBiDirWeightBlockImplicit_H264_8u_P2P1R(const Kiv8u *pSrc1, const Kiv8u *pSrc2, Kiv8u *pDst, Kiv32s srcStep, Kiv32s dstStep, Kiv32s weight1, Kiv32s weight2, Kiv32s width, Kiv32s height);
/* As the implicit P2P1R function with a step per block. Statuses:
 * NullPointer only; any size (a width or height below 1 writes nothing). */
KIV_API KivStatus kiviBiDirWeightBlockImplicit_H264_8u_P3P1R(const Kiv8u *pSrc1, const Kiv8u *pSrc2, Kiv8u *pDst, Kiv32s src1Step, Kiv32s src2Step, Kiv32s dstStep, Kiv32s weight1, Kiv32s weight2, Kiv32s width, Kiv32s height);
/* 16-bit explicit bidirectional weighting. Statuses: NullPointer (p,
 * p->pSrc1, p->pSrc2, p->pDst); BadStep (src1Step, src2Step, dstStep below
 * the width, in that order); BadSize. */
KIV_API KivStatus kiviBidirWeight_H264_16u_P2P1R(const KivBidir_16u *p, Kiv32s logWD, Kiv32s weight1, Kiv32s offset1, Kiv32s weight2, Kiv32s offset2);
/* 16-bit implicit bidirectional weighting; statuses as the explicit one. */
KIV_API KivStatus kiviBidirWeightImplicit_H264_16u_P2P1R(const KivBidir_16u *p, Kiv32s weight1, Kiv32s weight2);
/* d = (s1 + s2 + 1) >> 1; bitDepth is not read. Statuses: NullPointer (p and
 * its three pointers); BadSize (width, then height, outside 2..16). */
KIV_API KivStatus kiviBidir_H264_16u_P2P1R(const KivBidir_16u *p);
/* In place on pSrcDst: d = clamp(((s1 * w1 + r + d * w2) >> shift) + offset),
 * r = 2^(shift - 1) when shift >= 1 (shift taken modulo 32). Statuses:
 * NullPointer (pSrc1, pSrcDst); BadStep (step below the width); BadSize. */
KIV_API KivStatus kiviWeightedAverage_H264_8u_C1IR(const Kiv8u *pSrc1, Kiv8u *pSrcDst, Kiv32s step, Kiv32s weight1, Kiv32s weight2, Kiv32s shift, Kiv32s offset, Kiv32s width, Kiv32s height);
/* Pads a picture by replicating its edge samples into `expansion` samples on
 * every side. plane is the picture's top-left sample; the caller provides the
 * margins (step >= width + 2 * expansion). Mode 0 pads the frame; mode 1 the
 * field of even rows (ceil(e/2) rows below, floor(e/2) above), mode 2 the
 * field of odd rows (floor(e/2) below, ceil(e/2) above), each within the
 * frame's margins and step. Statuses: NullPointer; BadSize (height odd,
 * below 2, or width 0); Ok at once for expansion 0; BadArgument (mode not 0,
 * 1, 2). Our choice: a negative width or expansion writes nothing. */
KIV_API KivStatus kiviExpandPlane_H264_8u_C1R(Kiv8u *plane, Kiv32s width, Kiv32s height, Kiv32s step, Kiv32s expansion, Kiv32s mode);
/* ---- end section: h264 inter ---- */

/* ---- section: h264 deblocking ---- */
/* ======================================================================== */
/* H.264 deblocking filter                                                  */
/* ======================================================================== */
/* One direction of one macroblock plane per call: the vertical edges (across
 * each row) or the horizontal edges (down each column), edge by edge from the
 * left or top boundary and each edge along its length, so that later edges
 * see the samples earlier ones changed. The caller derives bS, alpha, beta
 * and tC0; nothing here depends on QP. A standard decoder filters all
 * vertical edges of a macroblock, then its horizontal ones.
 *
 * Arrays: alpha[2] and beta[2] ([0] for the macroblock boundary, edge 0; [1]
 * for the inner edges); bS[16] (0..4) and tC0 (16 luma, 8 chroma 4:2:0, 16
 * chroma 4:2:2), four entries per edge. Edge e lies 4e samples from the
 * boundary. Luma: four 16-sample edges, line i of edge e uses entry
 * 4e + (i >> 2). Chroma 4:2:0: two 8-sample edges (c = 0, 1) filtered with
 * the luma edges 0 and 2, line i using bS[8c + (i >> 1)] and tC0[4c + (i >> 1)].
 * Chroma 4:2:2 vertical: two 16-sample edges, bS[8c + (i >> 2)], tC0[4c + (i >> 2)];
 * horizontal: four 8-sample edges, bS[4c + (i >> 1)], tC0[4c + (i >> 1)].
 *
 * A line is filtered when |p0 - q0| < alpha, |p1 - p0| < beta and
 * |q1 - q0| < beta. bS 0 leaves it alone, bS 4 selects the strong filter and
 * any other value the normal one (bS above 4 counts as normal). Exceptions,
 * the horizontal chroma edges, which choose strong or normal once per edge:
 * strong on every line of the edge (whatever the other entries say) when the
 * edge's first bS entry is 4, or, for the 8-bit 4:2:0 function, when all four
 * of its entries are 4; otherwise every line with a non-zero bS gets the
 * normal filter.
 *
 * Reads: the block, and luma p3..q3 and chroma p1..q1 of every line of an
 * edge with a non-zero bS entry, so up to 4 luma (2 chroma) samples before
 * the macroblock boundary, and those only when edge 0 has one. Samples that
 * change: luma p2..q2, chroma p0 and q0; outside the block nothing else is
 * written (inside it, unchanged samples may be stored back).
 * 16-bit functions count steps in samples and clamp the normal filter's p0'
 * and q0' to 0..(1 << bitDepth) - 1 (the other results cannot leave the
 * range of their inputs); bitDepth itself is not checked (below 0 counts as
 * 0, above 16 as 16). The 8-bit functions do not check the step; any sign
 * works. The records hold native pointers (48 and 56 bytes here). */

/* The record of the 8-bit 4:2:2 chroma functions. */
typedef struct {
    Kiv8u *pSrcDstPlane;        /* q0 of edge 0: the macroblock's first sample */
    Kiv32s srcDstStep;          /* bytes */
    const Kiv8u *pAlpha;        /* 2 entries */
    const Kiv8u *pBeta;         /* 2 entries */
    const Kiv8u *pThresholds;   /* tC0 */
    const Kiv8u *pBs;           /* 16 entries */
} KivDeblockingParams_8u;

/* The record of the 16-bit functions. */
typedef struct {
    Kiv16u *pSrcDstPlane;       /* q0 of edge 0 */
    Kiv32s srcDstStep;          /* samples */
    const Kiv16u *pAlpha;       /* 2 entries */
    const Kiv16u *pBeta;        /* 2 entries */
    const Kiv16u *pThresholds;  /* tC0 */
    const Kiv8u *pBs;           /* 16 entries */
    Kiv32s bitDepth;            /* samples clamped to 0..(1 << bitDepth) - 1 */
} KivDeblockingParams_16u;

/* Vertical luma edges of an 8-bit macroblock (16x16). Statuses: NullPointer
 * (pSrcDst, pAlpha, pBeta, pThresholds, pBs). Reads columns -4..15 (-4..-1
 * only when edge 0 has a non-zero bS). */
KIV_API KivStatus kiviFilterDeblockingLuma_VerEdge_H264_8u_C1IR(Kiv8u *pSrcDst, Kiv32s srcDstStep, const Kiv8u *pAlpha, const Kiv8u *pBeta, const Kiv8u *pThresholds, const Kiv8u *pBs);
/* Horizontal luma edges of an 8-bit macroblock; rows -4..15 as above.
 * Statuses as the vertical function. */
KIV_API KivStatus kiviFilterDeblockingLuma_HorEdge_H264_8u_C1IR(Kiv8u *pSrcDst, Kiv32s srcDstStep, const Kiv8u *pAlpha, const Kiv8u *pBeta, const Kiv8u *pThresholds, const Kiv8u *pBs);
/* Vertical edges of an 8-bit 4:2:0 chroma block (8x8), each line with its
 * own bS; columns -2..7 read. Statuses: NullPointer (all six pointers). */
KIV_API KivStatus kiviFilterDeblockingChroma_VerEdge_H264_8u_C1IR(Kiv8u *pSrcDst, Kiv32s srcDstStep, const Kiv8u *pAlpha, const Kiv8u *pBeta, const Kiv8u *pThresholds, const Kiv8u *pBs);
/* Horizontal edges of an 8-bit 4:2:0 chroma block: an edge whose four bS
 * entries are all 4 is strong-filtered, otherwise each line with a non-zero
 * bS gets the normal filter; rows -2..7 read. Statuses: NullPointer. */
KIV_API KivStatus kiviFilterDeblockingChroma_HorEdge_H264_8u_C1IR(Kiv8u *pSrcDst, Kiv32s srcDstStep, const Kiv8u *pAlpha, const Kiv8u *pBeta, const Kiv8u *pThresholds, const Kiv8u *pBs);
/* MBAFF left luma edge, 8 lines (the caller picks them by pointer and step):
 * line i uses pBs[i >> 1] and pThresholds[i >> 1], alpha and beta given as
 * values. Statuses: NullPointer (pSrcDst, pThresholds, pBs); then, when
 * alpha is 0 or all four bS are 0, Ok without filtering. Reads columns -4..3. */
KIV_API KivStatus kiviFilterDeblockingLuma_VerEdge_MBAFF_H264_8u_C1IR(Kiv8u *pSrcDst, Kiv32s srcDstStep, Kiv32u alpha, Kiv32u beta, const Kiv8u *pThresholds, const Kiv8u *pBs);
/* MBAFF left chroma edge, 4 lines, line i uses pBs[i] and pThresholds[i].
 * Statuses as the luma MBAFF function. Reads columns -2..1. */
KIV_API KivStatus kiviFilterDeblockingChroma_VerEdge_MBAFF_H264_8u_C1IR(Kiv8u *pSrcDst, Kiv32s srcDstStep, Kiv32u alpha, Kiv32u beta, const Kiv8u *pThresholds, const Kiv8u *pBs);
/* Vertical edges of an 8-bit 4:2:2 chroma block (8 wide, 16 high). Statuses:
 * NullPointer (pDeblockInfo, then its pSrcDstPlane, pAlpha, pBeta,
 * pThresholds, pBs). */
KIV_API KivStatus kiviFilterDeblockingChroma422VerEdge_H264_8u_C1IR(const KivDeblockingParams_8u *pDeblockInfo);
/* Horizontal edges of an 8-bit 4:2:2 chroma block: four edges, strong on the
 * whole edge when its first bS entry is 4. Statuses as the vertical function. */
KIV_API KivStatus kiviFilterDeblockingChroma422HorEdge_H264_8u_C1IR(const KivDeblockingParams_8u *pDeblockInfo);
/* Not provided: always NotImplemented, whatever the argument. */
KIV_API KivStatus kiviFilterDeblockingChroma422VerEdgeMBAFF_H264_8u_C1IR(const KivDeblockingParams_8u *pDeblockInfo);
/* Not provided: always NotImplemented, whatever the argument. */
KIV_API KivStatus kiviFilterDeblockingChroma422VerEdgeMBAFF_H264_16u_C1IR(const KivDeblockingParams_16u *pDeblockInfo);

/* 16-bit luma, vertical edges. Statuses: NullPointer (pDeblockInfo, then its
 * pSrcDstPlane, pAlpha, pBeta, pThresholds, pBs), BadStep (srcDstStep < 1).
 * Reads as the 8-bit function. */
KIV_API KivStatus kiviFilterDeblockingLumaVerEdge_H264_16u_C1IR(const KivDeblockingParams_16u *pDeblockInfo);
/* 16-bit luma, horizontal edges. Statuses as above. */
KIV_API KivStatus kiviFilterDeblockingLumaHorEdge_H264_16u_C1IR(const KivDeblockingParams_16u *pDeblockInfo);
/* 16-bit 4:2:0 chroma, vertical edges. Statuses as above. */
KIV_API KivStatus kiviFilterDeblockingChromaVerEdge_H264_16u_C1IR(const KivDeblockingParams_16u *pDeblockInfo);
/* 16-bit 4:2:0 chroma, horizontal edges: strong on the whole edge when its
 * first bS entry is 4. Statuses as above. */
KIV_API KivStatus kiviFilterDeblockingChromaHorEdge_H264_16u_C1IR(const KivDeblockingParams_16u *pDeblockInfo);
/* 16-bit 4:2:2 chroma, vertical edges. Statuses as above. */
KIV_API KivStatus kiviFilterDeblockingChroma422VerEdge_H264_16u_C1IR(const KivDeblockingParams_16u *pDeblockInfo);
/* 16-bit 4:2:2 chroma, horizontal edges: strong on the whole edge when its
 * first bS entry is 4. Statuses as above. */
KIV_API KivStatus kiviFilterDeblockingChroma422HorEdge_H264_16u_C1IR(const KivDeblockingParams_16u *pDeblockInfo);
/* 16-bit MBAFF left luma edge (8 lines as the 8-bit function), pAlpha[0]
 * and pBeta[0] only. Statuses: NullPointer (as above), BadStep
 * (srcDstStep < 1); then, when pAlpha[0] is 0 or all four bS are 0, Ok
 * without filtering. */
KIV_API KivStatus kiviFilterDeblockingLumaVerEdgeMBAFF_H264_16u_C1IR(const KivDeblockingParams_16u *pDeblockInfo);
/* 16-bit MBAFF left chroma edge (4 lines as the 8-bit function). Statuses:
 * NullPointer (pDeblockInfo, pSrcDstPlane, pThresholds, pBs, pAlpha, pBeta);
 * then, when pAlpha[0] is 0 or all four bS are 0, Ok without filtering. The
 * step is not checked. */
KIV_API KivStatus kiviFilterDeblockingChromaVerEdgeMBAFF_H264_16u_C1IR(const KivDeblockingParams_16u *pDeblockInfo);
/* ---- end section: h264 deblocking ---- */

/* ---- section: mpeg4 ---- */
/* ======================================================================== */
/* MPEG-4 Part 2: quantisation, coefficient decoding and encoding           */
/* ======================================================================== */
/* Quantisation records. GetSize gives the bytes the caller provides (412 for
 * the forward records, 156 for the inverse ones, 15 bytes of slack
 * included); the record itself lives at the first 16-byte boundary at or
 * after the pointer passed, and every function taking a record aligns the
 * pointer the same way, so the caller passes the same pointer throughout.
 * Layout from the aligned start:
 *   inverse: Kiv16u weights[64] (row-major), Kiv32s bits, Kiv32s matrix
 *            flag, Kiv32u identifier ("RAMC" intra, "SAMC" inter);
 *   forward: Kiv16u weights[64] (W >> 1 for bits <= 8, W for bits >= 9),
 *            Kiv32u reciprocals[64] (65536 / W + 1, bits <= 8 only), Kiv32s
 *            bits, Kiv32s matrix flag, Kiv32u identifier ("TAMC" intra,
 *            "UAMC" inter).
 * A record is initialised once and then only read; it may be shared by any
 * number of concurrent calls. Every function reads the identifier where its
 * own record kind keeps it, so the memory passed must be as large as that
 * kind asks for even when it holds a record of another kind. */
typedef struct KiviQuantIntraSpec_MPEG4 KiviQuantIntraSpec_MPEG4;
typedef struct KiviQuantInterSpec_MPEG4 KiviQuantInterSpec_MPEG4;
typedef struct KiviQuantInvIntraSpec_MPEG4 KiviQuantInvIntraSpec_MPEG4;
typedef struct KiviQuantInvInterSpec_MPEG4 KiviQuantInvInterSpec_MPEG4;

/* Stores 412, the bytes of a forward intra record. Statuses: NullPointer. */
KIV_API KivStatus kiviQuantIntraGetSize_MPEG4(int *pSpecSize);
/* Stores 412, the bytes of a forward inter record. Statuses: NullPointer. */
KIV_API KivStatus kiviQuantInterGetSize_MPEG4(int *pSpecSize);
/* Stores 156, the bytes of an inverse intra record. Statuses: NullPointer. */
KIV_API KivStatus kiviQuantInvIntraGetSize_MPEG4(int *pSpecSize);
/* Stores 156, the bytes of an inverse inter record. Statuses: NullPointer. */
KIV_API KivStatus kiviQuantInvInterGetSize_MPEG4(int *pSpecSize);

/* Initialises a forward intra record for video of bitsPerPixel bits (4..12)
 * from 64 nonzero weights in row-major order (MPEG method), or from a null
 * matrix (H.263 method). Statuses in order: NullPointer (pSpec), OutOfRange
 * (bits outside 4..12, nothing written; we refuse such bits here rather than
 * leave a record the quantisers cannot use), BadQp (a zero weight: the
 * weights before it are stored, the identifier is valid, the matrix flag
 * stays 0 and the record must not be used). */
KIV_API KivStatus kiviQuantIntraInit_MPEG4(const Kiv8u *pQuantMatrix, KiviQuantIntraSpec_MPEG4 *pSpec, int bitsPerPixel);
/* As kiviQuantIntraInit_MPEG4, for a forward inter record. */
KIV_API KivStatus kiviQuantInterInit_MPEG4(const Kiv8u *pQuantMatrix, KiviQuantInterSpec_MPEG4 *pSpec, int bitsPerPixel);
/* As kiviQuantIntraInit_MPEG4, for an inverse intra record. */
KIV_API KivStatus kiviQuantInvIntraInit_MPEG4(const Kiv8u *pQuantMatrix, KiviQuantInvIntraSpec_MPEG4 *pSpec, int bitsPerPixel);
/* As kiviQuantIntraInit_MPEG4, for an inverse inter record. */
KIV_API KivStatus kiviQuantInvInterInit_MPEG4(const Kiv8u *pQuantMatrix, KiviQuantInvInterSpec_MPEG4 *pSpec, int bitsPerPixel);

/* Quantises an intra block in place (64 row-major coefficients) and stores
 * the number of nonzero levels. AC: H.263 method (bits >= 9: c / 2QP;
 * bits <= 8: c / 2 for QP 1, else sign(c) ((|c| R(QP)) >> 16) with
 * R(QP) = 65536 / 2QP + 1) or MPEG method (a = (16|c| + W/2) / W, level =
 * min((a + (3QP + 2) / 4) / 2QP, 2047), the divisions by W and 2QP through
 * the reciprocals for bits <= 8). DC: sign(c0) ((|c0| + s/2) / s), s the DC
 * scaler of QP and blockType (0 luminance, other chrominance), limited to
 * +-2047. The 8-bit MPEG form is computed exactly for any 16-bit input
 * (64-bit products), so levels of out-of-range coefficients saturate at 2047.
 * Statuses in order: NullPointer (pCoeffs, pSpec, pCount), ContextMismatch
 * (not a forward intra record, or its bits outside 4..12), BadQp (QP < 1 or
 * above 2^(bits-3) - 1). */
KIV_API KivStatus kiviQuantIntra_MPEG4_16s_C1I(Kiv16s *pCoeffs, const KiviQuantIntraSpec_MPEG4 *pSpec, int QP, int *pCount, int blockType);
/* Quantises an inter block in place, all 64 elements: H.263 method
 * sign(c) ((|c| - QP/2) / 2QP) (bits <= 8: c / 2 for QP 1, else through
 * R(QP)), MPEG method min(a / 2QP, 2047). Statuses as
 * kiviQuantIntra_MPEG4_16s_C1I (a forward inter record). */
KIV_API KivStatus kiviQuantInter_MPEG4_16s_C1I(Kiv16s *pCoeffs, const KiviQuantInterSpec_MPEG4 *pSpec, int QP, int *pCount);
/* Inverse-quantises an intra block in place. indxLastNonZero is the highest
 * row-major element that may be nonzero (63 is always correct; values above
 * 63 are taken as 63). DC = s * level0; AC: H.263 method sign(L)(2QP|L| + q),
 * q = QP (odd QP) or QP - 1, MPEG method (L W QP) / 8 with mismatch control
 * on element 63 when DC plus the AC sum is even (an index below 1 only sets
 * element 63 to 1 when DC is even). Every value is computed exactly and
 * limited to [-2^(bits+3), 2^(bits+3) - 1]. Statuses in order: NullPointer
 * (pCoeffs, pSpec), ContextMismatch (not an inverse intra record, or bits
 * outside 4..12), BadQp (QP outside 1..2^(bits-3) - 1). */
KIV_API KivStatus kiviQuantInvIntra_MPEG4_16s_C1I(Kiv16s *pCoeffs, int indxLastNonZero, const KiviQuantInvIntraSpec_MPEG4 *pSpec, int QP, int blockType);
/* Inverse-quantises an inter block in place over elements 0..indxLastNonZero
 * (above 63 taken as 63): H.263 method as the intra AC, MPEG method
 * ((2L + sign(L)) W QP) / 16 with mismatch control on element 63 when the sum
 * is even (also for a negative index). Limits and statuses as
 * kiviQuantInvIntra_MPEG4_16s_C1I (an inverse inter record). */
KIV_API KivStatus kiviQuantInvInter_MPEG4_16s_C1I(Kiv16s *pCoeffs, int indxLastNonZero, const KiviQuantInvInterSpec_MPEG4 *pSpec, int QP);

/* Coefficient decoding. The cursor is the byte cursor (ppBitStream,
 * pBitOffset), read most significant bit first; on success it is left just
 * behind the block's codes. Forward readers may load up to four bytes past
 * the byte holding the next unread bit, so callers keep four readable bytes
 * after the coded data; the backward readers load up to two bytes before the
 * first bit they consume. The coefficient decoders clear the 64-element
 * row-major block first (an intra decoder told that the DC is present keeps
 * element 0) and store the last scan position decoded (0..63). A bad code, a
 * missing marker bit, a forbidden escape level or a position beyond 63
 * returns BadBitstreamCode with the cursor as it was on entry, the
 * coefficients stored so far in place and the last position of the last one
 * stored. Pointer checks cover the cursor, offset, output and last-position
 * pointers, then the current-byte pointer; then BadBitOffset (offset outside
 * 0..7). */

/* Decodes an intra DC differential: dct_dc_size (blockType 0 luminance, any
 * other value chrominance), the differential bits and, above size 8, a marker
 * bit. Statuses: NullPointer (ppBitStream, pBitOffset, pDC, then
 * *ppBitStream), BadBitOffset, BadBitstreamCode (a size prefix too long:
 * nothing written; a zero marker: *pDC already written, cursor unchanged). */
KIV_API KivStatus kiviDecodeDCIntra_MPEG4_1u16s(Kiv8u **ppBitStream, int *pBitOffset, Kiv16s *pDC, int blockType);
/* Decodes the run/level/last codes of an intra block: the intra TCOEF table
 * with escape modes 1 to 3 (the fixed-length mode refuses levels 0 and
 * -2048), or with rvlcFlag the reversible codes and their 30-bit escape.
 * noDCFlag nonzero: the DC is present (element 0 kept, decoding starts at
 * scan position 1). scan: 0 zigzag, 1 alternate vertical, 2 alternate
 * horizontal, any other value no reordering (scan position k to element k).
 * Statuses as described above. */
KIV_API KivStatus kiviDecodeCoeffsIntra_MPEG4_1u16s(Kiv8u **ppBitStream, int *pBitOffset, Kiv16s *pCoeffs, int *pIndxLastNonZero, int rvlcFlag, int noDCFlag, int scan);
/* As kiviDecodeCoeffsIntra_MPEG4_1u16s for an inter block with the inter
 * tables (the fixed-length escape refuses only -2048; a zero level is stored
 * and counts as coded). scan: 0 zigzag, 1 alternate vertical, any other value
 * no reordering. */
KIV_API KivStatus kiviDecodeCoeffsInter_MPEG4_1u16s(Kiv8u **ppBitStream, int *pBitOffset, Kiv16s *pCoeffs, int *pIndxLastNonZero, int rvlcFlag, int scan);
/* Decodes the reversible codes of an intra block backwards. On entry the
 * cursor names the sign bit of the block's last code (offset 0 = most
 * significant bit of the byte); the first code read must have last = 1, and
 * decoding stops, without consuming it, at the next code with last = 1 (the
 * preceding block's), where the cursor is left for the next backward call.
 * No scan is applied: element k holds scan position k. noDCFlag as in the
 * forward decoder. On an error the last position holds the fill position
 * reached (coefficients are collected from element 63 downward); a block
 * whose runs would carry it beyond position 63 is refused. Statuses as
 * described above. */
KIV_API KivStatus kiviDecodeCoeffsIntraRVLCBack_MPEG4_1u16s(Kiv8u **ppBitStream, int *pBitOffset, Kiv16s *pCoeffs, int *pIndxLastNonZero, int noDCFlag);
/* As kiviDecodeCoeffsIntraRVLCBack_MPEG4_1u16s for an inter block. */
KIV_API KivStatus kiviDecodeCoeffsInterRVLCBack_MPEG4_1u16s(Kiv8u **ppBitStream, int *pBitOffset, Kiv16s *pCoeffs, int *pIndxLastNonZero);
/* Decodes an inter block and inverse-quantises it (scan 1 alternate
 * vertical, any other value zigzag). Without rvlcFlag each level is
 * reconstructed as it is stored, exactly as kiviQuantInvInter_MPEG4_16s_C1I
 * would (H.263 or MPEG method of the record, range of its bits, mismatch
 * control on element 63 once the block is complete); the record and QP are
 * checked first: NullPointer (record), ContextMismatch, BadQp. With rvlcFlag
 * the block is decoded with the reversible codes and then handed to
 * kiviQuantInvInter_MPEG4_16s_C1I, whose status is returned (its argument
 * errors arrive after the cursor has advanced); a decoding error returns
 * before any inverse quantisation. */
KIV_API KivStatus kiviReconstructCoeffsInter_MPEG4_1u16s(Kiv8u **ppBitStream, int *pBitOffset, Kiv16s *pCoeffs, int *pIndxLastNonZero, int rvlcFlag, int scan, const KiviQuantInvInterSpec_MPEG4 *pQuantInvInterSpec, int QP);

/* Coefficient encoding. The cursor is the byte cursor, writing: the first
 * byte keeps its bits above the offset, whole bytes are stored after it, and
 * the unwritten low bits of the last byte are zero; no zeroed buffer is
 * needed. Pointer checks: ppBitStream, pBitOffset, the block (coefficient
 * encoders), then *ppBitStream; then BadBitOffset (offset outside 0..7). */

/* Writes an intra DC differential: its dct_dc_size code (blockType 1
 * chrominance, any other value luminance), the differential (d, or d - 1 in
 * two's complement when negative) and a marker bit above size 8. Statuses:
 * NullPointer, BadBitOffset, OutOfRange (|dcCoeff| above 4095, which no size
 * code covers; nothing written). */
KIV_API KivStatus kiviEncodeDCIntra_MPEG4_16s1u(Kiv16s dcCoeff, Kiv8u **ppBitStream, int *pBitOffset, int blockType);
/* Writes the run/level/last codes of an intra block: countNonZero nonzero
 * levels from position 0 (1 with noDCFlag) through the scan (-1 row-major,
 * 1 alternate vertical, 2 alternate horizontal, any other value zigzag), the
 * last one with last = 1; later levels are not coded. Without rvlcFlag each
 * level takes its TCOEF code, else escape mode 1, else mode 2, else the
 * fixed-length mode 3; with rvlcFlag a reversible code or the 30-bit RVLC
 * escape. Statuses: NullPointer, BadBitOffset, OutOfRange (countNonZero
 * below 1 or above 64, above 63 with noDCFlag; or a level to code whose
 * magnitude exceeds 2047, which no escape carries; we refuse it before
 * writing rather than write its low bits). A count larger than the number of
 * nonzero levels leaves the block without a last code. */
KIV_API KivStatus kiviEncodeCoeffsIntra_MPEG4_16s1u(const Kiv16s *pCoeffs, Kiv8u **ppBitStream, int *pBitOffset, int countNonZero, int rvlcFlag, int noDCFlag, int scan);
/* As kiviEncodeCoeffsIntra_MPEG4_16s1u for an inter block with the inter
 * tables, from position 0; scan 2 means zigzag here. */
KIV_API KivStatus kiviEncodeCoeffsInter_MPEG4_16s1u(const Kiv16s *pCoeffs, Kiv8u **ppBitStream, int *pBitOffset, int countNonZero, int rvlcFlag, int scan);
/* ---- end section: mpeg4 ---- */

/* ---- section: mpeg4 sprite and postfilter ---- */
/* Sprite warping and global motion (MPEG-4 sprites and GMC). A picture's
 * warping points are turned once into a prepared record in caller memory
 * (kiviWarpGetSize_MPEG4 bytes, used from its first 16-byte boundary on); the
 * block functions only read it. Positions are held in 1/16 sample units; the
 * warping accuracy 0..3 selects 1/2, 1/4, 1/8 or 1/16 sample precision. */
typedef struct KiviWarpSpec_MPEG4 KiviWarpSpec_MPEG4;
/* A motion vector: horizontal then vertical component. */
typedef struct { Kiv16s dx; Kiv16s dy; } KivMotionVector;

/* Size in bytes of the memory a warp record needs (328, enough for the record
 * at any alignment). Statuses: NullPointer. */
KIV_API KivStatus kiviWarpGetSize_MPEG4(int *pSpecSize);
/* Prepares a warp record from the decoded trajectories pDU/pDV (half-sample
 * units; entries 1..3 relative to the first point) for 0..4 warping points,
 * sprite type (1 static sprite, anything else GMC), accuracy 0..3, rounding
 * type (used by GMC only), quarter-sample flag, fcode 1..7, sprite rectangle
 * and picture rectangle. Statuses in order: NullPointer (pSpec); OutOfRange
 * (points outside 0..4, four points with GMC, accuracy outside 0..3, fcode
 * outside 1..7); BadSize (a rectangle width or height below 1). With points,
 * null pDU or pDV gives NullPointer after the picture-level fields are
 * filled; the identifier is written only on success, so such a record (and a
 * record whose re-initialisation failed) is refused by every user. Choices:
 * the rectangles are required; a null one is refused with NullPointer where
 * it would first be read instead of being dereferenced. The integer terms of
 * the four-point set-up and of the affine positions are formed in 64 bits, so
 * they equal the 32-bit definition wherever that does not overflow and stay
 * defined where it would. */
KIV_API KivStatus kiviWarpInit_MPEG4(KiviWarpSpec_MPEG4 *pSpec, const int *pDU, const int *pDV, int numWarpingPoints,
                                     int spriteType, int warpingAccuracy, int roundingType, int quarterSample,
                                     int fcode, const KiviRect *spriteRect, const KiviRect *vopRect);
/* Predicts the luma block dstRect (picture coordinates) from the reference
 * plane pSrcY, which starts at the sprite rectangle's top-left sample and is
 * read only inside the sprite rectangle (border samples repeat outward).
 * No points: a copy; one point: whole- or half-sample translation (16x16
 * blocks with a sample to spare through the half-sample copy, others by
 * clamped half-sample averages); two or three points: affine positions; four:
 * perspective positions in double precision; positions off the whole-sample
 * grid are sampled bilinearly. Statuses in order: NullPointer (pSpec, pSrcY,
 * pDstY), ContextMismatch (not an initialised record), NullPointer (dstRect).
 * An empty block writes nothing. */
KIV_API KivStatus kiviWarpLuma_MPEG4_8u_C1R(const Kiv8u *pSrcY, int srcStepY, Kiv8u *pDstY, int dstStepY,
                                            const KiviRect *dstRect, const KiviWarpSpec_MPEG4 *pSpec);
/* As kiviWarpLuma_MPEG4_8u_C1R for the two chroma planes (treated alike) of
 * the chroma block dstRect, against the chroma sprite rectangle (x / 2, y / 2,
 * (width + 1) >> 1, (height + 1) >> 1). One point: an 8x8 block on the
 * half-sample grid with a sample to spare uses the 8x8 half-sample copy.
 * Statuses in order: NullPointer (pSpec, pSrcCb, pDstCb, pSrcCr, pDstCr),
 * ContextMismatch, NullPointer (dstRect). */
KIV_API KivStatus kiviWarpChroma_MPEG4_8u_P2R(const Kiv8u *pSrcCb, int srcStepCb, const Kiv8u *pSrcCr, int srcStepCr,
                                              Kiv8u *pDstCb, int dstStepCb, Kiv8u *pDstCr, int dstStepCr,
                                              const KiviRect *dstRect, const KiviWarpSpec_MPEG4 *pSpec);
/* The global motion vector of the 16x16 luma macroblock at (xOffset, yOffset):
 * (0, 0) without points; the translation for one point; for two and three
 * points the mean warped displacement over the macroblock's 256 samples,
 * rounded half away from zero, in half- or quarter-sample units by the
 * quarter-sample flag. Each component is then limited to
 * -(16 << fcode)..(16 << fcode) - 1. Choice: a four-point record (static
 * sprites only) gives (0, 0). Statuses in order: NullPointer (pSpec, pGMV),
 * ContextMismatch. */
KIV_API KivStatus kiviCalcGlobalMV_MPEG4(int xOffset, int yOffset, KivMotionVector *pGMV,
                                         const KiviWarpSpec_MPEG4 *pSpec);
/* Sprite brightness change in place: m = (factor * 1024 +- 50) / 100 + 1024
 * (sign of the factor, division toward zero), each sample becomes
 * clamp((sample * m + 520) >> 10, 0, 255). Statuses in order: NullPointer;
 * OutOfRange (factor outside -112..1648). Factor 0 returns at once; a width
 * or height below 1 writes nothing. */
KIV_API KivStatus kiviChangeSpriteBrightness_MPEG4_8u_C1IR(Kiv8u *pSrcDst, int srcDstStep, int width, int height,
                                                           int brightnessChangeFactor);

/* Deblocking post-filter across one 8-sample segment of a horizontal block
 * edge, in place: pSrcDst addresses the first row below the edge; for each of
 * the columns 0..7 the rows -5..4 are read and rows -4..3 may be written.
 * Per column, when at least THR2 of the nine neighbour differences are at most
 * THR1, flat lines (max - min of the inner eight below 2 * QP) are smoothed by
 * the nine-tap DC-offset filter; otherwise the two samples at the edge get the
 * default correction, never past their midpoint. Statuses in order:
 * NullPointer; BadQp (QP outside 1..31). THR1 and THR2 are not checked. */
KIV_API KivStatus kiviFilterDeblocking8x8HorEdge_MPEG4_8u_C1IR(Kiv8u *pSrcDst, int step, int QP, int THR1, int THR2);
/* As kiviFilterDeblocking8x8HorEdge_MPEG4_8u_C1IR across a vertical edge:
 * pSrcDst addresses the first column right of the edge; rows 0..7, columns
 * -5..4 read, -4..3 written. */
KIV_API KivStatus kiviFilterDeblocking8x8VerEdge_MPEG4_8u_C1IR(Kiv8u *pSrcDst, int step, int QP, int THR1, int THR2);
/* ---- end section: mpeg4 sprite and postfilter ---- */

/* ---- section: h263 ---- */
/* ======================================================================== */
/* H.263 and H.261                                                          */
/* ======================================================================== */
/* ---- Edge filters. Each call filters one edge of a picture in place; the
 * pointer addresses the first sample after the edge (the leftmost sample of
 * the row below a horizontal edge, the topmost sample of the column right of
 * a vertical edge). Across the edge A, B (before it, A the farther) and C, D
 * (after it) name the four samples of a line; every line is filtered from
 * its own unfiltered samples. Steps are not validated; the functions read
 * and write only the lines and samples listed. ---- */

/* Deblocking filter of one 8-sample horizontal edge (8 columns, rows -2..+1):
 * d = (A - 4B + 4C - D) / 8 (truncating), d1 = d while |d| <= S falling
 * linearly to 0 at |d| = 2S, S = the strength of QP; B += d1, C -= d1
 * (clipped to 0..255); d2 = (A - D) / 4 limited to +-(|d1| >> 1), A -= d2,
 * D += d2. Statuses in order: NullPointer, BadQp (QP outside 1..31). */
KIV_API KivStatus kiviFilterDeblocking8x8HorEdge_H263_8u_C1IR(Kiv8u *pSrcDst, Kiv32s srcdstStep, Kiv32s QP);
/* As the horizontal form, for a vertical edge (8 rows, columns -2..+1). */
KIV_API KivStatus kiviFilterDeblocking8x8VerEdge_H263_8u_C1IR(Kiv8u *pSrcDst, Kiv32s srcdstStep, Kiv32s QP);
/* Deblocking of a 16-sample horizontal edge (16 columns, rows -2..+1) with
 * unlimited strength: d1 = d. Statuses: NullPointer. */
KIV_API KivStatus kiviFilterDeblocking16x16HorEdge_H263_8u_C1IR(Kiv8u *pSrcDst, Kiv32s srcdstStep);
/* As the horizontal form, for a vertical edge (16 rows, columns -2..+1). */
KIV_API KivStatus kiviFilterDeblocking16x16VerEdge_H263_8u_C1IR(Kiv8u *pSrcDst, Kiv32s srcdstStep);
/* Block-boundary filter of a 16-sample horizontal edge (16 columns, rows -1
 * and 0 as a and b): a' = (3a + b + 2) >> 2, b' = (a + 3b + 2) >> 2.
 * Statuses: NullPointer. */
KIV_API KivStatus kiviFilterBlockBoundaryHorEdge_H263_8u_C1IR(Kiv8u *pSrcDst, Kiv32s srcdstStep);
/* As the horizontal form, for a vertical edge (16 rows, columns -1 and 0). */
KIV_API KivStatus kiviFilterBlockBoundaryVerEdge_H263_8u_C1IR(Kiv8u *pSrcDst, Kiv32s srcdstStep);

/* ---- H.261. Bitstream functions use the byte cursor (*ppBitStream the
 * current byte, *pBitOffset the bits of it already consumed, 0..7). Every
 * read loads the four bytes that start at the byte holding the next unread
 * bit, so the buffer must stay readable three bytes past the byte holding
 * the last bit of the block's codes (on a corrupt stream: past the byte where
 * the first invalid bit pattern starts). Scan: -1 no reordering (position k is element
 * k), any other value zigzag. Blocks are 64 row-major Kiv16s, cleared by the
 * decoders before decoding. ---- */

/* Loop filter of an 8x8 block: a 1/4, 1/2, 1/4 filter along rows then
 * columns at full precision ((sum + 8) >> 4), the outer rows and columns
 * keeping the identity in their direction. Source and destination must not
 * overlap. Statuses: NullPointer (pSrc, pDst). */
KIV_API KivStatus kiviFilter8x8_H261_8u_C1R(const Kiv8u *pSrc, int srcStep, Kiv8u *pDst, int dstStep);
/* Decodes an intra block: the INTRADC (0 and 128 refused with
 * BadBitstreamCode, last position -1, nothing consumed), then TCOEFF codes up
 * to end of block; element 0 receives the DC level (255 read as 128) whatever
 * the outcome of the AC codes. *pIndxLastNonZero receives the scan position
 * of the last coefficient (0 for a DC-only block). A forbidden escape level
 * (0, -128), a code-less bit pattern or a run past position 63 gives
 * BadBitstreamCode with the cursor just past the INTRADC and the last
 * position reached stored. Statuses in order: NullPointer (ppBitStream,
 * pBitOffset, then *ppBitStream, pCoef, pIndxLastNonZero), BadBitOffset,
 * BadBitstreamCode. */
KIV_API KivStatus kiviDecodeCoeffsIntra_H261_1u16s(Kiv8u **ppBitStream, int *pBitOffset, Kiv16s *pCoef, int *pIndxLastNonZero, int scan);
/* Decodes an inter block: a first code '1s' is run 0, level +-1; then
 * TCOEFF codes up to end of block. Last position -1 for an immediate end of
 * block. On an error the cursor is unchanged. Statuses as the intra form. */
KIV_API KivStatus kiviDecodeCoeffsInter_H261_1u16s(Kiv8u **ppBitStream, int *pBitOffset, Kiv16s *pCoef, int *pIndxLastNonZero, int scan);
/* Encodes an intra block: the INTRADC (level 128 as 255, others as their low
 * 8 bits), then the nonzero levels of positions 1..63 until countNonZero
 * levels (the DC included) are written, then end of block. Levels without a
 * code use the escape with the level's low 8 bits. Choices: countNonZero is
 * trusted; a count above the block's levels ends the block after position
 * 63, and levels outside -127..127 are written as their low 8 bits.
 * Statuses in order: NullPointer (pQCoef, ppBitStream, pBitOffset, then
 * *ppBitStream), BadBitOffset, OutOfRange (countNonZero outside 1..64). */
KIV_API KivStatus kiviEncodeCoeffsIntra_H261_16s1u(const Kiv16s *pQCoef, Kiv8u **ppBitStream, int *pBitOffset, int countNonZero, int scan);
/* Encodes an inter block: a nonzero element 0 is the first coefficient
 * ('1s' for +-1, its run-0 code or the escape otherwise); the rest as the
 * intra form. Statuses as the intra form. */
KIV_API KivStatus kiviEncodeCoeffsInter_H261_16s1u(const Kiv16s *pQCoef, Kiv8u **ppBitStream, int *pBitOffset, int countNonZero, int scan);
/* Decodes and reconstructs an intra block in zigzag order: element 0 = 8 x
 * INTRADC (1024 for 255), each AC level L = sign(L) (2 QUANT |L| + q), q =
 * QUANT (odd) or QUANT - 1 (even), limited to -2048..2047. On any error the
 * cursor is unchanged (an invalid INTRADC sets the last position to -1).
 * Statuses in order: NullPointer (ppBitStream, pBitOffset, then
 * *ppBitStream, pCoef, pIndxLastNonZero), BadBitOffset, BadQp (QUANT
 * outside 1..31), BadBitstreamCode. */
KIV_API KivStatus kiviReconstructCoeffsIntra_H261_1u16s(Kiv8u **ppBitStream, int *pBitOffset, Kiv16s *pCoef, int *pIndxLastNonZero, int QUANT);
/* As the intra form for an inter block (first code '1s' reconstructed as
 * +-(2 QUANT + q)). */
KIV_API KivStatus kiviReconstructCoeffsInter_H261_1u16s(Kiv8u **ppBitStream, int *pBitOffset, Kiv16s *pCoef, int *pIndxLastNonZero, int QUANT);

/* ---- H.263 quantisation and coefficient coding. Blocks are 64 row-major
 * Kiv16s. R(QP) = 65536 / (2 QP) + 1. Bitstream functions use the byte
 * cursor with the look-ahead of the H.261 readers: every read loads the four
 * bytes that start at the byte holding the next unread bit, so the buffer
 * must stay readable three bytes past the byte holding the last bit of the
 * block's codes (on a corrupt stream: past the byte where the first invalid
 * bit pattern starts). Scan in the decoders and encoders: 0 zigzag, 1 alternate vertical,
 * 2 alternate horizontal, any other value no reordering. Flags: advIntraFlag
 * (advanced intra coding: DC coded with the AC levels, alternative INTRA
 * table, no odd offset), modQuantFlag (modified quantisation: no level limit
 * at small QP, extended escape for |level| >= 128). ---- */

/* Quantises an intra block in place. Without advanced intra coding: the AC
 * levels are sign(c) ((|c| R(QP)) >> 16), limited to +-127 when QP < 8 and
 * modQuantFlag is 0; element 0 becomes (DC + 4) >> 3 (floor) with 0 replaced
 * by 1 and 255 by 254, and counts as nonzero. With advanced intra coding all
 * 64 elements are sign(c) ((min(|c| + 3QP/4, 32767) R(QP)) >> 16), limited to
 * +-127 unless modQuantFlag. *pCount (skipped when null) receives the number
 * of nonzero levels. Statuses in order: NullPointer (pSrcDst), BadQp (QP
 * outside 1..31). */
KIV_API KivStatus kiviQuantIntra_H263_16s_C1I(Kiv16s *pSrcDst, int QP, int *pCount, int advIntraFlag, int modQuantFlag);
/* Quantises an inter block in place: sign(c) ((max(|c| - QP/2, 0) R(QP)) >>
 * 16), limited to +-127 when QP < 8 and modQuantFlag is 0. Statuses as the
 * intra form. */
KIV_API KivStatus kiviQuantInter_H263_16s_C1I(Kiv16s *pSrcDst, int QP, int *pCount, int modQuantFlag);
/* Inverse quantises elements 0..indxLastNonZero of an intra block in place
 * (zero stays zero). Advanced intra coding: 2 QP L wrapped to 16 bits, DC
 * included. Otherwise element 0 becomes 8 L (16 bits) and the AC elements
 * (none when the last index is 0) sign(L) (2 QP |L| + q), q = QP odd or
 * QP - 1 even, limited to -2048..2047, or saturated to 16 bits with
 * modQuantFlag. Choice: a last index above 63 is taken as 63. Statuses in
 * order: NullPointer, BadQp, OutOfRange (last index below 0). */
KIV_API KivStatus kiviQuantInvIntra_H263_16s_C1I(Kiv16s *pSrcDst, int indxLastNonZero, int QP, int advIntraFlag, int modQuantFlag);
/* As the intra form for an inter block: every element by the odd-offset rule. */
KIV_API KivStatus kiviQuantInvInter_H263_16s_C1I(Kiv16s *pSrcDst, int indxLastNonZero, int QP, int modQuantFlag);
/* Decodes an INTRADC: 8 bits, 255 gives 128; 0 and 128 give
 * BadBitstreamCode with nothing consumed or written. The byte pointer
 * advances by one. Statuses in order: NullPointer (ppBitStream, pBitOffset,
 * then *ppBitStream, pDC), BadBitOffset, BadBitstreamCode. */
KIV_API KivStatus kiviDecodeDCIntra_H263_1u16s(Kiv8u **ppBitStream, int *pBitOffset, Kiv16s *pDC);
/* Writes an INTRADC: the level's low 8 bits, 128 as 255. Statuses in order:
 * NullPointer (ppBitStream, pBitOffset, then *ppBitStream), BadBitOffset. */
KIV_API KivStatus kiviEncodeDCIntra_H263_16s1u(Kiv16s qDC, Kiv8u **ppBitStream, int *pBitOffset);
/* Decodes the TCOEF codes of an intra block up to the code with LAST = 1.
 * The block is cleared first, except element 0 without advanced intra
 * coding (the INTRADC, decoded separately; its codes then start at scan
 * position 1). *pIndxLastNonZero receives the scan position of the last
 * coefficient. A code-less bit pattern, a forbidden escape level (0; -128
 * without modified quantisation) or a run past position 63 gives
 * BadBitstreamCode with the cursor unchanged, the block partly filled and
 * the last position reached stored. Statuses in order: NullPointer
 * (ppBitStream, pBitOffset, *ppBitStream, pCoef, pIndxLastNonZero),
 * BadBitOffset, BadBitstreamCode. */
KIV_API KivStatus kiviDecodeCoeffsIntra_H263_1u16s(Kiv8u **ppBitStream, int *pBitOffset, Kiv16s *pCoef, int *pIndxLastNonZero, int advIntraFlag, int modQuantFlag, int scan);
/* As the intra form for an inter block (ordinary table, from position 0). */
KIV_API KivStatus kiviDecodeCoeffsInter_H263_1u16s(Kiv8u **ppBitStream, int *pBitOffset, Kiv16s *pCoef, int *pIndxLastNonZero, int modQuantFlag, int scan);
/* Encodes the first countNonZero nonzero levels of an intra block in scan
 * order (from position 1 without advanced intra coding, 0 with it), the last
 * of them with LAST = 1; levels without a code take the escape, or with
 * modQuantFlag and |level| >= 128 the extended escape. Choices: countNonZero
 * is trusted (a count above the block's levels leaves the block without a
 * LAST code) and levels beyond the codable range (+-127, or -1024..1023 with
 * modified quantisation) are written as their low bits. Statuses in order:
 * NullPointer (ppBitStream, pBitOffset, pQCoef, then *ppBitStream),
 * BadBitOffset, OutOfRange (countNonZero outside 1..64). */
KIV_API KivStatus kiviEncodeCoeffsIntra_H263_16s1u(const Kiv16s *pQCoef, Kiv8u **ppBitStream, int *pBitOffset, int countNonZero, int advIntraFlag, int modQuantFlag, int scan);
/* As the intra form for an inter block (ordinary table, from position 0). */
KIV_API KivStatus kiviEncodeCoeffsInter_H263_16s1u(const Kiv16s *pQCoef, Kiv8u **ppBitStream, int *pBitOffset, int countNonZero, int modQuantFlag, int scan);
/* Decodes and reconstructs an intra block. With advanced intra coding: the
 * block is cleared, the codes start at position -1 in the alternative table,
 * scan 1 alternate vertical, 2 alternate horizontal, other zigzag, each level
 * stored as 2 QP L (16 bits). Without: the INTRADC first (invalid: last
 * position -1, BadBitstreamCode, nothing consumed); with cbp 0 the last
 * position is 0 and only element 0 is written; else the block is cleared
 * and the AC codes are decoded in zigzag order as sign(L) (2 QP |L| + q),
 * limited to -2048..2047 (with modQuantFlag unlimited, wrapped to 16 bits);
 * element 0 then becomes 8 x DC (1024 for 255), and an AC error is returned
 * with the cursor just past the INTRADC. Other errors leave the cursor
 * unchanged. Statuses in order: NullPointer (ppBitStream, pBitOffset, then
 * *ppBitStream, pCoef, pIndxLastNonZero), BadBitOffset, BadQp,
 * BadBitstreamCode. */
KIV_API KivStatus kiviReconstructCoeffsIntra_H263_1u16s(Kiv8u **ppBitStream, int *pBitOffset, Kiv16s *pCoef, int *pIndxLastNonZero, int cbp, int QP, int advIntraFlag, int scan, int modQuantFlag);
/* Decodes and reconstructs an inter block in zigzag order by the odd-offset
 * rule (as the intra form). Statuses as the intra form. */
KIV_API KivStatus kiviReconstructCoeffsInter_H263_1u16s(Kiv8u **ppBitStream, int *pBitOffset, Kiv16s *pCoef, int *pIndxLastNonZero, int QP, int modQuantFlag);
/* ---- end section: h263 ---- */

/* ---- section: vc1 ---- */

/* ======================================================================== */
/* VC-1: inverse transforms, overlap smoothing, interpolation, deblocking,  */
/* inverse quantisation, range mapping                                      */
/* ======================================================================== */
/* Steps are in bytes, also for 16-bit blocks. Blocks are row-major, width x
 * height (8x4: eight columns, four rows). */

/* Inverse transforms: residual = second pass ((y + 64) >> 7, rows 4..7 of an
 * 8-point column pass (y + 65) >> 7) of the first pass along the rows
 * ((y + 4) >> 3). srcSizeNZ is the width and height of the top-left region
 * outside which every coefficient is zero; coefficients outside it are not
 * read. 8x8 and 4x4 use a DC-only form (width and height <= 1), a 2x2 form
 * (<= 2) and, for 8x8, a 4x4 form (<= 4); 8x4 and 4x8 a DC-only form; every
 * form equals the full transform. Our choice: the row results are saturated
 * to 16 bits on every path, so that all forms give the same bits for any
 * input; this never acts for coefficients within -2912..2912, and from such
 * row results the outputs always fit in 16 bits (no clamping is needed).
 * Status: NullPointer (pSrc, pDst). */
KIV_API KivStatus kiviTransform8x8Inv_VC1_16s_C1R(const Kiv16s *pSrc, Kiv32s srcStep, Kiv16s *pDst, Kiv32s dstStep, KiviSize srcSizeNZ);
/* As kiviTransform8x8Inv_VC1_16s_C1R, 8 wide, 4 high. */
KIV_API KivStatus kiviTransform8x4Inv_VC1_16s_C1R(const Kiv16s *pSrc, Kiv32s srcStep, Kiv16s *pDst, Kiv32s dstStep, KiviSize srcSizeNZ);
/* As kiviTransform8x8Inv_VC1_16s_C1R, 4 wide, 8 high. */
KIV_API KivStatus kiviTransform4x8Inv_VC1_16s_C1R(const Kiv16s *pSrc, Kiv32s srcStep, Kiv16s *pDst, Kiv32s dstStep, KiviSize srcSizeNZ);
/* As kiviTransform8x8Inv_VC1_16s_C1R, 4x4. */
KIV_API KivStatus kiviTransform4x4Inv_VC1_16s_C1R(const Kiv16s *pSrc, Kiv32s srcStep, Kiv16s *pDst, Kiv32s dstStep, KiviSize srcSizeNZ);
/* kiviTransform8x8Inv_VC1_16s_C1R in place. Status: NullPointer (pSrcDst). */
KIV_API KivStatus kiviTransform8x8Inv_VC1_16s_C1IR(Kiv16s *pSrcDst, Kiv32s srcDstStep, KiviSize srcSizeNZ);
/* kiviTransform8x4Inv_VC1_16s_C1R in place. Status: NullPointer (pSrcDst). */
KIV_API KivStatus kiviTransform8x4Inv_VC1_16s_C1IR(Kiv16s *pSrcDst, Kiv32s srcDstStep, KiviSize srcSizeNZ);
/* kiviTransform4x8Inv_VC1_16s_C1R in place. Status: NullPointer (pSrcDst). */
KIV_API KivStatus kiviTransform4x8Inv_VC1_16s_C1IR(Kiv16s *pSrcDst, Kiv32s srcDstStep, KiviSize srcSizeNZ);
/* kiviTransform4x4Inv_VC1_16s_C1R in place. Status: NullPointer (pSrcDst). */
KIV_API KivStatus kiviTransform4x4Inv_VC1_16s_C1IR(Kiv16s *pSrcDst, Kiv32s srcDstStep, KiviSize srcSizeNZ);

/* Overlap smoothing across a vertical block edge of 16 luma lines. pSrcLeft
 * points at the second-last column of the left 16-bit block, pSrcRight at the
 * first column of the right block, pDst at the picture sample of the right
 * block's first column. Each line x0 x1 | x2 x3 becomes y0 = (7x0 + x3 + r0)
 * >> 3, y1 = (-x0 + 7x1 + x2 + x3 + r1) >> 3, y2 = (x0 + x1 + 7x2 - x3 + r0)
 * >> 3, y3 = (x0 + 7x3 + r1) >> 3, (r0, r1) = (4, 3) on even picture rows and
 * (3, 4) on odd ones; y0..y3 go clamped to 0..255 into destination columns
 * -2..1 and, kept to 16 bits, back into the two blocks. fieldMode: 0 both
 * blocks frame-ordered (rows 0..7 smoothed when edgeFlags & 3, rows 8..15
 * when edgeFlags & 12); 1 right block field-ordered, 2 left block
 * field-ordered, 3 both (picture row 2k from block row k, row 2k + 1 from row
 * 8 + k of a field-ordered block), all 16 rows whatever the non-zero flags.
 * Statuses: NullPointer (pSrcLeft, pSrcRight, pDst); edgeFlags 0 or fieldMode
 * outside 0..3: Ok with nothing changed. */
KIV_API KivStatus kiviSmoothingLuma_VerEdge_VC1_16s8u_C1R(Kiv16s *pSrcLeft, Kiv32s srcLeftStep, Kiv16s *pSrcRight, Kiv32s srcRightStep, Kiv8u *pDst, Kiv32s dstStep, Kiv32s fieldMode, Kiv32u edgeFlags);
/* Overlap smoothing across a horizontal luma edge, 16 columns: pSrcUpper at
 * the upper block's second-last row, pSrcLower at the lower block's first
 * row, pDst at the picture sample of the lower block's first row; outputs to
 * destination rows -2..1, rounding pair by column parity, columns 0..7 when
 * edgeFlags & 3, columns 8..15 when edgeFlags & 12. The blocks are only
 * read. Status: NullPointer (pSrcUpper, pSrcLower, pDst). */
KIV_API KivStatus kiviSmoothingLuma_HorEdge_VC1_16s8u_C1R(const Kiv16s *pSrcUpper, Kiv32s srcUpperStep, const Kiv16s *pSrcLower, Kiv32s srcLowerStep, Kiv8u *pDst, Kiv32s dstStep, Kiv8u edgeFlags);
/* As the luma vertical edge in frame mode, 8 rows, always smoothed. */
KIV_API KivStatus kiviSmoothingChroma_VerEdge_VC1_16s8u_C1R(Kiv16s *pSrcLeft, Kiv32s srcLeftStep, Kiv16s *pSrcRight, Kiv32s srcRightStep, Kiv8u *pDst, Kiv32s dstStep);
/* As the luma horizontal edge, 8 columns, always smoothed. */
KIV_API KivStatus kiviSmoothingChroma_HorEdge_VC1_16s8u_C1R(const Kiv16s *pSrcUpper, Kiv32s srcUpperStep, const Kiv16s *pSrcLower, Kiv32s srcLowerStep, Kiv8u *pDst, Kiv32s dstStep);

/* Quarter-sample interpolation record (pointers are native, so the record is
 * 48 bytes on this 64-bit build). */
typedef struct {
    const Kiv8u *pSrc;   /* integer sample at the block's top-left */
    Kiv32s srcStep;
    Kiv8u *pDst;
    Kiv32s dstStep;
    Kiv32s dx;           /* quarter-sample fractions 0..3 */
    Kiv32s dy;
    KiviSize roiSize;    /* block width, height */
    Kiv32s roundControl; /* 0 or 1 */
} KivInterpolate_8u;

/* Bilinear prediction: ((4 - dx)(4 - dy)A + dx(4 - dy)B + (4 - dx)dy C + dx dy D
 * + 8 - rc) >> 4 with A the sample, B right of it, C below, D below right.
 * dx, dy are taken modulo 4, roundControl modulo 2. Size: width 16 is 16x16,
 * width 8 is 8x8 with height 8 and 8x4 otherwise, any other width 4x4. Reads
 * one column right of the block when dx != 0 and one row below it when
 * dy != 0. Status: NullPointer (pParams, pSrc, pDst). */
KIV_API KivStatus kiviInterpolateQPBilinear_VC1_8u_C1R(const KivInterpolate_8u *pParams);
/* Bicubic prediction with the taps (-4, 53, 18, -3), (-1, 9, 9, -1),
 * (-3, 18, 53, -4) for fractions 1, 2, 3: a vertical-only or horizontal-only
 * pass shifts by 6 (4 for a half) with rounding (1 << (S - 1)) - 1 + rc
 * (vertical) or (1 << (S - 1)) - rc (horizontal); with both fractions non-zero
 * the vertical pass (shift 5, 3 or 1 for none, one or two halves) keeps
 * 16-bit values over columns -1..width + 1 and the horizontal pass rounds
 * with 64 - rc and shifts by 7; results clamped to 0..255. Reads one row
 * above and two below the block when dy != 0, one column left and two right
 * when dx != 0. dx, dy are taken modulo 4, roundControl modulo 2. Our choice
 * for sizes without a dedicated kernel (8x8, 16x8 and 16x16 have one): any
 * width and height in 1..16 is computed by the general formulas; anything
 * else is refused. Statuses: NullPointer (pParams, pSrc, pDst); BadSize
 * (width or height outside 1..16). */
KIV_API KivStatus kiviInterpolateQPBicubic_VC1_8u_C1R(const KivInterpolate_8u *pParams);

/* In-loop deblocking across a horizontal luma edge (the 16 lines are the
 * columns; chroma edges have 8), in segments of 4
 * lines; bit k of edgeDisableFlags leaves segment k alone. Line P1..P4 | P5..P8:
 * the segment's third line is tested first (clip = (P4 - P5) / 2 non-zero,
 * |a0| < pquant, min(|a1|, |a2|) < |a0|) and filtered (P4 -= d, P5 += d); only
 * then are lines 0, 1 and 3 each tested and filtered. pSrcDst is the first
 * sample of the row below a horizontal edge or of the column right of a
 * vertical one; every line is read four samples deep on each side of the
 * edge (those samples may be rewritten with their own values). pquant 0 or
 * below filters nothing. Status: NullPointer. */
KIV_API KivStatus kiviFilterDeblockingLuma_HorEdge_VC1_8u_C1IR(Kiv8u *pSrcDst, Kiv32s pquant, Kiv32s srcDstStep, Kiv32u edgeDisableFlags);
/* As the luma horizontal edge, across a vertical luma edge of 16 rows. */
KIV_API KivStatus kiviFilterDeblockingLuma_VerEdge_VC1_8u_C1IR(Kiv8u *pSrcDst, Kiv32s pquant, Kiv32s srcDstStep, Kiv32u edgeDisableFlags);
/* As the luma horizontal edge, 8 columns (two segments, flag bits 0 and 1). */
KIV_API KivStatus kiviFilterDeblockingChroma_HorEdge_VC1_8u_C1IR(Kiv8u *pSrcDst, Kiv32s pquant, Kiv32s srcDstStep, Kiv32u edgeDisableFlags);
/* As the luma vertical edge, 8 rows (two segments, flag bits 0 and 1). */
KIV_API KivStatus kiviFilterDeblockingChroma_VerEdge_VC1_8u_C1IR(Kiv8u *pSrcDst, Kiv32s pquant, Kiv32s srcDstStep, Kiv32u edgeDisableFlags);

/* Inverse quantisation of an intra 8x8 block in place: every coefficient but
 * the DC becomes c * doubleQuant (uniform) or c * doubleQuant + sign(c) *
 * (doubleQuant >> 1) (non-uniform), kept to 16 bits. *pDstSizeNZ receives
 * 1 + the last column and 1 + the last row holding a non-zero coefficient
 * afterwards, the DC always counting (so at least 1 x 1). Status: NullPointer
 * (pSrcDst, then pDstSizeNZ). */
KIV_API KivStatus kiviQuantInvIntraUniform_VC1_16s_C1IR(Kiv16s *pSrcDst, Kiv32s srcDstStep, Kiv32s doubleQuant, KiviSize *pDstSizeNZ);
/* The non-uniform form of kiviQuantInvIntraUniform_VC1_16s_C1IR. */
KIV_API KivStatus kiviQuantInvIntraNonuniform_VC1_16s_C1IR(Kiv16s *pSrcDst, Kiv32s srcDstStep, Kiv32s doubleQuant, KiviSize *pDstSizeNZ);
/* As the intra functions for an inter block of roiSize (8x8, 8x4, 4x8 or
 * 4x4), the first coefficient included; an all-zero block reports 0 x 0. Our
 * choice for other sizes: a width of 8 or more means 8 columns, anything
 * smaller 4; the height likewise. Status: NullPointer (pSrcDst, then
 * pDstSizeNZ). */
KIV_API KivStatus kiviQuantInvInterUniform_VC1_16s_C1IR(Kiv16s *pSrcDst, Kiv32s srcDstStep, Kiv32s doubleQuant, KiviSize roiSize, KiviSize *pDstSizeNZ);
/* The non-uniform form of kiviQuantInvInterUniform_VC1_16s_C1IR. */
KIV_API KivStatus kiviQuantInvInterNonuniform_VC1_16s_C1IR(Kiv16s *pSrcDst, Kiv32s srcDstStep, Kiv32s doubleQuant, KiviSize roiSize, KiviSize *pDstSizeNZ);

/* Range mapping: dst = clamp((((src - 128) * (rangeMapValue + 9) + 4) >> 3)
 * + 128) to 0..255 over width x height. Statuses: NullPointer (pSrc, pDst);
 * OutOfRange (rangeMapValue outside 0..7); Ok with nothing written for a
 * height or width below 1. */
KIV_API KivStatus kiviRangeMapping_VC1_8u_C1R(const Kiv8u *pSrc, Kiv32s srcStep, Kiv8u *pDst, Kiv32s dstStep, Kiv32s width, Kiv32s height, Kiv32s rangeMapValue);

/* ---- end section: vc1 ---- */

/* ---- section: dv ---- */

/* ======================================================================== */
/* DV: segment decoding, inverse quantisation, 2-4-8 to 4x4 reduction       */
/* ======================================================================== */
/* A video segment is five compressed macroblocks of 80 bytes (400 bytes).
 * Byte 3 of a macroblock holds STA (high four bits) and QNO (low four); its
 * block areas follow from byte 4: 14, 14, 14, 14, 10, 10 bytes (DV, 6 blocks)
 * or 10, 10, 10, 10, 10, 10, 8, 8 bytes (DV100, 8 blocks). An area starts
 * with DC (9 bits, two's complement), the DCT mode (1 bit) and the class
 * (2 bits); the AC codes follow.
 *
 * Output of the segment decoders: blocks of 64 Kiv16s in raster order, one
 * after the other in stream order (30 for DV, 40 for DV100), element 0 =
 * DC * 128, every decoded AC coefficient = amplitude * 64; no other element
 * is written, so clear the blocks first. One parameter word per block: bits
 * 23..16 the STA/QNO byte, bits 15..0 the area's first two bytes (DC in
 * 15..7, DCT mode in 6, class in 5..4), bits 31..24 zero. Zigzag tables: two
 * arrays of 64 Kiv32u (scan index to raster position), the first for DCT
 * mode 0 and the second, 64 entries on, for mode 1; DV100 always uses the
 * first; only the low six bits of an entry are used. The lookup table is one
 * built by kiviInitAllocHuffmanTable_DV_32u with 9 index bits on both
 * levels. The decoders read the 400 bytes of the segment and nothing else,
 * whatever the bytes hold.
 *
 * The complete DV code as the builder's two source tables ships as the C99
 * header dv_vlc_source.h (src/dv/ in the sources, installed into
 * share/kivvc/): kivDvCodeFirstLevel and kivDvCodeSecondLevel; a code of amplitude 0 and run r there stands for
 * r + 1 zero coefficients. */

/* Builds the two-level lookup table from two source tables (each: N, two
 * unused words, then for code lengths L = 1..N a count and that many (code,
 * run, amplitude) triples). The table holds 2^N1 first-level entries, then
 * 2^N2 second-level entries, each 32 bits: byte 0 the code length (plus 4 on
 * the second level; 0xFF where no code lies), byte 1 the run, bytes 2..3 the
 * amplitude (its low 10 bits, two's complement) times 64. A later code
 * overwrites an earlier one where they overlap; only the low L bits of a code
 * are used. Allocated with kivsMalloc_8s; release it with
 * kiviFreeHuffmanTable_DV_32u. Statuses: NullPointer (pSrcTable1,
 * pSrcTable2, ppHuffTable); NoMemory when the allocation fails or (our
 * choice) N1 or N2 lies outside 0..24, with *ppHuffTable set to null. */
KIV_API KivStatus kiviInitAllocHuffmanTable_DV_32u(const Kiv32s *pSrcTable1, const Kiv32s *pSrcTable2, Kiv32u **ppHuffTable);
/* Releases a table from kiviInitAllocHuffmanTable_DV_32u through kiviFree.
 * Status: NullPointer (pHuffTable). */
KIV_API KivStatus kiviFreeHuffmanTable_DV_32u(Kiv32u *pHuffTable);
/* Decodes a DV segment into 30 blocks and 30 parameter words. A block whose
 * codes do not fit its area continues in the bits left after the end of
 * block of the other blocks of its macroblock (in block order), then in those
 * left over in the whole segment (macroblock order); bit runs are linked, not
 * copied. A code with no table entry is a bitstream error. Our choices for
 * the last pass: a block that passes 63 coefficients there ends the call with
 * BadBitstreamCode, as in the first two passes; when the leftover bits run
 * out before every block is complete the call ends with kivStsOk, the
 * unfinished blocks keeping what they decoded. Statuses: NullPointer
 * (pStream, pBlock, pBlockParam, pZigzagTables, pHuffTable);
 * BadBitstreamCode (-191) when a block passes 63 coefficients or meets a
 * code with no entry; the blocks and parameter words written until then
 * stay. */
KIV_API KivStatus kiviHuffmanDecodeSegment_DV_8u16s(const Kiv8u *pStream, const Kiv32u *pZigzagTables, const Kiv32u *pHuffTable, Kiv16s *pBlock, Kiv32u *pBlockParam);
/* As kiviHuffmanDecodeSegment_DV_8u16s for DV100: 40 blocks, 8 per
 * macroblock, always the first zigzag table. */
KIV_API KivStatus kiviHuffmanDecodeSegment_DV100_8u16s(const Kiv8u *pStream, const Kiv32u *pZigzagTables, const Kiv32u *pHuffTable, Kiv16s *pBlock, Kiv32u *pBlockParam);
/* Fast reduced decoding of a DV segment: every block writes its parameter
 * word and DC, then decodes codes within its own area only while its scan
 * position k (1 after the DC, advanced by each code's run and coefficient)
 * is below nCoeffLimit, stopping at the end of block, at a code the area
 * cannot complete, when fewer than 3 bits remain, or at a code that would
 * pass position 63 (that code is not stored). nCoeffLimit <= 1 decodes DC
 * values only. Statuses: NullPointer (as the three-pass form); never an
 * error otherwise. */
KIV_API KivStatus kiviHuffmanDecodeSegmentOnePass_DV_8u16s(const Kiv8u *pStream, const Kiv32u *pZigzagTables, const Kiv32u *pHuffTable, Kiv16s *pBlock, Kiv32u *pBlockParam, Kiv32s nCoeffLimit);
/* As kiviHuffmanDecodeSegmentOnePass_DV_8u16s for DV100. */
KIV_API KivStatus kiviHuffmanDecodeSegmentOnePass_DV100_8u16s(const Kiv8u *pStream, const Kiv32u *pZigzagTables, const Kiv32u *pHuffTable, Kiv16s *pBlock, Kiv32u *pBlockParam, Kiv32s nCoeffLimit);
/* c = ((c * t) >> 16) << 2 for each of the 64 coefficients in place, the
 * product in 32 bits, the result kept to its low 16 bits. Status: NullPointer
 * (pSrcDst, pDequantTable). */
KIV_API KivStatus kiviQuantInv_DV_16s_C1I(Kiv16s *pSrcDst, const Kiv16s *pDequantTable);
/* c = ((c >> 3) * a * b) >> 16 for each of the 64 coefficients in place,
 * a and b the entries of the two tables, the product formed modulo 2^32 (it
 * wraps for large operands) and shifted arithmetically, the result kept to
 * its low 16 bits. Status: NullPointer (pSrcDst, pWeightTable1,
 * pWeightTable2). */
KIV_API KivStatus kiviQuantWeightBlockInv_DV_16s_C1I(Kiv16s *pSrcDst, const Kiv16s *pWeightTable1, const Kiv16s *pWeightTable2);
/* c[0] = (c[0] * w[0]) >> 16 and c[i] = ((c[i] * w[i]) >> 16) * quantStep
 * for i = 1..63, in place, each kept to its low 16 bits. Status: NullPointer
 * (pSrcDst, pWeightTable). */
KIV_API KivStatus kiviQuantWeightBlockInv_DV100_16s_C1I(Kiv16s *pSrcDst, const Kiv16s *pWeightTable, Kiv16s quantStep);
/* Runs kiviDCT2x4x8Inv_16s_C1I over the block in place, then writes the 4x4
 * block of 2x2 means to its first 16 elements: element 4r + c = the sum of
 * the samples at lines 2r, 2r + 1 and columns 2c, 2c + 1 divided by 4,
 * truncated toward zero. Elements 16..63 keep the inverse transform's
 * samples. Status: NullPointer (pSrcDst). */
KIV_API KivStatus kiviDCT8x4x2To4x4Inv_DV_16s_C1I(Kiv16s *pSrcDst);
/* ---- end section: dv ---- */

/* ---- section: prepost ---- */

/* ======================================================================== */
/* Pre- and post-processing: deinterlacing, inverse 2-4-8 DCT               */
/* ======================================================================== */
/* Deinterlacing works on one 8-bit plane; steps are signed byte counts and
 * are not validated. Source and destination may be the same plane. */

/* Median deinterlacing with a threshold. One field is kept: with fieldNum 1
 * lines 0, 2, 4, ... (height / 2 lines), with any other value lines 1, 3, 5,
 * ...; with bCopyBorder non-zero lines 0 and height - 1 are copied as well.
 * Each line r of the other field (from 2 instead of 0 with the border flag,
 * and below height - 1 with it) becomes, sample by sample, m = the median of
 * source lines r - 1, r and r + 1, or its own sample c when |m - c| <
 * threshold (threshold <= 0 always takes m, threshold > 255 always keeps c).
 * The one line no rule writes (the last line of an odd height with fieldNum
 * 1 and no border flag) keeps its contents. Look-ahead: without the border flag line -1 or line height may be
 * read, and must be readable. Statuses: NullPointer (pSrc, pDst), BadSize
 * (width < 1 or height < 2). */
KIV_API KivStatus kiviDeinterlaceMedianThreshold_8u_C1R(const Kiv8u *pSrc, Kiv32s srcStep, Kiv8u *pDst, Kiv32s dstStep, Kiv32s width, Kiv32s height, Kiv32s threshold, Kiv32s fieldNum, Kiv32s bCopyBorder);
/* Edge-directed deinterlacing. With f = (fieldNum != 0), output line r is
 * built from the upper line U = source line r + f - 1 and the lower line L =
 * source line r + f: columns 0 and width - 1 copy the line the output lies on
 * (L for f = 0, U for f = 1); every other column x takes the rounding-up
 * average along the direction of smallest difference among the diagonal
 * U(x - 1)/L(x + 1), the diagonal U(x + 1)/L(x - 1) and the vertical
 * U(x)/L(x); a diagonal wins only when strictly below the vertical, and of two
 * equal diagonals the second is taken. Without bCopyBorder lines 0..height - 1
 * are computed, reading source line -1 (f = 0) or line height (f = 1), which
 * must be readable; with it, source line 0 (f = 0) or height - 1 (f = 1) is
 * copied and only the lines that need no outside line are computed. Source
 * and destination must not be the same plane. Statuses: NullPointer (pSrc,
 * pDst), BadSize (width or height < 1). */
KIV_API KivStatus kiviDeinterlaceEdgeDetect_8u_C1R(const Kiv8u *pSrc, Kiv32s srcStep, Kiv8u *pDst, Kiv32s dstStep, Kiv32s width, Kiv32s height, Kiv32s fieldNum, Kiv32s bCopyBorder);
/* Inverse 2-4-8 DCT in place on 64 coefficients in raster order: rows 0..3
 * hold the 4x8 transform of the sums of line pairs (2z, 2z + 1), rows 4..7
 * that of their differences (v vertical, h horizontal frequency). Output
 * sample (line 2z + i, column x) =
 *   sum over v = 0..3, h = 0..7 of C(v) C(h) / 4 * (X[v][h] +/- X[v + 4][h])
 *   * cos(pi v (2z + 1) / 8) * cos(pi h (2x + 1) / 16),
 * plus for even lines (i = 0), minus for odd lines, C(0) = 1/sqrt(2), else 1.
 * Arithmetic (our choice): cosines as integers scaled by 2^20, both passes in
 * 64-bit integers without intermediate rounding, the result rounded to
 * nearest with halves upward ((sum + 2^39) >> 40) and saturated to 16 bits;
 * every sample is within 1 of the exact value for any input. Status:
 * NullPointer (pSrcDst). */
KIV_API KivStatus kiviDCT2x4x8Inv_16s_C1I(Kiv16s *pSrcDst);
/* ---- end section: prepost ---- */

#ifdef __cplusplus
}
#endif

#endif /* KIVVC_H */
