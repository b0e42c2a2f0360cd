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
/* ---- end section: mpeg2 ---- */

/* ---- section: h264 residual ---- */
/* ---- end section: h264 residual ---- */

/* ---- section: h264 intra ---- */
/* ---- end section: h264 intra ---- */

/* ---- section: h264 encoder ---- */
/* ---- end section: h264 encoder ---- */

/* ---- section: h264 inter ---- */
/* ---- end section: h264 inter ---- */

/* ---- section: h264 deblocking ---- */
/* ---- end section: h264 deblocking ---- */

/* ---- section: mpeg4 ---- */
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
/* ---- end section: h263 ---- */

/* ---- section: vc1 ---- */
/* ---- end section: vc1 ---- */

/* ---- section: dv ---- */
/* ---- end section: dv ---- */

/* ---- section: prepost ---- */
/* ---- end section: prepost ---- */

#ifdef __cplusplus
}
#endif

#endif /* KIVVC_H */
